#include "scene/TUScene.h"

#include "scene/MO_Module.h"

#include <algorithm>
#include <cmath>

TUGroup::TUGroup() : MO_Node(Keyword(), 0, 0) {}

TUGroup::~TUGroup()
{
    // Cut every link first, so that no node's port points into a node destroyed before it.
    for (UT_SharedPtr<MO_Node> const &node : nodes_)
        node->setParentGroup(nullptr);
}

TUGroup::NodeIterator TUGroup::subNodesBegin() const { return nodes_.begin(); }
TUGroup::NodeIterator TUGroup::subNodesEnd() const { return nodes_.end(); }
int TUGroup::subNodeCount() const { return static_cast<int>(nodes_.size()); }

MO_Node *TUGroup::addNode(UT_SharedPtr<MO_Node> node)
{
    if (!node || node->parentGroup() || node.get() == this)
        return nullptr;
    if (auto const *group = dynamic_cast<TUGroup const *>(node.get())) {
        for (TUGroup const *g = this; g; g = g->parentGroup())
            if (g == group)
                return nullptr;
    }
    node->setParentGroup(this);
    nodes_.push_back(std::move(node));
    return nodes_.back().get();
}

UT_SharedPtr<MO_Node> TUGroup::removeNode(MO_Node *node)
{
    auto it = std::find_if(nodes_.begin(), nodes_.end(),
                           [node](UT_SharedPtr<MO_Node> const &n) { return n.get() == node; });
    if (it == nodes_.end())
        return nullptr;
    UT_SharedPtr<MO_Node> taken = std::move(*it);
    nodes_.erase(it);
    taken->setParentGroup(nullptr);
    return taken;
}

MO_Node *TUGroup::findNode(QString const &instanceName) const
{
    for (UT_SharedPtr<MO_Node> const &node : nodes_) {
        if (node->instanceName() == instanceName)
            return node.get();
        if (auto const *group = dynamic_cast<TUGroup const *>(node.get()))
            if (MO_Node *found = group->findNode(instanceName))
                return found;
    }
    return nullptr;
}

void TUGroup::acceptModules(MO_ModuleVisitor &visitor) const
{
    for (UT_SharedPtr<MO_Node> const &node : nodes_) {
        if (MO_Module *module = node->toModule())
            module->accept(visitor);
        else if (auto const *group = dynamic_cast<TUGroup const *>(node.get()))
            group->acceptModules(visitor);
    }
}

TUScene::TUScene() : root_(UT_MakeShared<TUGroup>())
{
    root_->setInstanceName(QStringLiteral("Top"));
    root_->ownerScene_ = this;
}

TUScene::~TUScene() = default;

TUGroup *TUScene::getRootGroup() const { return root_.get(); }
SC_SceneMetrics const &TUScene::sceneMetrics() const { return metrics_; }
void TUScene::setSceneMetrics(SC_SceneMetrics const &metrics) { metrics_ = metrics; }
int TUScene::frameCount() const
{
    return frameCount_ ? *frameCount_ : std::max(kMinimumFrameCount, lastKeyOrExposure());
}

double TUScene::frameRate() const
{
    return frameRate_ ? *frameRate_ : kDefaultFrameRate;
}

bool TUScene::setFrameCount(std::optional<int> count)
{
    if (count && (*count < 1 || *count > kMaximumFrameCount))
        return false;
    frameCount_ = count;
    return true;
}

bool TUScene::setFrameRate(std::optional<double> rate)
{
    if (rate && !(std::isfinite(*rate) && *rate > 0.0 && *rate <= kMaximumFrameRate))
        return false;
    frameRate_ = rate;
    return true;
}

namespace {

int lastKeyOrExposureIn(TUGroup const &group)
{
    int last = 0;
    for (auto it = group.subNodesBegin(); it != group.subNodesEnd(); ++it) {
        MO_Node const &node = **it;
        if (auto const *sub = dynamic_cast<TUGroup const *>(&node))
            last = std::max(last, lastKeyOrExposureIn(*sub));
        for (auto a = node.attrsBegin(); a != node.attrsEnd(); ++a) {
            std::vector<int> const keys = (*a)->keyframes();
            if (!keys.empty())
                last = std::max(last, keys.back());
        }
        if (auto const *element = dynamic_cast<MO_ElementModule const *>(&node))
            if (!element->timing().empty())
                last = std::max(last, element->timing().rbegin()->first);
    }
    return last;
}

} // namespace

int TUScene::lastKeyOrExposure() const
{
    return lastKeyOrExposureIn(*root_);
}

SC_SceneCommon *TUScene::sceneCommon() const { return sceneCommon_; }
void TUScene::setSceneCommon(SC_SceneCommon *common) { sceneCommon_ = common; }
SC_ProjectCommon *TUScene::projectCommon() const { return projectCommon_; }
void TUScene::setProjectCommon(SC_ProjectCommon *common) { projectCommon_ = common; }
CO_CommandManager *TUScene::commandManager() const { return commandManager_; }
void TUScene::setCommandManager(CO_CommandManager *manager) { commandManager_ = manager; }

void TUScene::setNodeChangedHandler(NodeChangedHandler handler) { nodeChanged_ = std::move(handler); }

void TUScene::reportNodeChanged(MO_Node const *node) const
{
    if (nodeChanged_)
        nodeChanged_(node);
}
