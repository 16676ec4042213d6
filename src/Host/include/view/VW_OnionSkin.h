// Onion skin: the drawings of an element's neighbouring exposures, shown faded and tinted under
// its current drawing so that an animator can draw between them.
//
// An exposure is an entry of the element's timing that shows a drawing (entries that show nothing
// are passed over). The onion drawings of an element at a frame are the drawings of the `before`
// exposures that start before the exposure in force at the frame, and of the `after` ones that
// start after the frame, nearest first. Each is drawn as it stands at the frame its exposure
// starts (that frame is also what a pick of it reports), tinted towards red before and green
// after, with an alpha that falls with its distance (1 for the nearest on each side):
//
//   alpha(distance) = opacity * falloff^(distance - 1)
//
// The counts and the fading are preferences of tuPref, read at every render; out-of-range values
// are clamped (counts to 0..kMaxFrames, opacity and falloff to 0..1).
#pragma once

#include "base/UT_SharedPtr.h"
#include "graphic/VS_RGBA.h"

#include <QString>

#include <vector>

class MO_ElementModule;
class OC_Drawing;

// How a drawing is shown: its colours mixed towards `tint` by `tintAmount` (0 keeps them), and
// their alpha scaled by `alpha`. The default shows the drawing as it is.
struct VW_DrawingLook {
    VS_RGBA tint = VS_RGBA(0, 0, 0);
    double tintAmount = 0.0;  // 0 .. 1
    double alpha = 1.0;       // 0 .. 1
};

struct VW_OnionSkinSettings {
    static constexpr int kMaxFrames = 10;
    static QString framesBeforeKey() { return QStringLiteral("onionSkinFramesBefore"); }
    static QString framesAfterKey() { return QStringLiteral("onionSkinFramesAfter"); }
    static QString opacityKey() { return QStringLiteral("onionSkinOpacity"); }
    static QString falloffKey() { return QStringLiteral("onionSkinFalloff"); }
    static constexpr VS_RGBA kBeforeTint = VS_RGBA(230, 30, 30);  // earlier frames
    static constexpr VS_RGBA kAfterTint = VS_RGBA(20, 170, 40);   // later frames
    static constexpr double kTintAmount = 0.6;                    // 0 keeps the colours, 1 paints the tint

    int framesBefore = 2;  // 0 .. kMaxFrames
    int framesAfter = 2;   // 0 .. kMaxFrames
    double opacity = 0.5;  // alpha of the nearest onion drawing, 0 .. 1
    double falloff = 0.6;  // factor of the alpha per further exposure, 0 .. 1

    // The settings stored in tuPref, the defaults above for keys not stored, clamped.
    static VW_OnionSkinSettings fromPreferences();
    double alpha(int distance) const;  // distance >= 1
    // The look of an onion drawing at `distance` (negative before, positive after).
    VW_DrawingLook look(int distance) const;
};

// One onion drawing of an element.
struct VW_OnionDrawing {
    UT_SharedPtr<OC_Drawing const> drawing;
    int frame = 0;     // the first frame of its exposure
    int distance = 0;  // -1, -2, ... before the current exposure; 1, 2, ... after
};

// The onion drawings of `element` seen from `frame`, farthest first (the order they are painted
// in, so that nearer ones lie over farther ones).
std::vector<VW_OnionDrawing> VW_onionDrawings(MO_ElementModule const &element, double frame, int before, int after);
