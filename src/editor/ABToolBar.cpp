#include "editor/ABToolBar.h"

#include "editor/BoundPanel.h"
#include "resources/presets/ABCompare.h"

namespace oxa
{
namespace
{
juce::String asset(const char* image)
{
    return juce::String(layout::assetRoot) + image + ".png";
}

/** The button's look for a memory state: what it shows, what the mouse over it shows
    (the memory a click brings back), and what a click does. */
struct MemoryLook
{
    const char* image;
    const char* overImage;
    const char* tooltip;
};

MemoryLook lookOf(int memoryState)
{
    switch (memoryState)
    {
        case 1: return {"b_ab-a-off", "b_ab-b-off", "Store Current State to Memory B and restore Memory A"};
        case 2: return {"b_ab-b-off", "b_ab-a-off", "Store Current State to Memory A and restore Memory B"};
        default: return {"b_ab-off", "b_ab-off", "Store Current State to Memory A"};
    }
}
} // namespace

ABToolBar::ABToolBar(EngineProxy* proxy) : SimpleElementView(proxy, effectPath()), presetDisplay(proxy)
{
    setName("toolBar");
    // Clicks on the bar's empty parts fall through; its controls take their own.
    setInterceptsMouseClicks(false, true);
    addAndMakeVisible(presetDisplay);
    abButton.onClick = [this] { compare(); };
    addAndMakeVisible(abButton);
    showMemoryState();
    watch(effectPath());
}

ABToolBar::~ABToolBar()
{
    stopWatching();
}

void ABToolBar::resized()
{
    const layout::Box& bar = layout::presetBar().bounds;
    presetDisplay.setBounds(bar.x, bar.y, bar.w, bar.h);
    const layout::Box& b = layout::topBar().at(layout::Kind::button, "abButton").bounds;
    abButton.setBounds(b.x, b.y, b.w, b.h);
}

void ABToolBar::compare()
{
    Element* effect = getElement();
    if (effect == nullptr)
        return;
    const CompareResult result = swapWithStoredState(*effect);
    // A first press, or one over a memory that could not be read, only stores: it shows A.
    memoryState = result == CompareResult::stored || memoryState != 1 ? 1 : 2;
    showMemoryState();
    presetDisplay.getNameLabel().refresh();
}

void ABToolBar::showMemoryState()
{
    const MemoryLook look = lookOf(memoryState);
    const juce::String image = asset(look.image), over = asset(look.overImage);
    abButton.setImages(image, image, over, over);
    abButton.setTooltip(look.tooltip);
}
} // namespace oxa
