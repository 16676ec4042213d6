// Scene files at their limits: groups nested as deep as allowed and deeper, chains of linked
// pegs as long as allowed and longer, frames at and beyond the frame limits, and texts with every
// character a file can hold.
#include "SceneTestUtil.h"

#include "scene/AT_AttrFactory.h"
#include "scene/AT_ValueAttr.h"
#include "scene/SC_Frames.h"
#include "scene/TUSceneFile.h"

#include <QStringList>

#include <algorithm>
#include <vector>

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

// A file of `length` pegs "p1" to "p<length>" in the root group, each the parent of the next,
// linked from the top down or from the bottom up, without indentation or attributes. Gives the
// line of each link in `linkLines` (link i joins p<i> to p<i+1>, whatever the order).
QByteArray pegChainFile(int length, bool topDown, std::vector<int> *linkLines = nullptr)
{
    QByteArray text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<scene version=\"1\">\n"
                      "<metrics fieldToOglX=\"0.08333333333333333\" fieldToOglY=\"0.0625\"/>\n"
                      "<group name=\"Top\">\n";
    for (int i = 1; i <= length; ++i)
        text += "<node type=\"PEG\" name=\"p" + QByteArray::number(i) + "\"><attrs/></node>\n";
    text += "</group>\n<links>\n";
    int line = 4 + length + 3;  // of the first link, after "</group>" and "<links>"
    if (linkLines)
        linkLines->assign(std::size_t(std::max(length, 1)), 0);
    for (int n = 1; n < length; ++n, ++line) {
        int const i = topDown ? n : length - n;
        text += "<link src=\"p" + QByteArray::number(i) + "\" out=\"0\" dst=\"p" + QByteArray::number(i + 1) +
                "\" in=\"0\"/>\n";
        if (linkLines)
            (*linkLines)[std::size_t(i)] = line;
    }
    return text + "</links>\n</scene>\n";
}

// The x of the origin of a peg's world, in scene units.
double worldX(MO_Module const &peg)
{
    return apply(world(peg, 1.0), Math::Point2d(0, 0)).x;
}

