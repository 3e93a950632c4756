#include "editor/TransportSection.h"

namespace oxa
{
TransportSection::TransportSection(EngineProxy* proxy) : BoundPanel(proxy, layout::transportSection(), sectionStyle())
{
    const layout::Box& b = layout::transportSection().bounds;
    setBounds(b.x, b.y, b.w, b.h);
}
} // namespace oxa
