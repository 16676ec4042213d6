// Picking ids and the colours that stand for them.
//
// A pick pass draws every pickable thing, without anti-aliasing, in the colour of its id; reading
// the colour back under the pointer gives the id. Id 0 is never given: it is the colour of nothing
// (black, and any colour that is not fully opaque). Ids run from 1 to 2^24 - 1 and then start
// again from 1, so an id block should be reserved anew for each drawing that needs it.
#pragma once

#include "graphic/VS_RGBA.h"

#include <cstdint>

class SLB_PickEngine {
public:
    static constexpr std::uint32_t kNoId = 0;
    static constexpr std::uint32_t kLastId = 0xFFFFFF;

    // The first of `count` consecutive fresh ids (count below 1 counts as 1).
    static std::uint32_t generateIdForPickingObject(int count);
    // r holds the low byte of the id, g the middle, b the high; alpha is opaque.
    static VS_RGBA idToColor(std::uint32_t id);
    // The id a colour stands for, or kNoId for a colour that is not fully opaque.
    static std::uint32_t colorToId(VS_RGBA const &color);
};
