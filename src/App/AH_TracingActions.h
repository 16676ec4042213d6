// The actions of tracing in animhost: onion skin, the kind of the view and new drawings, reached
// through the action manager as menus, toolbars and plug-ins reach every action.
//
//   "onionSkinResponder"  onActionOnionSkinToggle()   onion skin of the view on and off (checked
//                                                       while on)
//   "tracingResponder"    onActionCameraView()         the view shows the camera (checked while it does)
//                         onActionDrawingView()        the view shows the selected element's
//                                                       drawing (checked while it does)
//                         onActionNewDrawing()         AH_Workspace::newDrawing; enabled while a
//                                                       drawing element is selected
//
// The entries that show them are the host's own menu and toolbar files (":/animhost/..."), merged
// by AH_Host before any plug-in merges its own.
#pragma once

#include <memory>

class AC_Manager;
class AH_Workspace;

class AH_TracingActions {
public:
    // Registers both responders with `actions` (null: none is reachable). The workspace is not
    // owned and must outlive this object.
    AH_TracingActions(AH_Workspace &workspace, AC_Manager *actions);
    ~AH_TracingActions();
    AH_TracingActions(AH_TracingActions const &) = delete;
    AH_TracingActions &operator=(AH_TracingActions const &) = delete;

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};
