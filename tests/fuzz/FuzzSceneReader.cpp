// Fuzz target: the scene reader, and what a user does next with a scene that reads: open it in a
// session, render it at a few frames, save it.
//
// What must hold for any input: no crash, leak or undefined behaviour (the sanitizers watch), and
// a scene that reads writes a file that reads back and writes the same bytes again (a file that
// changes on save and reload loses something).
#include "scene/SC_Frames.h"
#include "scene/TUScene.h"
#include "scene/TUSceneFile.h"
#include "session/SC_Session.h"
#include "view/VW_View.h"

#include <QGuiApplication>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

void expect(bool holds, char const *what, QByteArray const &context)
{
    if (holds)
        return;
    std::fprintf(stderr, "scene fuzz target: %s\n--- file written ---\n%s\n", what, context.constData());
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    // Rendering paints with QPainter on images: offscreen, without a display.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QGuiApplication application(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size)
{
    QByteArray const input(reinterpret_cast<char const *>(data), static_cast<int>(size));
    QString error;
    std::unique_ptr<TUScene> scene = TUSceneFile::read(input, QStringLiteral("fuzz.xml"), &error);
    if (!scene) {
        expect(error.startsWith(QLatin1String("fuzz.xml:")), "a refused file without its line", error.toUtf8());
        return 0;
    }

    QByteArray const written = TUSceneFile::write(*scene, &error);
    expect(!written.isEmpty(), "a scene that reads does not write", error.toUtf8());
    std::unique_ptr<TUScene> again = TUSceneFile::read(written, QStringLiteral("written.xml"), &error);
    expect(again != nullptr, "the written file does not read back", written + "\n" + error.toUtf8());
    expect(TUSceneFile::write(*again) == written, "the file changes on save and reload", written);

    // Open and render, at the frames the file is likely to name and at the limits.
    SC_Session session(std::move(scene));
    VW_View view(&session);
    view.resize(48, 36);
    for (double frame : {1.0, 0.5, 12.0, -3.0, double(SC_Frames::kFirst), double(SC_Frames::kLast)}) {
        session.setCurrentFrame(frame);
        view.render();
    }
    return 0;
}
