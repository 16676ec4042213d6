// The current tool of the application.
//
// CX_Context holds an eight-byte tool record whose first 32-bit word is the current tool's
// identifier. Whoever changes it (a tool's action, the tool bar) calls SetData; every listener but
// the one named as the origin hears of it through TUTeller, and the application activates the tool.
#pragma once

#include "base/TUTeller.h"

#include <cstdint>

namespace CX_ToolIds {

using ID = std::int32_t;

constexpr ID None = 0;
// Identifiers given to tools that ask for none, counting up from here. Tools that ask for an
// identifier of their own choose it below this value.
constexpr ID FirstAssigned = 10000;

} // namespace CX_ToolIds

// The record of the current tool.
struct CX_ToolRecord {
    CX_ToolIds::ID toolId = CX_ToolIds::None;
    std::int32_t options = 0;  // kept as given; the host's tools read nothing from it
};
static_assert(sizeof(CX_ToolRecord) == 8, "the tool record is eight bytes");

class CX_Context : public TUTeller {
public:
    // The one context of the process.
    static CX_Context &GetInstance();

    CX_ToolRecord const &data() const { return record_; }
    CX_ToolIds::ID currentToolId() const { return record_.toolId; }

    // Stores `record` and tells every listener but `origin` (which may be null). Setting the record
    // it already holds tells nobody.
    void SetData(CX_ToolRecord const &record, TUListener *origin);

private:
    CX_Context() = default;
    CX_ToolRecord record_;
};
