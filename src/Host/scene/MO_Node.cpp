#include "scene/MO_Node.h"

#include "scene/AT_Attr.h"
#include "scene/TUScene.h"

#include "base/UT_DynKey.h"

#include <algorithm>
#include <unordered_map>

namespace {

bool hasPassThroughInput(MO_Node const *node)
{
    return node && node->isPassThrough() && node->nInPorts() > 0;
}

// The nodes one link away from `node`: those that feed its inputs (`upstream`) or those its
// outputs feed.
void appendNeighbours(MO_Node const *node, bool upstream, std::vector<MO_Node const *> &list)
{
    if (upstream) {
        for (int i = 0; i < node->nInPorts(); ++i)
            if (MO_Port const *src = node->inPort(i)->srcPort())
                list.push_back(src->node());
    } else {
        for (int o = 0; o < node->nOutPorts(); ++o)
            for (MO_Port const *dst : node->outPort(o)->dstPorts())
                list.push_back(dst->node());
    }
}

// How many nodes the longest path of links from `start` holds, `start` included, going up
// through sources or down through destinations; -1 when the walk meets `stop`. Iterative, each
// node once (the length of the path from a node is kept once known), so a long chain costs
// neither stack nor time per level. Links never close a cycle, so a node met again while it is
// on the walk's stack cannot happen.
int longestPathFrom(MO_Node const *start, bool upstream, MO_Node const *stop)
{
    std::unordered_map<MO_Node const *, int> lengths;  // node -> nodes on the longest path from it
    struct Step {
        MO_Node const *node;
        std::size_t first;  // its neighbours are neighbours[first..], the last ones appended
        std::size_t next;   // neighbours[first + next] is the next one to visit
    };
    std::vector<MO_Node const *> neighbours;
    std::vector<Step> stack;
    auto enter = [&](MO_Node const *node) {
        stack.push_back({node, neighbours.size(), 0});
        appendNeighbours(node, upstream, neighbours);
    };
    if (start == stop)
        return -1;
    enter(start);
    while (!stack.empty()) {
        Step &step = stack.back();  // careful: enter() below invalidates it
        std::size_t const index = step.first + step.next;
        if (index < neighbours.size()) {
            MO_Node const *next = neighbours[index];
            ++step.next;
            if (next == stop)
                return -1;
            if (lengths.count(next) == 0)
                enter(next);
            continue;
        }
        int longest = 0;
        for (std::size_t i = step.first; i < neighbours.size(); ++i)
            longest = std::max(longest, lengths.at(neighbours[i]));
        lengths[step.node] = longest + 1;
        neighbours.resize(step.first);
        stack.pop_back();
    }
    return lengths.at(start);
}

SC_SceneMetrics const kDefaultMetrics;

} // namespace

MO_Port *MO_Port::realSrcPort() const
{
    MO_Port *src = src_;
    // Links never close a cycle, so this walk ends.
    while (src && hasPassThroughInput(src->node()))
        src = src->node()->inPort(0)->src_;
    return src;
}

void MO_Port::realDstPorts(std::vector<MO_Port *> &list) const
{
    list.clear();
    appendRealDstPorts(list);
}

void MO_Port::appendRealDstPorts(std::vector<MO_Port *> &list) const
{
    for (MO_Port *dst : dsts_) {
        MO_Node *node = dst->node();
        if (node->isPassThrough()) {
            if (dst->index() == 0)
                for (int o = 0; o < node->nOutPorts(); ++o)
                    node->outPort(o)->appendRealDstPorts(list);
        } else {
            list.push_back(dst);
        }
    }
}

class MO_Node::Impl {
public:
    QString keyword;
    QString name;
    bool selected = false;
    std::vector<std::unique_ptr<MO_Port>> inPorts;
    std::vector<std::unique_ptr<MO_Port>> outPorts;
    std::vector<AT_Attr *> attrOrder;             // every attribute, registration order
    std::vector<std::unique_ptr<AT_Attr>> attrs;  // owns what attrOrder lists, in any order
    std::vector<std::pair<UT_DynKey, std::unique_ptr<AT_DynAttr>>> runtimeAttrs;
    TUGroup *group = nullptr;
    unsigned long dirty = 0;
};

