// The registry of tools.
//
// Tools register a descriptor and a generator once, usually while their library loads; a view asks
// the factory for a new tool by identifier. A tool may ask for an identifier of its own
// (requestedId); it gets it unless another tool holds it, and otherwise, like a tool that asks for
// none, the next free identifier from CX_ToolIds::FirstAssigned up.
#pragma once

#include "tool/CX_Context.h"

#include <QString>

#include <memory>
#include <vector>

class TO_AbstractToolContext;
class TO_Tool;

class TO_ToolFactory {
public:
    struct ToolDescriptor {
        std::int32_t kind = 0;        // the host's family of tool; kept and shown, not interpreted
        QString label;                // shown to the user
        QString name;                 // stable name, for scripts and settings
        QString icon;                 // icon file, relative to the icon search folders
        std::int32_t flag = 0;        // kept as given
        CX_ToolIds::ID requestedId = CX_ToolIds::None;
    };

    class ToolGenerator {
    public:
        virtual ~ToolGenerator() = default;
        // A new tool for `context`, or null when it cannot be made.
        virtual std::unique_ptr<TO_Tool> createTool(TO_AbstractToolContext *context) = 0;
    };

    struct Registration {
        CX_ToolIds::ID id;
        ToolDescriptor descriptor;
    };

    // The one factory of the process.
    static TO_ToolFactory &instance();

    // Records the tool and takes the generator; gives the tool's identifier. A null generator is
    // refused: nothing is recorded and the answer is CX_ToolIds::None.
    CX_ToolIds::ID registerTool(ToolDescriptor const &descriptor, std::unique_ptr<ToolGenerator> generator);
    // Forgets a tool; its identifier may be given again. Unknown identifiers are ignored.
    void unregisterTool(CX_ToolIds::ID id);

    // A new tool, or null for an unknown identifier or a generator that failed.
    std::unique_ptr<TO_Tool> createTool(CX_ToolIds::ID id, TO_AbstractToolContext *context) const;
    // The registered tools, in order of registration.
    std::vector<Registration> tools() const;
    // The identifier of the tool registered under `name`, or CX_ToolIds::None.
    CX_ToolIds::ID idForName(QString const &name) const;

private:
    TO_ToolFactory();
    ~TO_ToolFactory();
    struct Impl;
    std::unique_ptr<Impl> impl_;
};
