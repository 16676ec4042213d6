#include "AttrTestSupport.h"

#include "scene/AT_AttrCmds.h"
#include "scene/AT_AttrFactory.h"
#include "scene/AT_ValueAttr.h"

#include <gtest/gtest.h>

namespace {

AT_AttrMeta meta(QString const &keyword) { return AT_AttrMeta(keyword, keyword); }

// A plug-in's kind of dynamic group: one flag, made by its constructor.
class FlagGroup : public AT_DynGroupAttr {
public:
    FlagGroup(AT_AttrOwner *owner, AT_AttrMeta const &meta)
        : AT_DynGroupAttr(owner, meta), flag(owner, AT_AttrMeta("participates", "participates"), true)
    {
        registerAttr(&flag);
    }
    static QString TypeString() { return QStringLiteral("com.example.FLAG_GROUP"); }
    QString typeName() const override { return TypeString(); }
    UT_DynKey const &typeKey() const override
    {
        static UT_DynKey const key("com.example.FLAG_GROUP");
        return key;
    }

    AT_BoolAttr flag;
};

void registerFlagGroup()
{
    AT_AttrFactorySingleton::instance().registerClass(
        FlagGroup::TypeString(), [] { return std::unique_ptr<AT_Attr>(); },
        [](AT_AttrOwner *owner, AT_AttrMeta const &meta) { return std::make_unique<FlagGroup>(owner, meta); });
}

// One attribute of every kind, on one owner; a second Node starts from the same defaults.
struct Node {
    TestOwner owner;
    AT_BoolAttr flag{&owner, meta("flag"), false};
    AT_IntAttr index{&owner, meta("index"), 1};
    AT_DoubleAttr weight{&owner, AT_DoubleAttrMeta("weight", "Weight", "", 0, 100, 0, 100), 1.0};
    AT_StringAttr name{&owner, meta("name")};
    AT_Position2dAttr offset{&owner, AT_AttrMeta("offset", "offsetXml", "Offset", 0)};
    AT_Position3dAttr position{&owner, meta("position")};
    AT_Rotation3dAttr rotation{&owner, meta("rotation")};
    AT_GroupAttr joint{&owner, meta("joint")};
    AT_BoolAttr active{&owner, meta("active"), true};
    AT_DoubleAttr gain{&owner, meta("gain"), 1.0};
    AT_GroupAttr inner{&owner, meta("inner")};
    AT_StringAttr type{&owner, meta("type")};

