// The rigged character shipped in examples/scenes/character-rig.xml is the character example with
// the skeleton an animator marks in setup mode: the body peg is the root, and every peg of the
// trunk and the arms and every bone of the legs is a joint; the drawings are not. It is ready to
// pose: the shoulders are blockers (a drag of a hand bends that arm only) and the ankles and the
// balls of the feet hold their positions at gain 100 (a drag of the body leaves the feet planted;
// tests/App/scripts/ik-ready-rig.txt checks both). The test marks
// that rig on character.xml and compares the written scene with the shipped file byte for byte, so
// that the example follows the file format. Run with ANIM_UPDATE_REFERENCES=1 to write the
// example anew after a deliberate change.
#include "BridgeTestUtil.h"

#include "scene/TUSceneFile.h"
#include "session/SC_Session.h"

#include <QFile>

#include <set>


using namespace BridgeTest;

namespace {

QString const kCharacter = QStringLiteral(ANIM_EXAMPLE_SCENES_DIR "/character.xml");
QString const kRig = QStringLiteral(ANIM_EXAMPLE_SCENES_DIR "/character-rig.xml");

MO_Module *moduleNamed(TUScene &scene, char const *name)
{
    MO_Node *node = scene.getRootGroup()->findNode(QLatin1String(name));
    return node ? node->toModule() : nullptr;
}

} // namespace

TEST(CharacterRig, TheShippedRigIsTheCharacterWithItsPegsAndLegBonesMarked)
{
    QString error;
    std::unique_ptr<TUScene> scene = TUSceneFile::readFile(kCharacter, &error);
    ASSERT_TRUE(scene) << error.toStdString();
    SC_Session session(std::move(scene));
    CO_CommandManager *manager = session.commandManager();
    MO_Module *body = moduleNamed(*session.scene(), "Body-P");
    ASSERT_TRUE(body);

    char const *const joints[] = {"Chest-P", "Neck-P", "LShoulder-P", "LElbow-P", "LWrist-P", "LFingers-P",
                                  "RShoulder-P", "RElbow-P", "RWrist-P", "RFingers-P", "LThigh", "LShin",
                                  "LFoot", "LToe", "RThigh", "RShin", "RFoot", "RToe"};
    {
        CO_CommandAccumScope scope(manager, QStringLiteral("Define IK Joint"));
        IKToolUtil::defineRoot(manager, body, true);
        for (char const *name : joints) {
            MO_Module *module = moduleNamed(*session.scene(), name);
            ASSERT_TRUE(module) << name;
            IKToolUtil::setParticipation(manager, module, true);
        }
    }

    using Field = AT_Attr *(*)(JointAttr &);
    Field const blocker = [](JointAttr &a) -> AT_Attr * { return a.isBlocker(); };
    Field const hold = [](JointAttr &a) -> AT_Attr * { return a.holdPositionAttr(); };
    Field const gain = [](JointAttr &a) -> AT_Attr * { return a.holdPositionGainAttr(); };
    struct Constraint {
        char const *joint;
        Field field;
        char const *value;
    };
    Constraint const constraints[] = {
        {"LShoulder-P", blocker, "true"}, {"RShoulder-P", blocker, "true"},
        {"LFoot", hold, "true"},          {"LFoot", gain, "100"},
        {"LToe", hold, "true"},           {"LToe", gain, "100"},
        {"RFoot", hold, "true"},          {"RFoot", gain, "100"},
        {"RToe", hold, "true"},           {"RToe", gain, "100"},
    };
    for (Constraint const &c : constraints) {
        JointAttr *attr = IKToolUtil::jointAttrForModule(moduleNamed(*session.scene(), c.joint));
        ASSERT_TRUE(attr) << c.joint;
        std::unique_ptr<CO_Command> command = c.field(*attr)->setTextValue(0.0, QLatin1String(c.value));
        ASSERT_TRUE(command) << c.joint << " " << c.value;
        manager->execute(std::move(command), QString());
    }

    // The skeleton of the root holds the root and those joints, each once, and nothing else but
    // the handles at the tips.
    std::multiset<QString> names;
    SkeletonDef const skeleton = extract(body, poseSettings());
    for (SkeletonJointDef const &joint : skeleton)
        if (!joint.isHandle && joint.module.get())
            names.insert(joint.module->instanceName());
    std::multiset<QString> expected{QStringLiteral("Body-P")};
    for (char const *name : joints)
        expected.insert(QLatin1String(name));
    EXPECT_EQ(names, expected);

    QByteArray const written = TUSceneFile::write(*session.scene(), &error);
    ASSERT_FALSE(written.isEmpty()) << error.toStdString();
    QFile file(kRig);
    if (qEnvironmentVariableIsSet("ANIM_UPDATE_REFERENCES")) {
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << kRig.toStdString();
        file.write(written);
        return;
    }
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << kRig.toStdString();
    EXPECT_EQ(QString::fromUtf8(written).toStdString(), QString::fromUtf8(file.readAll()).toStdString());
}
