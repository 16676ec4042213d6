// The plug-in's entry points, checked on the real library: each case runs plugin_probe, a minimal
// host in a process of its own (the library registers its tools once per process, at load), and
// reads what the probe saw.

#include <QProcess>
#include <QStringList>
#include <gtest/gtest.h>

#include <map>

namespace {

using Report = std::map<std::string, std::string>;

Report probe(QStringList const &arguments)
{
    QProcess process;
    process.setProgram(QStringLiteral(PLUGIN_PROBE));
    process.setArguments(arguments);
    process.start();
    EXPECT_TRUE(process.waitForFinished(30000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();
    Report report;
    for (QByteArray const &line : process.readAllStandardOutput().split('\n')) {
        int const eq = line.indexOf('=');
        if (eq > 0)
            report[line.left(eq).toStdString()] = line.mid(eq + 1).toStdString();
    }
    EXPECT_FALSE(report.empty()) << "the probe printed nothing";
    return report;
}

TEST(PluginFrame, WithTheIKPreferenceOffNothingOfTheIKToolShowsButItsIdentifierStands)
{
    // Identity 1, so that the Shift and Trace polish, which loads the same shortcut file, stays out.
    Report r = probe({"--ik", "off", "--identity", "1", "--steps", "unpolish"});
    EXPECT_EQ(r["ik_registered"], "0");
    EXPECT_EQ(r["menus"], "");
    EXPECT_EQ(r["shortcut_NEW_IK_TOOL"], "0");
    EXPECT_EQ(r["panel_factories"], "0");
    EXPECT_EQ(r["pref_ikJointSize"], "missing");
    EXPECT_EQ(r["customizers"], "0");
    EXPECT_EQ(r["responders"], "0;1");
    // The Shift and Trace tool is there with any preference; unpolish removed "newIKToolbar"
    // whatever the preference says.
    EXPECT_NE(r["st_tool_id"], "0");
    EXPECT_EQ(r["toolbars"], "");
    // Without the responder the IK action does not reach the tool: the current tool is unchanged.
    EXPECT_EQ(r["current_tool_after_ik_action"], "0");
}

TEST(PluginFrame, WithTheIKPreferenceOnEveryPolishStepTakesEffect)
{
    Report r = probe({"--ik", "on", "--identity", "2"});
    EXPECT_EQ(r["ik_registered"], "1");
    EXPECT_EQ(r["ik_tool_id"], "2103");
    EXPECT_EQ(r["menus"], "Animation:3;INSERT_MENU_ID:1;View:1");
    EXPECT_NE(r["shortcut_NEW_IK_TOOL"], "0");
    EXPECT_EQ(r["panel_factories"], "2");  // the IK tool's and the Shift and Trace tool's
    EXPECT_EQ(r["pref_ikJointSize"], "5");
    EXPECT_EQ(r["customizers"], "1");
    EXPECT_EQ(r["responders"], "1;1");
    EXPECT_EQ(r["toolbars"], "shiftAndTraceToolbar");
    EXPECT_EQ(r["current_tool_after_ik_action"], "2103");
}

TEST(PluginFrame, ApplicationIdentitiesDecideTheShiftAndTracePolishOnly)
{
    for (char const *identity : {"1", "2", "3"}) {
        Report r = probe({"--ik", "on", "--identity", identity});
        bool const drawings = std::string(identity) != "1";
        EXPECT_EQ(r["toolbars"], drawings ? "shiftAndTraceToolbar" : "") << identity;
        EXPECT_EQ(r["ik_registered"], "1") << identity;
        EXPECT_EQ(r["menus"], "Animation:3;INSERT_MENU_ID:1;View:1") << identity;
        EXPECT_NE(r["st_tool_id"], "0") << identity;
        EXPECT_EQ(r["panel_factories"], drawings ? "2" : "1") << identity;
    }
}

// The shortcut file is shared with the Shift and Trace tool, which loads it in the applications of
// identities 2 and 3: the IK tool's key binds, and selects the tool, only with the tool switched on.
TEST(PluginFrame, AltKSelectsTheIKToolOnlyWhenThePreferenceSwitchesItOn)
{
    for (char const *identity : {"1", "2", "3"})
        for (bool const on : {false, true}) {
            Report r = probe({"--ik", on ? "on" : "off", "--identity", identity});
            std::string const where = std::string("identity ") + identity + (on ? ", on" : ", off");
            EXPECT_EQ(r["shortcut_NEW_IK_TOOL"] != "0", on) << where;
            EXPECT_EQ(r["current_tool_after_alt_k"], on ? "2103" : "0") << where;
            // The Shift and Trace tool's own keys bind wherever its polish ran.
            EXPECT_EQ(r["shortcut_SHIFT_AND_TRACE_TOOL"] != "0", on || std::string(identity) != "1") << where;
        }
}

TEST(PluginFrame, UnpolishActsOnlyAfterAPolishAndOnlyOnce)
{
    // Opened without the loader: no entry point has run. An unpolish then does nothing.
    Report none = probe({"--ik", "on", "--identity", "2", "--raw", "--steps", "unpolish"});
    EXPECT_EQ(none["toolbars"], "newIKToolbar");

    // After a polish, the first unpolish removes the toolbar and the second does nothing (the
    // probe puts the toolbar back before each step).
    Report twice = probe({"--ik", "on", "--identity", "2", "--raw", "--steps", "polish,unpolish,unpolish"});
    EXPECT_EQ(twice["toolbars"], "newIKToolbar");
    Report once = probe({"--ik", "on", "--identity", "2", "--raw", "--steps", "polish,unpolish"});
    EXPECT_EQ(once["toolbars"], "");
}

TEST(PluginFrame, ASecondPolishRepeatsOnlyTheStepsWithoutALatch)
{
    Report r = probe({"--ik", "on", "--identity", "2", "--steps", "polish"});
    EXPECT_EQ(r["panel_factories"], "2");  // the IK tool's and the Shift and Trace tool's
    EXPECT_EQ(r["menus"], "Animation:3;INSERT_MENU_ID:1;View:1");  // merging again changes nothing
    EXPECT_EQ(r["customizers"], "1");
}

TEST(PluginFrame, AHostWithoutServicesStillRunsEveryEntryPoint)
{
    Report r = probe({"--ik", "on", "--identity", "2", "--no-services", "--steps", "polish,unpolish"});
    EXPECT_EQ(r["ik_registered"], "1");
    EXPECT_EQ(r["menus"], "");
    EXPECT_EQ(r["image_folders"], "0");
    EXPECT_EQ(r["panel_factories"], "2");  // the panel factories need no service
    EXPECT_EQ(r["pref_ikJointSize"], "5");
    EXPECT_EQ(r["customizers"], "0");
    EXPECT_EQ(r["responders"], "0;0");
}

} // namespace
