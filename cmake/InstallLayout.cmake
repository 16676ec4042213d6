# Where everything goes when installed, and the build tree laid out the same way where it matters.
#
# Folders are relative to the prefix (GNUInstallDirs), so that an installed tree can be moved:
# binaries find what they need through run paths relative to themselves ($ORIGIN), and animhost
# finds its plug-in folder relative to its own executable.
#
#   bin/animhost
#   <libdir>/animhost/libanimhost_<family>.so     the host libraries, private to animhost and its plug-ins
#   <libdir>/animhost/plugins/                    the plug-ins, each with its resources/ folder
#   <libdir>/cmake/animhost/                      the CMake package of the host SDK
#   include/animhost/<family>/                    the host's public headers
#   share/animhost/examples/                      example scenes, scripts and the example plug-in
#
# Careful: the build tree puts the plug-ins in the same place relative to bin/ as the install, since
# the executable compiles in that one relative path (ANIM_PLUGINS_FROM_BINDIR).
include(GNUInstallDirs)

set(ANIM_INSTALL_HOSTLIBDIR ${CMAKE_INSTALL_LIBDIR}/animhost)
set(ANIM_INSTALL_PLUGINSDIR ${CMAKE_INSTALL_LIBDIR}/animhost/plugins)
set(ANIM_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/animhost)
set(ANIM_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/animhost)
set(ANIM_INSTALL_EXAMPLESDIR ${CMAKE_INSTALL_DATADIR}/animhost/examples)

# The plug-in folder as seen from the executable's folder, in the build tree and once installed.
file(RELATIVE_PATH ANIM_PLUGINS_FROM_BINDIR /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${ANIM_INSTALL_PLUGINSDIR})
set(ANIM_PLUGINS_DIR ${CMAKE_BINARY_DIR}/${ANIM_INSTALL_PLUGINSDIR})

# Run paths written at install, each relative to the binary that holds it.
file(RELATIVE_PATH _anim_hostlibs_from_bindir /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${ANIM_INSTALL_HOSTLIBDIR})
file(RELATIVE_PATH _anim_hostlibs_from_plugins /prefix/${ANIM_INSTALL_PLUGINSDIR} /prefix/${ANIM_INSTALL_HOSTLIBDIR})
set(ANIM_RPATH_EXECUTABLE "$ORIGIN/${_anim_hostlibs_from_bindir}")
set(ANIM_RPATH_HOSTLIB "$ORIGIN")
set(ANIM_RPATH_PLUGIN "$ORIGIN/${_anim_hostlibs_from_plugins}")

# Two install components, which the Debian package makes two packages of: what runs (runtime, also
# every rule that names no component) and what builds a plug-in (development).
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME runtime)
