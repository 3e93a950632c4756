#pragma once
// The tape's magnetics, demagnetisation and noise, in the expanded window.
// All following of values is in the widgets.

#include "editor/BoundPanel.h"

namespace oxa
{
class TapeSection : public BoundPanel
{
public:
    explicit TapeSection(EngineProxy* proxy);
};
} // namespace oxa
