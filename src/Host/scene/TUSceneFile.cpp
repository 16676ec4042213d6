#include "scene/TUSceneFile.h"

#include "scene/DeformerModules.h"
#include "scene/PIO_XML.h"
#include "scene/SC_Frames.h"
#include "scene/TUScene.h"

#include <QColor>
#include <QFile>
#include <QSaveFile>
#include <QStringList>
#include <QXmlStreamWriter>

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <vector>

namespace {

QString const kFormatVersion = QStringLiteral("1");

using PIO_XML::ComponentReader;
using PIO_XML::Context;
using ReaderPtr = std::shared_ptr<ComponentReader>;

// What a read has built so far. The scene is private to the read until it succeeds.
struct ReadState {
    std::unique_ptr<TUScene> scene = std::make_unique<TUScene>();
    std::map<QString, MO_Node *> nodesByName;  // every named node read so far
};

QString expected(QString const &what, QString const &inside)
{
    return QStringLiteral("expected %1 inside <%2>").arg(what, inside);
}

// An element with nothing inside.
class LeafReader : public ComponentReader {
public:
    explicit LeafReader(QString element) : element_(std::move(element)) {}
    ReaderPtr startElement(Context &ctx, QString const &name, QXmlStreamAttributes const &) override
    {
        return errorHandler(ctx, QStringLiteral("no element <%1> inside <%2>").arg(name, element_));
    }

private:
    QString element_;
};

bool readInt(Context &ctx, QXmlStreamAttributes const &attributes, QString const &key, QString const &element, int &value)
{
    bool ok = false;
    value = attributes.value(key).toInt(&ok);
    if (!ok)
        ctx.fail(QStringLiteral("expected a whole number in \"%1\" of <%2>").arg(key, element));
    return ok;
}

bool readDouble(Context &ctx, QXmlStreamAttributes const &attributes, QString const &key, QString const &element,
                double &value)
{
    if (PIO_XML::parseNumber(attributes.value(key).toString(), value))
        return true;
    ctx.fail(QStringLiteral("expected a finite number in \"%1\" of <%2>").arg(key, element));
    return false;
}

bool readColor(Context &ctx, QXmlStreamAttributes const &attributes, QString const &key, QString const &element,
               QColor &value)
{
    QString const text = attributes.value(key).toString();
    value = QColor(text);
    if (text.startsWith(QLatin1Char('#')) && text.size() == 9 && value.isValid())
        return true;
    ctx.fail(QStringLiteral("expected a colour #aarrggbb in \"%1\" of <%2>").arg(key, element));
    return false;
}

// "x,y x,y ...": at least one point.
bool readPoints(Context &ctx, QXmlStreamAttributes const &attributes, QString const &element,
                std::vector<Math::Point2d> &points)
{
    QStringList const pairs = attributes.value(QStringLiteral("points")).toString().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (QString const &pair : pairs) {
        QStringList const xy = pair.split(QLatin1Char(','));
        Math::Point2d p;
        if (xy.size() != 2 || !PIO_XML::parseNumber(xy[0], p.x) || !PIO_XML::parseNumber(xy[1], p.y)) {
            points.clear();
            break;
        }
        points.push_back(p);
    }
    if (points.empty())
        ctx.fail(QStringLiteral("expected points \"x,y x,y ...\" of finite numbers in <%1>").arg(element));
    return !points.empty();
}

class DrawingReader : public ComponentReader {
public:
    std::vector<OC_VectorShape> shapes;

