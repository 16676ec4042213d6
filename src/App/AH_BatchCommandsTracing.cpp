// Batch commands of tracing: onion skin, the kind of the view, new drawings, and checks of an
// element's drawings and timing: onion, onion-frames, view-kind, new-drawing, expect-drawings,
// expect-exposure. The pencil is the tool "Pencil", driven with press, move and release.
#include "AH_BatchCommands.h"

#include "AH_Workspace.h"
#include "preference/PR_Preference.h"
#include "scene/MO_Module.h"
#include "tool/TO_AbstractToolContext.h"
#include "view/VW_OnionSkin.h"
#include "view/VW_View.h"

using namespace AH_BatchWords;

namespace {

bool checkOnionFrames(QStringList const &a, QString &why)
{
    why = QStringLiteral("two whole numbers of frames from 0 to %1").arg(VW_OnionSkinSettings::kMaxFrames);
    for (QString const &word : a) {
        bool ok = false;
        int const n = word.toInt(&ok);
        if (!ok || n < 0 || n > VW_OnionSkinSettings::kMaxFrames)
            return false;
    }
    return true;
}

bool expectDrawings(AH_BatchContext &c, QStringList const &a, QString &why)
{
    MO_ElementModule *element = c.elementNamed(a[0], why);
    if (!element)
        return false;
    int const count = static_cast<int>(element->drawings().size());
    if (count == a[1].toInt())
        return true;
    why = QStringLiteral("expected %1 drawings in \"%2\", found %3").arg(a[1], a[0]).arg(count);
    return false;
}

// NAME "-" stands for nothing exposed.
bool expectExposure(AH_BatchContext &c, QStringList const &a, QString &why)
{
    MO_ElementModule *element = c.elementNamed(a[0], why);
    if (!element)
        return false;
    OC_DrawingPtr const drawing = element->oglDrawing(a[1].toDouble());
    QString const shown = drawing.isDrawing() ? drawing->celKey().drawing() : QStringLiteral("-");
    if (shown == a[2])
        return true;
    why = QStringLiteral("expected \"%1\" to expose \"%2\" at frame %3, found \"%4\"").arg(a[0], a[2], a[1], shown);
    return false;
}

} // namespace

void AH_AddTracingCommands(AH_BatchCommandList &table)
{
    table.push_back({QStringLiteral("onion"), 1, 1, QStringLiteral("on|off"), oneOf(0, {QStringLiteral("on"), QStringLiteral("off")}),
                     [](AH_BatchContext &c, QStringList const &a, QString &) {
                         c.view()->setOnionSkin(a[0] == QLatin1String("on"));
                         return true;
                     }});
    table.push_back({QStringLiteral("onion-frames"), 2, 2, QStringLiteral("BEFORE AFTER"), checkOnionFrames,
                     [](AH_BatchContext &, QStringList const &a, QString &) {
                         tuPref->setIntValue(VW_OnionSkinSettings::framesBeforeKey(), a[0].toInt());
                         tuPref->setIntValue(VW_OnionSkinSettings::framesAfterKey(), a[1].toInt());
                         return true;
                     }});
    table.push_back({QStringLiteral("view-kind"), 1, 1, QStringLiteral("camera|drawing"),
                     oneOf(0, {QStringLiteral("camera"), QStringLiteral("drawing")}),
                     [](AH_BatchContext &c, QStringList const &a, QString &) {
                         c.view()->setViewKind(a[0] == QLatin1String("drawing") ? TO_AbstractToolContext::DrawingView
                                                                                 : TO_AbstractToolContext::CameraView);
                         return true;
                     }});
    table.push_back({QStringLiteral("new-drawing"), 0, 0, QString(), nullptr,
                     [](AH_BatchContext &c, QStringList const &, QString &why) { return c.workspace().newDrawing(&why); }});
    table.push_back({QStringLiteral("expect-drawings"), 2, 2, QStringLiteral("NODE N"), countAt(1, QStringLiteral("drawings")), expectDrawings});
    table.push_back({QStringLiteral("expect-exposure"), 3, 3, QStringLiteral("NODE FRAME NAME|-"), frameAt(1), expectExposure});
}
