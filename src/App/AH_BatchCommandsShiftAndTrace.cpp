// Batch commands of Shift and Trace and of held keys: shift, set-shift, expect-shift,
// expect-crosshairs, key-down, key-up.
#include "AH_BatchCommands.h"

#include "AH_Workspace.h"
#include "command/CO_CommandManager.h"
#include "scene/AT_ShiftAndTraceUtil.h"
#include "scene/MO_Module.h"
#include "session/SC_Session.h"
#include "view/VW_View.h"
#include "widgets/BUIAPP_Application.h"

#include <cmath>

using namespace AH_BatchWords;
using AT_ShiftAndTraceUtil::PositionData;

namespace {

QString const kShiftForm = QStringLiteral("NODE DRAWING R PX PY SX SY X Y");

// The seven numbers from `first` on, in PositionData's order.
PositionData shiftFrom(QStringList const &a, int first)
{
    double v[7] = {};
    for (int i = 0; i < 7; ++i)
        toNumber(a[first + i], v[i]);
    PositionData d;
    d.rotation = v[0];
    d.pivotX = v[1];
    d.pivotY = v[2];
    d.scaleX = v[3];
    d.scaleY = v[4];
    d.positionX = v[5];
    d.positionY = v[6];
    return d;
}

QString shiftText(PositionData const &d)
{
    QStringList words;
    for (double v : {d.rotation, d.pivotX, d.pivotY, d.scaleX, d.scaleY, d.positionX, d.positionY})
        words << QString::number(v, 'g', 6);
    return words.join(QLatin1Char(' '));
}

bool sevenNumbers(QStringList const &a, QString &why)
{
    why = QStringLiteral("seven finite numbers after the node and the drawing");
    double value = 0.0;
    for (int i = 2; i < 9; ++i)
        if (!toNumber(a[i], value))
            return false;
    return true;
}

bool setShift(AH_BatchContext &c, QStringList const &a, QString &why)
{
    MO_ElementModule *element = c.elementNamed(a[0], why);
    if (!element)
        return false;
    PositionData const data = shiftFrom(a, 2);
    CO_CommandAccumScope step(c.session()->commandManager(), QStringLiteral("Shift and Trace"));
    AT_ShiftAndTraceUtil::ShiftAndTraceAttr *attr = AT_ShiftAndTraceUtil::addShiftAndTrace(element);
    if (!attr->setPositionFor(CA_CelKey(element->elementName(), a[1]), data)) {
        why = QStringLiteral("expected a shift of at most 1e9 in every value");
        return false;
    }
    attr->makeDirty();
    return true;
}

bool expectShift(AH_BatchContext &c, QStringList const &a, QString &why)
{
    MO_ElementModule *element = c.elementNamed(a[0], why);
    if (!element)
        return false;
    AT_ShiftAndTraceUtil::ShiftAndTraceAttr const *attr = AT_ShiftAndTraceUtil::shiftAndTraceFor(element);
    PositionData const found = attr ? attr->positionFor(CA_CelKey(element->elementName(), a[1])) : PositionData();
    QString const wanted = a.mid(2).join(QLatin1Char(' '));
    QString const shown = shiftText(found);
    // Compared as numbers to a relative 1e-4, as the other expect commands do.
    if (sameValue(QString(shown).replace(QLatin1Char(' '), QLatin1String(", ")),
                  QString(wanted).replace(QLatin1Char(' '), QLatin1String(", "))))
        return true;
    why = QStringLiteral("expected the shift of %1 drawing %2 to be \"%3\", found \"%4\"").arg(a[0], a[1], wanted, shown);
    return false;
}

// The key of a combination and the modifier keys it names ("Alt+R": R and Alt).
std::vector<int> keysOf(QString const &text)
{
    int const code = toKeyCode(text);
    std::vector<int> keys{code & ~int(Qt::KeyboardModifierMask)};
    if (code & Qt::ShiftModifier)
        keys.push_back(Qt::Key_Shift);
    if (code & Qt::ControlModifier)
        keys.push_back(Qt::Key_Control);
    if (code & Qt::AltModifier)
        keys.push_back(Qt::Key_Alt);
    return keys;
}

AH_BatchCommand::Run holdKey(bool down)
{
    return [down](AH_BatchContext &, QStringList const &a, QString &) {
        for (int key : keysOf(a[0]))
            BUIAPP_Application::instance().setKeyPressed(key, down);
        return true;
    };
}

} // namespace

void AH_AddShiftAndTraceCommands(AH_BatchCommandList &table)
{
    table.push_back({QStringLiteral("shift"), 1, 1, QStringLiteral("on|off"),
                     oneOf(0, {QStringLiteral("on"), QStringLiteral("off")}),
                     [](AH_BatchContext &c, QStringList const &a, QString &) {
                         AT_ShiftAndTraceUtil::setShiftAndTraceEnabled(a[0] == QLatin1String("on"));
                         c.view()->requestRedraw();
                         return true;
                     }});
    table.push_back({QStringLiteral("set-shift"), 9, 9, kShiftForm, sevenNumbers, setShift});
    table.push_back({QStringLiteral("expect-shift"), 9, 9, kShiftForm, sevenNumbers, expectShift});
    table.push_back({QStringLiteral("expect-crosshairs"), 1, 1, QStringLiteral("N"), countAt(0, QStringLiteral("cross-hairs")),
                     [](AH_BatchContext &, QStringList const &a, QString &why) {
                         auto const count = AT_ShiftAndTraceUtil::crossHairList().size();
                         if (count == std::size_t(a[0].toInt()))
                             return true;
                         why = QStringLiteral("expected %1 cross-hairs, found %2").arg(a[0]).arg(count);
                         return false;
                     }});
    table.push_back({QStringLiteral("key-down"), 1, 1, QStringLiteral("KEY"), oneKey, holdKey(true)});
    table.push_back({QStringLiteral("key-up"), 1, 1, QStringLiteral("KEY"), oneKey, holdKey(false)});
}