    Node()
    {
        joint.registerAttr(&active);
        joint.registerAttr(&gain);
        joint.registerAttr(&inner);
        inner.registerAttr(&type);
        owner.statics = {&flag, &index, &weight, &name, &offset, &position, &rotation, &joint};
    }
};

TEST(AttrXml, EveryKindRoundTrips)
{
    registerFlagGroup();
    Node a;
    a.flag.setLocalValue(true);
    a.index.setKeyframe(1, 2);
    a.index.setKeyframe(10, -5);
    a.weight.setLocalValue(0.1);
    a.weight.setKeyframe(3, 1.0 / 3.0, true);
    a.weight.setKeyframe(8, 99.5);
    a.name.setLocalValue(QStringLiteral("a < b & \"c\"  "));
    a.offset.setLocalValue(Math::Point2d(-1.25, 3e-7));
    a.position.setKeyframe(0, Math::Point3d(1, 2, 3));
    a.position.setKeyframe(24, Math::Point3d(-4, 5.5, 0));
    a.rotation.setLocalValue(Math::Angle3d(0, 0, 37.5));
    a.active.setLocalValue(false);
    a.gain.setKeyframe(-2, 0.5);
    a.type.setLocalValue("elbow");
    a.owner.addDynamicAttr(AT_AttrFactorySingleton::instance().create("DOUBLE", &a.owner, meta("extra")));
    static_cast<AT_DoubleAttr *>(a.owner.findAttr("extra"))->setLocalValue(6.5);
    a.owner.addDynamicAttr(AT_AttrFactorySingleton::instance().create(FlagGroup::TypeString(), &a.owner, meta("com.example.flags")));
    static_cast<FlagGroup *>(a.owner.findAttr("com.example.flags"))->flag.setLocalValue(false);
    QByteArray const xml = a.owner.toXml();

    Node b;
    QString error;
    ASSERT_TRUE(b.owner.fromXml(xml, &error)) << error.toStdString() << "\n" << xml.toStdString();
    EXPECT_TRUE(error.isEmpty());
    std::vector<AT_Attr *> const mine = a.owner.all(), theirs = b.owner.all();
    ASSERT_EQ(theirs.size(), mine.size());
    for (size_t i = 0; i < mine.size(); ++i) {
        EXPECT_EQ(theirs[i]->keyword(), mine[i]->keyword());
        EXPECT_EQ(theirs[i]->typeName(), mine[i]->typeName());
        EXPECT_TRUE(theirs[i]->isEquivalent(*mine[i])) << mine[i]->keyword().toStdString();
    }
    EXPECT_EQ(b.name.localValue(), QStringLiteral("a < b & \"c\"  "));
    EXPECT_EQ(b.offset.localValue(), Math::Point2d(-1.25, 3e-7));
    EXPECT_FALSE(static_cast<FlagGroup *>(b.owner.findAttr("com.example.flags"))->flag.localValue());
    EXPECT_EQ(b.owner.toXml(), xml);
}

TEST(AttrXml, AttributesWriteTheirDocumentedForm)
{
    Node a;
    a.weight.setKeyframe(3, 0.5, true);
    a.offset.setLocalValue(Math::Point2d(0.1, 2));
    QByteArray data;
    QXmlStreamWriter writer(&data);
    a.weight.writeXml(writer);
    a.offset.writeXml(writer);
    a.joint.writeXml(writer);
    EXPECT_EQ(QString::fromUtf8(data),
              "<weight value=\"1\"><key frame=\"3\" value=\"0.5\" constant=\"true\"/></weight>"
              "<offsetXml x=\"0.1\" y=\"2\"/>"
              "<joint><active value=\"true\"/><gain value=\"1\"/><inner><type/></inner></joint>");
    data.clear();
    auto dynamic = AT_AttrFactorySingleton::instance().create("BOOL", nullptr, meta("on"));
    QXmlStreamWriter second(&data);
    dynamic->writeXml(second);
    EXPECT_EQ(QString::fromUtf8(data), "<on type=\"BOOL\" value=\"false\"/>");
}

// Bad input from a file: each document is refused with a message naming the line and what was
// expected, and nothing of it is applied (not even the valid change on line 2).
TEST(AttrXml, BadDocumentsAreRefusedAndChangeNothing)
{
    struct Case {
        char const *what;
        char const *rest;  // after "<node>\n<index value=\"42\"/>\n"
        int line;
        char const *message;
    } const cases[] = {
        {"truncated", "<weight value=\"1\">\n<key frame=\"1\" value=\"2\"/>\n", 5,
         "expected </weight>, found the end of the file"},
        {"wrong nesting", "<weight value=\"1\">\n<key frame=\"1\" value=\"2\">\n</weight>\n</key>\n</node>\n", 5,
         "expected </key>"},
        {"unknown type", "<extra type=\"com.example.NOPE\" value=\"1\"/>\n</node>\n", 3,
         "expected a registered attribute type for <extra>, found \"com.example.NOPE\""},
        {"not a number", "<weight value=\"abc\"/>\n</node>\n", 3,
         "expected a finite number for \"value\" on <weight>, found \"abc\""},
        {"NaN", "<weight value=\"nan\"/>\n</node>\n", 3, "expected a finite number for \"value\" on <weight>, found \"nan\""},
        {"infinity", "<weight value=\"inf\"/>\n</node>\n", 3, "found \"inf\""},
        {"minus infinity", "<position x=\"0\" y=\"-inf\" z=\"0\"/>\n</node>\n", 3,
         "expected a finite number for \"y\" on <position>, found \"-inf\""},
        {"overflow", "<weight value=\"1e999\"/>\n</node>\n", 3, "found \"1e999\""},
        {"out of range", "<weight value=\"150\"/>\n</node>\n", 3, "expected a value within the range of <weight>"},
        {"fractional frame", "<weight value=\"1\">\n<key frame=\"1.5\" value=\"2\"/>\n</weight>\n</node>\n", 4,
         "expected a whole frame number from -1000000 to 1000000 in <key frame=\"...\"> of <weight>, found \"1.5\""},
        {"duplicate key", "<weight value=\"1\">\n<key frame=\"2\" value=\"1\"/>\n<key frame=\"2\" value=\"3\"/>\n</weight>\n</node>\n", 5,
         "expected one key per frame in <weight>, found frame 2 twice"},
        {"element in key", "<weight value=\"1\">\n<key frame=\"2\" value=\"1\">\n<x/>\n</key>\n</weight>\n</node>\n", 5,
         "expected no element inside <key> of <weight>, found <x>"},
        {"key of a bool", "<flag value=\"true\">\n<key frame=\"1\" value=\"false\"/>\n</flag>\n</node>\n", 4,
         "expected no <key> inside <flag>, which is not animatable"},
        {"bad bool", "<flag value=\"yes\"/>\n</node>\n", 3, "expected true or false for \"value\" on <flag>, found \"yes\""},
        {"duplicate element", "<index value=\"3\"/>\n</node>\n", 3, "expected <index> once inside <node>, found it again"},
        {"missing component", "<offsetXml x=\"1\"/>\n</node>\n", 3, "expected attribute \"y\" on <offsetXml>"},
        {"unknown element", "<nosuch value=\"1\"/>\n</node>\n", 3, "inside <node>, found <nosuch>"},
        {"unknown in group", "<joint>\n<nosuch value=\"1\"/>\n</joint>\n</node>\n", 4,
         "expected one of <active>, <gain>, <inner> inside <joint>, found <nosuch>"},
        {"wrong type in a group", "<joint>\n<active type=\"INT\" value=\"1\"/>\n</joint>\n</node>\n", 4,
         "expected type \"BOOL\" for <active>, found \"INT\""},
        {"text in a value", "<weight value=\"1\">hello</weight>\n</node>\n", 3, "expected an element, found text \"hello\""},
        {"element in a string", "<name>a<b/></name>\n</node>\n", 3, "expected text inside <name>, found <b>"},
        {"dynamic over static", "<weight type=\"DOUBLE\" value=\"1\"/>\n</node>\n", 3,
         "expected a new attribute name for dynamic <weight>"},
        {"bad dynamic value", "<extra type=\"DOUBLE\" value=\"x\"/>\n</node>\n", 3, "found \"x\""},
        {"content after the root", "</node>\n<more/>\n", 4, "expected the end of the file"},
    };
    for (auto const &c : cases) {
        Node node;
        QByteArray const before = node.owner.toXml();
        QByteArray const doc = QByteArray("<node>\n<index value=\"42\"/>\n") + c.rest;
        QString error;
        EXPECT_FALSE(node.owner.fromXml(doc, &error)) << c.what;
        QString const where = QStringLiteral("test.xml:%1: ").arg(c.line);
        EXPECT_TRUE(error.startsWith(where)) << c.what << ": " << error.toStdString();
        EXPECT_TRUE(error.contains(QString::fromUtf8(c.message))) << c.what << ": " << error.toStdString();
        EXPECT_EQ(node.index.localValue(), 1) << c.what;
        EXPECT_TRUE(node.owner.dynamics.empty()) << c.what;
        EXPECT_EQ(node.owner.toXml(), before) << c.what;
        EXPECT_EQ(node.owner.changes, 0) << c.what;
    }
}

// A reader in the way a group whose elements may come in any order reads itself: state 0 for its
// own element, then each child found among the registered attributes, moved to the place it has
// in the file, and read by its own reader kept as the active child.
class FileOrderReader : public PIO_XML::ComponentReader {
public:
    explicit FileOrderReader(AT_ComplexAttr *group) : group_(group) {}

