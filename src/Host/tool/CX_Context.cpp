#include "tool/CX_Context.h"

CX_Context &CX_Context::GetInstance()
{
    static CX_Context context;
    return context;
}

void CX_Context::SetData(CX_ToolRecord const &record, TUListener *origin)
{
    if (record.toolId == record_.toolId && record.options == record_.options)
        return;
    record_ = record;
    // The origin already knows: it is kept off the line for this one round.
    bool const originWasListening = origin && origin->isListeningTo(this);
    if (originWasListening)
        origin->hangUp(this);
    tell();
    if (originWasListening)
        origin->phone(this);
}
