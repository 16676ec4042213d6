// Renders of the example scenes compared with the pictures the project keeps in
// tests/App/reference. Run with ANIM_UPDATE_REFERENCES=1 to write them anew after a deliberate
// change of the rendering, and look at them before committing.
#include "AH_Workspace.h"
#include "session/SC_Session.h"
#include "view/VW_View.h"

#include "ReferenceImage.h"

#include <QDir>
#include <QImage>

#include <gtest/gtest.h>

#include <ostream>

#include <cstdlib>

namespace {

QString const kScenes = QStringLiteral(ANIM_SOURCE_DIR "/examples/scenes/");
QString const kReferences = QStringLiteral(ANIM_SOURCE_DIR "/tests/App/reference/");

struct Shot {
    char const *scene;
    double frame;
    char const *reference;
};

// Shown in test listings and failures: the picture's file.
void PrintTo(Shot const &shot, std::ostream *out)
{
    *out << shot.scene << " at frame " << shot.frame << " (" << shot.reference << ")";
}

class ReferenceImage : public ::testing::TestWithParam<Shot> {};

TEST_P(ReferenceImage, RenderMatchesTheKeptPicture)
{
    Shot const shot = GetParam();
    AH_Workspace workspace;
    QString error;
    ASSERT_TRUE(workspace.open(kScenes + QLatin1String(shot.scene), &error)) << error.toStdString();
    workspace.session()->setCurrentFrame(shot.frame);
    workspace.view()->resize(320, 240);
    QImage const image = workspace.view()->render();
    QString const path = kReferences + QLatin1String(shot.reference);
    if (qEnvironmentVariableIsSet("ANIM_UPDATE_REFERENCES")) {
        QDir().mkpath(kReferences);
        ASSERT_TRUE(image.save(path, "PNG"));
    }
    QImage const reference(path);
    ASSERT_FALSE(reference.isNull()) << "missing " << path.toStdString() << ": run with ANIM_UPDATE_REFERENCES=1";
    ASSERT_EQ(image.size(), reference.size());
    // Anti-aliased edges may differ a little between Qt versions; shapes may not.
    EXPECT_GE(matchingShare(image, reference, 16), 0.995);
}

INSTANTIATE_TEST_SUITE_P(Examples, ReferenceImage,
                         ::testing::Values(Shot{"arm.xml", 1, "arm-frame01.png"}, Shot{"arm.xml", 8, "arm-frame08.png"},
                                           Shot{"arm.xml", 12, "arm-frame12.png"}, Shot{"bones.xml", 1, "bones-frame01.png"},
                                           Shot{"character.xml", 1, "character-frame01.png"},
                                           Shot{"character.xml", 12, "character-frame12.png"}),
                         [](::testing::TestParamInfo<Shot> const &info) {
                             std::string name = info.param.reference;
                             return name.substr(0, name.find('.')).erase(name.find('-'), 1);
                         });

// The comparison itself catches a moved shape.
TEST(ReferenceImageCompare, AShiftedPictureDoesNotMatch)
{
    AH_Workspace workspace;
    ASSERT_TRUE(workspace.open(kScenes + QLatin1String("arm.xml"), nullptr));
    workspace.view()->resize(320, 240);
    QImage const image = workspace.view()->render().copy();
    QImage shifted(image.size(), image.format());
    shifted.fill(Qt::white);
    for (int y = 0; y + 4 < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            shifted.setPixel(x, y + 4, image.pixel(x, y));
    EXPECT_DOUBLE_EQ(matchingShare(image, image, 0), 1.0);
    EXPECT_LT(matchingShare(shifted, image, 16), 0.995);
}

} // namespace