    ReaderPtr startElement(Context &ctx, QString const &name, QXmlStreamAttributes const &attributes) override
    {
        OC_VectorShape shape;
        if (name == QLatin1String("polygon"))
            shape.kind = OC_VectorShape::Kind::Polygon;
        else if (name != QLatin1String("polyline"))
            return errorHandler(ctx, expected(QStringLiteral("<polyline> or <polygon>"), QStringLiteral("drawing")));
        if (!readPoints(ctx, attributes, name, shape.points) ||
            !readColor(ctx, attributes, QStringLiteral("stroke"), name, shape.stroke) ||
            !readDouble(ctx, attributes, QStringLiteral("thickness"), name, shape.thickness))
            return nullptr;
        if (shape.thickness < 0.0)
            return errorHandler(ctx, QStringLiteral("expected a thickness of 0 or more in <%1>").arg(name));
        if (shape.kind == OC_VectorShape::Kind::Polygon &&
            !readColor(ctx, attributes, QStringLiteral("fill"), name, shape.fill))
            return nullptr;
        shapes.push_back(std::move(shape));
        return std::make_shared<LeafReader>(name);
    }
};

class DrawingsReader : public ComponentReader {
public:
    explicit DrawingsReader(MO_ElementModule *element) : element_(element) {}

    ReaderPtr startElement(Context &ctx, QString const &name, QXmlStreamAttributes const &attributes) override
    {
        if (name != QLatin1String("drawing"))
            return errorHandler(ctx, expected(QStringLiteral("<drawing>"), QStringLiteral("drawings")));
        QString const drawingName = attributes.value(QStringLiteral("name")).toString();
        if (drawingName.isEmpty() || element_->drawings().count(drawingName))
            return errorHandler(ctx, QStringLiteral("expected a new, non-empty drawing name in <drawing>"));
        current_ = std::make_shared<DrawingReader>();
        currentName_ = drawingName;
        return current_;
    }

    bool endElement(Context &, QString const &name) override
    {
        if (name == QLatin1String("drawing") && current_) {
            element_->addDrawing(currentName_, std::move(current_->shapes));
            current_.reset();
        }
        return true;
    }

private:
    MO_ElementModule *element_;
    std::shared_ptr<DrawingReader> current_;  // reader of the <drawing> being read
    QString currentName_;
};

class TimingReader : public ComponentReader {
public:
    explicit TimingReader(MO_ElementModule *element) : element_(element) {}

    ReaderPtr startElement(Context &ctx, QString const &name, QXmlStreamAttributes const &attributes) override
    {
        if (name != QLatin1String("exposure"))
            return errorHandler(ctx, expected(QStringLiteral("<exposure>"), QStringLiteral("timing")));
        int frame = 0;
        if (!readInt(ctx, attributes, QStringLiteral("frame"), name, frame))
            return nullptr;
        if (!SC_Frames::contains(frame))
            return errorHandler(ctx, QStringLiteral("expected %1 in \"frame\" of <exposure>").arg(SC_Frames::rangeText()));
        if (element_->timing().count(frame))
            return errorHandler(ctx, QStringLiteral("expected one <exposure> per frame, frame %1 given twice").arg(frame));
        if (!element_->setExposure(frame, attributes.value(QStringLiteral("drawing")).toString()))
            return errorHandler(ctx, QStringLiteral("expected the name of a drawing of the element in <exposure>"));
        return std::make_shared<LeafReader>(name);
    }

private:
    MO_ElementModule *element_;
};

class NodeReader : public ComponentReader {
public:
    explicit NodeReader(MO_Node *node) : node_(node) {}

    ReaderPtr startElement(Context &ctx, QString const &name, QXmlStreamAttributes const &attributes) override
    {
        auto *element = dynamic_cast<MO_ElementModule *>(node_);
        if (name == QLatin1String("attrs") && !seenAttrs_) {
            seenAttrs_ = true;
            std::vector<AT_Attr *> attrs(node_->attrsBegin(), node_->attrsEnd());
            return startChild(ctx, std::make_shared<PIO_XML::AttrListReader>(std::move(attrs), node_), name, attributes);
        }
        if (element && name == QLatin1String("drawings") && !seenDrawings_) {
            seenDrawings_ = true;
            return std::make_shared<DrawingsReader>(element);
        }
        if (element && name == QLatin1String("timing") && seenDrawings_ && !seenTiming_) {
            seenTiming_ = true;
            return std::make_shared<TimingReader>(element);
        }
        return errorHandler(ctx, expected(element ? QStringLiteral("one <attrs>, one <drawings> and then one <timing>")
                                                  : QStringLiteral("one <attrs>"),
                                          QStringLiteral("node")));
    }

private:
    MO_Node *node_;
    bool seenAttrs_ = false;
    bool seenDrawings_ = false;
    bool seenTiming_ = false;
};

class GroupReader : public ComponentReader {
public:
    // `depth`: how many groups hold `group`, the root group included (0 for the root group).
    GroupReader(ReadState &state, TUGroup *group, int depth) : state_(state), group_(group), depth_(depth) {}

