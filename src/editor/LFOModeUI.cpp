#include "editor/LFOModeUI.h"

namespace oxa
{
WidgetStyle modePanelStyle()
{
    WidgetStyle style;
    style.knobValuePopup = false;
    style.labelColour = juce::Colour(layout::accentColour);
    return style;
}

namespace
{
void place(juce::Component& c, const layout::Box& b)
{
    c.setBounds(b.x, b.y, b.w, b.h);
}
} // namespace

LFOMainMenu::LFOMainMenu(EngineProxy* proxy) : BoundPanel(proxy, layout::lfoMainPanel(), modePanelStyle())
{
    place(*this, layout::lfoMainPanel().bounds);
}

LFOEditMenu::LFOEditMenu(EngineProxy* proxy) : BoundPanel(proxy, layout::lfoEditPanel(), modePanelStyle())
{
    place(*this, layout::lfoEditPanel().bounds);
}

LFOModeUI::LFOModeUI(EngineProxy* proxy) : mainMenu(proxy), editMenu(proxy)
{
    setName("lfoModeUI");
    setInterceptsMouseClicks(false, true);
    // Both start visible; the settings button's first report picks the page.
    addAndMakeVisible(mainMenu);
    addAndMakeVisible(editMenu);
}

LFOModeUI::~LFOModeUI() = default;

void LFOModeUI::setShowEdit(bool show)
{
    showEdit = show;
    mainMenu.setVisible(!show);
    editMenu.setVisible(show);
}
} // namespace oxa
