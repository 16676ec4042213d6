#include "AH_BatchRunner.h"

#include "AH_Workspace.h"
#include "action/AC_Manager.h"
#include "command/CO_CommandManager.h"
#include "panel/TP_ToolProperties.h"
#include "preference/PR_Preference.h"
#include "scene/MO_Node.h"
#include "session/SC_Session.h"
#include "session/SL_Selection.h"
#include "tool/TO_ToolFactory.h"
#include "view/VW_View.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QKeySequence>
#include <QTextStream>

#include <cmath>
#include <functional>
#include <map>

namespace {

// One line of a script, split into words; "double quotes" keep spaces in a word.
struct Line {
    int number = 0;
    QStringList words;
};

bool splitWords(QString const &text, QStringList &words)
{
    QString word;
    bool quoted = false, inWord = false;
    for (QChar c : text) {
        if (c == QLatin1Char('"')) {
            quoted = !quoted;
            inWord = true;
        } else if (c.isSpace() && !quoted) {
            if (inWord)
                words << word;
            word.clear();
            inWord = false;
        } else {
            word += c;
            inWord = true;
        }
    }
    if (inWord)
        words << word;
    return !quoted;
}

bool toNumber(QString const &text, double &value)
{
    bool ok = false;
    value = text.toDouble(&ok);
    return ok && std::isfinite(value);
}

bool toModifiers(QStringList const &words, Qt::KeyboardModifiers &modifiers)
{
    static std::map<QString, Qt::KeyboardModifier> const names{
        {QStringLiteral("shift"), Qt::ShiftModifier}, {QStringLiteral("ctrl"), Qt::ControlModifier},
        {QStringLiteral("alt"), Qt::AltModifier}};
    modifiers = Qt::NoModifier;
    for (QString const &word : words)
        for (QString const &part : word.toLower().split(QLatin1Char('+'))) {
            auto const found = names.find(part);
            if (found == names.end())
                return false;
            modifiers |= found->second;
        }
    return true;
}

// The key combination of `text` ("Left", "Alt+K"), or 0.
int toKeyCode(QString const &text)
{
    QKeySequence const sequence = QKeySequence::fromString(text, QKeySequence::PortableText);
    if (sequence.count() != 1 || (sequence[0] & ~Qt::KeyboardModifierMask) == 0 ||
        (sequence[0] & ~Qt::KeyboardModifierMask) == Qt::Key_unknown)
        return 0;
    return sequence[0];
}

// Components of a value text ("1, 2.5, 0"), as numbers when they all are.
bool numbersOf(QString const &text, std::vector<double> &numbers)
{
    numbers.clear();
    for (QString const &part : text.split(QLatin1Char(','))) {
        double v = 0.0;
        if (!toNumber(part.trimmed(), v))
            return false;
        numbers.push_back(v);
    }
    return true;
}

bool sameValue(QString const &actual, QString const &expected)
{
    std::vector<double> a, e;
    if (!numbersOf(actual, a) || !numbersOf(expected, e))
        return actual == expected;
    if (a.size() != e.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::abs(a[i] - e[i]) > 1e-4 * std::max(1.0, std::abs(e[i])))
            return false;
    return true;
}

// What a command needs of its line, checked before the script runs.
struct Syntax {
    int minWords;            // arguments after the command
    int maxWords;            // -1: any number
    QString form;            // how the arguments are written, for messages
    std::function<bool(QStringList const &, QString &)> check;  // further checks; sets the message
};

bool checkPoint(QStringList const &a, QString &why)
{
    int const first = !a.isEmpty() && a[0] == QLatin1String("scene") ? 1 : 0;
    double x = 0.0, y = 0.0;
    Qt::KeyboardModifiers m;
    if (a.size() < first + 2 || !toNumber(a[first], x) || !toNumber(a[first + 1], y)) {
        why = QStringLiteral("two finite numbers X Y");
        return false;
    }
    if (!toModifiers(a.mid(first + 2), m)) {
        why = QStringLiteral("modifiers among shift, ctrl and alt");
        return false;
    }
    return true;
}

// A check that the word at `index` is a finite frame number.
std::function<bool(QStringList const &, QString &)> frameAt(int index)
{
    return [index](QStringList const &a, QString &why) {
        double v = 0.0;
        why = QStringLiteral("a finite frame number");
        return toNumber(a[index], v);
    };
}

// A check that every word from `index` on is a whole frame number.
bool checkFramesFrom(QStringList const &a, int index, QString &why)
{
    why = QStringLiteral("whole frame numbers");
    for (int i = index; i < a.size(); ++i) {
        bool ok = false;
        a[i].toInt(&ok);
        if (!ok)
            return false;
    }
    return true;
}

bool checkSize(QStringList const &a, int from, QString &why)
{
    for (int i = from; i < from + 2; ++i) {
        bool ok = false;
        int const v = a[i].toInt(&ok);
        if (!ok || v < 1 || v > 10000) {
            why = QStringLiteral("a size of whole numbers from 1 to 10000");
            return false;
        }
    }
    return true;
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

std::map<QString, Syntax> const &syntaxTable()
{
    auto none = [](QStringList const &, QString &) { return true; };
    static std::map<QString, Syntax> const table{
        {QStringLiteral("open"), {1, 1, QStringLiteral("FILE"), none}},
        {QStringLiteral("save"), {1, 1, QStringLiteral("FILE"), none}},
        {QStringLiteral("select"), {0, -1, QStringLiteral("[NODE...]"), none}},
        {QStringLiteral("frame"), {1, 1, QStringLiteral("N"),
                                   frameAt(0)}},
        {QStringLiteral("tool"), {1, 1, QStringLiteral("NAME"), none}},
        {QStringLiteral("view"), {2, 2, QStringLiteral("WIDTH HEIGHT"),
                                  [](QStringList const &a, QString &why) { return checkSize(a, 0, why); }}},
        {QStringLiteral("press"), {2, 6, QStringLiteral("[scene] X Y [shift] [ctrl] [alt]"), checkPoint}},
        {QStringLiteral("move"), {2, 6, QStringLiteral("[scene] X Y [shift] [ctrl] [alt]"), checkPoint}},
        {QStringLiteral("release"), {2, 6, QStringLiteral("[scene] X Y [shift] [ctrl] [alt]"), checkPoint}},
        {QStringLiteral("key"), {1, 1, QStringLiteral("KEY"),
                                 [](QStringList const &a, QString &why) {
                                     why = QStringLiteral("one key, as \"Left\" or \"Alt+K\"");
                                     return toKeyCode(a[0]) != 0;
                                 }}},
        {QStringLiteral("undo"), {0, 0, QString(), none}},
        {QStringLiteral("redo"), {0, 0, QString(), none}},
        {QStringLiteral("set"), {3, -1, QStringLiteral("NODE ATTRIBUTE VALUE"), none}},
        {QStringLiteral("render"), {1, 3, QStringLiteral("FILE.png [WIDTH HEIGHT]"),
                                    [](QStringList const &a, QString &why) {
                                        if (a.size() == 2) {
                                            why = QStringLiteral("both WIDTH and HEIGHT or neither");
                                            return false;
                                        }
                                        return a.size() == 1 || checkSize(a, 1, why);
                                    }}},
        {QStringLiteral("print"), {3, 3, QStringLiteral("NODE ATTRIBUTE FRAME"),
                                   frameAt(2)}},
        {QStringLiteral("pref"), {3, -1, QStringLiteral("KEY bool|int|double|string VALUE"),
                                  [](QStringList const &a, QString &why) {
                                      QString const type = a[1];
                                      QString const value = a.mid(2).join(QLatin1Char(' '));
                                      bool ok = type == QLatin1String("string");
                                      if (type == QLatin1String("bool"))
                                          ok = value == QLatin1String("true") || value == QLatin1String("false");
                                      else if (type == QLatin1String("int"))
                                          value.toInt(&ok);
                                      else if (type == QLatin1String("double")) {
                                          double v = 0.0;
                                          ok = toNumber(value, v);
                                      }
                                      why = QStringLiteral("a type among bool, int, double and string and a value of that type");
                                      return ok;
                                  }}},
        {QStringLiteral("action"), {2, 2, QStringLiteral("RESPONDER SLOT"), none}},
        {QStringLiteral("expect-selection"), {0, -1, QStringLiteral("[NODE...]"), none}},
        {QStringLiteral("expect-frame"), {1, 1, QStringLiteral("N"),
                                          frameAt(0)}},
        {QStringLiteral("expect-tool"), {1, 1, QStringLiteral("NAME"), none}},
        {QStringLiteral("widget"), {2, -1, QStringLiteral("NAME click | check true|false | value N | text TEXT"), checkWidgetAction}},
        {QStringLiteral("expect-widget"), {1, -1, QStringLiteral("NAME VALUE"), none}},
        {QStringLiteral("expect-undo"), {0, -1, QStringLiteral("[STEP NAME]"), none}},
        {QStringLiteral("expect-value"), {4, -1, QStringLiteral("NODE ATTRIBUTE FRAME VALUE"),
                                          frameAt(2)}},
        {QStringLiteral("expect-keys"), {2, -1, QStringLiteral("NODE ATTRIBUTE [FRAME...]"),
                                         [](QStringList const &a, QString &why) { return checkFramesFrom(a, 2, why); }}},
    };
    return table;
}

} // namespace

struct AH_BatchRunner::Impl {
    Impl(AH_Workspace &w, AC_Manager *a, TP_ToolPropertiesReceiver *p) : workspace(w), actions(a), panels(p) {}