    ReaderPtr startElement(Context &ctx, QString const &name, QXmlStreamAttributes const &attributes) override
    {
        QString const instanceName = attributes.value(QStringLiteral("name")).toString();
        UT_SharedPtr<MO_Node> node;
        if (name == QLatin1String("group")) {
            if (depth_ + 1 > TUSceneFile::kMaxGroupDepth)
                return errorHandler(ctx, QStringLiteral("expected groups nested at most %1 deep in <group>")
                                             .arg(TUSceneFile::kMaxGroupDepth));
            node = UT_MakeShared<TUGroup>();
        } else if (name == QLatin1String("node")) {
            QString const type = attributes.value(QStringLiteral("type")).toString();
            node = TUSceneFile::createNode(type);
            if (!node)
                return errorHandler(ctx, QStringLiteral("expected a known node type in <node>, not \"%1\"").arg(type));
        } else {
            return errorHandler(ctx, expected(QStringLiteral("<node> or <group>"), QStringLiteral("group")));
        }
        if (instanceName.isEmpty() || state_.nodesByName.count(instanceName))
            return errorHandler(ctx, QStringLiteral("expected a name used by no other node in <%1>").arg(name));
        if (attributes.hasAttribute(QStringLiteral("inputs"))) {
            int inputs = 0;
            if (!readInt(ctx, attributes, QStringLiteral("inputs"), name, inputs))
                return nullptr;
            if (inputs < 1 || !node->setInPortCount(inputs))
                return errorHandler(ctx, QStringLiteral("expected at least one input in <%1>").arg(name));
        }
        node->setInstanceName(instanceName);
        if (auto *element = dynamic_cast<MO_ElementModule *>(node.get()))
            element->setElementName(attributes.hasAttribute(QStringLiteral("element"))
                                        ? attributes.value(QStringLiteral("element")).toString()
                                        : instanceName);
        MO_Node *added = group_->addNode(std::move(node));
        state_.nodesByName[instanceName] = added;
        if (auto *group = dynamic_cast<TUGroup *>(added))
            return std::make_shared<GroupReader>(state_, group, depth_ + 1);
        return std::make_shared<NodeReader>(added);
    }

private:
    ReadState &state_;
    TUGroup *group_;
    int depth_;
};

class LinksReader : public ComponentReader {
public:
    explicit LinksReader(ReadState &state) : state_(state) {}

