// Batch commands that check what a script did, and stop it with a message when it is not so:
// the expect-* commands.
#include "AH_BatchCommands.h"

#include "AH_Workspace.h"
#include "command/CO_CommandManager.h"
#include "scene/MO_Node.h"
#include "session/SC_Session.h"
#include "session/SL_Selection.h"
#include "tool/TO_ToolFactory.h"
#include "view/VW_View.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

using namespace AH_BatchWords;

namespace {

// What a widget of a panel shows, as text: a check state, a text, or a value.
QString widgetText(QWidget *w)
{
    if (auto *button = qobject_cast<QAbstractButton *>(w))
        return button->isCheckable() ? QString::fromLatin1(button->isChecked() ? "true" : "false") : button->text();
    if (auto *line = qobject_cast<QLineEdit *>(w))
        return line->text();
    if (auto *label = qobject_cast<QLabel *>(w))
        return label->text();
    if (auto *combo = qobject_cast<QComboBox *>(w))
        return combo->currentText();
    return w->property("value").toString();
}

bool expectSelection(AH_BatchContext &c, QStringList const &a, QString &why)
{
    QStringList names;
    for (MO_Node *node : c.session()->getSelection()->nodes())
        names << node->instanceName();
    if (names == a)
        return true;
    why = QStringLiteral("expected the selection \"%1\", found \"%2\"").arg(a.join(QLatin1Char(' ')), names.join(QLatin1Char(' ')));
    return false;
}

bool expectWidget(AH_BatchContext &c, QStringList const &a, QString &why)
{
    QWidget *w = c.panelWidget(a[0], why);
    if (!w)
        return false;
    QString const wanted = a.mid(1).join(QLatin1Char(' '));
    QString const shown = widgetText(w);
    if (sameValue(shown, wanted))
        return true;
    why = QStringLiteral("expected the widget \"%1\" to show \"%2\", found \"%3\"").arg(a[0], wanted, shown);
    return false;
}

bool expectValue(AH_BatchContext &c, QStringList const &a, QString &why)
{
    QString text;
    if (!c.workspace().attributeText(a[0], a[1], a[2].toDouble(), &text, &why))
        return false;
    QString const wanted = a.mid(3).join(QLatin1Char(' '));
    if (sameValue(text, wanted))
        return true;
    why = QStringLiteral("expected %1 %2 at frame %3 to be \"%4\", found \"%5\"").arg(a[0], a[1], a[2], wanted, text);
    return false;
}

bool expectKeys(AH_BatchContext &c, QStringList const &a, QString &why)
{
    std::vector<int> keys;
    if (!c.workspace().attributeKeys(a[0], a[1], &keys, &why))
        return false;
    QStringList found;
    for (int key : keys)
        found << QString::number(key);
    QStringList const expected = a.mid(2);
    if (found == expected)
        return true;
    why = QStringLiteral("expected the keys of %1 %2 at \"%3\", found \"%4\"")
              .arg(a[0], a[1], expected.join(QLatin1Char(' ')), found.join(QLatin1Char(' ')));
    return false;
}

} // namespace

void AH_AddCheckCommands(AH_BatchCommandList &table)
{
    table.push_back({QStringLiteral("expect-selection"), 0, -1, QStringLiteral("[NODE...]"), nullptr, expectSelection});
    table.push_back({QStringLiteral("expect-frame"), 1, 1, QStringLiteral("N"), frameAt(0),
                     [](AH_BatchContext &c, QStringList const &a, QString &why) {
                         if (c.session()->currentFrame() == a[0].toDouble())
                             return true;
                         why = QStringLiteral("expected frame %1, found %2").arg(a[0]).arg(c.session()->currentFrame());
                         return false;
                     }});
    table.push_back({QStringLiteral("expect-tool"), 1, 1, QStringLiteral("NAME"), nullptr,
                     [](AH_BatchContext &c, QStringList const &a, QString &why) {
                         CX_ToolIds::ID const id = c.view()->toolId();
                         if (id != CX_ToolIds::None && TO_ToolFactory::instance().idForName(a[0]) == id)
                             return true;
                         why = QStringLiteral("expected the tool \"%1\" in the view").arg(a[0]);
                         return false;
                     }});
    table.push_back({QStringLiteral("expect-widget"), 1, -1, QStringLiteral("NAME VALUE"), nullptr, expectWidget});
    table.push_back({QStringLiteral("expect-undo"), 0, -1, QStringLiteral("[STEP NAME]"), nullptr,
                     [](AH_BatchContext &c, QStringList const &a, QString &why) {
                         CO_CommandManager *commands = c.session()->commandManager();
                         QString const name = commands->undoName();
                         QString const wanted = a.join(QLatin1Char(' '));
                         if (name == wanted && (commands->canUndo() || wanted.isEmpty()))
                             return true;
                         why = QStringLiteral("expected the undo step \"%1\", found \"%2\"").arg(wanted, name);
                         return false;
                     }});
    table.push_back({QStringLiteral("expect-value"), 4, -1, QStringLiteral("NODE ATTRIBUTE FRAME VALUE"), frameAt(2), expectValue});
    table.push_back({QStringLiteral("expect-keys"), 2, -1, QStringLiteral("NODE ATTRIBUTE [FRAME...]"), wholeFramesFrom(2), expectKeys});
}
