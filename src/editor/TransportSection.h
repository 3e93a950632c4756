#pragma once
// Wow, flutter and random drift of the tape transport.
// All following of values is in the widgets.

#include "editor/BoundPanel.h"

namespace oxa
{
class TransportSection : public BoundPanel
{
public:
    explicit TransportSection(EngineProxy* proxy);
};
} // namespace oxa