    ReaderPtr startElement(Context &ctx, QString const &name, QXmlStreamAttributes const &attributes) override
    {
        if (name != QLatin1String("link"))
            return errorHandler(ctx, expected(QStringLiteral("<link>"), QStringLiteral("links")));
        MO_Node *src = find(attributes.value(QStringLiteral("src")).toString());
        MO_Node *dst = find(attributes.value(QStringLiteral("dst")).toString());
        if (!src || !dst)
            return errorHandler(ctx, QStringLiteral("expected names of nodes read before in \"src\" and \"dst\" of <link>"));
        int out = 0;
        int in = 0;
        if (!readInt(ctx, attributes, QStringLiteral("out"), name, out) ||
            !readInt(ctx, attributes, QStringLiteral("in"), name, in))
            return nullptr;
        if (!src->outPort(out) || !dst->inPort(in))
            return errorHandler(ctx, QStringLiteral("expected port indices the nodes have in <link>"));
        if (dst->inPort(in)->srcPort())
            return errorHandler(ctx, QStringLiteral("expected one <link> per input, input %1 of \"%2\" linked twice")
                                         .arg(in).arg(dst->instanceName()));
        if (!MO_Node::connect(src, out, dst, in)) {
            if (MO_Node::checkLink(src, dst) == MO_Node::LinkCheck::TooDeep)
                return errorHandler(ctx, QStringLiteral("expected chains of linked nodes at most %1 deep in <link>")
                                             .arg(MO_Node::kMaxChainDepth));
            return errorHandler(ctx, QStringLiteral("expected links without a cycle in <link>"));
        }
        return std::make_shared<LeafReader>(name);
    }

private:
    MO_Node *find(QString const &name) const
    {
        auto it = state_.nodesByName.find(name);
        return it == state_.nodesByName.end() ? nullptr : it->second;
    }
    ReadState &state_;
};

class SceneBodyReader : public ComponentReader {
public:
    explicit SceneBodyReader(ReadState &state) : state_(state) {}

    ReaderPtr startElement(Context &ctx, QString const &name, QXmlStreamAttributes const &attributes) override
    {
        if (name == QLatin1String("metrics") && step_ == 0) {
            step_ = 1;
            double x = 0.0;
            double y = 0.0;
            if (!readDouble(ctx, attributes, QStringLiteral("fieldToOglX"), name, x) ||
                !readDouble(ctx, attributes, QStringLiteral("fieldToOglY"), name, y))
                return nullptr;
            SC_SceneMetrics metrics;
            if (!metrics.setFieldToOgl(x, y))
                return errorHandler(ctx, QStringLiteral("expected positive factors in <metrics>"));
            state_.scene->setSceneMetrics(metrics);
            return std::make_shared<LeafReader>(name);
        }
        if (name == QLatin1String("timeline") && step_ == 1 && !timelineRead_) {
            timelineRead_ = true;
            return readTimeline(ctx, name, attributes) ? std::make_shared<LeafReader>(name) : nullptr;
        }
        if (name == QLatin1String("group") && step_ == 1) {
            step_ = 2;
            TUGroup *root = state_.scene->getRootGroup();
            root->setInstanceName(attributes.value(QStringLiteral("name")).toString());
            return std::make_shared<GroupReader>(state_, root, 0);
        }
        if (name == QLatin1String("links") && step_ == 2) {
            step_ = 3;
            return std::make_shared<LinksReader>(state_);
        }
        return errorHandler(ctx, expected(QStringLiteral("<metrics>, an optional <timeline>, <group> and <links>, once each and in this order"),
                                          QStringLiteral("scene")));
    }

    bool endElement(Context &ctx, QString const &name) override
    {
        if (name == QLatin1String("scene") && step_ != 3) {
            ctx.fail(expected(QStringLiteral("<metrics>, <group> and <links>"), QStringLiteral("scene")));
            return false;
        }
        return true;
    }

private:
    // The optional <timeline frames="N" rate="R"/>; either attribute may be left out.
    bool readTimeline(Context &ctx, QString const &name, QXmlStreamAttributes const &attributes)
    {
        TUScene &scene = *state_.scene;
        if (attributes.hasAttribute(QStringLiteral("frames"))) {
            int frames = 0;
            if (!readInt(ctx, attributes, QStringLiteral("frames"), name, frames))
                return false;
            if (!scene.setFrameCount(frames)) {
                ctx.fail(QStringLiteral("expected a number of frames from 1 to %1 in \"frames\" of <timeline>").arg(TUScene::kMaximumFrameCount));
                return false;
            }
        }
        if (attributes.hasAttribute(QStringLiteral("rate"))) {
            double rate = 0.0;
            if (!readDouble(ctx, attributes, QStringLiteral("rate"), name, rate))
                return false;
            if (!scene.setFrameRate(rate)) {
                ctx.fail(QStringLiteral("expected a frame rate above 0 and at most %1 in \"rate\" of <timeline>").arg(TUScene::kMaximumFrameRate));
                return false;
            }
        }
        return true;
    }

