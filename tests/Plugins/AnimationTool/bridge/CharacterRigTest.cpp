// The rigged character shipped in examples/scenes/character-rig.xml is the character example with
// the skeleton an animator gets from the automatic generation on its body peg: the body peg made
// a root, and every joint the smart extraction finds from it at frame 0 marked as participating.
// The test builds that rig from character.xml and compares the written scene with the shipped
// file byte for byte, so the example follows the file format and the extraction rules. Run with
// ANIM_UPDATE_REFERENCES=1 to write the example anew after a deliberate change.
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

TEST(CharacterRig, TheShippedRigIsTheAutomaticSkeletonOfTheBodyPeg)
{
    QString error;
    std::unique_ptr<TUScene> scene = TUSceneFile::readFile(kCharacter, &error);
    ASSERT_TRUE(scene) << error.toStdString();
    SC_Session session(std::move(scene));
    CO_CommandManager *manager = session.commandManager();
    MO_Module *body = moduleNamed(*session.scene(), "Body-P");
    ASSERT_TRUE(body);

    {
        CO_CommandAccumScope scope(manager, QStringLiteral("Automatic Skeleton Generation"));
        IKToolUtil::defineRoot(manager, body, true);
        SkeletonDef skeleton;
        IKToolUtil::smartSkeletonFromModule(body, skeleton, 0.0);
        for (SkeletonJointDef const &joint : skeleton)
            if (joint.module.get() && joint.module.get() != body)
                IKToolUtil::setParticipation(manager, joint.module.get(), true);
    }

    // Both arms and both legs end up in the skeleton, from the shoulders and hips to the fingers
    // and toes.
    std::set<QString> names;
    for (MO_Module *module : modulesOf(extract(body, poseSettings())))
        if (module)
            names.insert(module->instanceName());
    for (char const *name : {"Body-P", "Chest-P", "Neck-P", "LShoulder-P", "LElbow-P", "LWrist-P", "RShoulder-P",
                             "RElbow-P", "RWrist-P", "LThigh", "RThigh", "LShin", "RShin"})
        EXPECT_EQ(names.count(QLatin1String(name)), 1u) << name;

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
