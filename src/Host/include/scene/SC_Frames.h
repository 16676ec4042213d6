// The frames a scene may hold: the hard limits every frame number of the host lies within.
//
// Frames are doubles while they are shown and evaluated and whole numbers where keys, exposures
// and ranges are kept (`int`). Both meet here: a frame enters the host (a script line, a panel's
// text, a scene file, the current frame of the session) only when it lies from kFirst to kLast,
// so that every conversion to `int` is defined and the sums and spans of frames (a range's
// length, the frame before or after one) stay far from the ends of `int`. A million frames is
// more than eleven hours at 24 frames a second.
//
// A scene may be shorter than this (its length is its own setting); these limits are the ones
// no frame can pass, whatever the scene.
#pragma once

#include <QString>

#include <cmath>

namespace SC_Frames {

constexpr int kFirst = -1000000;
constexpr int kLast = 1000000;

// True for a frame from kFirst to kLast; false for NaN and infinities.
inline bool contains(double frame)
{
    return frame >= kFirst && frame <= kLast;
}

// The whole frame of `frame`, towards zero, with frames beyond the limits brought to the nearest
// limit and NaN to 0. Careful: a plain cast of a double beyond the range of int is undefined.
inline int toInt(double frame)
{
    if (std::isnan(frame))
        return 0;
    if (frame <= kFirst)
        return kFirst;
    if (frame >= kLast)
        return kLast;
    return static_cast<int>(frame);
}

// "a frame from -1000000 to 1000000", for messages.
inline QString rangeText()
{
    return QStringLiteral("a frame from %1 to %2").arg(kFirst).arg(kLast);
}

} // namespace SC_Frames