MO_Node::MO_Node(QString typeKeyword, int inPorts, int outPorts) : impl_(std::make_unique<Impl>())
{
    impl_->keyword = std::move(typeKeyword);
    setInPortCount(inPorts);
    for (int i = 0; i < std::max(0, outPorts); ++i)
        impl_->outPorts.push_back(std::make_unique<MO_Port>(this, false, i));
}

MO_Node::~MO_Node()
{
    unlinkAll();
}

QString const &MO_Node::typeKeyword() const { return impl_->keyword; }
QString const &MO_Node::instanceName() const { return impl_->name; }
void MO_Node::setInstanceName(QString const &name) { impl_->name = name; }
bool MO_Node::selected() const { return impl_->selected; }
void MO_Node::setSelected(bool selected) { impl_->selected = selected; }
bool MO_Node::isPassThrough() const { return isPassThroughKeyword(impl_->keyword); }

bool MO_Node::isPassThroughKeyword(QString const &typeKeyword)
{
    return typeKeyword == QLatin1String("COMPOSITE") || typeKeyword == QLatin1String("EFFECT");
}

int MO_Node::nInPorts() const { return static_cast<int>(impl_->inPorts.size()); }
int MO_Node::nOutPorts() const { return static_cast<int>(impl_->outPorts.size()); }

MO_Port *MO_Node::inPort(int index) const
{
    return index >= 0 && index < nInPorts() ? impl_->inPorts[static_cast<std::size_t>(index)].get() : nullptr;
}

MO_Port *MO_Node::outPort(int index) const
{
    return index >= 0 && index < nOutPorts() ? impl_->outPorts[static_cast<std::size_t>(index)].get() : nullptr;
}

bool MO_Node::setInPortCount(int count)
{
    if (count < 0)
        return false;
    while (nInPorts() > count) {
        disconnect(nInPorts() - 1);
        impl_->inPorts.pop_back();
    }
    while (nInPorts() < count)
        impl_->inPorts.push_back(std::make_unique<MO_Port>(this, true, nInPorts()));
    return true;
}

bool MO_Node::connect(MO_Node *src, int outIndex, MO_Node *dst, int inIndex)
{
    if (!src || !dst)
        return false;
    MO_Port *out = src->outPort(outIndex);
    MO_Port *in = dst->inPort(inIndex);
    if (!out || !in)
        return false;
    if (checkLink(src, dst) != LinkCheck::Allowed)
        return false;
    dst->disconnect(inIndex);
    in->src_ = out;
    out->dsts_.push_back(in);
    return true;
}

MO_Node::LinkCheck MO_Node::checkLink(MO_Node const *src, MO_Node const *dst)
{
    if (!src || !dst)
        return LinkCheck::Allowed;
    // The link replaces what fed the input of `dst`, but that link counts for neither walk: it
    // lies above `dst`, and the walk up from `src` meets `dst` first unless there is a cycle.
    int const above = longestPathFrom(src, true, dst);
    if (above < 0)
        return LinkCheck::ClosesCycle;
    if (above + longestPathFrom(dst, false, nullptr) > kMaxChainDepth)
        return LinkCheck::TooDeep;
    return LinkCheck::Allowed;
}

bool MO_Node::disconnect(int inIndex)
{
    MO_Port *in = inPort(inIndex);
    if (!in || !in->src_)
        return false;
    auto &dsts = in->src_->dsts_;
    dsts.erase(std::remove(dsts.begin(), dsts.end(), in), dsts.end());
    in->src_ = nullptr;
    return true;
}

void MO_Node::unlinkAll()
{
    for (int i = 0; i < nInPorts(); ++i)
        disconnect(i);
    for (auto const &out : impl_->outPorts) {
        for (MO_Port *dst : out->dsts_)
            dst->src_ = nullptr;
        out->dsts_.clear();
    }
}

