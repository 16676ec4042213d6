// Fuzz target: the preference reader.
//
// What must hold for any input: no crash, leak or undefined behaviour, and a file that loads can be
// saved, and the saved file loads to the same values (a store that loads and then never saves
// loses every change made afterwards).
#include "preference/PR_Preference.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

namespace {

QTemporaryDir *folder = nullptr;  // lives for the whole run

void expect(bool holds, char const *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "preference fuzz target: %s\n", what);
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    static QTemporaryDir dir;
    folder = &dir;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size)
{
    QString const path = folder->filePath(QStringLiteral("preferences.xml"));
    {
        QFile file(path);
        expect(file.open(QIODevice::WriteOnly | QIODevice::Truncate), "the temporary file cannot be written");
        file.write(reinterpret_cast<char const *>(data), static_cast<qint64>(size));
    }
    PR_Preference store;
    // Damaged files are reported on standard error: quiet while loading, to keep the run's
    // output readable (the sanitizers still report on the descriptor put back after).
    std::fflush(stderr);
    int const savedError = dup(2);
    int const nothing = open("/dev/null", O_WRONLY);
    dup2(nothing, 2);
    PR_Preference::LoadResult const result = store.load(path);
    std::fflush(stderr);
    dup2(savedError, 2);
    close(nothing);
    close(savedError);
    QFile::remove(path + QStringLiteral(".damaged"));  // a damaged file is set aside under this name
    if (result != PR_Preference::LoadResult::Loaded)
        return 0;

    expect(store.save(), "a file that loads does not save");
    PR_Preference reread;
    expect(reread.load(path) == PR_Preference::LoadResult::Loaded, "the saved file does not load");
    expect(reread.keys() == store.keys(), "the saved file loads other keys");
    for (QString const &key : store.keys())
        expect(reread.find(key)->type() == store.find(key)->type() && reread.find(key)->value() == store.find(key)->value(),
               "the saved file loads another value");
    return 0;
}