    std::shared_ptr<ComponentReader> startElement(PIO_XML::Context &ctx, QString const &name,
                                                  QXmlStreamAttributes const &attributes) override
    {
        if (state_ == 0) {
            state_ = 1;
            return shared_from_this();
        }
        int place = -1;
        AT_Attr *child = group_->findRegisteredAttr(name, &place);
        if (!child)
            return errorHandler(ctx, QStringLiteral("expected a child of the group, found <%1>").arg(name));
        group_->moveRegisteredAttr(place, count_++);  // careful: a real reader stages this too
        return startChild(ctx, child->componentReader(), name, attributes);
    }

private:
    AT_ComplexAttr *group_;
    int state_ = 0;  // 0 before the group's own element, 1 inside it
    int count_ = 0;  // child elements read so far
};

TEST(AttrXml, NestedReadersGetTheEndOfWhatTheyHandedOn)
{
    Node node;
    auto reader = std::make_shared<FileOrderReader>(&node.joint);
    QByteArray const doc = "<joint>\n<inner><type>knee</type></inner>\n<gain value=\"2\"><key frame=\"1\" value=\"3\"/></gain>\n</joint>";
    QString error;
    ASSERT_TRUE(PIO_XML::readDocument(doc, reader, "joint.xml", &error)) << error.toStdString();
    EXPECT_EQ(node.joint.registeredAttr(0), &node.inner);
    EXPECT_EQ(node.joint.registeredAttr(1), &node.gain);
    EXPECT_EQ(node.joint.registeredAttr(2), &node.active);
    EXPECT_EQ(node.type.localValue(), "knee");
    EXPECT_DOUBLE_EQ(node.gain.localValue(), 2.0);
    EXPECT_TRUE(node.gain.hasKeyframe(1));

    auto again = std::make_shared<FileOrderReader>(&node.joint);
    EXPECT_FALSE(PIO_XML::readDocument(QByteArray("<joint>\n\n<other/></joint>"), again, "joint.xml", &error));
    EXPECT_EQ(error, "joint.xml:3: expected a child of the group, found <other>");
}

TEST(AttrXml, IntegersMustBeWhole)
{
    Node node;
    QString error;
    EXPECT_FALSE(node.owner.fromXml("<node><index value=\"1.5\"/></node>", &error));
    EXPECT_EQ(error, "test.xml:1: expected a whole number for \"value\" on <index>, found \"1.5\"");
    EXPECT_FALSE(node.owner.fromXml("", &error));
    EXPECT_TRUE(error.startsWith("test.xml:1: expected")) << error.toStdString();
}

TEST(AttrXml, ReadingWithoutASourceNamesTheLineAlone)
{
    AT_DoubleAttr attr(nullptr, meta("d"));
    QXmlStreamReader xml(QByteArray("<d value=\"oops\"/>"));
    QString error;
    EXPECT_FALSE(PIO_XML::read(xml, attr.componentReader(), QString(), &error));
    EXPECT_EQ(error, "line 1: expected a finite number for \"value\" on <d>, found \"oops\"");
    QXmlStreamReader good(QByteArray("<d value=\"2.5\"><key frame=\"4\" value=\"1\"/></d>"));
    EXPECT_TRUE(PIO_XML::read(good, attr.componentReader(), QString(), &error));
    EXPECT_DOUBLE_EQ(attr.localValue(), 2.5);
    EXPECT_TRUE(attr.hasKeyframe(4));
}

TEST(AttrXml, NumberTextIsShortestAndExact)
{
    double const values[] = {0.1, 1.0 / 3.0, -2.5e-12, 123456789.125, 1e300};
    for (double v : values) {
        double back = 0;
        ASSERT_TRUE(PIO_XML::parseNumber(PIO_XML::numberText(v), back));
        EXPECT_EQ(back, v);
    }
    EXPECT_EQ(PIO_XML::numberText(0.1), "0.1");
    EXPECT_EQ(PIO_XML::numberText(100), "100");
    double out = 7;
    EXPECT_FALSE(PIO_XML::parseNumber("nan", out));
    EXPECT_FALSE(PIO_XML::parseNumber("", out));
    EXPECT_EQ(out, 7);
}

}  // namespace
