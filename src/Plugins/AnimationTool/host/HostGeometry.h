// The part of the host API that the skeleton records and the solver need: the geometry values and
// the shared references to scene objects. It pulls in no Qt and no scene, so the solver builds and
// tests on its own. HostAPI.h, the plug-in's chief header over the host, includes this one.
#pragma once

#include "base/Math/Matrix.h"
#include "base/Math/Quat.h"
#include "base/Math/Shapes.h"
#include "base/Math/Vector.h"
#include "base/UT_SharedPtr.h"

class MO_Module;
