// The folders animhost searches for plug-ins: --plugins, then the environment variable, then the
// installed folder beside the executable.
#include "AH_Host.h"
#include "AH_PluginSearch.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class PluginSearchPath : public ::testing::Test {
protected:
    QTemporaryDir dir;
    QString folder(QString const &name) const
    {
        QDir().mkpath(dir.filePath(name));
        return dir.filePath(name);
    }
    QString const installed = AH_PluginSearchPath::installedFolder(QStringLiteral("/opt/animhost/bin"));
};

TEST_F(PluginSearchPath, SearchesTheOptionThenTheVariableThenTheInstalledFolder)
{
    QString const a = folder("a"), b = folder("b"), c = folder("c");
    AH_PluginSearchPath const path =
        AH_PluginSearchPath::make(a + ":" + b + "/", c, QStringLiteral("/opt/animhost/bin"));
    EXPECT_EQ(path.folders, QStringList({a, b, c, installed}));
    EXPECT_TRUE(path.problems.isEmpty()) << path.problems.join('\n').toStdString();
}

TEST_F(PluginSearchPath, WithNeitherOptionNorVariableOnlyTheInstalledFolderIsSearched)
{
    AH_PluginSearchPath const path = AH_PluginSearchPath::make(QString(), QString(), QStringLiteral("/opt/animhost/bin"));
    EXPECT_EQ(path.folders, QStringList({installed}));
    EXPECT_TRUE(installed.startsWith(QStringLiteral("/opt/animhost/"))) << installed.toStdString();
    EXPECT_TRUE(path.problems.isEmpty());
}

TEST_F(PluginSearchPath, SkipsEmptyEntriesAndRepeatsAndMakesRelativeFoldersAbsolute)
{
    QString const a = folder("a"), b = folder("b");
    QString const previous = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(dir.path()));
    AH_PluginSearchPath const path = AH_PluginSearchPath::make(QStringLiteral("::a:./b/../a:"), QStringLiteral(":b::") + a,
                                                               QStringLiteral("/opt/animhost/bin"));
    QDir::setCurrent(previous);
    EXPECT_EQ(path.folders, QStringList({a, b, installed}));
    EXPECT_TRUE(path.problems.isEmpty()) << path.problems.join('\n').toStdString();
}

// A folder that does not exist is said with where it was given, and left out; the others stay.
TEST_F(PluginSearchPath, ReportsFoldersThatDoNotExistWithWhereTheyCameFrom)
{
    QString const a = folder("a");
    QString const typo = dir.filePath("plugns");
    QString const file = dir.filePath("a-file");
    {
        QFile f(file);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    }
    AH_PluginSearchPath const path =
        AH_PluginSearchPath::make(typo + ":" + a, file, QStringLiteral("/opt/animhost/bin"));
    EXPECT_EQ(path.folders, QStringList({a, installed}));
    ASSERT_EQ(path.problems.size(), 2);
    EXPECT_TRUE(path.problems[0].contains("\"" + typo + "\" (--plugins)")) << path.problems[0].toStdString();
    EXPECT_TRUE(path.problems[1].contains("\"" + file + "\" (ANIMHOST_PLUGIN_PATH)")) << path.problems[1].toStdString();
}

// The test runs from the build tree's bin folder, as animhost does: the folder found from there
// must be where the build puts the plug-ins, as it is once installed.
TEST(InstalledPluginFolder, IsWhereTheBuildTreePutsThePlugIns)
{
    EXPECT_EQ(AH_PluginSearchPath::installedFolder(QCoreApplication::applicationDirPath()),
              QDir::cleanPath(QStringLiteral(ANIM_PLUGINS_DIR)));
}

// The help is where a user (and the manual page made from it) learns of the variable.
TEST(CommandLineHelp, TellsOfThePlugInsOptionAndVariable)
{
    QString const help = AH_Options::helpText();
    EXPECT_TRUE(help.contains(QStringLiteral("\n  --plugins DIR "))) << help.toStdString();
    EXPECT_TRUE(help.contains(QStringLiteral("\n  ") + AH_PluginPathVariable + QLatin1Char(' '))) << help.toStdString();
}

} // namespace
