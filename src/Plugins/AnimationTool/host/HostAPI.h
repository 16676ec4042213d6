// The plug-in's one header over the host API. Every plug-in source that needs the host includes
// this header (or HostGeometry.h, its scene-free part) and no other header of the host, so that
// what the plug-in asks of the host can be read in one place.
#pragma once

#include "host/HostGeometry.h"

#include "scene/MO_Module.h"
