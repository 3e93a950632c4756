#include "editor/ModePanels.h"

namespace oxa
{
namespace
{
WidgetStyle modePanelStyle()
{
    WidgetStyle style;
    style.knobValuePopup = false; // each knob has its value label
    style.labelColour = juce::Colour(layout::accentColour);
    return style;
}

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

ManualModeUI::ManualModeUI(EngineProxy* proxy) : BoundPanel(proxy, layout::manualPanel(), modePanelStyle())
{
    setName("manualModeUI");
}
} // namespace oxa
