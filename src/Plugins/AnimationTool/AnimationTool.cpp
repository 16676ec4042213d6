// The AnimationTool plug-in's entry points.
//
// The tools register themselves while the library loads (IKTool.cpp, ShiftAndTraceTool.cpp); the
// host has loaded its preferences before it opens the library. The order of those registrations
// does not matter: the IK tool asks for an identifier of its own, the Shift and Trace tool for none.
//
// PLUG_Polish installs the IK tool's resources when the preference is on, and the Shift and Trace
// tool's in the applications that show drawings; PLUG_Unpolish undoes what must be undone, once.

#include "iktool/IKTool.h"
#include "iktool/IKToolPolish.h"
#include "shifttrace/ShiftAndTraceTool.h"

#define ANIMATIONTOOL_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

bool polished = false;                              // PLUG_Polish ran and PLUG_Unpolish has not

bool showsDrawings()
{
    WHO_ApplicationIdentity const identity = WHO_Identity::application();
    return identity == WHO_AnimationApplication || identity == WHO_DrawingApplication;
}

bool ikToolEnabled()
{
    return tuPref->getBoolValue(QStringLiteral("QV_HAS_NEW_IK_TOOL"), false);
}

} // namespace

ANIMATIONTOOL_EXPORT void PLUG_Init() {}

ANIMATIONTOOL_EXPORT void PLUG_Polish()
{
    if (ikToolEnabled())
        IKToolPolish::polish();
    if (showsDrawings())
        ShiftAndTraceTool::onPolish();
    polished = true;
}

ANIMATIONTOOL_EXPORT void PLUG_Unpolish()
{
    if (!polished)
        return;
    polished = false;
    IKToolPolish::unpolish();  // whatever the preference says
    if (showsDrawings())
        ShiftAndTraceTool::onUnpolish();
}
