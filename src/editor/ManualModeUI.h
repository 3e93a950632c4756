#pragma once
// The flange by hand: position, depth, fade, delay and feedback. Rings and legends are
// in the background.

#include "editor/BoundPanel.h"

namespace oxa
{
class ManualModeUI : public BoundPanel
{
public:
    explicit ManualModeUI(EngineProxy* proxy);
};
} // namespace oxa
