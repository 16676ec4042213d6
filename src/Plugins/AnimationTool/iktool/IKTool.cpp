#include "iktool/IKTool.h"

namespace {

QString &resourceFolderStorage()
{
    static QString folder;
    return folder;
}

class IKToolGenerator : public TO_ToolFactory::ToolGenerator {
public:
    std::unique_ptr<TO_Tool> createTool(TO_AbstractToolContext *context) override
    {
        return std::make_unique<IKTool>(context);
    }
};

} // namespace

// Registered while the library loads.
CX_ToolIds::ID const IKTool::Id = IKTool::registerWithFactory();

TO_ToolFactory::ToolDescriptor IKTool::descriptor()
{
    TO_ToolFactory::ToolDescriptor d;
    d.kind = 2;
    d.label = QStringLiteral("New IK Tool");
    d.name = QStringLiteral("NewIKTool");
    d.icon = QStringLiteral("IKTool.png");
    d.flag = 1;
    d.requestedId = kRequestedId;
    return d;
}

std::unique_ptr<TO_ToolFactory::ToolGenerator> IKTool::createGenerator()
{
    return std::make_unique<IKToolGenerator>();
}

CX_ToolIds::ID IKTool::registerWithFactory()
{
    if (!tuPref->getBoolValue(QStringLiteral("QV_HAS_NEW_IK_TOOL"), false))
        return kRequestedId;
    return TO_ToolFactory::instance().registerTool(descriptor(), createGenerator());
}

void IKTool::setResourceFolder(QString const &folder)
{
    resourceFolderStorage() = folder;
}

QString const &IKTool::resourceFolder()
{
    return resourceFolderStorage();
}

IKTool::IKTool(TO_AbstractToolContext *context) : TO_Tool(context) {}

IKTool::~IKTool() = default;