    ReadState &state_;
    int step_ = 0;  // 0 nothing read, 1 metrics, 2 the root group, 3 links
    bool timelineRead_ = false;  // the optional <timeline> between <metrics> and <group>
};

class SceneReader : public ComponentReader {
public:
    explicit SceneReader(ReadState &state) : state_(state) {}

    ReaderPtr startElement(Context &ctx, QString const &name, QXmlStreamAttributes const &attributes) override
    {
        if (name != QLatin1String("scene"))
            return errorHandler(ctx, QStringLiteral("expected <scene> as the document's element"));
        if (attributes.value(QStringLiteral("version")) != kFormatVersion)
            return errorHandler(ctx, QStringLiteral("expected version=\"%1\" in <scene>").arg(kFormatVersion));
        body_ = std::make_shared<SceneBodyReader>(state_);
        return body_;
    }

    bool endElement(Context &ctx, QString const &name) override
    {
        return !body_ || body_->endElement(ctx, name);
    }

private:
    ReadState &state_;
    std::shared_ptr<SceneBodyReader> body_;
};

// ---------------------------------------------------------------------------------------------
// Writing

QString pointsText(std::vector<Math::Point2d> const &points)
{
    QStringList pairs;
    for (Math::Point2d const &p : points)
        pairs << PIO_XML::numberText(p.x) + QLatin1Char(',') + PIO_XML::numberText(p.y);
    return pairs.join(QLatin1Char(' '));
}

void writeDrawings(QXmlStreamWriter &w, MO_ElementModule const &element)
{
    w.writeStartElement(QStringLiteral("drawings"));
    for (auto const &entry : element.drawings()) {
        w.writeStartElement(QStringLiteral("drawing"));
        w.writeAttribute(QStringLiteral("name"), entry.first);
        for (OC_VectorShape const &shape : entry.second->shapes()) {
            bool const polygon = shape.kind == OC_VectorShape::Kind::Polygon;
            w.writeEmptyElement(polygon ? QStringLiteral("polygon") : QStringLiteral("polyline"));
            w.writeAttribute(QStringLiteral("points"), pointsText(shape.points));
            w.writeAttribute(QStringLiteral("stroke"), shape.stroke.name(QColor::HexArgb));
            if (polygon)
                w.writeAttribute(QStringLiteral("fill"), shape.fill.name(QColor::HexArgb));
            w.writeAttribute(QStringLiteral("thickness"), PIO_XML::numberText(shape.thickness));
        }
        w.writeEndElement();
    }
    w.writeEndElement();
    w.writeStartElement(QStringLiteral("timing"));
    for (auto const &entry : element.timing()) {
        w.writeEmptyElement(QStringLiteral("exposure"));
        w.writeAttribute(QStringLiteral("frame"), QString::number(entry.first));
        w.writeAttribute(QStringLiteral("drawing"), entry.second);
    }
    w.writeEndElement();
}

void writeGroup(QXmlStreamWriter &w, TUGroup const &group)
{
    for (auto it = group.subNodesBegin(); it != group.subNodesEnd(); ++it) {
        MO_Node const &node = **it;
        if (auto const *sub = dynamic_cast<TUGroup const *>(&node)) {
            w.writeStartElement(QStringLiteral("group"));
            w.writeAttribute(QStringLiteral("name"), sub->instanceName());
            writeGroup(w, *sub);
            w.writeEndElement();
            continue;
        }
        w.writeStartElement(QStringLiteral("node"));
        w.writeAttribute(QStringLiteral("type"), node.typeKeyword());
        w.writeAttribute(QStringLiteral("name"), node.instanceName());
        auto const *element = dynamic_cast<MO_ElementModule const *>(&node);
        if (element && element->elementName() != node.instanceName())
            w.writeAttribute(QStringLiteral("element"), element->elementName());
        UT_SharedPtr<MO_Node> const plain = TUSceneFile::createNode(node.typeKeyword());
        if (plain && plain->nInPorts() != node.nInPorts())
            w.writeAttribute(QStringLiteral("inputs"), QString::number(node.nInPorts()));
        w.writeStartElement(QStringLiteral("attrs"));
        for (auto a = node.attrsBegin(); a != node.attrsEnd(); ++a)
            (*a)->writeXml(w);
        w.writeEndElement();
        if (element)
            writeDrawings(w, *element);
        w.writeEndElement();
    }
}

void writeLinks(QXmlStreamWriter &w, TUGroup const &group)
{
    for (auto it = group.subNodesBegin(); it != group.subNodesEnd(); ++it) {
        MO_Node const &node = **it;
        if (auto const *sub = dynamic_cast<TUGroup const *>(&node))
            writeLinks(w, *sub);
        for (int i = 0; i < node.nInPorts(); ++i) {
            MO_Port const *src = node.inPort(i)->srcPort();
            if (!src)
                continue;
            w.writeEmptyElement(QStringLiteral("link"));
            w.writeAttribute(QStringLiteral("src"), src->node()->instanceName());
            w.writeAttribute(QStringLiteral("out"), QString::number(src->index()));
            w.writeAttribute(QStringLiteral("dst"), node.instanceName());
            w.writeAttribute(QStringLiteral("in"), QString::number(i));
        }
    }
}

// How deep groups nest under `root` (0: no group inside it), counted without recursion, since
// the deeper walks of the writer are recursive.
int groupDepth(TUGroup const &root)
{
    int deepest = 0;
    std::vector<std::pair<TUGroup const *, int>> pending{{&root, 0}};
    while (!pending.empty()) {
        auto const [group, depth] = pending.back();
        pending.pop_back();
        deepest = std::max(deepest, depth);
        for (auto it = group->subNodesBegin(); it != group->subNodesEnd(); ++it)
            if (auto const *sub = dynamic_cast<TUGroup const *>(it->get()))
                pending.emplace_back(sub, depth + 1);
    }
    return deepest;
}

// The first node of the group (depth first) whose name is empty or already in `names`.
MO_Node const *firstUnnamedOrTwice(TUGroup const &group, std::set<QString> &names)
{
    for (auto it = group.subNodesBegin(); it != group.subNodesEnd(); ++it) {
        MO_Node const &node = **it;
        if (node.instanceName().isEmpty() || !names.insert(node.instanceName()).second)
            return &node;
        if (auto const *sub = dynamic_cast<TUGroup const *>(&node))
            if (MO_Node const *bad = firstUnnamedOrTwice(*sub, names))
                return bad;
    }
    return nullptr;
}

} // namespace

