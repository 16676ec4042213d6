// Long undo histories, made at random: sequences of IK drags (over ranges, with each way of
// spreading a pose), panel changes, selections, attribute sets, frame changes, undos and redos,
// run through the batch runner on the rigged character with the plug-in loaded. After each
// sequence, undoing everything gives the opened file byte for byte, and redoing everything gives
// the file as it was before the undos.
//
// The seed is fixed, so a failure names a sequence that fails again the same way; the script of
// the failing sequence is printed.
#include "AH_BatchRunner.h"
#include "AH_Host.h"
#include "AH_Workspace.h"
#include "command/CO_CommandManager.h"
#include "session/SC_Session.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdio>
#include <iterator>
#include <random>

namespace {

// Sanitized builds run several times slower: fewer sequences there, the same kinds of steps.
#ifdef ANIM_SANITIZED_BUILD
constexpr int kSequences = 60;
#else
constexpr int kSequences = 200;
#endif

QString const kCharacter = QStringLiteral(ANIM_SOURCE_DIR "/examples/scenes/character-rig.xml");

// View pixels (640 by 480, frame 5, as the scene opens) where the IK tool draws joints.
struct Pixel {
    int x, y;
};
Pixel const kJoints[] = {{211, 274}, {385, 226}, {385, 290}, {320, 259}, {320, 220}, {233, 126}, {233, 87}};

QStringList const kNodes = {"Body-P", "Chest-P", "LShoulder-P", "LElbow-P", "LWrist-P", "RShoulder-P",
                            "RElbow-P", "Neck-P", "LHand", "RForearm", "Head"};
QStringList const kPegs = {"Body-P", "Chest-P", "LShoulder-P", "LElbow-P", "RShoulder-P", "RElbow-P", "Neck-P"};
// The four ways of spreading a pose over a range.
QStringList const kInterpolations = {"interpolateLinear", "interpolateCubic", "interpolateAltogether", "interpolationMoveAll"};

// A failure a random step may meet without anything being wrong: a widget the panel disables
// for the current selection, or nothing left to undo or redo.
bool isExpectedRefusal(QString const &message)
{
    return message.contains(QLatin1String("to be enabled")) || message.contains(QLatin1String("a step to undo")) ||
           message.contains(QLatin1String("a step to redo")) ||
           message.contains(QLatin1String("in the panel of the current tool"));
}

class RandomSteps {
public:
    explicit RandomSteps(std::mt19937 &random) : random_(random) {}

    int number(int from, int to) { return std::uniform_int_distribution<int>(from, to)(random_); }
    template <class List>
    auto const &oneOf(List const &list) { return list[number(0, int(std::size(list)) - 1)]; }

    // One step of a user, as script lines.
    QString step()
    {
        int const kind = number(0, 99);
        if (kind < 30)
            return drag();
        if (kind < 55)
            return panelChange();
        if (kind < 65)
            return number(0, 1) ? QStringLiteral("select %1\n").arg(oneOf(kNodes))
                                : QStringLiteral("select %1 %2\n").arg(oneOf(kNodes), oneOf(kNodes));
        if (kind < 75)
            return QStringLiteral("set %1 rotation 0, 0, %2\n").arg(oneOf(kPegs)).arg(number(-90, 90));
        if (kind < 83)
            return QStringLiteral("frame %1\n").arg(number(1, 12));
        if (kind < 95)
            return number(0, 2) ? QStringLiteral("undo\n") : QStringLiteral("undo\nundo\n");
        return QStringLiteral("redo\n");
    }

private:
    QString drag()
    {
        Pixel p = oneOf(kJoints);
        p.x += number(-1, 1);
        p.y += number(-1, 1);
        QString lines = QStringLiteral("press %1 %2\n").arg(p.x).arg(p.y);
        for (int moves = number(2, 5); moves > 0; --moves) {
            p.x += number(-12, 12);
            p.y += number(-12, 12);
            lines += QStringLiteral("move %1 %2\n").arg(p.x).arg(p.y);
        }
        return lines + QStringLiteral("release %1 %2\n").arg(p.x).arg(p.y);
    }

