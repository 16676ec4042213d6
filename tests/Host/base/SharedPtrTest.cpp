#include "base/UT_SharedPtr.h"
#include "scene/MO_Module.h"

#include <gtest/gtest.h>

namespace {

TEST(SharedWeakPtr, ReadsNullAfterItsObjectIsGone)
{
    UT_SharedPtr<MO_Module> module = UT_MakeShared<MO_Module>();
    UT_SharedWeakPtr<MO_Module> weak(module.get());
    UT_SharedWeakPtr<MO_Module> copy = weak;
    EXPECT_EQ(weak.get(), module.get());
    EXPECT_EQ(copy.get(), module.get());

    module.reset();
    EXPECT_EQ(weak.get(), nullptr);
    EXPECT_EQ(copy.get(), nullptr);
    EXPECT_TRUE(weak.expired());
    EXPECT_FALSE(weak);
}

TEST(SharedWeakPtr, IdentityIsKeptAfterExpiryAndEmptyReferencesAreTheSame)
{
    UT_SharedPtr<MO_Module> a = UT_MakeShared<MO_Module>();
    UT_SharedPtr<MO_Module> b = UT_MakeShared<MO_Module>();
    UT_SharedWeakPtr<MO_Module> wa(a.get()), wa2(a), wb(b.get());
    EXPECT_TRUE(wa.isSameReference(wa2));
    EXPECT_FALSE(wa.isSameReference(wb));

    a.reset();
    EXPECT_TRUE(wa.isSameReference(wa2));
    EXPECT_FALSE(wa.isSameReference(UT_SharedWeakPtr<MO_Module>()));
    EXPECT_TRUE(UT_SharedWeakPtr<MO_Module>().isSameReference(UT_SharedWeakPtr<MO_Module>()));
}

TEST(SharedWeakPtr, AnObjectWithoutOwnerOrANullGivesAnEmptyReference)
{
    MO_Module onStack;
    EXPECT_EQ(UT_SharedWeakPtr<MO_Module>(&onStack).get(), nullptr);
    EXPECT_EQ(UT_SharedWeakPtr<MO_Module>(static_cast<MO_Module *>(nullptr)).get(), nullptr);
}

TEST(SharedWeakPtr, ACopiedObjectIsANewIdentity)
{
    UT_SharedPtr<MO_Module> a = UT_MakeShared<MO_Module>();
    UT_SharedPtr<MO_Module> b = UT_MakeShared<MO_Module>(*a);
    EXPECT_FALSE(UT_SharedWeakPtr<MO_Module>(a.get()).isSameReference(UT_SharedWeakPtr<MO_Module>(b.get())));
}

} // namespace
