// Batch commands that check what a gesture moved and left alone: "remember" keeps the values of
// nodes' attributes and the view places of the nodes at the current frame; "expect-unchanged",
// "expect-unmoved" and "expect-moved" compare them later, with a tolerance given on the line.
#include "AH_BatchCommands.h"

#include "AH_Workspace.h"
#include "scene/MO_Module.h"
#include "session/SC_Session.h"
#include "view/VW_View.h"

#include <QRegularExpression>

#include <cmath>

using namespace AH_BatchWords;

namespace {

QString valueKey(QString const &node, QString const &attr) { return node + QLatin1Char('\n') + attr; }
QString placeKey(QString const &node) { return node + QStringLiteral("\n@place"); }

// Where the origin of the node's world matrix lies in the view, as "x y"; empty when it cannot be
// mapped (a node that is not a module).
QString viewPlace(AH_BatchContext &c, MO_Node *node)
{
    auto *module = dynamic_cast<MO_Module *>(node);
    if (!module)
        return QString();
    MO_PortTransformPtr const t = module->getPortTransformation(MO_BaseContext(MO_FrameKey(c.session()->currentFrame())));
    Math::Matrix4x4 const world = t ? t->transformation().matrix(true) : Math::Matrix4x4();
    Math::Point3d const origin = world * Math::Point3d(0, 0, 0);
    Math::Point2d pixel;
    if (!c.view()->sceneToView(Math::Point2d(origin.x, origin.y), pixel))
        return QString();
    return QStringLiteral("%1 %2").arg(pixel.x, 0, 'g', 17).arg(pixel.y, 0, 'g', 17);
}

// The numbers of a value's text ("0, 0, -130" gives three); false when some part is not a number.
bool numbersOf(QString const &text, std::vector<double> &out)
{
    out.clear();
    for (QString const &part : text.split(QRegularExpression(QStringLiteral("[,\\s]+")), Qt::SkipEmptyParts)) {
        double v = 0.0;
        if (!toNumber(part, v))
            return false;
        out.push_back(v);
    }
    return !out.empty();
}

// The greatest difference between two values' numbers; infinite when they are not alike numbers
// and their texts differ.
double difference(QString const &a, QString const &b)
{
    std::vector<double> x, y;
    if (!numbersOf(a, x) || !numbersOf(b, y) || x.size() != y.size())
        return a == b ? 0.0 : INFINITY;
    double most = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i)
        most = std::max(most, std::fabs(x[i] - y[i]));
    return most;
}

bool nodesOf(AH_BatchContext &c, QStringList const &names, std::vector<MO_Node *> &nodes, QString &why)
{
    for (QString const &name : names) {
        MO_Node *node = c.workspace().findNode(name);
        if (!node) {
            why = QStringLiteral("expected a node named \"%1\"").arg(name);
            return false;
        }
        nodes.push_back(node);
    }
    return true;
}

bool remember(AH_BatchContext &c, QStringList const &a, QString &why)
{
    std::vector<MO_Node *> nodes;
    if (!nodesOf(c, a, nodes, why))
        return false;
    double const frame = c.session()->currentFrame();
    for (MO_Node *node : nodes) {
        for (auto attr = node->attrsBegin(); attr != node->attrsEnd(); ++attr)
            c.remembered()[valueKey(node->instanceName(), (*attr)->keyword())] = (*attr)->textValue(frame);
        c.remembered()[placeKey(node->instanceName())] = viewPlace(c, node);
    }
    return true;
}

// The remembered entry of `key`, or false with `why` set.
bool recalled(AH_BatchContext &c, QString const &key, QString const &node, QString &out, QString &why)
{
    auto const found = c.remembered().find(key);
    if (found == c.remembered().end()) {
        why = QStringLiteral("expected a \"remember\" line for %1 before").arg(node);
        return false;
    }
    out = found->second;
    return true;
}

bool expectUnchanged(AH_BatchContext &c, QStringList const &a, QString &why)
{
    double tolerance = 0.0;
    toNumber(a[0], tolerance);
    std::vector<MO_Node *> nodes;
    if (!nodesOf(c, a.mid(1), nodes, why))
        return false;
    double const frame = c.session()->currentFrame();
    for (MO_Node *node : nodes)
        for (auto attr = node->attrsBegin(); attr != node->attrsEnd(); ++attr) {
            QString before;
            if (!recalled(c, valueKey(node->instanceName(), (*attr)->keyword()), node->instanceName(), before, why))
                return false;
            QString const now = (*attr)->textValue(frame);
            if (difference(before, now) > tolerance) {
                why = QStringLiteral("expected %1 %2 to stay \"%3\" within %4, found \"%5\"")
                          .arg(node->instanceName(), (*attr)->keyword(), before, a[0], now);
                return false;
            }
        }
    return true;
}

// expect-unmoved (`moved` false): each node within PIXELS of where it was remembered; expect-moved
// (`moved` true): each node farther than PIXELS from it.
bool expectPlaces(AH_BatchContext &c, QStringList const &a, bool moved, QString &why)
{
    double pixels = 0.0;
    toNumber(a[0], pixels);
    std::vector<MO_Node *> nodes;
    if (!nodesOf(c, a.mid(1), nodes, why))
        return false;
    for (MO_Node *node : nodes) {
        QString before;
        if (!recalled(c, placeKey(node->instanceName()), node->instanceName(), before, why))
            return false;
        QString const now = viewPlace(c, node);
        std::vector<double> p, q;
        if (!numbersOf(before, p) || !numbersOf(now, q)) {
            why = QStringLiteral("expected %1 to be a module placed in the view").arg(node->instanceName());
            return false;
        }
        double const distance = std::hypot(q[0] - p[0], q[1] - p[1]);
        if ((distance > pixels) != moved) {
            why = QStringLiteral("expected %1 to be %2 %3 pixels of (%4), found it %5 pixels away at (%6)")
                      .arg(node->instanceName(), moved ? QStringLiteral("farther than") : QStringLiteral("within"),
                           a[0], before)
                      .arg(distance, 0, 'g', 4)
                      .arg(now);
            return false;
        }
    }
    return true;
}

bool checkTolerance(QStringList const &a, QString &why)
{
    double v = 0.0;
    why = QStringLiteral("a tolerance of 0 or more, then nodes");
    return toNumber(a[0], v) && v >= 0.0;
}

} // namespace

void AH_AddStillnessCommands(AH_BatchCommandList &table)
{
    table.push_back({QStringLiteral("remember"), 1, -1, QStringLiteral("NODE..."), nullptr, remember});
    table.push_back({QStringLiteral("expect-unchanged"), 2, -1, QStringLiteral("TOLERANCE NODE..."), checkTolerance, expectUnchanged});
    table.push_back({QStringLiteral("expect-unmoved"), 2, -1, QStringLiteral("PIXELS NODE..."), checkTolerance,
                     [](AH_BatchContext &c, QStringList const &a, QString &why) { return expectPlaces(c, a, false, why); }});
    table.push_back({QStringLiteral("expect-moved"), 2, -1, QStringLiteral("PIXELS NODE..."), checkTolerance,
                     [](AH_BatchContext &c, QStringList const &a, QString &why) { return expectPlaces(c, a, true, why); }});
}