namespace TUSceneFile {

UT_SharedPtr<MO_Node> createNode(QString const &typeKeyword)
{
    static std::map<QString, std::function<UT_SharedPtr<MO_Node>()>> const makers = {
        {MO_PegModule::Keyword(), [] { return UT_MakeShared<MO_PegModule>(); }},
        {MO_ElementModule::Keyword(), [] { return UT_MakeShared<MO_ElementModule>(); }},
        {MO_SwitchModule::Keyword(), [] { return UT_MakeShared<MO_SwitchModule>(); }},
        {QStringLiteral("MODULE"), [] { return UT_MakeShared<MO_Module>(); }},
        {BendyBoneModule::Keyword(), [] { return UT_MakeShared<BendyBoneModule>(); }},
        {GameBoneModule::Keyword(), [] { return UT_MakeShared<GameBoneModule>(); }},
        {CurveModule::Keyword(), [] { return UT_MakeShared<CurveModule>(); }},
        {OffsetModule::Keyword(), [] { return UT_MakeShared<OffsetModule>(); }},
        {MiniPegModule::Keyword(), [] { return UT_MakeShared<MiniPegModule>(); }},
        {QStringLiteral("COMPOSITE"), [] { return UT_MakeShared<MO_Node>(QStringLiteral("COMPOSITE"), 2, 1); }},
        {QStringLiteral("EFFECT"), [] { return UT_MakeShared<MO_Node>(QStringLiteral("EFFECT"), 1, 1); }},
    };
    auto it = makers.find(typeKeyword);
    return it == makers.end() ? nullptr : it->second();
}

std::unique_ptr<TUScene> read(QByteArray const &data, QString const &source, QString *error)
{
    ReadState state;
    if (!PIO_XML::readDocument(data, std::make_shared<SceneReader>(state), source, error))
        return nullptr;
    return std::move(state.scene);
}

std::unique_ptr<TUScene> readFile(QString const &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = QStringLiteral("%1: cannot be opened: %2").arg(path, file.errorString());
        return nullptr;
    }
    return read(file.readAll(), path, error);
}

