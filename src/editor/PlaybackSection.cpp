#include "editor/PlaybackSection.h"

namespace oxa
{
PlaybackSection::PlaybackSection(EngineProxy* proxy) : BoundPanel(proxy, layout::playbackSection(), sectionStyle())
{
    const layout::Box& b = layout::playbackSection().bounds;
    setBounds(b.x, b.y, b.w, b.h);
}
} // namespace oxa
