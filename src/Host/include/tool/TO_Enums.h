// The host's cursors, as tools name them. Values are fixed: tools return them as numbers, and
// custom cursors registered by a view get values from CustomFirst up.
#pragma once

namespace TO_Enums {

enum Cursor {
    NoCursor = 0,         // also the answer of a failed cursor registration
    OpenHand = 1,         // something under the pointer can be grabbed
    ClosedHand = 2,
    Arrow = 3,            // nothing under the pointer
    Cross = 4,
    Wait = 5,
    IBeam = 6,
    SizeVertical = 7,
    SizeDiagonal = 8,
    SizeHorizontal = 9,   // a slider or an edge that moves sideways
    SizeAll = 10,
    Rotate = 11,
    PointingHand = 12,    // a button
    Forbidden = 13,
    Scale = 14,
    Crosshair = 38,       // the fallback of a tool whose own cursor could not be registered
    CustomFirst = 1000,   // first value given to a cursor registered by a tool
};

} // namespace TO_Enums
