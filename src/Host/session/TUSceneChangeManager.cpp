#include "session/TUSceneChangeManager.h"

TUSceneChangeManager::TUSceneChangeManager(QObject *parent) : QObject(parent)
{
    qRegisterMetaType<TUScene *>("TUScene *");
    qRegisterMetaType<TUNodeSet>("TUNodeSet");
}

TUSceneChangeManager::~TUSceneChangeManager() = default;

void TUSceneChangeManager::setCurrentScene(TUScene *scene)
{
    if (scene != scene_)
        pending_.clear();  // the nodes of another scene, which may be gone
    scene_ = scene;
}

void TUSceneChangeManager::flush(bool interactive)
{
    if (pending_.empty())
        return;
    // Taken out first: a listener may report new changes while it handles these.
    TUNodeSet const nodes = std::move(pending_);
    pending_.clear();
    interactive_ = interactive;
    emit nodesChanged(nodes);
    interactive_ = false;
}

void TUSceneChangeManager::notify()
{
    flush(false);
}

void TUSceneChangeManager::notifyInteractive()
{
    flush(true);
}

void TUSceneChangeManager::emitSceneChanged()
{
    emit currentSceneChanged(scene_);
}

void TUSceneChangeManager::emitNodeChanged(MO_Node const *node)
{
    if (node)
        pending_.insert(node);
}

void TUSceneChangeManager::emitCurrentFrameChanged()
{
    emit currentFrameChanged();
}

void TUSceneChangeManager::emitSelectionChanged()
{
    emit selectionChanged();
}
