// The IK posing tool, as the host's tool factory knows it.
//
// The tool registers itself at library load, under the identifier it asks for, only when the
// preference QV_HAS_NEW_IK_TOOL is on; its identifier holds the asked-for value either way.
#pragma once

#include "host/HostAPI.h"

class IKTool : public TO_Tool {
    Q_OBJECT
public:
    // The identifier the tool asks the factory for.
    static constexpr CX_ToolIds::ID kRequestedId = 2103;
    // The tool's identifier: what the factory gave at load, or kRequestedId when the tool was not
    // registered. Set once, while the library loads.
    static CX_ToolIds::ID const Id;

    // The descriptor under which the tool registers.
    static TO_ToolFactory::ToolDescriptor descriptor();
    static std::unique_ptr<TO_ToolFactory::ToolGenerator> createGenerator();
    // Reads the preference and registers the tool if it is on; gives the identifier.
    static CX_ToolIds::ID registerWithFactory();

    // The plug-in's resource folder, where the tool finds its images; empty until polish.
    static void setResourceFolder(QString const &folder);
    static QString const &resourceFolder();

    explicit IKTool(TO_AbstractToolContext *context);
    ~IKTool() override;
};