    AH_Workspace &workspace;
    AC_Manager *actions;
    TP_ToolPropertiesReceiver *panels;                      // not owned; may be ownPanels
    std::unique_ptr<TP_ToolPropertiesReceiver> ownPanels;  // made when a script needs one
    QString outputFolder;
    QTextStream *out = nullptr;
    QString inputFolder;

    QString inputPath(QString const &file) const { return QDir(inputFolder).absoluteFilePath(file); }
    QString outputPath(QString const &file) const
    {
        return QDir(outputFolder.isEmpty() ? QDir::currentPath() : outputFolder).absoluteFilePath(file);
    }

    // The view point of a gesture's arguments.
    bool gesturePoint(QStringList const &a, Math::Point2d &point, Qt::KeyboardModifiers &modifiers, QString &why)
    {
        int const first = a[0] == QLatin1String("scene") ? 1 : 0;
        double x = 0.0, y = 0.0;
        toNumber(a[first], x);
        toNumber(a[first + 1], y);
        toModifiers(a.mid(first + 2), modifiers);
        point = Math::Point2d(x, y);
        if (first == 1 && !workspace.view()->sceneToView(Math::Point2d(x, y), point)) {
            why = QStringLiteral("a scene point that maps into the view");
            return false;
        }
        return true;
    }

