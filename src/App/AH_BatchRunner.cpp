#include "AH_BatchRunner.h"

#include "AH_BatchCommands.h"
#include "AH_Workspace.h"
#include "panel/TP_ToolProperties.h"
#include "scene/MO_Module.h"
#include "scene/SC_Frames.h"
#include "view/VW_View.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QKeySequence>
#include <QTextStream>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <map>

// --- Words ---------------------------------------------------------------------------------------

bool AH_BatchWords::toNumber(QString const &text, double &value)
{
    bool ok = false;
    value = text.toDouble(&ok);
    return ok && std::isfinite(value);
}

bool AH_BatchWords::toModifiers(QStringList const &words, Qt::KeyboardModifiers &modifiers)
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

int AH_BatchWords::toKeyCode(QString const &text)
{
    QKeySequence const sequence = QKeySequence::fromString(text, QKeySequence::PortableText);
    if (sequence.count() != 1 || (sequence[0] & ~Qt::KeyboardModifierMask) == 0 ||
        (sequence[0] & ~Qt::KeyboardModifierMask) == Qt::Key_unknown)
        return 0;
    return sequence[0];
}

namespace {

// Components of a value text ("1, 2.5, 0"), as numbers when they all are.
bool numbersOf(QString const &text, std::vector<double> &numbers)
{
    numbers.clear();
    for (QString const &part : text.split(QLatin1Char(','))) {
        double v = 0.0;
        if (!AH_BatchWords::toNumber(part.trimmed(), v))
            return false;
        numbers.push_back(v);
    }
    return true;
}

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

AH_BatchCommand const *findCommand(QString const &name)
{
    AH_BatchCommandList const &table = AH_BatchCommandTable();
    auto const found = std::lower_bound(table.begin(), table.end(), name,
                                        [](AH_BatchCommand const &row, QString const &n) { return row.name < n; });
    return found != table.end() && found->name == name ? &*found : nullptr;
}

// Why the words of a line do not make the command, or an empty text when they do.
QString lineProblem(AH_BatchCommand const &command, QStringList const &args)
{
    if (args.size() < command.minWords || (command.maxWords >= 0 && args.size() > command.maxWords))
        return QStringLiteral("\"%1 %2\"").arg(command.name, command.form).trimmed();
    QString why;
    if (command.check && !command.check(args, why))
        return QStringLiteral("%1 in \"%2\"").arg(why, command.name);
    return QString();
}

} // namespace

bool AH_BatchWords::sameValue(QString const &actual, QString const &expected)
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

AH_BatchCommand::Check AH_BatchWords::frameAt(int index)
{
    return [index](QStringList const &a, QString &why) {
        double v = 0.0;
        why = QStringLiteral("a finite frame number from %1 to %2").arg(SC_Frames::kFirst).arg(SC_Frames::kLast);
        return toNumber(a[index], v) && SC_Frames::contains(v);
    };
}

AH_BatchCommand::Check AH_BatchWords::wholeFramesFrom(int index)
{
    return [index](QStringList const &a, QString &why) {
        why = QStringLiteral("whole frame numbers from %1 to %2").arg(SC_Frames::kFirst).arg(SC_Frames::kLast);
        for (int i = index; i < a.size(); ++i) {
            bool ok = false;
            int const frame = a[i].toInt(&ok);
            if (!ok || !SC_Frames::contains(frame))
                return false;
        }
        return true;
    };
}

AH_BatchCommand::Check AH_BatchWords::sizeAt(int index)
{
    return [index](QStringList const &a, QString &why) {
        for (int i = index; i < index + 2; ++i) {
            bool ok = false;
            int const v = a[i].toInt(&ok);
            if (!ok || v < 1 || v > 10000) {
                why = QStringLiteral("a size of whole numbers from 1 to 10000");
                return false;
            }
        }
        return true;
    };
}

