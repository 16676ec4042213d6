#include "plugin/PLUG_PluginLoader.h"
#include "plugin/PLUG_Services.h"
#include "preference/PR_Preference.h"

#include <QDir>
#include <QFile>
#include <QLibrary>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// What the test plug-in at `path` recorded so far.
std::string callsOf(QString const &path)
{
    QLibrary library(path);
    auto const calls = reinterpret_cast<char const *(*)()>(library.resolve("TEST_PluginCalls"));
    return calls ? std::string(calls()) : std::string("<not loaded>");
}

// Each test works on its own copies of the test plug-ins, so that every load is a first one.
class PluginLoader : public ::testing::Test {
protected:
    QTemporaryDir dir;
    QString folder() const { return dir.path(); }
    QString copy(QString const &name, QString const &as = QString(), QString const &subfolder = QString())
    {
        QString const folder = subfolder.isEmpty() ? dir.path() : dir.filePath(subfolder);
        QDir().mkpath(folder);
        QString const target = folder + "/lib" + (as.isEmpty() ? name : as) + ".so";
        EXPECT_TRUE(QFile::copy(QString(TEST_PLUGINS_DIR "/lib") + name + ".so", target));
        return target;
    }
    void SetUp() override { PLUG_Services::reset(); }
    void TearDown() override { PLUG_Services::reset(); }
};

TEST_F(PluginLoader, LoadsAPlugInAndCallsItsEntryPointsInOrder)
{
    QString const library = copy("TestPlugin");
    tuPref->setBoolValue("TEST_PLUGIN_FLAG", true);  // visible to the plug-in's static initialisers
    {
        PLUG_PluginLoader loader(folder() + "/");
        ASSERT_TRUE(loader.load("TestPlugin"));
        EXPECT_EQ(loader.loadedPlugins(), QStringList({"TestPlugin"}));
        EXPECT_TRUE(loader.errors().isEmpty());
        EXPECT_EQ(PLUG_Services::getPluginPath("TestPlugin"), folder());
        EXPECT_EQ(callsOf(library), "load(flag=true,path=" + folder().toStdString() + ") init polish ");

        loader.unpolishAll();
        loader.unpolishAll();  // once only
        EXPECT_EQ(callsOf(library), "load(flag=true,path=" + folder().toStdString() + ") init polish unpolish ");

        testing::internal::CaptureStderr();
        EXPECT_FALSE(loader.load("TestPlugin"));
        std::string const message = testing::internal::GetCapturedStderr();
        EXPECT_NE(message.find("\"TestPlugin\""), std::string::npos) << message;
    }
    // The destructor has nothing left to unpolish.
    EXPECT_EQ(callsOf(library), "load(flag=true,path=" + folder().toStdString() + ") init polish unpolish ");
    tuPref->remove("TEST_PLUGIN_FLAG");
}

TEST_F(PluginLoader, TheDestructorUnpolishesWhatIsStillPolished)
{
    QString const library = copy("TestPlugin");
    {
        PLUG_PluginLoader loader(folder());
        ASSERT_TRUE(loader.load("TestPlugin"));
    }
    EXPECT_EQ(callsOf(library), "load(flag=false,path=" + folder().toStdString() + ") init polish unpolish ");
}

TEST_F(PluginLoader, UnusablePlugInsAreReportedByNameAndTheHostGoesOn)
{
    QString const good = copy("TestPlugin");
    QString const withoutPolish = copy("TestPluginWithoutPolish");
    {
        QFile broken(dir.filePath("libBroken.so"));
        ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
        broken.write("this is no shared library");
    }
    QFile::copy(good, dir.filePath("notalibrary.txt"));  // not a plug-in file name: not tried

    PLUG_PluginLoader loader(folder());
    testing::internal::CaptureStderr();
    EXPECT_FALSE(loader.load("Missing"));
    int const loaded = loader.loadAll();
    std::string const message = testing::internal::GetCapturedStderr();

    EXPECT_EQ(loaded, 1);
    EXPECT_EQ(loader.loadedPlugins(), QStringList({"TestPlugin"}));
    ASSERT_EQ(loader.errors().size(), 3);
    struct Expected {
        char const *name;
        char const *what;
    };
    Expected const expected[] = {
        {"\"Missing\"", "no library"},
        {"\"Broken\"", "cannot open"},
        {"\"TestPluginWithoutPolish\"", "PLUG_Polish"},
    };
    for (int i = 0; i < 3; ++i) {
        std::string const error = loader.errors().at(i).toStdString();
        EXPECT_NE(error.find(expected[i].name), std::string::npos) << error;
        EXPECT_NE(error.find(expected[i].what), std::string::npos) << error;
        EXPECT_NE(message.find(error), std::string::npos) << message;
    }
    // The library without PLUG_Polish was opened but none of its entry points was called.
    EXPECT_EQ(callsOf(withoutPolish), "load(flag=false,path=" + folder().toStdString() + ") ");
    EXPECT_EQ(PLUG_Services::getPluginPath("TestPluginWithoutPolish"), QString());
    EXPECT_EQ(PLUG_Services::getPluginPath("Broken"), QString());
    EXPECT_EQ(callsOf(good), "load(flag=false,path=" + folder().toStdString() + ") init polish ");

    loader.unpolishAll();
    EXPECT_EQ(callsOf(withoutPolish), "load(flag=false,path=" + folder().toStdString() + ") ");
    EXPECT_EQ(callsOf(good), "load(flag=false,path=" + folder().toStdString() + ") init polish unpolish ");
}

// Folders are searched in order: the first that holds a plug-in wins, and a library of the same
// name in a later folder is never opened, even when the first one could not be used.
TEST_F(PluginLoader, SearchesItsFoldersInOrderAndTheFirstOneHoldingAPlugInWins)
{
    QString const first = dir.filePath("first");
    QString const second = dir.filePath("second");
    QString const winner = copy("TestPlugin", QString(), "first");
    QString const shadowed = copy("TestPlugin", QString(), "second");
    copy("TestPlugin", "Second", "second");
    copy("TestPlugin", "Broken", "second");
    {
        QFile broken(first + "/libBroken.so");
        ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
        broken.write("this is no shared library");
    }

    PLUG_PluginLoader loader(QStringList{first + "/", dir.filePath("absent"), second});
    EXPECT_EQ(loader.searchPath(), QStringList({first, dir.filePath("absent"), second}));
    testing::internal::CaptureStderr();
    EXPECT_EQ(loader.loadAll(), 2);
    EXPECT_FALSE(loader.load("Missing"));
    testing::internal::GetCapturedStderr();

    EXPECT_EQ(loader.loadedPlugins(), QStringList({"TestPlugin", "Second"}));
    EXPECT_EQ(PLUG_Services::getPluginPath("TestPlugin"), first);
    EXPECT_EQ(PLUG_Services::getPluginPath("Second"), second);
    EXPECT_EQ(callsOf(winner), "load(flag=false,path=" + first.toStdString() + ") init polish ");
    ASSERT_EQ(loader.errors().size(), 2);
    EXPECT_TRUE(loader.errors()[0].contains("cannot open " + first + "/libBroken.so")) << loader.errors()[0].toStdString();
    EXPECT_TRUE(loader.errors()[1].contains("no library libMissing.so in " + first + ", " + dir.filePath("absent") + ", " + second))
        << loader.errors()[1].toStdString();
    // Asking the shadowed library for its record opens it now, for the first time: it was never
    // initialised nor polished.
    EXPECT_EQ(callsOf(shadowed).find("init"), std::string::npos) << callsOf(shadowed);
}

}  // namespace