    // The widget of that object name in the panel of the view's tool, or null with `why` set.
    QWidget *panelWidget(QString const &name, QString &why)
    {
        if (!panels) {
            ownPanels = std::make_unique<TP_ToolPropertiesReceiver>();
            panels = ownPanels.get();
            // As the window does: an undo may take away what a panel shows without telling it.
            QObject::connect(&workspace, &AH_Workspace::documentChanged, panels,
                             &TP_ToolPropertiesReceiver::updateStatus);
        }
        CX_ToolIds::ID const tool = workspace.view()->toolId();
        if (panels->currentTool() != tool)
            panels->setCurrentTool(tool);
        TP_ToolPropertiesPanel *panel = panels->currentPanel();
        QWidget *content = panel ? panel->contentWidget() : nullptr;
        QWidget *found = !content ? nullptr : content->objectName() == name ? content : content->findChild<QWidget *>(name);
        if (!found)
            why = QStringLiteral("expected a widget named \"%1\" in the panel of the current tool").arg(name);
        return found;
    }
    bool actOnWidget(QStringList const &a, QString &why);

    bool execute(QString const &command, QStringList const &a, QString &why);
};

bool AH_BatchRunner::Impl::actOnWidget(QStringList const &a, QString &why)
{
    QWidget *w = panelWidget(a[0], why);
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
    why = QStringLiteral("expected a widget that can \"%1\", not the %2 \"%3\"").arg(action, QLatin1String(w->metaObject()->className()), a[0]);
    return false;
}

AH_BatchRunner::AH_BatchRunner(AH_Workspace &workspace, AC_Manager *actions, TP_ToolPropertiesReceiver *panels)
    : d_(std::make_unique<Impl>(workspace, actions, panels))
{
}

AH_BatchRunner::~AH_BatchRunner() = default;

void AH_BatchRunner::setOutputFolder(QString const &folder)
{
    d_->outputFolder = folder;
}

void AH_BatchRunner::setOutput(QTextStream *out)
{
    d_->out = out;
}

bool AH_BatchRunner::runFile(QString const &path, QStringList *errors)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        if (errors)
            *errors << QStringLiteral("%1: expected a readable script file (%2)").arg(path, file.errorString());
        return false;
    }
    QString const text = QString::fromUtf8(file.readAll());
    return run(text, path, QFileInfo(path).absolutePath(), errors);
}

