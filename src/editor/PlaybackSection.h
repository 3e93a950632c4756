#pragma once
// The playback head's losses: speed, spacing, thickness, azimuth, width.
// All following of values is in the widgets.

#include "editor/BoundPanel.h"

namespace oxa
{
class PlaybackSection : public BoundPanel
{
public:
    explicit PlaybackSection(EngineProxy* proxy);
};
} // namespace oxa