AH_BatchCommand::Check AH_BatchWords::countAt(int index, QString const &things)
{
    return [index, things](QStringList const &a, QString &why) {
        why = QStringLiteral("a whole number of %1, 0 or more").arg(things);
        bool ok = false;
        return a[index].toInt(&ok) >= 0 && ok;
    };
}

bool AH_BatchWords::checkPoint(QStringList const &a, QString &why)
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

AH_BatchCommand::Check AH_BatchWords::oneOf(int index, QStringList const &words)
{
    return [index, words](QStringList const &a, QString &why) {
        why = QStringLiteral("one of %1").arg(words.join(QStringLiteral(", ")));
        return words.contains(a[index]);
    };
}

bool AH_BatchWords::oneKey(QStringList const &a, QString &why)
{
    why = QStringLiteral("one key, as \"Left\" or \"Alt+K\"");
    return toKeyCode(a[0]) != 0;
}

// --- The table -----------------------------------------------------------------------------------

AH_BatchCommandList const &AH_BatchCommandTable()
{
    static AH_BatchCommandList const table = [] {
        AH_BatchCommandList rows;
        AH_AddFileCommands(rows);
        AH_AddGestureCommands(rows);
        AH_AddCheckCommands(rows);
        AH_AddViewCommands(rows);
        AH_AddPanelStateCommands(rows);
        AH_AddStillnessCommands(rows);
        AH_AddShiftAndTraceCommands(rows);
        AH_AddTracingCommands(rows);
        std::sort(rows.begin(), rows.end(), [](AH_BatchCommand const &a, AH_BatchCommand const &b) { return a.name < b.name; });
        // Careful: a name given twice would hide one of its rows from findCommand.
        auto const twice = std::adjacent_find(rows.begin(), rows.end(),
                                              [](AH_BatchCommand const &a, AH_BatchCommand const &b) { return a.name == b.name; });
        if (twice != rows.end())
            qFatal("animhost: the batch command \"%s\" is defined twice", qPrintable(twice->name));
        return rows;
    }();
    return table;
}

// --- The context ---------------------------------------------------------------------------------

AH_BatchContext::AH_BatchContext(AH_Workspace &workspace, AC_Manager *actions, TP_ToolPropertiesReceiver *panels)
    : workspace_(workspace), actions_(actions), panels_(panels)
{
}

AH_BatchContext::~AH_BatchContext() = default;

VW_View *AH_BatchContext::view() const
{
    return workspace_.view();
}

SC_Session *AH_BatchContext::session() const
{
    return workspace_.session();
}

QString AH_BatchContext::inputPath(QString const &file) const
{
    return QDir(inputFolder_).absoluteFilePath(file);
}

QString AH_BatchContext::outputPath(QString const &file) const
{
    QString const path = QDir(outputFolder_.isEmpty() ? QDir::currentPath() : outputFolder_).absoluteFilePath(file);
    QDir().mkpath(QFileInfo(path).absolutePath());
    return path;
}

QTextStream &AH_BatchContext::output()
{
    if (out_)
        return *out_;
    if (!standardOutput_)
        standardOutput_ = std::make_unique<QTextStream>(stdout);
    return *standardOutput_;
}

MO_ElementModule *AH_BatchContext::elementNamed(QString const &name, QString &why) const
{
    auto *element = dynamic_cast<MO_ElementModule *>(workspace_.findNode(name));
    if (!element)
        why = QStringLiteral("expected the name of a drawing element of the scene, not \"%1\"").arg(name);
    return element;
}

