// animhost: opens the plug-in and shows the window, or runs a batch script without a display.
//
//   animhost [--prefs PATH] [--plugins DIR] [SCENE]
//   animhost --batch SCRIPT [--output DIR] [--prefs PATH] [--plugins DIR] [SCENE]
//   animhost [--run SCRIPT] [--screenshot FILE] [SCENE]
//       --run: the script's gestures are played in the window's session before it shows;
//       --screenshot: the window saves a picture of itself and quits.
//
// Exit status: 0 on success; 1 when a scene or a script fails, or a batch run cannot save the
// preferences; 2 for a bad command line.
#include "AH_BatchRunner.h"
#include "AH_Host.h"
#include "AH_MainWindow.h"
#include "AH_Workspace.h"

#include <QApplication>
#include <QTextStream>
#include <QTimer>

#include <cstring>

int main(int argc, char *argv[])
{
    bool batch = false;
    for (int i = 1; i < argc; ++i)
        batch = batch || std::strcmp(argv[i], "--batch") == 0;
    // Batch runs need no display.
    if (batch && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("animhost"));
    QTextStream err(stderr);

    AH_Options options;
    QString error;
    if (!AH_Options::parse(QApplication::arguments(), options, &error)) {
        err << "animhost: " << error << '\n' << AH_Options::usage() << '\n';
        return 2;
    }

    AH_Host host;
    host.startup(options);
    int status = 0;
    {
        // The workspace (and the tool its view holds, perhaps made by the plug-in) goes before the
        // plug-ins are unpolished.
        AH_Workspace workspace(host.changeManager());
        bool const opened = options.sceneFile.isEmpty() || workspace.open(options.sceneFile, &error);
        if (!options.batchScript.isEmpty()) {
            QStringList errors;
            if (!opened)
                errors << error;
            else {
                AH_BatchRunner runner(workspace, host.actionManager());
                runner.setOutputFolder(options.outputDir);
                runner.runFile(options.batchScript, &errors);
            }
            for (QString const &message : errors)
                err << message << '\n';
            status = errors.isEmpty() ? 0 : 1;
        } else {
            AH_MainWindow window(workspace, host);
            window.show();
            QStringList errors = host.pluginErrors();  // also on standard error, but a window user may not see it
            if (!opened)
                errors << error;
            else if (!options.startScript.isEmpty()) {
                AH_BatchRunner runner(workspace, host.actionManager(), window.toolProperties());
                runner.setOutputFolder(options.outputDir);
                runner.runFile(options.startScript, &errors);
            }
            if (!errors.isEmpty())
                QTimer::singleShot(0, &window, [&window, errors] {
                    window.reportError(QObject::tr("animhost could not start as asked"), errors.join(QLatin1Char('\n')));
                });
            if (!options.screenshot.isEmpty())
                // Once the window is laid out and painted.
                QTimer::singleShot(1000, &window, [&window, &status, &err, path = options.screenshot] {
                    if (!window.grab().save(path, "PNG")) {
                        err << "animhost: expected a PNG file that can be written, not \"" << path << "\"\n";
                        status = 1;
                    }
                    QApplication::quit();
                });
            int const result = QApplication::exec();
            status = status ? status : result;
        }
    }
    // A batch run that set preferences it cannot keep has not done what it was asked.
    if (!host.shutdown() && batch && status == 0) {
        err << "animhost: expected preferences that can be saved\n";
        status = 1;
    }
    return status;
}
