// The keys that scripted drags write, compared bit for bit with those the tool wrote when the
// files under data/ were recorded: on the rigged character (one frame, and a range of 12 frames by
// each way of spreading a pose) and on a chain of 50 pegs over 12 frames. Any change of the
// solver's arithmetic, of the order of the solves or of the keyframe writing shows here.
//
// To record the files again (only when a change of the poses is meant), run the test with
// ANIM_RECORD_DRAG_KEYS=1: it writes the files into the source tree and skips.
#include "IKDragScene.h"

#include <QFile>

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

namespace {

struct DragCase {
    char const *name;  // of the test and of its data file
    int chainJoints;   // 0: the character
    int frames;
    int interpolation;
    int moves;
};

std::ostream &operator<<(std::ostream &os, DragCase const &c) { return os << c.name; }

// The character the keys were recorded on, kept as it was then: the shipped rig has changed since
// (blockers and pins of a ready rig), and the keys are a check of the arithmetic, not of the rig.
QString const kRecordedRig = QStringLiteral(ANIM_SOURCE_DIR "/tests/Plugins/AnimationTool/iktool/data/character-rig-as-recorded.xml");

QString dataFile(DragCase const &c)
{
    return QStringLiteral(ANIM_SOURCE_DIR "/tests/Plugins/AnimationTool/iktool/data/drag-keys-%1.txt")
        .arg(QLatin1String(c.name));
}

// The first line that differs, for a readable failure.
std::string firstDifference(std::string const &expected, std::string const &actual)
{
    std::istringstream e(expected), a(actual);
    std::string le, la;
    for (int line = 1;; ++line) {
        bool const moreE = bool(std::getline(e, le));
        bool const moreA = bool(std::getline(a, la));
        if (!moreE && !moreA)
            return "none";
        if (le != la || moreE != moreA)
            return "line " + std::to_string(line) + ": expected \"" + (moreE ? le : "(end)") + "\", found \"" +
                   (moreA ? la : "(end)") + "\"";
    }
}

class IKToolDragKeys : public ::testing::TestWithParam<DragCase> {
protected:
    void TearDown() override { IKTool::setSolveOnWorkerThread(false); }

    void open(IKDrag::Scene &scene) const
    {
        DragCase const &c = GetParam();
        if (c.chainJoints > 0)
            IKDrag::openChain(scene, c.chainJoints);
        else
            IKDrag::openCharacter(scene, kRecordedRig);
        IKDrag::setRange(scene, c.frames, c.interpolation);
    }

    std::string recorded() const
    {
        QFile file(dataFile(GetParam()));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
        return file.readAll().toStdString();
    }
};

TEST_P(IKToolDragKeys, WriteTheRecordedKeysBitForBit)
{
    DragCase const &c = GetParam();
    IKDrag::Scene scene;
    open(scene);
    std::string const before = IKDrag::keyDump(scene);
    IKDrag::drag(scene, c.moves);
    std::string const after = IKDrag::keyDump(scene);
    ASSERT_NE(before, after) << "the drag wrote no key";

    if (std::getenv("ANIM_RECORD_DRAG_KEYS")) {
        QFile file(dataFile(c));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << file.fileName().toStdString();
        file.write(after.data(), qint64(after.size()));
        GTEST_SKIP() << "recorded " << file.fileName().toStdString();
    }
    std::string const expected = recorded();
    EXPECT_TRUE(expected == after) << "first difference: " << firstDifference(expected, after);

    // The whole drag is one undo step, and undoing it gives back every key as it was.
    scene.commands()->undo();
    EXPECT_EQ(IKDrag::keyDump(scene), before);
    scene.commands()->redo();
    EXPECT_EQ(IKDrag::keyDump(scene), after);
}

// Frames solved half on a worker thread give the very same keys.
TEST_P(IKToolDragKeys, WriteTheSameKeysWithTheWorkerThread)
{
    if (std::getenv("ANIM_RECORD_DRAG_KEYS"))
        GTEST_SKIP() << "recording";
    IKTool::setSolveOnWorkerThread(true);
    IKDrag::Scene scene;
    open(scene);
    IKDrag::drag(scene, GetParam().moves);
    std::string const expected = recorded();
    std::string const after = IKDrag::keyDump(scene);
    EXPECT_TRUE(expected == after) << "first difference: " << firstDifference(expected, after);
}

INSTANTIATE_TEST_SUITE_P(
    Drags, IKToolDragKeys,
    ::testing::Values(DragCase{"character-1-frame", 0, 1, IKToolSettings::Linear, 10},
                      DragCase{"character-12-frames-linear", 0, 12, IKToolSettings::Linear, 10},
                      DragCase{"character-12-frames-cubic", 0, 12, IKToolSettings::Cubic, 10},
                      DragCase{"character-12-frames-move-all", 0, 12, IKToolSettings::MoveAll, 10},
                      DragCase{"chain-50-joints-12-frames-linear", 50, 12, IKToolSettings::Linear, 6}),
    [](::testing::TestParamInfo<DragCase> const &info) {
        std::string name = info.param.name;
        for (char &ch : name)
            if (ch == '-')
                ch = '_';
        return name;
    });

} // namespace