QWidget *AH_BatchContext::panelWidget(QString const &name, QString &why)
{
    if (!panels_) {
        ownPanels_ = std::make_unique<TP_ToolPropertiesReceiver>();
        panels_ = ownPanels_.get();
        // As the window does: an undo may take away what a panel shows without telling it.
        QObject::connect(&workspace_, &AH_Workspace::documentChanged, panels_, &TP_ToolPropertiesReceiver::updateStatus);
    }
    CX_ToolIds::ID const tool = view()->toolId();
    if (panels_->currentTool() != tool)
        panels_->setCurrentTool(tool);
    TP_ToolPropertiesPanel *panel = panels_->currentPanel();
    QWidget *content = panel ? panel->contentWidget() : nullptr;
    QWidget *found = !content ? nullptr : content->objectName() == name ? content : content->findChild<QWidget *>(name);
    if (!found)
        why = QStringLiteral("expected a widget named \"%1\" in the panel of the current tool").arg(name);
    return found;
}

// --- The runner ----------------------------------------------------------------------------------

struct AH_BatchRunner::Impl {
    Impl(AH_Workspace &w, AC_Manager *a, TP_ToolPropertiesReceiver *p) : context(w, a, p) {}
    AH_BatchContext context;
};

AH_BatchRunner::AH_BatchRunner(AH_Workspace &workspace, AC_Manager *actions, TP_ToolPropertiesReceiver *panels)
    : d_(std::make_unique<Impl>(workspace, actions, panels))
{
}

AH_BatchRunner::~AH_BatchRunner() = default;

void AH_BatchRunner::setOutputFolder(QString const &folder)
{
    d_->context.setOutputFolder(folder);
}

void AH_BatchRunner::setOutput(QTextStream *out)
{
    d_->context.setOutput(out);
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

namespace {

using ParsedLines = std::vector<std::pair<Line, AH_BatchCommand const *>>;

// Every message reads "<source>:<line>: expected ...".
void report(QStringList &messages, QString const &source, int line, QString const &what)
{
    QString const text = what.startsWith(QLatin1String("expected ")) ? what : QStringLiteral("expected ") + what;
    messages << QStringLiteral("%1:%2: %3").arg(source).arg(line).arg(text);
}

// The lines of `text` with their commands; a message per line that is not understood.
ParsedLines parse(QString const &text, QString const &source, QStringList &messages)
{
    ParsedLines lines;
    QStringList const rows = text.split(QLatin1Char('\n'));
    for (int i = 0; i < rows.size(); ++i) {
        QString const row = rows[i].trimmed();
        if (row.isEmpty() || row.startsWith(QLatin1Char('#')))
            continue;
        Line line;
        line.number = i + 1;
        if (!splitWords(row, line.words)) {
            report(messages, source, line.number, QStringLiteral("a closing double quote"));
            continue;
        }
        AH_BatchCommand const *command = findCommand(line.words.front());
        if (!command) {
            QStringList known;
            for (AH_BatchCommand const &row : AH_BatchCommandTable())
                known << row.name;
            report(messages, source, line.number,
                   QStringLiteral("a command (%1), not \"%2\"").arg(known.join(QStringLiteral(", ")), line.words.front()));
            continue;
        }
        QString const problem = lineProblem(*command, line.words.mid(1));
        if (!problem.isEmpty()) {
            report(messages, source, line.number, problem);
            continue;
        }
        lines.emplace_back(line, command);
    }
    return lines;
}

} // namespace

bool AH_BatchRunner::check(QString const &text, QString const &source, QStringList *errors)
{
    QStringList messages;
    parse(text, source, messages);
    if (errors)
        *errors << messages;
    return messages.isEmpty();
}

bool AH_BatchRunner::run(QString const &text, QString const &source, QString const &inputFolder, QStringList *errors)
{
    // Read everything first: a script with a bad line does not run at all.
    QStringList messages;
    ParsedLines const lines = parse(text, source, messages);
    if (!messages.isEmpty()) {
        if (errors)
            *errors << messages;
        return false;
    }

    d_->context.setInputFolder(inputFolder);
    for (auto const &[line, command] : lines) {
        QString why;
        if (!command->run(d_->context, line.words.mid(1), why)) {
            report(messages, source, line.number, why);
            if (errors)
                *errors << messages;
            return false;
        }
    }
    return true;
}
