#include "preference/PR_CachedPreferences.h"

#include "preference/PR_Preference.h"

#include <cmath>

QString const PR_CachedPreferences::HasNewShiftandTraceInDrawingViewKey =
    QStringLiteral("HAS_NEW_SHIFT_AND_TRACE_IN_DRAWING_VIEW");
QString const PR_CachedPreferences::SPTranslateScaleFactorKey = QStringLiteral("SP_TRANSLATE_SCALE_FACTOR");

bool PR_CachedPreferences::_HasNewShiftandTraceInDrawingView = true;
double PR_CachedPreferences::_SPTranslateScaleFactor = 1.0;

void PR_CachedPreferences::refresh()
{
    constexpr bool drawingViewDefault = true;
    constexpr double scaleDefault = 1.0;
    _HasNewShiftandTraceInDrawingView = tuPref->getBoolValue(HasNewShiftandTraceInDrawingViewKey, drawingViewDefault);
    double const scale = tuPref->getDoubleValue(SPTranslateScaleFactorKey, scaleDefault);
    _SPTranslateScaleFactor = std::isfinite(scale) && scale > 0.0 ? scale : scaleDefault;
}
