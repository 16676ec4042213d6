// The scene: a tree of groups holding the nodes of the graph, the scene's units, and its length
// and frame rate.
//
// A group is a node without ports that owns its sub-nodes (nested groups included) through
// UT_SharedPtr, in insertion order. Links between nodes may cross groups.
#pragma once

#include "scene/MO_Node.h"
#include "scene/SC_SceneMetrics.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class MO_ModuleVisitor;

class TUGroup : public MO_Node {
public:
    using NodeIterator = std::vector<UT_SharedPtr<MO_Node>>::const_iterator;
    static QString Keyword() { return QStringLiteral("GROUP"); }

    TUGroup();
    ~TUGroup() override;

    NodeIterator subNodesBegin() const;
    NodeIterator subNodesEnd() const;
    int subNodeCount() const;

    // Adds `node` at the end. Refuses (null) a null node, one already in a group, and a group
    // that would end up inside itself.
    MO_Node *addNode(UT_SharedPtr<MO_Node> node);
    // Takes the node out of this group, cutting its links. Null if it is not a sub-node.
    UT_SharedPtr<MO_Node> removeNode(MO_Node *node);
    // The first node of this group or its sub-groups (depth first) with this instance name.
    MO_Node *findNode(QString const &instanceName) const;
    // Calls the visitor for every module of this group and its sub-groups, depth first in
    // insertion order.
    void acceptModules(MO_ModuleVisitor &visitor) const;

private:
    friend class TUScene;
    friend class MO_Node;
    TUScene *ownerScene_ = nullptr;  // set on the root group only
    std::vector<UT_SharedPtr<MO_Node>> nodes_;
};

class TUScene {
public:
    TUScene();
    ~TUScene();
    TUScene(TUScene const &) = delete;
    TUScene &operator=(TUScene const &) = delete;

    TUGroup *getRootGroup() const;
    TUGroup::NodeIterator subNodesBegin() const { return getRootGroup()->subNodesBegin(); }
    TUGroup::NodeIterator subNodesEnd() const { return getRootGroup()->subNodesEnd(); }

    SC_SceneMetrics const &sceneMetrics() const;
    void setSceneMetrics(SC_SceneMetrics const &metrics);

    // The scene's frames run from 1 to frameCount(), played at frameRate() frames per second. Each
    // is either set (and saved with the scene) or not: then the length is the last frame that
    // holds a key or an exposure, at least kMinimumFrameCount, and the rate kDefaultFrameRate.
    static constexpr int kMinimumFrameCount = 24;
    static constexpr int kMaximumFrameCount = 100000;
    static constexpr double kDefaultFrameRate = 24.0;
    static constexpr double kMaximumFrameRate = 1000.0;
    int frameCount() const;
    double frameRate() const;
    std::optional<int> storedFrameCount() const { return frameCount_; }
    std::optional<double> storedFrameRate() const { return frameRate_; }
    // Set or clear (nullopt). Refused (false, nothing changed): a count outside 1 to
    // kMaximumFrameCount, a rate that is not finite or outside (0, kMaximumFrameRate].
    bool setFrameCount(std::optional<int> count);
    bool setFrameRate(std::optional<double> rate);
    // The last frame that holds a key of an attribute or an exposure of an element; 0 if none.
    int lastKeyOrExposure() const;

    // Services installed by the application; not owned, null until installed.
    SC_SceneCommon *sceneCommon() const;
    void setSceneCommon(SC_SceneCommon *common);
    SC_ProjectCommon *projectCommon() const;
    void setProjectCommon(SC_ProjectCommon *common);
    // The manager that records attribute changes made outside commands (keyframes added at
    // once); not owned, null until installed, and such changes are then not undoable.
    CO_CommandManager *commandManager() const;
    void setCommandManager(CO_CommandManager *manager);

    // Who hears that a node of the scene changed (MO_Node::setDirty): the application's change
    // notification. An empty function, the default, hears nothing.
    using NodeChangedHandler = std::function<void(MO_Node const *)>;
    void setNodeChangedHandler(NodeChangedHandler handler);
    void reportNodeChanged(MO_Node const *node) const;

private:
    UT_SharedPtr<TUGroup> root_;
    SC_SceneMetrics metrics_;
    std::optional<int> frameCount_;    // within 1 to kMaximumFrameCount when set
    std::optional<double> frameRate_;  // within (0, kMaximumFrameRate] when set
    SC_SceneCommon *sceneCommon_ = nullptr;
    SC_ProjectCommon *projectCommon_ = nullptr;
    CO_CommandManager *commandManager_ = nullptr;
    NodeChangedHandler nodeChanged_;
};
