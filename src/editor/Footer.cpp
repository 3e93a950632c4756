#include "editor/Footer.h"

#include "editor/FluxDeckLookAndFeel.h"
#include "editor/FluxDeckPluginUI.h"
#include "editor/Layout.h"

namespace oxa
{
Footer::Footer()
{
    setName("footer");
    startTimer(100);
}

Footer::~Footer()
{
    stopTimer();
}

juce::String Footer::versionText()
{
    return juce::String("1.0.0") + " x64";
}

void Footer::poll()
{
    if (!isShowing())
        return;
    juce::String text;
    const juce::MouseInputSource mouse = juce::Desktop::getInstance().getMainMouseSource();
    if (auto* client = dynamic_cast<juce::TooltipClient*>(mouse.getComponentUnderMouse()))
    {
        auto* component = dynamic_cast<juce::Component*>(client);
        if (component != nullptr && !component->isCurrentlyBlockedByAnotherModalComponent()
            && !mouse.isDragging() && !juce::ModifierKeys::currentModifiers.isAnyMouseButtonDown())
            text = client->getTooltip();
    }
    if (text != tooltip)
    {
        tooltip = text;
        repaint();
    }
}

int Footer::versionTextWidth() const
{
    const auto* window = findParentComponentOfClass<FluxDeckPluginUI>();
    const bool expanded = window != nullptr && window->isExpanded();
    return getWidth() - (expanded ? 5 : 55);
}

void Footer::paint(juce::Graphics& g)
{
    const FluxDeckLookAndFeel& look = FluxDeckLookAndFeel::instance();
    const juce::Colour ink(layout::footerColour);
    g.setFont(look.fontOfHeight(17.0f));
    g.setColour(ink.withAlpha(0.4f));
    g.drawText(tooltip, getLocalBounds(), juce::Justification::centred, false);

    g.setFont(look.fontOfHeight(std::max(13.0f, float(getHeight()) * 0.5f)));
    g.setColour(ink);
    g.drawText(versionText(), 0, 0, versionTextWidth(), getHeight(), juce::Justification::centredRight, false);
}
} // namespace oxa
