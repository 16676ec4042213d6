// The responders of AH_TracingActions (private to it; a header of its own for moc).
#pragma once

#include "action/AC_Responder.h"

class AH_Workspace;

class AH_OnionSkinResponder : public AC_ResponderTemplateObject<QObject> {
    Q_OBJECT
public:
    explicit AH_OnionSkinResponder(AH_Workspace &workspace);

public slots:
    void onActionOnionSkinToggle();
    void onActionOnionSkinToggleValidate(AC_ActionInfo *info);

private:
    AH_Workspace &workspace_;
};

class AH_TracingResponder : public AC_ResponderTemplateObject<QObject> {
    Q_OBJECT
public:
    explicit AH_TracingResponder(AH_Workspace &workspace);

public slots:
    void onActionCameraView();
    void onActionCameraViewValidate(AC_ActionInfo *info);
    void onActionDrawingView();
    void onActionDrawingViewValidate(AC_ActionInfo *info);
    void onActionNewDrawing();
    void onActionNewDrawingValidate(AC_ActionInfo *info);

private:
    AH_Workspace &workspace_;
};
