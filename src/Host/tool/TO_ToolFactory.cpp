#include "tool/TO_ToolFactory.h"

#include "tool/TO_AbstractTool.h"

#include <algorithm>

namespace {

struct Entry {
    CX_ToolIds::ID id;
    TO_ToolFactory::ToolDescriptor descriptor;
    std::unique_ptr<TO_ToolFactory::ToolGenerator> generator;
};

} // namespace

struct TO_ToolFactory::Impl {
    std::vector<Entry> entries;  // registration order; ids unique

    bool taken(CX_ToolIds::ID id) const
    {
        return std::any_of(entries.begin(), entries.end(), [id](Entry const &e) { return e.id == id; });
    }
    CX_ToolIds::ID nextFreeId() const
    {
        CX_ToolIds::ID id = CX_ToolIds::FirstAssigned;
        while (taken(id))
            ++id;
        return id;
    }
    Entry const *find(CX_ToolIds::ID id) const
    {
        auto it = std::find_if(entries.begin(), entries.end(), [id](Entry const &e) { return e.id == id; });
        return it == entries.end() ? nullptr : &*it;
    }
};

TO_ToolFactory::TO_ToolFactory() : impl_(std::make_unique<Impl>()) {}
TO_ToolFactory::~TO_ToolFactory() = default;

TO_ToolFactory &TO_ToolFactory::instance()
{
    static TO_ToolFactory factory;
    return factory;
}

CX_ToolIds::ID TO_ToolFactory::registerTool(ToolDescriptor const &descriptor, std::unique_ptr<ToolGenerator> generator)
{
    if (!generator)
        return CX_ToolIds::None;
    CX_ToolIds::ID const requested = descriptor.requestedId;
    CX_ToolIds::ID const id = requested != CX_ToolIds::None && !impl_->taken(requested) ? requested : impl_->nextFreeId();
    impl_->entries.push_back(Entry{id, descriptor, std::move(generator)});
    return id;
}

void TO_ToolFactory::unregisterTool(CX_ToolIds::ID id)
{
    auto &entries = impl_->entries;
    entries.erase(std::remove_if(entries.begin(), entries.end(), [id](Entry const &e) { return e.id == id; }), entries.end());
}

std::unique_ptr<TO_Tool> TO_ToolFactory::createTool(CX_ToolIds::ID id, TO_AbstractToolContext *context) const
{
    Entry const *entry = impl_->find(id);
    return entry ? entry->generator->createTool(context) : nullptr;
}

std::vector<TO_ToolFactory::Registration> TO_ToolFactory::tools() const
{
    std::vector<Registration> result;
    for (Entry const &e : impl_->entries)
        result.push_back(Registration{e.id, e.descriptor});
    return result;
}

CX_ToolIds::ID TO_ToolFactory::idForName(QString const &name) const
{
    for (Entry const &e : impl_->entries)
        if (e.descriptor.name == name)
            return e.id;
    return CX_ToolIds::None;
}
