// Batch commands that do what a user does in the window: select, frame, tool, view, press, move,
// release, key, undo, redo, set, action, widget.
#include "AH_BatchCommands.h"

#include "AH_Workspace.h"
#include "action/AC_Manager.h"
#include "view/VW_View.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>

using namespace AH_BatchWords;

namespace {

// The view point of a gesture's arguments ("[scene] X Y [modifiers]").
bool gesturePoint(AH_BatchContext &c, QStringList const &a, Math::Point2d &point, Qt::KeyboardModifiers &modifiers,
                  QString &why)
{
    int const first = a[0] == QLatin1String("scene") ? 1 : 0;
    double x = 0.0, y = 0.0;
    toNumber(a[first], x);
    toNumber(a[first + 1], y);
    toModifiers(a.mid(first + 2), modifiers);
    point = Math::Point2d(x, y);
    if (first == 1 && !c.view()->sceneToView(Math::Point2d(x, y), point)) {
        why = QStringLiteral("expected a scene point that maps into the view");
        return false;
    }
    return true;
}

enum class Gesture { Press, Move, Release };

AH_BatchCommand::Run gesture(Gesture kind)
{
    return [kind](AH_BatchContext &c, QStringList const &a, QString &why) {
        Math::Point2d point;
        Qt::KeyboardModifiers modifiers;
        if (!gesturePoint(c, a, point, modifiers, why))
            return false;
        VW_View *view = c.view();
        // A mouse gets to a place before it presses there: the hover, and the cursor the window
        // asks for on it, come first. Tools keep what lies under the pointer from them.
        if (kind == Gesture::Press && !view->isPressed()) {
            view->mouseMove(point, modifiers);
            view->cursorAt(point);
        }
        // A tool works on what it drew last, as under a mouse: the view is painted before each gesture.
        view->render();
        switch (kind) {
        case Gesture::Press: view->mousePress(point, modifiers); break;
        case Gesture::Move: view->mouseMove(point, modifiers); break;
        case Gesture::Release: view->mouseRelease(point, modifiers); break;
        }
        view->cursorAt(point);  // as the window does after each gesture
        return true;
    };
}

bool checkWidgetAction(QStringList const &a, QString &why)
{
    QString const &action = a[1];
    QString const value = a.mid(2).join(QLatin1Char(' '));
    double v = 0.0;
    why = QStringLiteral("\"click\", \"check true|false\", \"value N\" (a finite number) or \"text TEXT\"");
    if (action == QLatin1String("click"))
        return a.size() == 2;
    if (action == QLatin1String("check"))
        return value == QLatin1String("true") || value == QLatin1String("false");
    if (action == QLatin1String("value"))
        return a.size() == 3 && toNumber(value, v);
    return action == QLatin1String("text");
}

bool actOnWidget(AH_BatchContext &c, QStringList const &a, QString &why)
{
    QWidget *w = c.panelWidget(a[0], why);
    if (!w)
        return false;
    QString const &action = a[1];
    QString const value = a.mid(2).join(QLatin1Char(' '));
    auto *button = qobject_cast<QAbstractButton *>(w);
    if (!w->isEnabled()) {
        why = QStringLiteral("expected the widget \"%1\" to be enabled").arg(a[0]);
        return false;
    }
    // Buttons are clicked as a user would, so that they emit what a click emits.
    if (action == QLatin1String("click") && button) {
        button->click();
        return true;
    }
    if (action == QLatin1String("check") && button && button->isCheckable()) {
        if (button->isChecked() != (value == QLatin1String("true")))
            button->click();
        return true;
    }
    if (action == QLatin1String("value")) {
        if (auto *combo = qobject_cast<QComboBox *>(w)) {
            int const index = value.toInt();
            if (index >= 0 && index < combo->count()) {
                combo->setCurrentIndex(index);
                emit combo->activated(index);  // as a choice in the list does
                return true;
            }
        } else if (w->metaObject()->indexOfProperty("value") >= 0 && w->setProperty("value", value.toDouble())) {
            return true;
        }
    }
    if (action == QLatin1String("text")) {
        if (auto *line = qobject_cast<QLineEdit *>(w)) {
            line->setText(value);
            emit line->editingFinished();
            return true;
        }
    }
    why = QStringLiteral("expected a widget that can \"%1\", not the %2 \"%3\"")
              .arg(action, QLatin1String(w->metaObject()->className()), a[0]);
    return false;
}

bool pressKey(AH_BatchContext &c, QStringList const &a, QString &)
{
    int const code = toKeyCode(a[0]);
    int const key = code & ~int(Qt::KeyboardModifierMask);
    auto const modifiers = Qt::KeyboardModifiers(code & int(Qt::KeyboardModifierMask));
    bool const used = c.view()->keyPress(key, modifiers);
    // As in the window: the tool, then the shortcuts of the actions, then the frame keys.
    if (!used && (!c.actions() || c.actions()->handleShortcut(code) == AC_Result::NotHandled))
        c.workspace().stepFrameForKey(key, modifiers);
    c.view()->keyRelease(key, modifiers);
    return true;
}

bool triggerAction(AH_BatchContext &c, QStringList const &a, QString &why)
{
    if (!c.actions()) {
        why = QStringLiteral("expected an application with actions");
        return false;
    }
    AC_Result const result = c.actions()->trigger(a[0], a[1]);
    if (result == AC_Result::Handled)
        return true;
    why = result == AC_Result::Disabled ? QStringLiteral("expected the action %1 %2 to be enabled").arg(a[0], a[1])
                                        : QStringLiteral("expected an action that a responder handles, not %1 %2").arg(a[0], a[1]);
    return false;
}

AH_BatchCommand::Run undoOrRedo(bool undo)
{
    return [undo](AH_BatchContext &c, QStringList const &, QString &why) {
        if (undo ? c.workspace().undo() : c.workspace().redo())
            return true;
        why = QStringLiteral("expected a step to %1").arg(QLatin1String(undo ? "undo" : "redo"));
        return false;
    };
}

} // namespace

