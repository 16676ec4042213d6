#include "iktool/IKToolResponder.h"

#include "iktool/IKTool.h"

IKToolResponder &IKToolResponder::instance()
{
    static IKToolResponder responder;
    return responder;
}

IKToolResponder::IKToolResponder() : AC_ResponderTemplateObject<QObject>(QStringLiteral("IKToolResponder"))
{
    initActionManager(PLUG_Services::getActionManager());
}

void IKToolResponder::makeConnections()
{
    SC_SessionContext *session = PLUG_Services::getSessionContext();
    TUSceneChangeManager *changes = session ? session->changeManager() : nullptr;
    if (!changes)
        return;
    // The signal texts are the host's, blank included.
    QObject::connect(changes, "2currentFrameChanged()", this, "1onCurrentFrameChanged()", Qt::UniqueConnection);
    QObject::connect(changes, "2selectionChanged()", this, "1onSelectionChanged()", Qt::UniqueConnection);
    QObject::connect(changes, "2nodesChanged(const TUNodeSet &)", this, "1onNodesChanged(const TUNodeSet &)",
                     Qt::UniqueConnection);
    QObject::connect(changes, "2currentSceneChanged( TUScene *)", this, "1onCurrentSceneChanged()", Qt::UniqueConnection);
}

void IKToolResponder::onActionSelectNewIKTool()
{
    CX_ToolRecord record = CX_Context::GetInstance().data();
    record.toolId = IKTool::Id;
    CX_Context::GetInstance().SetData(record, nullptr);
}

// The tool's settings follow the selection and the root's node once they exist; until then the
// notifications have nothing to update.
void IKToolResponder::onSelectionChanged() {}
void IKToolResponder::onNodesChanged(const TUNodeSet &) {}

// Empty by design: the connections exist without an effect.
void IKToolResponder::onCurrentFrameChanged() {}
void IKToolResponder::onCurrentSceneChanged() {}
