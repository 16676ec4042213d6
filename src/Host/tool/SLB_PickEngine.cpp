#include "tool/SLB_PickEngine.h"

namespace {
std::uint32_t nextId = 1;  // the next fresh id; main thread only, like all picking
}

std::uint32_t SLB_PickEngine::generateIdForPickingObject(int count)
{
    std::uint32_t const n = count < 1 ? 1u : static_cast<std::uint32_t>(count);
    if (n > kLastId)
        return kNoId;
    if (nextId + n - 1 > kLastId)  // the block would not fit: start again from the first id
        nextId = 1;
    std::uint32_t const first = nextId;
    nextId += n;
    return first;
}

VS_RGBA SLB_PickEngine::idToColor(std::uint32_t id)
{
    return VS_RGBA(static_cast<std::uint8_t>(id & 0xFF), static_cast<std::uint8_t>((id >> 8) & 0xFF),
                   static_cast<std::uint8_t>((id >> 16) & 0xFF), 255);
}

std::uint32_t SLB_PickEngine::colorToId(VS_RGBA const &color)
{
    if (color.a != 255)
        return kNoId;
    return static_cast<std::uint32_t>(color.r) | (static_cast<std::uint32_t>(color.g) << 8) |
           (static_cast<std::uint32_t>(color.b) << 16);
}
