// Batch commands of the view's camera and the scene's timeline: zoom, pan, fit, reset-view, length,
// rate, expect-zoom.
#include "AH_BatchCommands.h"

#include "AH_Workspace.h"
#include "scene/TUScene.h"
#include "view/VW_View.h"

using namespace AH_BatchWords;

namespace {

// "FACTOR [X Y]": a zoom within the view's limits, and a view point or none.
bool checkZoom(QStringList const &a, QString &why)
{
    double factor = 0.0, x = 0.0, y = 0.0;
    why = QStringLiteral("a zoom factor from %1 to %2 (1 shows the field) and an optional view point X Y")
              .arg(VW_View::kMinimumZoom).arg(VW_View::kMaximumZoom);
    if (!toNumber(a[0], factor) || factor < VW_View::kMinimumZoom || factor > VW_View::kMaximumZoom)
        return false;
    if (a.size() == 2)
        return false;
    return a.size() == 1 || (toNumber(a[1], x) && toNumber(a[2], y));
}

bool zoom(AH_BatchContext &c, QStringList const &a, QString &why)
{
    VW_View *view = c.view();
    Math::Point2d anchor((view->size().width() - 1) / 2.0, (view->size().height() - 1) / 2.0);
    if (a.size() == 3) {
        toNumber(a[1], anchor.x);
        toNumber(a[2], anchor.y);
    }
    double factor = 1.0;
    toNumber(a[0], factor);
    if (view->zoomAbout(factor, anchor))
        return true;
    why = QStringLiteral("expected a zoom the view accepts, not %1").arg(a.join(QLatin1Char(' ')));
    return false;
}

bool checkNumbers(QStringList const &a, QString &why)
{
    double v = 0.0;
    why = QStringLiteral("finite numbers");
    for (QString const &word : a)
        if (!toNumber(word, v))
            return false;
    return true;
}

bool checkLength(QStringList const &a, QString &why)
{
    bool ok = false;
    int const count = a[0].toInt(&ok);
    why = QStringLiteral("a whole number of frames from 1 to %1").arg(TUScene::kMaximumFrameCount);
    return ok && count >= 1 && count <= TUScene::kMaximumFrameCount;
}

bool checkRate(QStringList const &a, QString &why)
{
    double rate = 0.0;
    why = QStringLiteral("a frame rate above 0 and at most %1").arg(TUScene::kMaximumFrameRate);
    return toNumber(a[0], rate) && rate > 0.0 && rate <= TUScene::kMaximumFrameRate;
}

bool expectZoom(AH_BatchContext &c, QStringList const &a, QString &why)
{
    QString const shown = QString::number(c.view()->zoom(), 'g', 6);
    if (sameValue(shown, a[0]))
        return true;
    why = QStringLiteral("expected the zoom %1, found %2").arg(a[0], shown);
    return false;
}

} // namespace

void AH_AddViewCommands(AH_BatchCommandList &table)
{
    table.push_back({QStringLiteral("zoom"), 1, 3, QStringLiteral("FACTOR [X Y]"), checkZoom, zoom});
    table.push_back({QStringLiteral("pan"), 2, 2, QStringLiteral("DX DY"), checkNumbers,
                     [](AH_BatchContext &c, QStringList const &a, QString &) {
                         double dx = 0.0, dy = 0.0;
                         toNumber(a[0], dx);
                         toNumber(a[1], dy);
                         return c.view()->pan(dx, dy);
                     }});
    table.push_back({QStringLiteral("fit"), 0, 0, QString(), nullptr, [](AH_BatchContext &c, QStringList const &, QString &) {
                         c.view()->fitScene();
                         return true;
                     }});
    table.push_back({QStringLiteral("reset-view"), 0, 0, QString(), nullptr,
                     [](AH_BatchContext &c, QStringList const &, QString &) {
                         c.view()->resetCamera();
                         return true;
                     }});
    table.push_back({QStringLiteral("length"), 1, 1, QStringLiteral("FRAMES"), checkLength,
                     [](AH_BatchContext &c, QStringList const &a, QString &why) {
                         return c.workspace().setFrameCount(a[0].toInt(), &why);
                     }});
    table.push_back({QStringLiteral("rate"), 1, 1, QStringLiteral("FPS"), checkRate,
                     [](AH_BatchContext &c, QStringList const &a, QString &why) {
                         double rate = 0.0;
                         toNumber(a[0], rate);
                         return c.workspace().setFrameRate(rate, &why);
                     }});
    table.push_back({QStringLiteral("expect-zoom"), 1, 1, QStringLiteral("FACTOR"), checkNumbers, expectZoom});
}