bool AH_BatchRunner::run(QString const &text, QString const &source, QString const &inputFolder, QStringList *errors)
{
    QStringList messages;
    // Every message reads "<source>:<line>: expected ...".
    auto report = [&](int line, QString const &what) {
        QString const text = what.startsWith(QLatin1String("expected ")) ? what : QStringLiteral("expected ") + what;
        messages << QStringLiteral("%1:%2: %3").arg(source).arg(line).arg(text);
    };

    // Read everything first: a script with a bad line does not run at all.
    std::vector<Line> lines;
    QStringList const rows = text.split(QLatin1Char('\n'));
    for (int i = 0; i < rows.size(); ++i) {
        QString const row = rows[i].trimmed();
        if (row.isEmpty() || row.startsWith(QLatin1Char('#')))
            continue;
        Line line;
        line.number = i + 1;
        if (!splitWords(row, line.words)) {
            report(line.number, QStringLiteral("a closing double quote"));
            continue;
        }
        QString const command = line.words.front();
        auto const syntax = syntaxTable().find(command);
        if (syntax == syntaxTable().end()) {
            QStringList known;
            for (auto const &entry : syntaxTable())
                known << entry.first;
            report(line.number, QStringLiteral("a command (%1), not \"%2\"").arg(known.join(QStringLiteral(", ")), command));
            continue;
        }
        QStringList const args = line.words.mid(1);
        Syntax const &s = syntax->second;
        if (args.size() < s.minWords || (s.maxWords >= 0 && args.size() > s.maxWords)) {
            report(line.number, QStringLiteral("\"%1 %2\"").arg(command, s.form).trimmed());
            continue;
        }
        QString why;
        if (!s.check(args, why)) {
            report(line.number, QStringLiteral("%1 in \"%2\"").arg(why, command));
            continue;
        }
        lines.push_back(line);
    }
    if (!messages.isEmpty()) {
        if (errors)
            *errors << messages;
        return false;
    }

    d_->inputFolder = inputFolder;
    for (Line const &line : lines) {
        QString why;
        if (!d_->execute(line.words.front(), line.words.mid(1), why)) {
            report(line.number, why);
            if (errors)
                *errors << messages;
            return false;
        }
    }
    return true;
}

