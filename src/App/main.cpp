// animhost: opens the plug-in and shows the window, or runs a batch script without a display.
//
//   animhost [--prefs PATH] [--plugins DIR] [SCENE]
//   animhost --batch SCRIPT [--output DIR] [--prefs PATH] [--plugins DIR] [SCENE]
//   animhost [--run SCRIPT] [--screenshot FILE] [SCENE]
//   animhost --help | --version
//       --run: the script's gestures are played in the window's session before it shows;
//       --screenshot: the window saves a picture of itself and quits.
//   animhost --help | --version   (answered before Qt starts, so without a display)
//
// The command line is read before the application object is made: --help, --version and a bad
// command line need no display, and a batch run always takes Qt's offscreen platform, whatever
// QT_QPA_PLATFORM says.
//
// Exit status: 0 on success; 1 when a scene or a script fails, or a batch run cannot save the
// preferences; 2 for a bad command line.
#include "AH_BatchRunner.h"
#include "AH_Host.h"
#include "AH_MainWindow.h"
#include "AH_TracingActions.h"
#include "AH_Workspace.h"

#include <QApplication>
#include <QTextStream>
#include <QTimer>

int main(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    AH_Options options;
    QString error;
    if (!AH_Options::parse(arguments, options, &error)) {
        QTextStream(stderr) << "animhost: " << error << '\n' << AH_Options::usage() << '\n';
        return 2;
    }
    if (options.help || options.version) {
        QTextStream(stdout) << (options.help ? AH_Options::helpText() : AH_Options::versionText() + QLatin1Char('\n'));
        return 0;
    }
    // Batch runs need no display.
    if (!options.batchScript.isEmpty())
        qputenv("QT_QPA_PLATFORM", "offscreen");

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("animhost"));
    QApplication::setApplicationVersion(AH_Options::versionText().section(QLatin1Char(' '), 1));
    QTextStream err(stderr);

    AH_Host host;
    host.startup(options);
    int status = 0;
    {
        // The workspace (and the tool its view holds, perhaps made by the plug-in) goes before the
        // plug-ins are unpolished.
        AH_Workspace workspace(host.changeManager());
        AH_TracingActions tracing(workspace, host.actionManager());
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
            int const pluginErrorCount = int(errors.size());
            if (!opened)
                errors << error;
            else if (!options.startScript.isEmpty()) {
                AH_BatchRunner runner(workspace, host.actionManager(), window.toolProperties());
                runner.setOutputFolder(options.outputDir);
                runner.runFile(options.startScript, &errors);
            }
            // A scene or a start script that failed is a failed run, after the window has shown it.
            if (errors.size() > pluginErrorCount) {
                status = 1;
                for (int i = pluginErrorCount; i < errors.size(); ++i)
                    err << errors[i] << '\n';
                err.flush();
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
    if (!host.shutdown() && !options.batchScript.isEmpty() && status == 0) {
        err << "animhost: expected preferences that can be saved\n";
        status = 1;
    }
    return status;
}
