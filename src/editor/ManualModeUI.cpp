#include "editor/ManualModeUI.h"

#include "editor/LFOModeUI.h"

namespace oxa
{
ManualModeUI::ManualModeUI(EngineProxy* proxy) : BoundPanel(proxy, layout::manualPanel(), modePanelStyle())
{
    setName("manualModeUI");
}
} // namespace oxa
