// Copies of the preferences that code on hot paths (event handlers, drawing) reads without
// querying the store. They follow `tuPref`: refresh() runs after every change of the global
// store, and once when its file is loaded.
#pragma once

#include <QString>

struct PR_CachedPreferences {
    // Keys in the store.
    static QString const HasNewShiftandTraceInDrawingViewKey;  // "HAS_NEW_SHIFT_AND_TRACE_IN_DRAWING_VIEW"
    static QString const SPTranslateScaleFactorKey;            // "SP_TRANSLATE_SCALE_FACTOR"

    // Whether the Shift and Trace tool works in the drawing view as well. Default true.
    static bool _HasNewShiftandTraceInDrawingView;
    // Factor of one arrow-key step of a Shift and Trace move. Default 1.0; always finite and > 0:
    // a stored value that is not keeps the default.
    static double _SPTranslateScaleFactor;

    // Rereads both values from `tuPref`.
    static void refresh();
};
