// The IK tool's action responder: it receives the action that selects the tool, and the host's
// scene notifications. One instance per process, made on first use.
#pragma once

#include "host/HostAPI.h"

class IKToolResponder : public AC_ResponderTemplateObject<QObject> {
    Q_OBJECT
public:
    static IKToolResponder &instance();

    // Connects the session's change manager to the slots below; nothing without a session or a
    // change manager. Called at each polish: a repeated call does not connect twice.
    void makeConnections();

    AC_Responder *parentResponder() override { return nullptr; }

public slots:
    // Makes the IK tool the current tool.
    void onActionSelectNewIKTool();
    void onSelectionChanged();
    void onCurrentFrameChanged();
    void onNodesChanged(const TUNodeSet &nodes);
    void onCurrentSceneChanged();

private:
    IKToolResponder();
};