QByteArray write(TUScene const &scene, QString *error)
{
    // Careful: the walks below recurse once per level of groups.
    if (int const depth = groupDepth(*scene.getRootGroup()); depth > kMaxGroupDepth) {
        if (error)
            *error = QStringLiteral("cannot write groups nested %1 deep: at most %2 levels are allowed")
                         .arg(depth).arg(kMaxGroupDepth);
        return {};
    }
    std::set<QString> names;
    if (MO_Node const *bad = firstUnnamedOrTwice(*scene.getRootGroup(), names)) {
        if (error)
            *error = QStringLiteral("cannot write a %1 node named \"%2\": every node needs a name of its own")
                         .arg(bad->typeKeyword(), bad->instanceName());
        return {};
    }
    QByteArray data;
    QXmlStreamWriter w(&data);
    w.setAutoFormatting(true);
    w.setAutoFormattingIndent(1);
    w.writeStartDocument();
    w.writeStartElement(QStringLiteral("scene"));
    w.writeAttribute(QStringLiteral("version"), kFormatVersion);
    w.writeEmptyElement(QStringLiteral("metrics"));
    w.writeAttribute(QStringLiteral("fieldToOglX"), PIO_XML::numberText(scene.sceneMetrics().fieldToOglX()));
    w.writeAttribute(QStringLiteral("fieldToOglY"), PIO_XML::numberText(scene.sceneMetrics().fieldToOglY()));
    // Written only when the scene has a length or a rate of its own, so that a file without them
    // saves back as it was.
    if (scene.storedFrameCount() || scene.storedFrameRate()) {
        w.writeEmptyElement(QStringLiteral("timeline"));
        if (scene.storedFrameCount())
            w.writeAttribute(QStringLiteral("frames"), QString::number(*scene.storedFrameCount()));
        if (scene.storedFrameRate())
            w.writeAttribute(QStringLiteral("rate"), PIO_XML::numberText(*scene.storedFrameRate()));
    }
    w.writeStartElement(QStringLiteral("group"));
    w.writeAttribute(QStringLiteral("name"), scene.getRootGroup()->instanceName());
    writeGroup(w, *scene.getRootGroup());
    w.writeEndElement();
    w.writeStartElement(QStringLiteral("links"));
    writeLinks(w, *scene.getRootGroup());
    w.writeEndElement();
    w.writeEndElement();
    w.writeEndDocument();
    return data;
}

bool writeFile(TUScene const &scene, QString const &path, QString *error)
{
    QByteArray const data = write(scene, error);
    if (data.isEmpty())
        return false;
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(data) >= 0 && file.commit())
        return true;
    if (error)
        *error = QStringLiteral("%1: cannot be written: %2").arg(path, file.errorString());
    return false;
}

} // namespace TUSceneFile
