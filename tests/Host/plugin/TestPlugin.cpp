// A plug-in for the loader tests. It records, in order, what happened to it: its static
// initialisation (with the preference and plug-in path it saw then) and each entry point called.
// Built twice: as "TestPlugin", and without PLUG_Polish as "TestPluginWithoutPolish".
#include "plugin/PLUG_Services.h"
#include "preference/PR_Preference.h"

#include <string>

#define TEST_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

std::string &calls()
{
    static std::string log;
    return log;
}

struct RecordLoad {
    RecordLoad()
    {
        calls() += std::string("load(flag=") + (tuPref->getBoolValue("TEST_PLUGIN_FLAG", false) ? "true" : "false")
                   + ",path=" + PLUG_Services::getPluginPath(TEST_PLUGIN_NAME).toStdString() + ") ";
    }
} const recordLoad;

}  // namespace

TEST_EXPORT void PLUG_Init()
{
    calls() += "init ";
}

#ifndef TEST_PLUGIN_WITHOUT_POLISH
TEST_EXPORT void PLUG_Polish()
{
    calls() += "polish ";
}
#endif

TEST_EXPORT void PLUG_Unpolish()
{
    calls() += "unpolish ";
}

TEST_EXPORT char const *TEST_PluginCalls()
{
    return calls().c_str();
}
