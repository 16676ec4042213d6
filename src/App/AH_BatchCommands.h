// The commands of batch scripts, one row each.
//
// A row is the whole of a command: how many words it takes, how its arguments are written (for
// messages), the check of its line before the script runs and what it does when it runs. The
// runner (AH_BatchRunner) knows no command by name; adding a command is adding a row to one of the
// groups below, each group in a file of its own (AH_BatchCommands<Group>.cpp), gathered by
// AH_BatchCommandTable().
//
// Careful: a check runs before anything of the script has run, so it may look at the words of
// its line only, never at the scene. Whatever it accepts, `run` must be able to read again
// without failing on syntax (the helpers below parse the same way in both).
#pragma once

#include <QString>
#include <QStringList>
#include <QtCore/qnamespace.h>

#include <functional>
#include <map>
#include <memory>
#include <vector>

class AC_Manager;
class AH_Workspace;
class MO_ElementModule;
class QTextStream;
class QWidget;
class SC_Session;
class TP_ToolPropertiesReceiver;
class VW_View;

// What a command sees while it runs: the workspace and the services of the application, and the
// folders that relative paths are taken from.
class AH_BatchContext {
public:
    AH_BatchContext(AH_Workspace &workspace, AC_Manager *actions, TP_ToolPropertiesReceiver *panels);
    ~AH_BatchContext();
    AH_BatchContext(AH_BatchContext const &) = delete;
    AH_BatchContext &operator=(AH_BatchContext const &) = delete;

    AH_Workspace &workspace() const { return workspace_; }
    VW_View *view() const;
    SC_Session *session() const;
    AC_Manager *actions() const { return actions_; }  // null: "action" lines fail

    void setInputFolder(QString const &folder) { inputFolder_ = folder; }
    void setOutputFolder(QString const &folder) { outputFolder_ = folder; }
    void setOutput(QTextStream *out) { out_ = out; }

    QString inputPath(QString const &file) const;
    // The path in the output folder, with its folder made.
    QString outputPath(QString const &file) const;
    // Where "print" and other reports go: the stream set, or standard output.
    QTextStream &output();

    // The drawing element of that instance name, or null with `why` set.
    MO_ElementModule *elementNamed(QString const &name, QString &why) const;

    // The widget of that object name in the panel of the view's tool, or null with `why` set. The
    // first call without a receiver makes a hidden one.
    QWidget *panelWidget(QString const &name, QString &why);

    // What "remember" kept for the expect-unchanged and expect-unmoved lines that follow, by key.
    std::map<QString, QString> &remembered() { return remembered_; }

private:
    AH_Workspace &workspace_;
    AC_Manager *actions_;                                      // not owned
    TP_ToolPropertiesReceiver *panels_;                        // not owned; may be ownPanels_
    std::unique_ptr<TP_ToolPropertiesReceiver> ownPanels_;    // made when a script needs one
    std::unique_ptr<QTextStream> standardOutput_;
    QTextStream *out_ = nullptr;
    QString inputFolder_;
    QString outputFolder_;
    std::map<QString, QString> remembered_;
};

// One command of the language.
struct AH_BatchCommand {
    using Check = std::function<bool(QStringList const &args, QString &why)>;
    using Run = std::function<bool(AH_BatchContext &context, QStringList const &args, QString &why)>;

    QString name;
    int minWords = 0;   // arguments after the command
    int maxWords = 0;   // -1: any number
    QString form;       // how the arguments are written, for messages: "NODE ATTRIBUTE FRAME"
    Check check;        // further checks of the words; null: none. Sets `why` ("two finite numbers X Y")
    Run run;            // sets `why` to the whole message ("expected ...") when it fails
};

using AH_BatchCommandList = std::vector<AH_BatchCommand>;

// Every command, sorted by name; built once.
AH_BatchCommandList const &AH_BatchCommandTable();

// The groups of the table, one file each.
void AH_AddFileCommands(AH_BatchCommandList &table);     // open, save, render, print, pref
void AH_AddGestureCommands(AH_BatchCommandList &table);  // select, frame, tool, view, press, move, release, key, undo, redo, set, action, widget
void AH_AddCheckCommands(AH_BatchCommandList &table);    // expect-*
void AH_AddViewCommands(AH_BatchCommandList &table);     // zoom, pan, fit, reset-view, length, rate, expect-zoom
void AH_AddPanelStateCommands(AH_BatchCommandList &table);  // expect-enabled
void AH_AddStillnessCommands(AH_BatchCommandList &table);   // remember, expect-unchanged, expect-unmoved, expect-moved
void AH_AddShiftAndTraceCommands(AH_BatchCommandList &table);  // shift, set-shift, expect-shift, expect-crosshairs, key-down, key-up
void AH_AddTracingCommands(AH_BatchCommandList &table);  // onion, onion-frames, view-kind, new-drawing, expect-drawings, expect-exposure

// Reading words, the same before and while a script runs.
namespace AH_BatchWords {
// A finite number.
bool toNumber(QString const &text, double &value);
// "shift", "ctrl", "alt", alone or joined by '+'.
bool toModifiers(QStringList const &words, Qt::KeyboardModifiers &modifiers);
// The key combination of `text` ("Left", "Alt+K"), or 0.
int toKeyCode(QString const &text);
// Two values alike: as numbers to a relative 1e-4 when both are lists of numbers, else as texts.
bool sameValue(QString const &actual, QString const &expected);

// Checks for rows.
AH_BatchCommand::Check frameAt(int index);          // the word at `index` is a frame number within SC_Frames
AH_BatchCommand::Check wholeFramesFrom(int index);  // every word from `index` on is a whole frame number within SC_Frames
AH_BatchCommand::Check sizeAt(int index);           // two words from `index`: a size from 1 to 10000
AH_BatchCommand::Check countAt(int index, QString const &things);  // a whole number of `things`, 0 or more
bool checkPoint(QStringList const &args, QString &why);  // [scene] X Y [modifiers]
AH_BatchCommand::Check oneOf(int index, QStringList const &words);  // the word at `index` is one of `words`
bool oneKey(QStringList const &args, QString &why);       // the first word is one key ("Left", "Alt+K")
} // namespace AH_BatchWords
