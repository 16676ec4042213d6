// The plug-in's one header over the host API. Every plug-in source that needs the host includes
// this header (or HostGeometry.h, its scene-free part) and no other header of the host, so that
// what the plug-in asks of the host can be read in one place. Add to the group that fits; keep
// each group sorted.
#pragma once

#include "host/HostGeometry.h"

// Base, undo.
#include "base/TUTeller.h"
#include "base/UT_DynKey.h"
#include "command/CO_Command.h"
#include "command/CO_CommandManager.h"
#include "command/SC_InteractiveDragManager.h"

// Scene graph and attributes.
#include "graphic/GR_Bezier2d.h"
#include "scene/AT_Attr.h"
#include "scene/AT_AttrCmds.h"
#include "scene/AT_AttrFactory.h"
#include "scene/AT_AttrMeta.h"
#include "scene/AT_AttrSurrogate.h"
#include "scene/AT_ShiftAndTraceUtil.h"
#include "scene/AT_ValueAttr.h"
#include "scene/CC_Transformation.h"
#include "scene/DeformerModules.h"
#include "scene/MO_Context.h"
#include "scene/MO_Module.h"
#include "scene/MO_ModuleVisitor.h"
#include "scene/MO_Node.h"
#include "scene/PIO_XML.h"
#include "scene/SC_Frames.h"
#include "scene/SC_SceneMetrics.h"
#include "scene/TUScene.h"

// Session: selection, change notification, services of a scene.
#include "session/SC_Session.h"
#include "session/SL_Selection.h"
#include "session/TUSceneChangeManager.h"

// Tools, picking, panels.
#include "graphic/CC_CameraChainTransformCanvasBinder.h"
#include "panel/TP_ToolProperties.h"
#include "tool/CX_Context.h"
#include "tool/SLB_PickEngine.h"
#include "tool/SLB_Selectable.h"
#include "tool/TO_AbstractTool.h"
#include "tool/TO_AbstractToolContext.h"
#include "tool/TO_Enums.h"
#include "tool/TO_ToolFactory.h"

// Application services.
#include "action/AC_ActionInfo.h"
#include "action/AC_Manager.h"
#include "action/AC_Responder.h"
#include "action/AC_ShortcutManager.h"
#include "plugin/PLUG_InteractiveViewManager.h"
#include "plugin/PLUG_MenuService.h"
#include "plugin/PLUG_PreferenceUI.h"
#include "plugin/PLUG_Services.h"
#include "plugin/PLUG_ToolbarService.h"
#include "plugin/WHO_Identity.h"
#include "preference/PR_CachedPreferences.h"
#include "preference/PR_Preference.h"
#include "widgets/BUIAPP_Application.h"
#include "widgets/GUT_WidgetFactory.h"
#include "widgets/UI_DoubleEditor.h"
#include "widgets/UT_Screen.h"
#include "widgets/WID_IconManager.h"
