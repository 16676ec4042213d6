// Example scenes opened as the plug-in's session, for the IK tool's tests.
#pragma once

#include "host/HostAPI.h"
#include "iktool/IKToolSettings.h"
#include "scene/TUSceneFile.h"
#include "view/VW_View.h"

#include <QFile>

#include <gtest/gtest.h>

#include <memory>

// Reads examples/scenes/<name> into `session` and makes it the session and selection the plug-in
// sees. Fails the test (fatally, in the caller's function) when the file cannot be read.
inline void openExampleScene(char const *name, std::unique_ptr<SC_Session> &session)
{
    QFile file(QStringLiteral(ANIM_SOURCE_DIR "/examples/scenes/") + QLatin1String(name));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    QString error;
    std::unique_ptr<TUScene> scene = TUSceneFile::read(file.readAll(), QLatin1String(name), &error);
    ASSERT_TRUE(scene) << error.toStdString();
    session = std::make_unique<SC_Session>(std::move(scene));
    PLUG_Services::setSessionContext(session.get());
    PLUG_Services::setSelection(session->getSelection());
}

// Forgets the skeleton root, the selection and the session that openExampleScene set.
inline void closeExampleScene()
{
    IKToolSettings::instance().setSkeletonRoot(nullptr);
    PLUG_Services::setSelection(nullptr);
    PLUG_Services::setSessionContext(nullptr);
}

// The module of the scene's root group named `name`, or null.
inline MO_Module *moduleNamed(SC_Session const &session, char const *name)
{
    return dynamic_cast<MO_Module *>(session.scene()->getRootGroup()->findNode(QLatin1String(name)));
}

inline // Where the view paints a scene point of the tool's skeletons (drawn with an identity model matrix).
Math::Point2d pixelOf(VW_View &view, Math::Point3d const &point)
{
    Math::CameraTransformChain chain = view.canvasBinder()->cameraTransformChain();
    chain.setModelMatrix(Math::Matrix4x4());
    Math::Point2d out;
    chain.project(Math::CameraTransformChain::ModelFrame, point, out);
    return out;
}