void AH_AddGestureCommands(AH_BatchCommandList &table)
{
    QString const point = QStringLiteral("[scene] X Y [shift] [ctrl] [alt]");
    table.push_back({QStringLiteral("select"), 0, -1, QStringLiteral("[NODE...]"), nullptr,
                     [](AH_BatchContext &c, QStringList const &a, QString &why) { return c.workspace().selectNodes(a, &why); }});
    table.push_back({QStringLiteral("frame"), 1, 1, QStringLiteral("N"), frameAt(0),
                     [](AH_BatchContext &c, QStringList const &a, QString &why) {
                         return c.workspace().setFrame(a[0].toDouble(), &why);
                     }});
    table.push_back({QStringLiteral("tool"), 1, 1, QStringLiteral("NAME"), nullptr,
                     [](AH_BatchContext &c, QStringList const &a, QString &why) { return c.workspace().setTool(a[0], &why); }});
    table.push_back({QStringLiteral("view"), 2, 2, QStringLiteral("WIDTH HEIGHT"), sizeAt(0),
                     [](AH_BatchContext &c, QStringList const &a, QString &) {
                         c.view()->resize(a[0].toInt(), a[1].toInt());
                         return true;
                     }});
    table.push_back({QStringLiteral("press"), 2, 6, point, checkPoint, gesture(Gesture::Press)});
    table.push_back({QStringLiteral("move"), 2, 6, point, checkPoint, gesture(Gesture::Move)});
    table.push_back({QStringLiteral("release"), 2, 6, point, checkPoint, gesture(Gesture::Release)});
    table.push_back({QStringLiteral("key"), 1, 1, QStringLiteral("KEY"), oneKey, pressKey});
    table.push_back({QStringLiteral("undo"), 0, 0, QString(), nullptr, undoOrRedo(true)});
    table.push_back({QStringLiteral("redo"), 0, 0, QString(), nullptr, undoOrRedo(false)});
    table.push_back({QStringLiteral("set"), 3, -1, QStringLiteral("NODE ATTRIBUTE VALUE"), nullptr,
                     [](AH_BatchContext &c, QStringList const &a, QString &why) {
                         return c.workspace().setAttribute(a[0], a[1], a.mid(2).join(QLatin1Char(' ')), &why);
                     }});
    table.push_back({QStringLiteral("action"), 2, 2, QStringLiteral("RESPONDER SLOT"), nullptr, triggerAction});
    table.push_back({QStringLiteral("widget"), 2, -1, QStringLiteral("NAME click | check true|false | value N | text TEXT"),
                     checkWidgetAction, actOnWidget});
}
