// Scene files at their limits: groups nested as deep as allowed and deeper, frames at and beyond
// the frame limits, and texts with every character a file can hold.
#include "SceneTestUtil.h"

#include "scene/AT_AttrFactory.h"
#include "scene/AT_ValueAttr.h"
#include "scene/SC_Frames.h"
#include "scene/TUSceneFile.h"

#include <QStringList>

#include <climits>
#include <cmath>
#include <limits>

namespace {

using namespace SceneTest;

// The start of a file whose root group holds `depth` groups, each inside the one before, the
// deepest holding one peg: group n (1-based) starts on line 4 + n. Indented as the writer
// indents, or not at all (a deep file would be mostly spaces).
QByteArray nestedGroupsFile(int depth, bool indented)
{
    auto indent = [indented](int n) { return indented ? QByteArray(n, ' ') : QByteArray(); };
    QByteArray text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<scene version=\"1\">\n"
                      " <metrics fieldToOglX=\"0.08333333333333333\" fieldToOglY=\"0.0625\"/>\n"
                      " <group name=\"Top\">\n";
    for (int i = 1; i <= depth; ++i)
        text += indent(i + 1) + "<group name=\"g" + QByteArray::number(i) + "\">\n";
    text += indent(depth + 2) + "<node type=\"PEG\" name=\"leaf\">\n";
    text += indent(depth + 3) + "<attrs>\n";
    return text;
}

TEST(SceneFileLimits, GroupsNestUpToTheLimitAndNoDeeper)
{
    // Built in code, written, read back and written again: the same bytes.
    TUScene scene;
    TUGroup *group = scene.getRootGroup();
    group->setInstanceName("Top");
    for (int i = 1; i <= TUSceneFile::kMaxGroupDepth; ++i) {
        auto sub = UT_MakeShared<TUGroup>();
        sub->setInstanceName(QStringLiteral("g%1").arg(i));
        group = static_cast<TUGroup *>(group->addNode(sub));
    }
    auto peg = UT_MakeShared<MO_PegModule>();
    peg->setInstanceName("leaf");
    group->addNode(peg);
    QString error;
    QByteArray const written = TUSceneFile::write(scene, &error);
    ASSERT_FALSE(written.isEmpty()) << error.toStdString();
    EXPECT_TRUE(written.startsWith(nestedGroupsFile(TUSceneFile::kMaxGroupDepth, true)));
    std::unique_ptr<TUScene> again = TUSceneFile::read(written, "deep.xml", &error);
    ASSERT_TRUE(again) << error.toStdString();
    EXPECT_EQ(TUSceneFile::write(*again), written);

    // One level more is neither written nor read.
    auto deeper = UT_MakeShared<TUGroup>();
    deeper->setInstanceName("too deep");
    group->addNode(deeper);
    EXPECT_TRUE(TUSceneFile::write(scene, &error).isEmpty());
    EXPECT_TRUE(error.contains(QString::number(TUSceneFile::kMaxGroupDepth))) << error.toStdString();
    QByteArray oneTooDeep = written;
    oneTooDeep.replace("<node type=\"PEG\" name=\"leaf\"", "<group name=\"too deep\"/><node type=\"PEG\" name=\"leaf\"");
    EXPECT_FALSE(TUSceneFile::read(oneTooDeep, "deep.xml", &error));
    int const leafLine = 4 + TUSceneFile::kMaxGroupDepth + 1;
    EXPECT_TRUE(error.startsWith(QStringLiteral("deep.xml:%1: expected groups nested at most").arg(leafLine)))
        << error.toStdString();
}

TEST(SceneFileLimits, AHundredThousandNestedGroupsAreRefusedAtTheFirstTooDeep)
{
    // Such a file once read (slowly) and then overflowed the stack when saved.
    QString error;
    EXPECT_FALSE(TUSceneFile::read(nestedGroupsFile(100000, false), "deep.xml", &error));
    EXPECT_TRUE(error.startsWith(QStringLiteral("deep.xml:%1: ").arg(4 + TUSceneFile::kMaxGroupDepth + 1)))
        << error.toStdString();
}

TEST(SceneFileLimits, FramesConvertToIntWithinTheLimits)
{
    struct Case {
        double frame;
        bool contained;
        int whole;
    };
    double const inf = std::numeric_limits<double>::infinity();
    Case const cases[] = {
        {0.0, true, 0},
        {12.9, true, 12},
        {-12.9, true, -12},  // towards zero
        {SC_Frames::kLast, true, SC_Frames::kLast},
        {SC_Frames::kFirst, true, SC_Frames::kFirst},
        {SC_Frames::kLast + 0.5, false, SC_Frames::kLast},
        {SC_Frames::kFirst - 0.5, false, SC_Frames::kFirst},
        {3e9, false, SC_Frames::kLast},
        {-3e9, false, SC_Frames::kFirst},
        {1e300, false, SC_Frames::kLast},
        {inf, false, SC_Frames::kLast},
        {-inf, false, SC_Frames::kFirst},
        {std::nan(""), false, 0},
    };
    for (Case const &c : cases) {
        EXPECT_EQ(SC_Frames::contains(c.frame), c.contained) << c.frame;
        EXPECT_EQ(SC_Frames::toInt(c.frame), c.whole) << c.frame;
    }
    // Room to spare: a span of the whole range, and one frame past either end, fit an int.
    EXPECT_LT(double(SC_Frames::kLast) - SC_Frames::kFirst + 1, double(INT_MAX) / 2);
}

TEST(SceneFileLimits, KeysAndExposuresBeyondTheFrameLimitsAreRefusedAndChangeNothing)
{
    TUScene scene;
    auto *peg = add<MO_PegModule>(scene, "peg");
    auto *position = dynamic_cast<AT_Position3dAttr *>(peg->attr("position"));
    ASSERT_NE(position, nullptr);
    ASSERT_TRUE(position->setKeyframe(5, Math::Point3d(1, 2, 0)));
    QByteArray const before = TUSceneFile::write(scene);
    for (double frame : {3e9, -3e9, double(SC_Frames::kLast) + 1, std::nan("")}) {
        EXPECT_EQ(position->setTextValue(frame, "3, 4, 0"), nullptr) << frame;
        EXPECT_FALSE(position->setKeyframe(SC_Frames::kLast + 1, Math::Point3d(3, 4, 0)));
        EXPECT_FALSE(position->setKeyframe(INT_MIN, Math::Point3d(3, 4, 0)));
    }
    EXPECT_EQ(TUSceneFile::write(scene), before);

    auto *element = add<MO_ElementModule>(scene, "element");
    element->setElementName("element");
    element->addDrawing("1", {});
    element->addDrawing("2", {});
    EXPECT_TRUE(element->setExposure(SC_Frames::kFirst, "1"));
    EXPECT_TRUE(element->setExposure(SC_Frames::kLast, "2"));
    EXPECT_FALSE(element->setExposure(SC_Frames::kLast + 1, "1"));
    EXPECT_FALSE(element->setExposure(INT_MIN, "2"));
    // Evaluation far outside the limits gives the drawing of the nearest limit.
    EXPECT_EQ(element->oglDrawing(3e9)->celKey(), CA_CelKey("element", "2"));
    EXPECT_EQ(element->oglDrawing(-3e9)->celKey(), CA_CelKey("element", "1"));
    EXPECT_EQ(element->oglDrawing(0.0)->celKey(), CA_CelKey("element", "1"));
}

// Values with every kind of character a file can hold: tabs, carriage returns and line feeds
// (alone, in pairs, at either end), spaces at either end, markup characters and non-ASCII text.
QStringList const kTexts = {
    QStringLiteral("a\rb"),
    QStringLiteral("\r\n"),
    QStringLiteral("\r"),
    QStringLiteral("\n\r"),
    QStringLiteral("line\nfeed\n"),
    QStringLiteral("\ttab\tinside\t"),
    QStringLiteral("  spaces  "),
    QStringLiteral(" "),
    QStringLiteral("<tag attr=\"v\"> & 'quote' ]]>"),
    QString::fromUtf8("caf\xc3\xa9 \xe6\x97\xa5\xe6\x9c\xac \xf0\x9f\x98\x80"),
    QStringLiteral("mixed\r\n\t\xe9\r"),
};

TEST(SceneFileLimits, TextsWithControlCharactersAndNonAsciiWriteReadAndWriteTheSame)
{
    TUScene scene;
    auto *peg = add<MO_PegModule>(scene, "peg");
    auto *element = add<MO_ElementModule>(scene, QString::fromUtf8("\xc3\xa9l\xc3\xa9ment\t1"));
    element->setElementName(QStringLiteral("shared\r\nname"));
    for (int i = 0; i < kTexts.size(); ++i) {
        auto made = AT_AttrFactorySingleton::instance().create("STRING", peg, AT_AttrMeta(QStringLiteral("text%1").arg(i), QString()));
        ASSERT_TRUE(made);
        auto *text = static_cast<AT_StringAttr *>(peg->addDynamicAttr(std::move(made)));
        ASSERT_TRUE(text->setLocalValue(kTexts[i])) << i;
        element->addDrawing(kTexts[i], {});
    }
    // Node and element names are written in XML attributes, where the same characters change
    // too unless they are escaped.
    auto *named = add<MO_PegModule>(scene, QStringLiteral("name\rwith\nbreaks\tand tabs"));
    ASSERT_NE(named, nullptr);

    QString error;
    QByteArray const first = TUSceneFile::write(scene, &error);
    ASSERT_FALSE(first.isEmpty()) << error.toStdString();
    std::unique_ptr<TUScene> again = TUSceneFile::read(first, "texts.xml", &error);
    ASSERT_TRUE(again) << error.toStdString();
    EXPECT_EQ(TUSceneFile::write(*again).toStdString(), first.toStdString());

    auto *peg2 = dynamic_cast<MO_PegModule *>(again->getRootGroup()->findNode("peg"));
    ASSERT_NE(peg2, nullptr);
    for (int i = 0; i < kTexts.size(); ++i) {
        auto *text = dynamic_cast<AT_StringAttr *>(peg2->attr(QStringLiteral("text%1").arg(i)));
        ASSERT_NE(text, nullptr) << i;
        EXPECT_EQ(text->localValue(), kTexts[i]) << i;
    }
    EXPECT_NE(again->getRootGroup()->findNode(QStringLiteral("name\rwith\nbreaks\tand tabs")), nullptr);
    auto *element2 = dynamic_cast<MO_ElementModule *>(again->getRootGroup()->findNode(element->instanceName()));
    ASSERT_NE(element2, nullptr);
    EXPECT_EQ(element2->elementName(), element->elementName());
    EXPECT_EQ(element2->drawings().size(), element->drawings().size());
}

TEST(SceneFileLimits, TextsAFileCannotHoldAreRefusedAndChangeNothing)
{
    TUScene scene;
    auto *peg = add<MO_PegModule>(scene, "peg");
    auto made = AT_AttrFactorySingleton::instance().create("STRING", peg, AT_AttrMeta("text", QString()));
    ASSERT_TRUE(made);
    auto *text = static_cast<AT_StringAttr *>(peg->addDynamicAttr(std::move(made)));
    ASSERT_TRUE(text->setLocalValue("kept"));
    for (QString const &bad : {QStringLiteral("bell\a"), QString(QChar(0)), QStringLiteral("esc\x1b[0m"),
                               QString(QChar(0xD800)), QString(QChar(0xDC00)) + "x", QString(QChar(0xFFFF))}) {
        EXPECT_FALSE(text->setLocalValue(bad));
        EXPECT_EQ(text->setTextValue(0.0, bad), nullptr);
        EXPECT_EQ(text->localValue(), "kept");
    }
    // A file that holds one, through a character reference, does not read.
    QByteArray file = TUSceneFile::write(scene);
    ASSERT_TRUE(file.contains(">kept</text>")) << file.toStdString();
    for (char const *reference : {"&#1;", "&#xD800;", "&#xFFFE;"}) {
        QByteArray bad = file;
        bad.replace(">kept</text>", QByteArray(">ke") + reference + "pt</text>");
        QString error;
        EXPECT_FALSE(TUSceneFile::read(bad, "bad.xml", &error)) << reference;
        EXPECT_TRUE(error.startsWith("bad.xml:")) << error.toStdString();
    }
    // A UTF-16 file can hold a lone surrogate, in a text or in a name: such a file once read, and
    // then wrote a file that did not read back.
    QString const utf16Text = QString::fromUtf8(file).replace("encoding=\"UTF-8\"", "encoding=\"UTF-16\"");
    for (QString const &bad : {QString(utf16Text).replace(">kept<", QStringLiteral(">ke") + QChar(0xD800) + "pt<"),
                               QString(utf16Text).replace("name=\"peg\"", QStringLiteral("name=\"p") + QChar(0xDC00) + "\"")}) {
        QByteArray utf16("\xff\xfe");
        for (QChar c : bad) {
            utf16 += char(c.unicode() & 0xff);
            utf16 += char(c.unicode() >> 8);
        }
        QString error;
        EXPECT_FALSE(TUSceneFile::read(utf16, "bad.xml", &error));
        EXPECT_TRUE(error.contains("a lone surrogate")) << error.toStdString();
    }
}

} // namespace
