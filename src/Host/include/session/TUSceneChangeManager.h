// Scene change notification, as Qt signals.
//
// Whatever changes the scene reports it here; views, panels and tools listen to the signals. Node
// changes are gathered: emitNodeChanged adds a node to the pending set, and notify (or
// notifyInteractive, during a drag) sends the set in one nodesChanged signal and empties it.
// The other signals go out at once.
#pragma once

#include <QObject>

#include <set>

class MO_Node;
class TUScene;

// A set of changed nodes. Careful: the pointers are for membership tests only; a node in a set may
// be gone by the time the set is read.
using TUChangeSet = std::set<MO_Node const *>;
using TUNodeSet = TUChangeSet;

// Known to Qt's meta-types, so that the signals can be queued, spied on and read as QVariants.
Q_DECLARE_OPAQUE_POINTER(TUScene *)
Q_DECLARE_METATYPE(TUScene *)
Q_DECLARE_METATYPE(TUNodeSet)

class TUSceneChangeManager : public QObject {
    Q_OBJECT
public:
    explicit TUSceneChangeManager(QObject *parent = nullptr);
    ~TUSceneChangeManager() override;

    // The scene that currentSceneChanged names; not owned. A new scene drops the pending changes.
    void setCurrentScene(TUScene *scene);
    TUScene *currentScene() const { return scene_; }

    // Sends the pending node changes (if any) in one nodesChanged and empties the set.
    void notify();
    // The same, during an interactive drag: listeners may choose a lighter refresh.
    void notifyInteractive();
    // The whole scene changed: currentSceneChanged at once.
    void emitSceneChanged();
    // Adds a node to the pending set; null is ignored.
    void emitNodeChanged(MO_Node const *node);
    void emitCurrentFrameChanged();
    void emitSelectionChanged();

    TUNodeSet const &pendingNodes() const { return pending_; }
    bool isInteractive() const { return interactive_; }  // true while notifyInteractive sends

signals:
    void currentFrameChanged();
    void selectionChanged();
    void nodesChanged(const TUNodeSet &nodes);
    void currentSceneChanged(TUScene *scene);

private:
    void flush(bool interactive);

    TUScene *scene_ = nullptr;
    TUNodeSet pending_;
    bool interactive_ = false;
};
