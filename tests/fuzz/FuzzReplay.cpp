// Runs files through a fuzz target without libFuzzer, as the normal test suite does with the
// inputs that once found faults: FuzzReplay<Target> FILE_OR_FOLDER...
// Exit status 0 when every input went through; a target that finds a fault aborts.
#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);
extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size);

int main(int argc, char **argv)
{
    LLVMFuzzerInitialize(&argc, &argv);
    QStringList files;
    for (int i = 1; i < argc; ++i) {
        QFileInfo const info(QString::fromLocal8Bit(argv[i]));
        if (info.isDir())
            for (QFileInfo const &entry : QDir(info.filePath()).entryInfoList(QDir::Files, QDir::Name))
                files << entry.filePath();
        else
            files << info.filePath();
    }
    if (files.isEmpty()) {
        std::fprintf(stderr, "expected input files or folders that hold some\n");
        return 2;
    }
    for (QString const &path : files) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "%s: expected a readable file\n", qUtf8Printable(path));
            return 2;
        }
        QByteArray const data = file.readAll();
        std::printf("%s (%d bytes)\n", qUtf8Printable(path), int(data.size()));
        std::fflush(stdout);
        LLVMFuzzerTestOneInput(reinterpret_cast<uint8_t const *>(data.constData()), size_t(data.size()));
    }
    std::printf("%d inputs went through\n", int(files.size()));
    return 0;
}