MO_Node::AttrIterator MO_Node::attrsBegin() const { return impl_->attrOrder.begin(); }
MO_Node::AttrIterator MO_Node::attrsEnd() const { return impl_->attrOrder.end(); }
int MO_Node::attrCount() const { return static_cast<int>(impl_->attrOrder.size()); }

AT_Attr *MO_Node::findAttr(QString const &keyword) const
{
    if (keyword.isEmpty())
        return nullptr;
    for (AT_Attr *a : impl_->attrOrder)
        if (a->keyword() == keyword)
            return a;
    return nullptr;
}

AT_Attr *MO_Node::appendAttr(std::unique_ptr<AT_Attr> attr)
{
    if (!attr)
        return nullptr;
    impl_->attrOrder.push_back(attr.get());
    impl_->attrs.push_back(std::move(attr));
    setDirty();
    return impl_->attrOrder.back();
}

AT_Attr *MO_Node::addDynamicAttr(std::unique_ptr<AT_Attr> attr)
{
    if (!attr || findAttr(attr->keyword()))
        return nullptr;
    attr->setDynamic(true);
    return appendAttr(std::move(attr));
}

std::unique_ptr<AT_Attr> MO_Node::takeDynamicAttr(AT_Attr *attr)
{
    auto &owned = impl_->attrs;
    auto const own = std::find_if(owned.begin(), owned.end(),
                                  [attr](std::unique_ptr<AT_Attr> const &a) { return a.get() == attr; });
    if (!attr || !attr->isDynamic() || own == owned.end())
        return nullptr;
    auto &order = impl_->attrOrder;
    order.erase(std::find(order.begin(), order.end(), attr));
    std::unique_ptr<AT_Attr> taken = std::move(*own);
    owned.erase(own);
    setDirty();
    return taken;
}

void MO_Node::attrChanged(AT_Attr &)
{
    setDirty();
}

CO_CommandManager *MO_Node::attrCommandManager()
{
    TUScene const *s = scene();
    return s ? s->commandManager() : nullptr;
}

AT_DynAttr *MO_Node::dynamicAttr(UT_DynKey const &key) const
{
    for (auto const &entry : impl_->runtimeAttrs)
        if (entry.first == key)
            return entry.second.get();
    return nullptr;
}

AT_DynAttr *MO_Node::registerDynamicAttr(UT_DynKey const &key, std::unique_ptr<AT_DynAttr> attr)
{
    for (auto &entry : impl_->runtimeAttrs) {
        if (entry.first == key) {
            entry.second = std::move(attr);
            return entry.second.get();
        }
    }
    impl_->runtimeAttrs.emplace_back(key, std::move(attr));
    return impl_->runtimeAttrs.back().second.get();
}

TUGroup *MO_Node::parentGroup() const { return impl_->group; }

void MO_Node::setParentGroup(TUGroup *group)
{
    if (!group)
        unlinkAll();
    impl_->group = group;
}

TUScene *MO_Node::scene() const
{
    MO_Node const *node = this;
    while (node->parentGroup())
        node = node->parentGroup();
    auto const *root = dynamic_cast<TUGroup const *>(node);
    return root ? root->ownerScene_ : nullptr;
}

SC_SceneMetrics const &MO_Node::sceneMetrics() const
{
    TUScene const *s = scene();
    return s ? s->sceneMetrics() : kDefaultMetrics;
}

SC_SceneCommon *MO_Node::sceneCommon() const
{
    TUScene const *s = scene();
    return s ? s->sceneCommon() : nullptr;
}

SC_ProjectCommon *MO_Node::projectCommon() const
{
    TUScene const *s = scene();
    return s ? s->projectCommon() : nullptr;
}

void MO_Node::setDirty()
{
    ++impl_->dirty;
    if (TUScene const *s = scene())
        s->reportNodeChanged(this);
}
unsigned long MO_Node::dirtyCount() const { return impl_->dirty; }
