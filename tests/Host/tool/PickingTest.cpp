#include "base/UT_Point.h"
#include "graphic/VS_RGBA.h"
#include "tool/SLB_PickEngine.h"
#include "tool/SLB_Selectable.h"

#include <gtest/gtest.h>

namespace {

TEST(PickEngine, IdsAndColoursConvertBothWaysAndNothingIsNoId)
{
    VS_RGBA const c = SLB_PickEngine::idToColor(0x123456);
    EXPECT_EQ(c, VS_RGBA(0x56, 0x34, 0x12, 255));
    for (std::uint32_t id : {1u, 255u, 256u, 0xABCDEFu, SLB_PickEngine::kLastId})
        EXPECT_EQ(SLB_PickEngine::colorToId(SLB_PickEngine::idToColor(id)), id) << id;
    EXPECT_EQ(SLB_PickEngine::colorToId(VS_RGBA(0, 0, 0, 255)), SLB_PickEngine::kNoId);
    EXPECT_EQ(SLB_PickEngine::colorToId(VS_RGBA(9, 9, 9, 254)), SLB_PickEngine::kNoId);  // blended: not an id
    EXPECT_EQ(SLB_PickEngine::colorToId(VS_RGBA(9, 9, 9, 0)), SLB_PickEngine::kNoId);
}

TEST(PickEngine, BlocksNeverOverlapAndNeverHoldTheNoId)
{
    std::uint32_t const a = SLB_PickEngine::generateIdForPickingObject(4);
    std::uint32_t const b = SLB_PickEngine::generateIdForPickingObject(1);
    std::uint32_t const c = SLB_PickEngine::generateIdForPickingObject(0);  // counts as 1
    EXPECT_NE(a, SLB_PickEngine::kNoId);
    EXPECT_EQ(b, a + 4);
    EXPECT_EQ(c, b + 1);
    EXPECT_EQ(SLB_PickEngine::generateIdForPickingObject(-3), c + 1);
    EXPECT_EQ(SLB_PickEngine::generateIdForPickingObject(int(SLB_PickEngine::kLastId) + 1), SLB_PickEngine::kNoId);

    // A block that would pass the last id starts again from 1; one that just fits does not.
    std::uint32_t const next = c + 2;
    std::uint32_t const fits = SLB_PickEngine::generateIdForPickingObject(int(SLB_PickEngine::kLastId - next + 1));
    EXPECT_EQ(fits, next);
    std::uint32_t const wraps = SLB_PickEngine::generateIdForPickingObject(2);
    EXPECT_EQ(wraps, 1u);
}

TEST(PickAdaptor, OwnsABlockOfIdsAndAnswersForItOnly)
{
    SLB_SelectablePickAdaptor adaptor(2);
    std::uint32_t const first = adaptor.pickingId();
    EXPECT_EQ(adaptor.nbHandles(), 2);
    EXPECT_EQ(adaptor.handleId(first), 0);
    EXPECT_EQ(adaptor.handleId(first + 1), 1);
    EXPECT_EQ(adaptor.handleId(first + 2), -1);
    EXPECT_EQ(adaptor.handleId(first - 1), -1);
    EXPECT_EQ(adaptor.handleId(SLB_PickEngine::kNoId), -1);
    EXPECT_EQ(adaptor.scanHits(first, true, Qt::NoModifier), nullptr);

    adaptor.reserveHandles(6);
    EXPECT_EQ(adaptor.nbHandles(), 6);
    EXPECT_NE(adaptor.pickingId(), first);
    EXPECT_EQ(adaptor.handleId(first), -1);
    EXPECT_EQ(adaptor.handleId(adaptor.pickingId() + 5), 5);

    SLB_SelectablePickAdaptor none(0);
    EXPECT_EQ(none.nbHandles(), 1);
}

TEST(HostValues, PixelPointsRoundAndColourBytesKeepTheirOrder)
{
    EXPECT_EQ(UT_Point::fromPoint2d(Math::Point2d(2.5, -2.5)), UT_Point(3, -3));
    EXPECT_EQ(UT_Point::fromPoint2d(Math::Point2d(2.49, 7.51)), UT_Point(2, 8));
    EXPECT_EQ(VS_RGBA::fromValue(0xFFFFFF00u), VS_RGBA(0, 255, 255, 255));
    EXPECT_EQ(VS_RGBA::fromValue(0xFFFF0000u), VS_RGBA(0, 0, 255, 255));
    EXPECT_EQ(VS_RGBA(1, 2, 3, 4).value(), 0x04030201u);
}

} // namespace
