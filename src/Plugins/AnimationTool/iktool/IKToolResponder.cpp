#include "iktool/IKToolResponder.h"

#include "iktool/IKTool.h"
#include "iktool/IKToolSettings.h"

#include "bridge/SkeletonExtraction.h"

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

void IKToolResponder::onSelectionChanged()
{
    IKToolSettings::instance().setSkeletonRoot(IKToolUtil::skeletonFromSelection());
}

// A change of the root's node repaints the tool and refreshes the panel; other joints' nodes do not.
void IKToolResponder::onNodesChanged(const TUNodeSet &nodes)
{
    IKToolSettings &settings = IKToolSettings::instance();
    MO_Module *root = settings.skeletonRoot();
    if (root && nodes.find(root) != nodes.end())
        emit settings.settingsChanged();
}

// Empty by design: the connections exist without an effect.
void IKToolResponder::onCurrentFrameChanged() {}
void IKToolResponder::onCurrentSceneChanged() {}
