// The scene's length and frame rate: their defaults from keys and exposures, the values that are
// refused, and their round trip through the scene file (absent when the scene has none of its own).
#include "scene/MO_Module.h"
#include "scene/TUScene.h"
#include "scene/TUSceneFile.h"

#include <QFile>
#include <QStringList>

#include <gtest/gtest.h>

#include <limits>

namespace {

QString const kHead = QStringLiteral(R"(<?xml version="1.0" encoding="UTF-8"?>
<scene version="1">
 <metrics fieldToOglX="0.08333333333333333" fieldToOglY="0.0625"/>
)");
// A peg keyed at frames 3 and 31.
QString const kBody = QStringLiteral(R"( <group name="Top">
  <node type="PEG" name="P">
   <attrs>
    <position x="0" y="0" z="0">
     <key frame="3" x="0" y="0" z="0"/>
     <key frame="31" x="1" y="0" z="0"/>
    </position>
   </attrs>
  </node>
 </group>
 <links/>
</scene>
)");

std::unique_ptr<TUScene> readScene(QString const &text, QString *error)
{
    return TUSceneFile::read(text.toUtf8(), QStringLiteral("timeline.xml"), error);
}

TEST(SceneTimeline, WithoutValuesOfItsOwnTheSceneLastsToItsLastKeyOrExposureAndAtLeast24Frames)
{
    TUScene empty;
    EXPECT_EQ(empty.frameCount(), TUScene::kMinimumFrameCount);
    EXPECT_EQ(empty.frameRate(), 24.0);
    EXPECT_EQ(empty.lastKeyOrExposure(), 0);

    QString error;
    std::unique_ptr<TUScene> keyed = readScene(kHead + kBody, &error);
    ASSERT_TRUE(keyed) << error.toStdString();
    EXPECT_EQ(keyed->lastKeyOrExposure(), 31);
    EXPECT_EQ(keyed->frameCount(), 31);

    // An exposure inside a nested group counts as well.
    auto group = UT_MakeShared<TUGroup>();
    group->setInstanceName(QStringLiteral("Inner"));
    TUGroup *inner = static_cast<TUGroup *>(keyed->getRootGroup()->addNode(group));
    auto element = std::dynamic_pointer_cast<MO_ElementModule>(TUSceneFile::createNode(QStringLiteral("READ")));
    ASSERT_TRUE(element);
    ASSERT_TRUE(element->setExposure(40, QString()));  // an exposure of nothing is an exposure
    inner->addNode(element);
    EXPECT_EQ(keyed->frameCount(), 40);

    // A length of its own wins, shorter or longer.
    ASSERT_TRUE(keyed->setFrameCount(12));
    EXPECT_EQ(keyed->frameCount(), 12);
    ASSERT_TRUE(keyed->setFrameCount(std::nullopt));
    EXPECT_EQ(keyed->frameCount(), 40);
}

TEST(SceneTimeline, RefusesLengthsAndRatesOutOfRangeAndKeepsWhatItHad)
{
    TUScene scene;
    ASSERT_TRUE(scene.setFrameCount(48));
    ASSERT_TRUE(scene.setFrameRate(12.0));
    for (int count : {0, -1, TUScene::kMaximumFrameCount + 1, std::numeric_limits<int>::min()}) {
        SCOPED_TRACE(count);
        EXPECT_FALSE(scene.setFrameCount(count));
    }
    double const inf = std::numeric_limits<double>::infinity();
    for (double rate : {0.0, -24.0, TUScene::kMaximumFrameRate * 1.001, inf, std::numeric_limits<double>::quiet_NaN()}) {
        SCOPED_TRACE(rate);
        EXPECT_FALSE(scene.setFrameRate(rate));
    }
    EXPECT_EQ(scene.frameCount(), 48);
    EXPECT_EQ(scene.frameRate(), 12.0);
    EXPECT_TRUE(scene.setFrameCount(1));
    EXPECT_TRUE(scene.setFrameCount(TUScene::kMaximumFrameCount));
    EXPECT_TRUE(scene.setFrameRate(TUScene::kMaximumFrameRate));
}

TEST(SceneTimeline, LengthAndRateRoundTripThroughTheFileAndAreAbsentWhenNotSet)
{
    QString error;
    std::unique_ptr<TUScene> scene = readScene(kHead + kBody, &error);
    ASSERT_TRUE(scene) << error.toStdString();
    QString const plain = QString::fromUtf8(TUSceneFile::write(*scene));
    ASSERT_TRUE(plain.startsWith(kHead));
    EXPECT_FALSE(plain.contains(QLatin1String("timeline")));

    struct Case {
        char const *what;
        std::optional<int> frames;
        std::optional<double> rate;
        char const *element;
    } const cases[] = {
        {"both", 60, 12.5, R"( <timeline frames="60" rate="12.5"/>)"},
        {"the length only", 100, std::nullopt, R"( <timeline frames="100"/>)"},
        {"the rate only", std::nullopt, 29.97, R"( <timeline rate="29.97"/>)"},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_TRUE(scene->setFrameCount(c.frames));
        ASSERT_TRUE(scene->setFrameRate(c.rate));
        QString const expected = kHead + QLatin1String(c.element) + QLatin1Char('\n') + plain.mid(kHead.size());
        QByteArray const written = TUSceneFile::write(*scene);
        EXPECT_EQ(QString::fromUtf8(written), expected);
        std::unique_ptr<TUScene> back = readScene(expected, &error);
        ASSERT_TRUE(back) << error.toStdString();
        EXPECT_EQ(back->storedFrameCount(), c.frames);
        EXPECT_EQ(back->storedFrameRate(), c.rate);
        EXPECT_EQ(TUSceneFile::write(*back), written);
    }
}

TEST(SceneTimeline, BadTimelinesGiveAnErrorNamingTheLineAndNoScene)
{
    struct Case {
        char const *what;
        char const *element;
        char const *message;
    } const cases[] = {
        {"no frames", R"( <timeline frames="0"/>)", "from 1 to 100000"},
        {"negative frames", R"( <timeline frames="-5"/>)", "from 1 to 100000"},
        {"too many frames", R"( <timeline frames="100001"/>)", "from 1 to 100000"},
        {"frames in words", R"( <timeline frames="ten"/>)", "whole number"},
        {"fractional frames", R"( <timeline frames="2.5"/>)", "whole number"},
        {"zero rate", R"( <timeline rate="0"/>)", "frame rate"},
        {"negative rate", R"( <timeline rate="-24"/>)", "frame rate"},
        {"rate too high", R"( <timeline rate="1000.5"/>)", "frame rate"},
        {"rate not a number", R"( <timeline rate="nan"/>)", "finite number"},
        {"rate infinite", R"( <timeline rate="inf"/>)", "finite number"},
        {"twice", " <timeline frames=\"30\"/>\n <timeline frames=\"30\"/>", "optional <timeline>"},
        {"something inside", R"( <timeline frames="30"><x/></timeline>)", "no element <x>"},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.what);
        QString error;
        std::unique_ptr<TUScene> scene = readScene(kHead + QLatin1String(c.element) + QLatin1Char('\n') + kBody, &error);
        EXPECT_EQ(scene, nullptr);
        EXPECT_TRUE(error.startsWith(QStringLiteral("timeline.xml:4: ")) || error.startsWith(QStringLiteral("timeline.xml:5: ")))
            << error.toStdString();
        EXPECT_TRUE(error.contains(QLatin1String(c.message))) << error.toStdString();
    }
    // After the root group it is out of place.
    QString body = kBody;
    body.replace(QStringLiteral(" <links/>"), QStringLiteral(" <timeline frames=\"30\"/>\n <links/>"));
    QString error;
    EXPECT_EQ(readScene(kHead + body, &error), nullptr);
    EXPECT_TRUE(error.contains(QLatin1String("optional <timeline>"))) << error.toStdString();
}

} // namespace
