#include "view/VW_OnionSkin.h"

#include "preference/PR_Preference.h"
#include "scene/MO_Module.h"
#include "scene/SC_Frames.h"

#include <algorithm>
#include <cmath>

VW_OnionSkinSettings VW_OnionSkinSettings::fromPreferences()
{
    VW_OnionSkinSettings s;
    s.framesBefore = std::clamp(tuPref->getIntValue(framesBeforeKey(), s.framesBefore), 0, kMaxFrames);
    s.framesAfter = std::clamp(tuPref->getIntValue(framesAfterKey(), s.framesAfter), 0, kMaxFrames);
    // The store refuses NaN and infinities, so clamping gives a value in range.
    s.opacity = std::clamp(tuPref->getDoubleValue(opacityKey(), s.opacity), 0.0, 1.0);
    s.falloff = std::clamp(tuPref->getDoubleValue(falloffKey(), s.falloff), 0.0, 1.0);
    return s;
}

double VW_OnionSkinSettings::alpha(int distance) const
{
    return opacity * std::pow(falloff, std::max(0, distance - 1));
}

VW_DrawingLook VW_OnionSkinSettings::look(int distance) const
{
    return VW_DrawingLook{distance < 0 ? kBeforeTint : kAfterTint, kTintAmount, alpha(std::abs(distance))};
}

std::vector<VW_OnionDrawing> VW_onionDrawings(MO_ElementModule const &element, double frame, int before, int after)
{
    std::map<int, QString> const &timing = element.timing();
    auto const &drawings = element.drawings();
    auto drawingOf = [&drawings](QString const &name) {
        auto const found = drawings.find(name);
        return found == drawings.end() ? UT_SharedPtr<OC_Drawing const>() : found->second;
    };
    int const whole = SC_Frames::toInt(frame);  // as MO_ElementModule::oglDrawing takes it
    // The entry in force at the frame (its exposure is the current one, drawing or not) and the
    // first entry after it.
    auto const next = timing.upper_bound(whole);
    auto current = next;
    bool const hasCurrent = next != timing.begin();
    if (hasCurrent)
        --current;

    std::vector<VW_OnionDrawing> earlier;
    if (hasCurrent)
        for (auto it = std::make_reverse_iterator(current); it != timing.rend() && int(earlier.size()) < before; ++it)
            if (auto drawing = drawingOf(it->second))
                earlier.push_back({drawing, it->first, -int(earlier.size()) - 1});
    std::vector<VW_OnionDrawing> later;
    for (auto it = next; it != timing.end() && int(later.size()) < after; ++it)
        if (auto drawing = drawingOf(it->second))
            later.push_back({drawing, it->first, int(later.size()) + 1});

    // Farthest first, the two sides interleaved by distance.
    std::vector<VW_OnionDrawing> all;
    for (std::size_t d = std::max(earlier.size(), later.size()); d > 0; --d) {
        if (d <= earlier.size())
            all.push_back(earlier[d - 1]);
        if (d <= later.size())
            all.push_back(later[d - 1]);
    }
    return all;
}
