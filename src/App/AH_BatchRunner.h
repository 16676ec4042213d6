// Batch scripts: the gestures of a user, one per line, run on a workspace without a display.
// The language is described in docs/batch-scripts.md.
//
// A script is read whole before anything runs: every line that is not understood (an unknown
// command, a wrong number of arguments, a number that is not one) gives one message
// "<script>:<line>: expected ..." and the script does not run at all, so a bad script changes
// nothing. While it runs, the first line that fails (a missing file, an unknown node, a check that
// does not hold) stops it with a message of the same form.
//
// Gestures go through VW_View exactly as the window's mouse and keys do.
#pragma once

#include <QString>
#include <QStringList>

#include <memory>

class AC_Manager;
class AH_Workspace;
class QTextStream;
class TP_ToolPropertiesReceiver;

class AH_BatchRunner {
public:
    // `actions` may be null: keys then reach the tool only, and "action" lines fail. `panels` is
    // where "widget" lines find the current tool's panel (the window's dock); null: the runner
    // makes a hidden one of its own when a script first needs it. Neither is owned.
    explicit AH_BatchRunner(AH_Workspace &workspace, AC_Manager *actions = nullptr,
                            TP_ToolPropertiesReceiver *panels = nullptr);
    ~AH_BatchRunner();
    AH_BatchRunner(AH_BatchRunner const &) = delete;
    AH_BatchRunner &operator=(AH_BatchRunner const &) = delete;

    // Relative paths of "save" and "render" are taken from this folder (default: the current one).
    void setOutputFolder(QString const &folder);
    // Where "print" writes; standard output by default. Not owned.
    void setOutput(QTextStream *out);

    // Runs the script file; relative paths of "open" are taken from the script's folder.
    bool runFile(QString const &path, QStringList *errors);
    // Runs `text`, naming it `source` in messages; `inputFolder` resolves the paths of "open".
    bool run(QString const &text, QString const &source, QString const &inputFolder, QStringList *errors);
    // Reads `text` as run() does before it runs anything, and runs nothing: true when every line
    // is understood, else one message per bad line in `errors`. Touches no workspace or file.
    static bool check(QString const &text, QString const &source, QStringList *errors);

private:
    struct Impl;
    std::unique_ptr<Impl> d_;
};