TEST(SceneFileLimits, ChainsOfPegsAreAsLongAsTheLimitAndNoLonger)
{
    // Each peg one field unit to the right of its parent: the last is as far as all of them.
    TUScene scene;
    std::vector<MO_PegModule *> pegs;
    for (int i = 1; i <= MO_Node::kMaxChainDepth; ++i) {
        pegs.push_back(add<MO_PegModule>(scene, QStringLiteral("p%1").arg(i)));
        auto *position = dynamic_cast<AT_Position3dAttr *>(pegs.back()->attr("position"));
        ASSERT_NE(position, nullptr);
        ASSERT_TRUE(position->setKeyframe(1, Math::Point3d(1, 0, 0)));
        if (i > 1) {
            ASSERT_TRUE(MO_Node::connect(pegs[pegs.size() - 2], 0, pegs.back(), 0)) << i;
        }
    }
    double const step = worldX(*pegs.front());
    ASSERT_GT(step, 0.0);
    EXPECT_NEAR(worldX(*pegs.back()), step * MO_Node::kMaxChainDepth, 1e-9);

    QString error;
    QByteArray const written = TUSceneFile::write(scene, &error);
    ASSERT_FALSE(written.isEmpty()) << error.toStdString();
    std::unique_ptr<TUScene> again = TUSceneFile::read(written, "chain.xml", &error);
    ASSERT_TRUE(again) << error.toStdString();
    EXPECT_EQ(TUSceneFile::write(*again), written);
    auto *last = dynamic_cast<MO_PegModule *>(again->getRootGroup()->findNode(pegs.back()->instanceName()));
    ASSERT_NE(last, nullptr);
    EXPECT_NEAR(worldX(*last), step * MO_Node::kMaxChainDepth, 1e-9);

    // One peg more, above the first or below the last, is refused and changes nothing; so is a
    // link that would lengthen the chain by joining another one to it.
    auto *above = add<MO_PegModule>(scene, "above");
    auto *below = add<MO_PegModule>(scene, "below");
    auto *belowChild = add<MO_PegModule>(scene, "below child");
    ASSERT_TRUE(MO_Node::connect(below, 0, belowChild, 0));
    EXPECT_EQ(MO_Node::checkLink(above, pegs.front()), MO_Node::LinkCheck::TooDeep);
    EXPECT_FALSE(MO_Node::connect(above, 0, pegs.front(), 0));
    EXPECT_FALSE(MO_Node::connect(pegs.back(), 0, below, 0));
    EXPECT_FALSE(MO_Node::connect(pegs[pegs.size() - 2], 0, below, 0));
    EXPECT_EQ(pegs.front()->inPort(0)->srcPort(), nullptr);
    EXPECT_EQ(below->inPort(0)->srcPort(), nullptr);
    EXPECT_EQ(pegs.back()->outPort(0)->dstPorts().size(), 0u);
    EXPECT_EQ(pegs[pegs.size() - 2]->outPort(0)->dstPorts(), std::vector<MO_Port *>{pegs.back()->inPort(0)});
    EXPECT_NEAR(worldX(*pegs.back()), step * MO_Node::kMaxChainDepth, 1e-9);
    // A branch as long as the chain is allowed: the third peg from the end gets a second child,
    // which has one of its own.
    EXPECT_EQ(MO_Node::checkLink(pegs[pegs.size() - 3], below), MO_Node::LinkCheck::Allowed);
    ASSERT_TRUE(MO_Node::connect(pegs[pegs.size() - 3], 0, below, 0));
    // Giving the last peg another parent as high (the link replaced does not count) is allowed;
    // the new parent has no offset of its own.
    ASSERT_TRUE(MO_Node::connect(below, 0, pegs.back(), 0));
    EXPECT_EQ(pegs[pegs.size() - 2]->outPort(0)->dstPorts().size(), 0u);
    EXPECT_NEAR(worldX(*pegs.back()), step * (MO_Node::kMaxChainDepth - 1), 1e-9);
    // A cycle is refused as such, even across the whole chain.
    EXPECT_EQ(MO_Node::checkLink(pegs.back(), pegs.front()), MO_Node::LinkCheck::ClosesCycle);
    EXPECT_FALSE(MO_Node::connect(pegs.back(), 0, pegs.front(), 0));
    EXPECT_EQ(pegs.front()->inPort(0)->srcPort(), nullptr);
}

TEST(SceneFileLimits, AFileWithAChainOneTooLongIsRefusedAtTheLinkThatMakesIt)
{
    for (bool topDown : {true, false}) {
        SCOPED_TRACE(topDown ? "linked from the top down" : "linked from the bottom up");
        QString error;
        ASSERT_TRUE(TUSceneFile::read(pegChainFile(MO_Node::kMaxChainDepth, topDown), "chain.xml", &error))
            << error.toStdString();
        std::vector<int> linkLines;
        QByteArray const tooLong = pegChainFile(MO_Node::kMaxChainDepth + 1, topDown, &linkLines);
        EXPECT_FALSE(TUSceneFile::read(tooLong, "chain.xml", &error));
        // The last link read joins the two halves: from the top down, the link to the last peg;
        // from the bottom up, the link from the first.
        int const line = topDown ? linkLines.at(std::size_t(MO_Node::kMaxChainDepth)) : linkLines.at(1);
        EXPECT_EQ(error, QStringLiteral("chain.xml:%1: expected chains of linked nodes at most %2 deep in <link>")
                             .arg(line)
                             .arg(MO_Node::kMaxChainDepth));
    }
}

TEST(SceneFileLimits, TwentyThousandLinkedPegsAreRefusedAtTheFirstLinkTooDeep)
{
    // Such a file once took minutes to open (the check for cycles walked the whole chain at
    // each link, recursing once per peg), and evaluation could overflow the stack.
    std::vector<int> linkLines;
    QByteArray const file = pegChainFile(20000, true, &linkLines);
    QString error;
    EXPECT_FALSE(TUSceneFile::read(file, "long.xml", &error));
    EXPECT_TRUE(error.startsWith(QStringLiteral("long.xml:%1: expected chains")
                                     .arg(linkLines.at(std::size_t(MO_Node::kMaxChainDepth)))))
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
