#include "editor/TapeSection.h"

namespace oxa
{
TapeSection::TapeSection(EngineProxy* proxy) : BoundPanel(proxy, layout::tapeSection(), sectionStyle())
{
    const layout::Box& b = layout::tapeSection().bounds;
    setBounds(b.x, b.y, b.w, b.h);
}
} // namespace oxa