bool AH_BatchRunner::Impl::execute(QString const &command, QStringList const &a, QString &why)
{
    VW_View *view = workspace.view();
    SC_Session *session = workspace.session();
    QString const rest = a.mid(command == QLatin1String("set") ? 2 : 3).join(QLatin1Char(' '));

    if (command == QLatin1String("open")) {
        QString error;
        if (workspace.open(inputPath(a[0]), &error))
            return true;
        why = QStringLiteral("a scene file that reads: %1").arg(error);
        return false;
    }
    if (command == QLatin1String("save")) {
        QString const path = outputPath(a[0]);
        QDir().mkpath(QFileInfo(path).absolutePath());
        QString error;
        if (workspace.save(path, &error))
            return true;
        why = QStringLiteral("a scene that saves: %1").arg(error);
        return false;
    }
    if (command == QLatin1String("select"))
        return workspace.selectNodes(a, &why);
    if (command == QLatin1String("frame"))
        return workspace.setFrame(a[0].toDouble(), &why);
    if (command == QLatin1String("tool"))
        return workspace.setTool(a[0], &why);
    if (command == QLatin1String("view")) {
        view->resize(a[0].toInt(), a[1].toInt());
        return true;
    }
    if (command == QLatin1String("press") || command == QLatin1String("move") || command == QLatin1String("release")) {
        Math::Point2d point;
        Qt::KeyboardModifiers modifiers;
        if (!gesturePoint(a, point, modifiers, why))
            return false;
        // A mouse gets to a place before it presses there: the hover, and the cursor the window
        // asks for on it, come first. Tools keep what lies under the pointer from them.
        bool const press = command == QLatin1String("press");
        if (press && !view->isPressed()) {
            view->mouseMove(point, modifiers);
            view->cursorAt(point);
        }
        // A tool works on what it drew last, as under a mouse: the view is painted before each gesture.
        view->render();
        if (press) {
            view->mousePress(point, modifiers);
        } else if (command == QLatin1String("move")) {
            view->mouseMove(point, modifiers);
        } else {
            view->mouseRelease(point, modifiers);
        }
        view->cursorAt(point);  // as the window does after each gesture
        return true;
    }
    if (command == QLatin1String("key")) {
        int const code = toKeyCode(a[0]);
        int const key = code & ~int(Qt::KeyboardModifierMask);
        auto const modifiers = Qt::KeyboardModifiers(code & int(Qt::KeyboardModifierMask));
        bool const used = view->keyPress(key, modifiers);
        if (!used && actions)
            actions->handleShortcut(code);
        view->keyRelease(key, modifiers);
        return true;
    }
    if (command == QLatin1String("undo") || command == QLatin1String("redo")) {
        bool const undo = command == QLatin1String("undo");
        if (undo ? workspace.undo() : workspace.redo())
            return true;
        why = QStringLiteral("expected a step to %1").arg(command);
        return false;
    }
    if (command == QLatin1String("set"))
        return workspace.setAttribute(a[0], a[1], rest, &why);
    if (command == QLatin1String("render")) {
        if (a.size() == 3)
            view->resize(a[1].toInt(), a[2].toInt());
        QString const path = outputPath(a[0]);
        QDir().mkpath(QFileInfo(path).absolutePath());
        if (view->render().save(path, "PNG"))
            return true;
        why = QStringLiteral("expected a PNG file that can be written, not \"%1\"").arg(path);
        return false;
    }
    if (command == QLatin1String("print")) {
        QString text;
        if (!workspace.attributeText(a[0], a[1], a[2].toDouble(), &text, &why))
            return false;
        QTextStream standardOutput(stdout);
        QTextStream &stream = out ? *out : standardOutput;
        stream << a[0] << ' ' << a[1] << ' ' << a[2] << ": " << text << '\n';
        stream.flush();
        return true;
    }
    if (command == QLatin1String("pref")) {
        QString const value = a.mid(2).join(QLatin1Char(' '));
        QString const &type = a[1];
        bool ok = false;
        if (type == QLatin1String("bool"))
            ok = tuPref->setBoolValue(a[0], value == QLatin1String("true"));
        else if (type == QLatin1String("int"))
            ok = tuPref->setIntValue(a[0], value.toInt());
        else if (type == QLatin1String("double"))
            ok = tuPref->setDoubleValue(a[0], value.toDouble());
        else
            ok = tuPref->setStringValue(a[0], value);
        if (!ok)
            why = QStringLiteral("expected a preference key and value the store accepts");
        return ok;
    }
    if (command == QLatin1String("action")) {
        if (!actions) {
            why = QStringLiteral("expected an application with actions");
            return false;
        }
        AC_Result const result = actions->trigger(a[0], a[1]);
        if (result == AC_Result::Handled)
            return true;
        why = result == AC_Result::Disabled ? QStringLiteral("expected the action %1 %2 to be enabled").arg(a[0], a[1])
                                            : QStringLiteral("expected an action that a responder handles, not %1 %2").arg(a[0], a[1]);
        return false;
    }
    if (command == QLatin1String("expect-selection")) {
        QStringList names;
        for (MO_Node *node : session->getSelection()->nodes())
            names << node->instanceName();
        if (names == a)
            return true;
        why = QStringLiteral("expected the selection \"%1\", found \"%2\"").arg(a.join(QLatin1Char(' ')), names.join(QLatin1Char(' ')));
        return false;
    }
    if (command == QLatin1String("expect-frame")) {
        if (session->currentFrame() == a[0].toDouble())
            return true;
        why = QStringLiteral("expected frame %1, found %2").arg(a[0]).arg(session->currentFrame());
        return false;
    }
    if (command == QLatin1String("expect-tool")) {
        if (view->toolId() != CX_ToolIds::None && TO_ToolFactory::instance().idForName(a[0]) == view->toolId())
            return true;
        why = QStringLiteral("expected the tool \"%1\" in the view").arg(a[0]);
        return false;
    }
    if (command == QLatin1String("widget"))
        return actOnWidget(a, why);
    if (command == QLatin1String("expect-widget")) {
        QWidget *w = panelWidget(a[0], why);
        if (!w)
            return false;
        QString const wanted = a.mid(1).join(QLatin1Char(' '));
        QString const shown = widgetText(w);
        if (sameValue(shown, wanted))
            return true;
        why = QStringLiteral("expected the widget \"%1\" to show \"%2\", found \"%3\"").arg(a[0], wanted, shown);
        return false;
    }
    if (command == QLatin1String("expect-undo")) {
        QString const name = session->commandManager()->undoName();
        QString const wanted = a.join(QLatin1Char(' '));
        if (name == wanted && (session->commandManager()->canUndo() || wanted.isEmpty()))
            return true;
        why = QStringLiteral("expected the undo step \"%1\", found \"%2\"").arg(wanted, name);
        return false;
    }
    if (command == QLatin1String("expect-value")) {
        QString text;
        if (!workspace.attributeText(a[0], a[1], a[2].toDouble(), &text, &why))
            return false;
        if (sameValue(text, rest))
            return true;
        why = QStringLiteral("expected %1 %2 at frame %3 to be \"%4\", found \"%5\"").arg(a[0], a[1], a[2], rest, text);
        return false;
    }
    if (command == QLatin1String("expect-keys")) {
        std::vector<int> keys;
        if (!workspace.attributeKeys(a[0], a[1], &keys, &why))
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
    why = QStringLiteral("expected a command");
    return false;
}
