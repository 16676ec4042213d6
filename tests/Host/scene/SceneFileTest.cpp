// Scene files: the examples load, evaluate and save back unchanged; undo after a series of
// changes gives the loaded file again; bad files give an error with its line and no scene.
#include "SceneTestUtil.h"

#include "command/CO_CommandManager.h"
#include "scene/AT_AttrCmds.h"
#include "scene/AT_AttrFactory.h"
#include "scene/AT_ValueAttr.h"
#include "scene/TUSceneFile.h"

#include <QFile>
#include <QRegularExpression>
#include <QStringList>
#include <QTemporaryDir>

#include <cmath>

namespace {

using namespace SceneTest;
using Math::Point2d;

constexpr double kDegreesToRadians = 0.017453292519943295;

QByteArray readExample(char const *name)
{
    QFile file(QStringLiteral(ANIM_EXAMPLE_SCENES_DIR "/") + QLatin1String(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return file.readAll();
}

std::unique_ptr<TUScene> loadExample(char const *name)
{
    QString error;
    std::unique_ptr<TUScene> scene = TUSceneFile::read(readExample(name), name, &error);
    EXPECT_TRUE(scene) << error.toStdString();
    return scene;
}

template <class T>
T *find(TUScene const &scene, char const *name)
{
    return dynamic_cast<T *>(scene.getRootGroup()->findNode(QString::fromLatin1(name)));
}

class Examples : public ::testing::TestWithParam<char const *> {};

TEST_P(Examples, LoadAndSaveBackByteForByte)
{
    QByteArray const original = readExample(GetParam());
    ASSERT_FALSE(original.isEmpty());
    QString error;
    std::unique_ptr<TUScene> scene = TUSceneFile::read(original, GetParam(), &error);
    ASSERT_TRUE(scene) << error.toStdString();
    EXPECT_TRUE(error.isEmpty());
    QByteArray const written = TUSceneFile::write(*scene);
    EXPECT_EQ(written.toStdString(), original.toStdString());
}

INSTANTIATE_TEST_SUITE_P(Scenes, Examples, ::testing::Values("arm.xml", "bones.xml", "character.xml", "inbetween.xml"));

TEST(SceneFile, ArmExampleEvaluatesAsAnArm)
{
    std::unique_ptr<TUScene> scene = loadExample("arm.xml");
    ASSERT_TRUE(scene);
    auto *hand = find<MO_ElementModule>(*scene, "Hand");
    ASSERT_NE(hand, nullptr);
    // Frame 1, straight arm: (-6, 4) + (6, 0) + (4.8, 0) field = (0.4, 0.25) OGL.
    expectNear(apply(world(*hand, 1.0), Point2d()), Point2d(0.4, 0.25));
    // Frame 12: upper arm at -30 degrees, forearm 90 more (60 in the scene).
    double const c30 = std::cos(30.0 * kDegreesToRadians);
    double const s60 = std::sin(60.0 * kDegreesToRadians);
    Point2d const elbow(-0.5 + 0.5 * c30, 0.25 - 0.5 * 0.5);
    expectNear(apply(world(*hand, 12.0), Point2d()), Point2d(elbow.x + 0.4 * 0.5, elbow.y + 0.4 * s60));
    // The hand shows drawing "2" from frame 8.
    EXPECT_EQ(hand->oglDrawing(7.0)->celKey(), CA_CelKey("Hand", "1"));
    EXPECT_EQ(hand->oglDrawing(8.0)->celKey(), CA_CelKey("Hand", "2"));
    EXPECT_EQ(hand->oglDrawing(8.0)->shapes().size(), 1u);
    EXPECT_EQ(find<MO_ElementModule>(*scene, "UpperArm")->oglDrawing(1.0)->shapes()[0].fill, QColor(0xd9, 0xa0, 0x66));
}

TEST(SceneFile, BonesExampleBendsLikeAnArm)
{
    std::unique_ptr<TUScene> scene = loadExample("bones.xml");
    ASSERT_TRUE(scene);
    auto *tip = find<BendyBoneModule>(*scene, "Bone4");
    ASSERT_NE(tip, nullptr);
    Point2d const root(-4.0 / 12.0, -2.0 / 16.0);
    double const L = 3.0 / 12.0;
    auto along = [L](double degrees) {
        return Math::Vector2d(std::cos(degrees * kDegreesToRadians), std::sin(degrees * kDegreesToRadians)) * L;
    };
    // Frame 1: three flat bones and the last turned 15 degrees.
    expectNear(apply(world(*tip, 1.0), Point2d()), root + along(0) * 3.0 + along(15));
    // Frame 24: the turns add up along the chain: 20, 45, 75, 90.
    expectNear(apply(world(*tip, 24.0), Point2d()), root + along(20) + along(45) + along(75) + along(90));
    EXPECT_EQ(tip->inputModule(0), find<MO_Module>(*scene, "Bone3"));
}

TEST(SceneFile, UndoingASeriesOfChangesGivesTheLoadedFileAgain)
{
    for (char const *name : {"arm.xml", "bones.xml"}) {
        QByteArray const original = readExample(name);
        std::unique_ptr<TUScene> scene = TUSceneFile::read(original, name, nullptr);
        ASSERT_TRUE(scene) << name;
        CO_CommandManager manager;
        scene->setCommandManager(&manager);

        std::vector<MO_Module *> modules;
        for (auto it = scene->subNodesBegin(); it != scene->subNodesEnd(); ++it)
            if (MO_Module *m = (*it)->toModule())
                modules.push_back(m);
        ASSERT_GE(modules.size(), 4u);
        int commands = 0;
        {
            CO_CommandAccumScope scope(&manager, "Pose");
            for (MO_Module *m : modules) {
                if (auto *peg = dynamic_cast<MO_AnimatedModule *>(m)) {
                    commands += manager.execute(peg->rotationAttr()->setTextValue(12.0, "0, 0, 12.5"));
                    commands += manager.execute(Attr::Position3d::createSetValueCurrentFrameCmd(
                        nullptr, peg->positionAttr(), 3.0, 1.0, 2.0, 0.0));
                    EXPECT_TRUE(AT_KeyframeCmds::AddKeyframe(nullptr, 6, peg->rotationAttr()));
                } else if (auto *bone = dynamic_cast<BendyBoneModule *>(m)) {
                    CO_CommandAccumScope nested(&manager, "Bend");  // joins the outer step
                    EXPECT_TRUE(AT_KeyframeCmds::AddKeyframe(nullptr, 7, bone->orientationAttr()));
                    commands += manager.execute(Attr::Double::createSetValueCurrentFrameCmd(
                        nullptr, bone->orientationAttr(), 7.0, -40.0));
                    commands += manager.execute(bone->lengthAttr()->setTextValue(1.0, "2.5"));
                }
            }
        }
        for (MO_Module *m : modules) {
            AT_Attr *attr = m->attr(dynamic_cast<BendyBoneModule *>(m) ? "orientation" : "rotation");
            if (std::unique_ptr<CO_Command> cmd = AT_KeyframeCmds::DeleteKeyframe(1, 1, attr))
                commands += manager.execute(std::move(cmd), "Delete Keyframe");
        }
        EXPECT_GE(commands, 6) << name;
        EXPECT_EQ(manager.undoNames().first(), "Pose") << name;
        QByteArray const changed = TUSceneFile::write(*scene);
        EXPECT_NE(changed, original) << name;

        while (manager.canUndo())
            ASSERT_TRUE(manager.undo());
        EXPECT_EQ(TUSceneFile::write(*scene).toStdString(), original.toStdString()) << name;
        while (manager.canRedo())
            ASSERT_TRUE(manager.redo());
        EXPECT_EQ(TUSceneFile::write(*scene).toStdString(), changed.toStdString()) << name;
    }
}

TEST(SceneFile, EveryNodeKindGroupsAndDynamicAttributesRoundTrip)
{
    TUScene scene;
    SC_SceneMetrics metrics;
    ASSERT_TRUE(metrics.setFieldToOgl(0.1, 0.2));
    scene.setSceneMetrics(metrics);
    auto *a = add<MO_PegModule>(scene, "a");
    auto *b = add<MO_PegModule>(scene, "b");
    auto *c = add<MO_PegModule>(scene, "c");
    auto *sw = add<MO_SwitchModule>(scene, "switch", 3);
    auto *sub = add<TUGroup>(scene, "sub");
    auto put = [sub](UT_SharedPtr<MO_Node> node, char const *name) {
        node->setInstanceName(name);
        return sub->addNode(std::move(node));
    };
    MO_Node *composite = put(TUSceneFile::createNode("COMPOSITE"), "composite");
    MO_Node *effect = put(TUSceneFile::createNode("EFFECT"), "effect");
    MO_Node *curve = put(TUSceneFile::createNode("CurveModule"), "curve");
    MO_Node *game = put(TUSceneFile::createNode("GameBoneModule"), "game");
    MO_Node *offset = put(TUSceneFile::createNode("OffsetModule"), "offset");
    MO_Node *mini = put(TUSceneFile::createNode("MiniPegModule"), "mini");
    MO_Node *module = put(TUSceneFile::createNode("MODULE"), "module");
    auto *read = static_cast<MO_ElementModule *>(put(TUSceneFile::createNode("READ"), "read"));
    read->setElementName("shared element");
    read->addDrawing("x", {{OC_VectorShape::Kind::Polyline, {{0.1, 0.2}, {1e-7, -3.25}}, QColor(1, 2, 3, 4), Qt::transparent, 0.5}});
    ASSERT_TRUE(read->setExposure(-2, "x"));
    ASSERT_TRUE(read->setExposure(4, ""));
    for (auto const &[src, dst, in] : {std::tuple<MO_Node *, MO_Node *, int>{a, sw, 0}, {b, sw, 1}, {c, sw, 2},
                                       {sw, composite, 0}, {a, composite, 1}, {composite, effect, 0},
                                       {effect, curve, 0}, {curve, game, 0}, {game, offset, 0},
                                       {offset, mini, 0}, {mini, module, 0}, {module, read, 0}})
        ASSERT_TRUE(MO_Node::connect(src, 0, dst, in));
    sw->activeInputAttr()->setKeyframe(3, 2);
    auto dynamic = AT_AttrFactorySingleton::instance().create("DOUBLE", a, AT_AttrMeta("weight", "Weight"));
    ASSERT_TRUE(dynamic);
    ASSERT_NE(a->addDynamicAttr(std::move(dynamic)), nullptr);
    static_cast<AT_DoubleAttr *>(a->attr("weight"))->setLocalValue(0.75);

    QByteArray const first = TUSceneFile::write(scene);
    QString error;
    std::unique_ptr<TUScene> again = TUSceneFile::read(first, "memory", &error);
    ASSERT_TRUE(again) << error.toStdString() << "\n" << first.toStdString();
    EXPECT_EQ(TUSceneFile::write(*again).toStdString(), first.toStdString());

    EXPECT_EQ(again->sceneMetrics(), metrics);
    auto *read2 = find<MO_ElementModule>(*again, "read");
    ASSERT_NE(read2, nullptr);
    EXPECT_EQ(read2->oglDrawing(0.0)->celKey(), CA_CelKey("shared element", "x"));
    EXPECT_EQ(read2->oglDrawing(0.0)->shapes(), read->oglDrawing(0.0)->shapes());
    EXPECT_EQ(find<MO_SwitchModule>(*again, "switch")->nInPorts(), 3);
    EXPECT_EQ(find<MO_SwitchModule>(*again, "switch")->transformationInput(3.0), 2);
    EXPECT_EQ(read2->inputModule(0), find<MO_Module>(*again, "module"));
    EXPECT_EQ(find<MO_Module>(*again, "curve")->inputModule(0), find<MO_Module>(*again, "switch"));
    AT_Attr *weight = find<MO_PegModule>(*again, "a")->attr("weight");
    ASSERT_NE(weight, nullptr);
    EXPECT_TRUE(weight->isDynamic());
    EXPECT_EQ(weight->textValue(0.0), "0.75");
    for (double frame : {0.0, 3.0, 10.0})
        EXPECT_EQ(world(*find<MO_Module>(*again, "read"), frame), world(*read, frame)) << frame;

    QTemporaryDir dir;
    QString const path = dir.filePath("saved.xml");
    ASSERT_TRUE(TUSceneFile::writeFile(scene, path, &error)) << error.toStdString();
    std::unique_ptr<TUScene> fromDisk = TUSceneFile::readFile(path, &error);
    ASSERT_TRUE(fromDisk) << error.toStdString();
    EXPECT_EQ(TUSceneFile::write(*fromDisk), first);
    EXPECT_FALSE(TUSceneFile::readFile(dir.filePath("missing.xml"), &error));
    EXPECT_TRUE(error.contains("missing.xml")) << error.toStdString();
}

// A small valid file; each bad case below replaces some of its lines.
QStringList const kGoodLines = {
    R"(<?xml version="1.0" encoding="UTF-8"?>)",         // 1
    R"(<scene version="1">)",                            // 2
    R"( <metrics fieldToOglX="0.5" fieldToOglY="0.25"/>)",  // 3
    R"( <group name="Top">)",                            // 4
    R"(  <node type="PEG" name="a">)",                   // 5
    R"(   <attrs>)",                                     // 6
    R"(    <position x="1" y="2" z="0"/>)",              // 7
    R"(   </attrs>)",                                    // 8
    R"(  </node>)",                                      // 9
    R"(  <node type="PEG" name="b"/>)",                  // 10
    R"( </group>)",                                      // 11
    R"( <links>)",                                       // 12
    R"(  <link src="a" out="0" dst="b" in="0"/>)",       // 13
    R"( </links>)",                                      // 14
    R"(</scene>)",                                       // 15
};

struct BadFile {
    char const *what;
    int line;              // the line to replace (1-based), 0 for none
    char const *with;      // its replacement
    int keepLines;         // > 0: the file is cut after this many lines
    int errorLine;         // the line the error must name
};

BadFile const kBadFiles[] = {
    {"truncated inside a node", 0, "", 7, 7},
    {"truncated after the group", 0, "", 12, 12},
    {"attribute outside <attrs>", 10, R"(  <node type="PEG" name="b"><position x="1" y="0" z="0"/></node>)", 0, 10},
    {"link inside the group", 10, R"(  <link src="a" out="0" dst="a" in="0"/>)", 0, 10},
    {"mismatched end tag", 8, R"(   </attr>)", 0, 8},
    {"wrong document element", 2, R"(<scenery version="1">)", 0, 2},
    {"unknown version", 2, R"(<scene version="2">)", 0, 2},
    {"unknown node type", 10, R"(  <node type="BOGUS" name="b"/>)", 0, 10},
    {"unknown attribute type", 7, R"(    <extra type="NO_SUCH_TYPE"/>)", 0, 7},
    {"unknown attribute", 7, R"(    <elevation value="1"/>)", 0, 7},
    {"non-numeric metrics", 3, R"( <metrics fieldToOglX="wide" fieldToOglY="0.25"/>)", 0, 3},
    {"NaN metrics", 3, R"( <metrics fieldToOglX="nan" fieldToOglY="0.25"/>)", 0, 3},
    {"infinite metrics", 3, R"( <metrics fieldToOglX="0.5" fieldToOglY="inf"/>)", 0, 3},
    {"negative metrics", 3, R"( <metrics fieldToOglX="-0.5" fieldToOglY="0.25"/>)", 0, 3},
    {"non-numeric attribute value", 7, R"(    <position x="one" y="2" z="0"/>)", 0, 7},
    {"non-numeric port", 13, R"(  <link src="a" out="0" dst="b" in="first"/>)", 0, 13},
    {"port out of range", 13, R"(  <link src="a" out="0" dst="b" in="3"/>)", 0, 13},
    {"unknown link target", 13, R"(  <link src="a" out="0" dst="nobody" in="0"/>)", 0, 13},
    {"input linked twice", 13, R"(  <link src="a" out="0" dst="b" in="0"/><link src="a" out="0" dst="b" in="0"/>)", 0, 13},
    {"cycle", 13, R"(  <link src="a" out="0" dst="b" in="0"/><link src="b" out="0" dst="a" in="0"/>)", 0, 13},
    {"duplicate name", 10, R"(  <node type="PEG" name="a"/>)", 0, 10},
    {"missing name", 10, R"(  <node type="PEG"/>)", 0, 10},
    {"non-numeric drawing point", 10,
     R"(  <node type="READ" name="b"><drawings><drawing name="1"><polygon points="0,0 x,1" stroke="#ff000000" fill="#ff000000" thickness="1"/></drawing></drawings></node>)",
     0, 10},
    {"bad colour", 10,
     R"(  <node type="READ" name="b"><drawings><drawing name="1"><polyline points="0,0 1,1" stroke="red" thickness="1"/></drawing></drawings></node>)",
     0, 10},
    {"exposure of an unknown drawing", 10,
     R"(  <node type="READ" name="b"><drawings/><timing><exposure frame="1" drawing="z"/></timing></node>)", 0, 10},
    {"timing before drawings", 10, R"(  <node type="READ" name="b"><timing/><drawings/></node>)", 0, 10},
    {"non-numeric exposure frame", 10,
     R"(  <node type="READ" name="b"><drawings><drawing name="1"/></drawings><timing><exposure frame="one" drawing="1"/></timing></node>)",
     0, 10},
    {"key frame beyond int", 7, R"(    <position x="1" y="2" z="0"><key frame="3000000000" x="1" y="2" z="0"/></position>)", 0, 7},
    {"key frame beyond the frame limits", 7, R"(    <position x="1" y="2" z="0"><key frame="1000001" x="1" y="2" z="0"/></position>)", 0, 7},
    {"key frame below the frame limits", 7, R"(    <position x="1" y="2" z="0"><key frame="-2147483648" x="1" y="2" z="0"/></position>)", 0, 7},
    {"exposure frame beyond the frame limits", 10,
     R"(  <node type="READ" name="b"><drawings><drawing name="1"/></drawings><timing><exposure frame="2000000" drawing="1"/></timing></node>)",
     0, 10},
    {"no links", 12, R"()", 0, 15},
    {"text where elements belong", 12, R"( stray text<links>)", 0, 12},
};

TEST(SceneFile, BadFilesGiveAnErrorNamingTheLineAndNoScene)
{
    QString error;
    ASSERT_TRUE(TUSceneFile::read(kGoodLines.join('\n').toUtf8(), "bad.xml", &error)) << error.toStdString();
    for (BadFile const &bad : kBadFiles) {
        QStringList lines = kGoodLines;
        if (bad.line > 0)
            lines[bad.line - 1] = QString::fromUtf8(bad.with);
        if (bad.keepLines > 0)
            lines = lines.mid(0, bad.keepLines);
        if (bad.line == 12 && QString(bad.with).isEmpty()) {  // drop the whole <links> element
            lines[11] = lines[12] = lines[13] = QString();
        }
        error.clear();
        std::unique_ptr<TUScene> scene = TUSceneFile::read(lines.join('\n').toUtf8(), "bad.xml", &error);
        EXPECT_EQ(scene, nullptr) << bad.what;
        QString const prefix = QStringLiteral("bad.xml:%1: ").arg(bad.errorLine);
        EXPECT_TRUE(error.startsWith(prefix)) << bad.what << ": " << error.toStdString();
    }
}

TEST(SceneFile, NodesWithoutANameOfTheirOwnAreNotWritten)
{
    QTemporaryDir dir;
    for (char const *second : {"a", ""}) {
        TUScene scene;
        add<MO_PegModule>(scene, "a");
        add<BendyBoneModule>(scene, second);
        QString error;
        EXPECT_TRUE(TUSceneFile::write(scene, &error).isEmpty()) << second;
        EXPECT_TRUE(error.contains("BendyBoneModule")) << error.toStdString();
        error.clear();
        EXPECT_FALSE(TUSceneFile::writeFile(scene, dir.filePath("unnamed.xml"), &error));
        EXPECT_FALSE(error.isEmpty());
        EXPECT_FALSE(QFile::exists(dir.filePath("unnamed.xml")));
    }
}

TEST(SceneFile, UnknownKeywordsMakeNoNode)
{
    EXPECT_EQ(TUSceneFile::createNode("BOGUS"), nullptr);
    EXPECT_EQ(TUSceneFile::createNode(""), nullptr);
    EXPECT_EQ(TUSceneFile::createNode("peg"), nullptr);  // keywords are case-sensitive
    for (QString const keyword : {"PEG", "READ", "SWITCH", "MODULE", "BendyBoneModule", "GameBoneModule", "CurveModule",
                                  "OffsetModule", "MiniPegModule", "COMPOSITE", "EFFECT"}) {
        UT_SharedPtr<MO_Node> node = TUSceneFile::createNode(keyword);
        ASSERT_TRUE(node) << keyword.toStdString();
        EXPECT_EQ(node->typeKeyword(), keyword);
        EXPECT_EQ(node->toModule() == nullptr, node->isPassThrough());
    }
}

} // namespace