    QString panelChange()
    {
        auto const truth = [this] { return number(0, 1) ? QStringLiteral("true") : QStringLiteral("false"); };
        switch (number(0, 7)) {
        case 0: return QStringLiteral("widget interpolateButton check %1\n").arg(truth());
        case 1: return QStringLiteral("widget fromFrame text %1\n").arg(number(1, 12));
        case 2: return QStringLiteral("widget toFrame text %1\n").arg(number(1, 12));
        case 3: return QStringLiteral("widget %1 click\n").arg(oneOf(kInterpolations));
        case 4: return QStringLiteral("widget interpolateUseCurrentFrame check %1\n").arg(truth());
        case 5: return QStringLiteral("widget holdPosCB click\n");
        case 6: return QStringLiteral("widget holdAngleCB click\n");
        default: return QStringLiteral("widget existingKeyFramesButton check %1\n").arg(truth());
        }
    }

    std::mt19937 &random_;
};

class RandomUndo : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(folder.isValid());
        QString const prefs = folder.filePath(QStringLiteral("prefs.xml"));
        QFile file(prefs);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<preferences version=\"1\">\n"
                   " <bool key=\"QV_HAS_NEW_IK_TOOL\" value=\"true\"/>\n</preferences>\n");
        file.close();
        AH_Options options;
        QString error;
        ASSERT_TRUE(AH_Options::parse({QStringLiteral("animhost"), QStringLiteral("--prefs"), prefs}, options, &error));
        host.startup(options);
        ASSERT_TRUE(host.pluginErrors().isEmpty()) << host.pluginErrors().join('\n').toStdString();
    }
    void TearDown() override { host.shutdown(); }

    QByteArray saved(AH_Workspace &workspace, QString const &name)
    {
        QString const path = folder.filePath(name);
        QString error;
        EXPECT_TRUE(workspace.save(path, &error)) << error.toStdString();
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir folder;
    AH_Host host;
};

TEST_F(RandomUndo, UndoingEverythingGivesTheOpenedFileAndRedoingGivesTheFileBeforeTheUndos)
{
    std::mt19937 random(20261124u);
    RandomSteps steps(random);
    int ikSteps = 0;
    int undoSteps = 0;
    AH_Workspace workspace(host.changeManager());
    for (int sequence = 0; sequence < kSequences; ++sequence) {
        AH_BatchRunner runner(workspace, host.actionManager());
        runner.setOutputFolder(folder.path());
        QString script = QStringLiteral("open %1\nview 640 480\nframe 5\ntool NewIKTool\nselect Body-P\n").arg(kCharacter);
        QStringList errors;
        ASSERT_TRUE(runner.run(script, QStringLiteral("start"), folder.path(), &errors)) << errors.join('\n').toStdString();
        QByteArray const opened = saved(workspace, QStringLiteral("opened.xml"));

        for (int count = steps.number(6, 16); count > 0; --count) {
            QString const lines = steps.step();
            script += lines;
            errors.clear();
            if (!runner.run(lines, QStringLiteral("step"), folder.path(), &errors)) {
                ASSERT_TRUE(isExpectedRefusal(errors.join('\n')))
                    << "sequence " << sequence << ": " << errors.join('\n').toStdString() << "\n" << script.toStdString();
            }
            if (workspace.session()->commandManager()->undoName() == QLatin1String("IK Tool") &&
                lines.startsWith(QLatin1String("press")))
                ++ikSteps;
        }
        QByteArray const before = saved(workspace, QStringLiteral("before.xml"));

        int undone = 0;
        while (workspace.undo())
            ++undone;
        undoSteps += undone;
        EXPECT_EQ(saved(workspace, QStringLiteral("undone.xml")).toStdString(), opened.toStdString())
            << "sequence " << sequence << ", after " << undone << " undos:\n" << script.toStdString();
        // As many redos as undos: steps undone inside the sequence and not replaced may wait on
        // the redo stack beyond them.
        for (int step = 0; step < undone; ++step)
            ASSERT_TRUE(workspace.redo()) << "sequence " << sequence << ", redo " << step + 1 << " of " << undone;
        EXPECT_EQ(saved(workspace, QStringLiteral("redone.xml")).toStdString(), before.toStdString())
            << "sequence " << sequence << ":\n" << script.toStdString();
        if (HasFailure())
            return;
    }
    // The sequences did pose the character and leave histories to undo: drags that made a step
    // of the IK tool in a good share of the sequences, and several steps each on the whole.
    EXPECT_GE(ikSteps, kSequences / 4);
    EXPECT_GE(undoSteps, kSequences * 2);
    std::printf("%d sequences, %d IK drags, %d undo steps\n", kSequences, ikSteps, undoSteps);
}

} // namespace
