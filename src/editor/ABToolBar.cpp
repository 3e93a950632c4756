#include "editor/ABToolBar.h"

#include "editor/BoundPanel.h"

namespace oxa
{
ABToolBar::ABToolBar(EngineProxy* proxy) : SimpleElementView(proxy, effectPath())
{
    setName("toolBar");
    // Clicks on the bar's empty parts fall through; its controls take their own.
    setInterceptsMouseClicks(false, true);
    watch(effectPath());
}

ABToolBar::~ABToolBar()
{
    stopWatching();
}
} // namespace oxa
