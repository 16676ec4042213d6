// The plug-in's one header over the host API. Every plug-in source that needs the host includes
// this header (or HostGeometry.h, its scene-free part) and no other header of the host, so that
// what the plug-in asks of the host can be read in one place.
#pragma once

#include "host/HostGeometry.h"

#include "base/TUTeller.h"
#include "base/UT_DynKey.h"
#include "command/CO_Command.h"
#include "command/CO_CommandManager.h"
#include "graphic/GR_Bezier2d.h"
#include "scene/AT_Attr.h"
#include "scene/AT_AttrCmds.h"
#include "scene/AT_AttrFactory.h"
#include "scene/AT_AttrMeta.h"
#include "scene/AT_ValueAttr.h"
#include "scene/CC_Transformation.h"
#include "scene/DeformerModules.h"
#include "scene/MO_Context.h"
#include "scene/MO_Module.h"
#include "scene/MO_Node.h"
#include "scene/PIO_XML.h"
#include "scene/SC_SceneMetrics.h"
#include "session/SC_Session.h"
#include "session/TUSceneChangeManager.h"
