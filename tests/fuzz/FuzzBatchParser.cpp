// Fuzz target: the batch script reader, every line checked by its command's row as before a run.
// Nothing runs (a fuzzed "save /anywhere" must not write): AH_BatchRunner::check.
//
// What must hold for any input: no crash, leak or undefined behaviour, and a refused script has a
// message "<script>:<line>: expected ..." for each bad line.
#include "AH_BatchRunner.h"

#include <QGuiApplication>
#include <QStringList>

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    // Key names are read by QKeySequence, which wants an application.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QGuiApplication application(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size)
{
    QString const text = QString::fromUtf8(reinterpret_cast<char const *>(data), static_cast<int>(size));
    QStringList errors;
    bool const good = AH_BatchRunner::check(text, QStringLiteral("fuzz.txt"), &errors);
    for (QString const &message : errors)
        if (!message.startsWith(QLatin1String("fuzz.txt:")) || !message.contains(QLatin1String(": expected "))) {
            std::fprintf(stderr, "batch fuzz target: a message without its line: %s\n", qUtf8Printable(message));
            std::abort();
        }
    if (good != errors.isEmpty()) {
        std::fprintf(stderr, "batch fuzz target: a refused script without a message\n");
        std::abort();
    }
    return 0;
}
