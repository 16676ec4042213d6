// A colour of the host's painting: four bytes, red, green, blue and alpha, in that order in memory.
// The 32-bit value of a colour reads those bytes as a little-endian word: r is the low byte.
#pragma once

#include <cstdint>

struct VS_RGBA {
    std::uint8_t r = 0;
    std::uint8_t g = 0;
    std::uint8_t b = 0;
    std::uint8_t a = 255;

    constexpr VS_RGBA() = default;
    constexpr VS_RGBA(std::uint8_t r_, std::uint8_t g_, std::uint8_t b_, std::uint8_t a_ = 255) : r(r_), g(g_), b(b_), a(a_) {}

    // The colour of a 32-bit value: 0xFFFFFF00 is r 0, g 255, b 255, a 255.
    static constexpr VS_RGBA fromValue(std::uint32_t value)
    {
        return VS_RGBA(static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
                       static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24));
    }
    constexpr std::uint32_t value() const
    {
        return std::uint32_t(r) | std::uint32_t(g) << 8 | std::uint32_t(b) << 16 | std::uint32_t(a) << 24;
    }

    constexpr bool operator==(VS_RGBA const &o) const { return r == o.r && g == o.g && b == o.b && a == o.a; }
    constexpr bool operator!=(VS_RGBA const &o) const { return !(*this == o); }
};
static_assert(sizeof(VS_RGBA) == 4, "VS_RGBA is four bytes");
