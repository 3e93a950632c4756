#include "editor/FluxDeckEditor.h"

#include "editor/WindowSettings.h"
#include "tape/FluxDeckProcessor.h"

#include <cmath>

namespace oxa
{
namespace
{
WidgetStyle mainStyle()
{
    WidgetStyle style;
    style.knobValuePopup = true; // the lockable knobs, which have labels, go without
    style.labelColour = juce::Colour(layout::valueColour);
    return style;
}

void place(juce::Component& c, const layout::Box& b)
{
    c.setBounds(b.x, b.y, b.w, b.h);
}

juce::String asset(const char* image, const char* suffix)
{
    return juce::String(layout::assetRoot) + image + suffix + ".png";
}
} // namespace

FluxDeckEditor::FluxDeckEditor(EngineProxy* proxy)
    : BoundPanel(proxy, layout::mainPanel(), mainStyle()), SimpleElementView(proxy, effectPath()),
      tapeSection(proxy), companderSection(proxy), playbackSection(proxy), transportSection(proxy)
{
    setName("editor");
    reelRunning = windowSettings::readBool("ui.reel", false);
    reelTime = windowSettings::readFloat("ui.reelTime", 0.0f);
    if (!std::isfinite(reelTime) || reelTime < 0.0f)
        reelTime = 0.0f;

    const layout::Panel& table = layout::mainPanel();
    for (juce::Component* section : {static_cast<juce::Component*>(&tapeSection), static_cast<juce::Component*>(&companderSection),
                                     static_cast<juce::Component*>(&playbackSection), static_cast<juce::Component*>(&transportSection)})
        addAndMakeVisible(section);
    setUpDisplayButton(magneticDisplayButton, table.at(layout::Kind::button, "magneticDisplayButton"));
    setUpDisplayButton(responseDisplayButton, table.at(layout::Kind::button, "responseDisplayButton"));
    magneticDisplayButton.setToggleState(true, juce::dontSendNotification);
    setUpReel(reelLeft, table.at(layout::Kind::reel, "reelLeft"));
    setUpReel(reelRight, table.at(layout::Kind::reel, "reelRight"));

    companderSection.setEnabled(false);
    companderSection.setAlpha(0.5f);
    watch(effectPath());
    recordHeadView = switchView("ApplyRecordHead", tapeSection);
    playbackView = switchView("ApplyPlayheadFilter", playbackSection);
    companderView = switchView("ApplyCompander", companderSection);
    transportView = switchView("ApplyTransport", transportSection);
}

FluxDeckEditor::~FluxDeckEditor()
{
    stopTimer();
    windowSettings::writeBool("ui.reel", reelRunning);
    windowSettings::writeFloat("ui.reelTime", reelTime);
    recordHeadView.reset();
    playbackView.reset();
    companderView.reset();
    transportView.reset();
    stopWatching();
}

void FluxDeckEditor::setUpReel(Slider& reel, const layout::Control& c)
{
    reel.setName(c.name);
    reel.setShowValuePopup(false);
    reel.setEditOnDoubleClick(false);
    reel.setImage(asset(c.image, ""), c.frames);
    place(reel, c.bounds);
    reel.setRange(0.0, 179.0, 0.0);
    // Disabled, so a drag does nothing; this panel still hears the click.
    reel.setEnabled(false);
    reel.setTooltip(c.tooltip);
    reel.setValue(std::fmod(reelTime, 179.0f), juce::sendNotificationAsync);
    reel.addMouseListener(this, false);
    addAndMakeVisible(reel);
}

void FluxDeckEditor::setUpDisplayButton(Button& button, const layout::Control& c)
{
    button.setImages(asset(c.image, "-off"), asset(c.image, "-on"), asset(c.image, "-off-over"),
                     asset(c.image, "-on-over"));
    place(button, c.bounds);
    button.setClickingTogglesState(true);
    button.setRadioGroupId(1);
    button.setTooltip(c.tooltip);
    addAndMakeVisible(button);
}

std::unique_ptr<ElementParameterValue<bool>> FluxDeckEditor::switchView(const char* parameter,
                                                                        juce::Component& section)
{
    return std::make_unique<ElementParameterValue<bool>>(SimpleElementView::proxy, effectPath(),
                                                         parameterIdByName(parameter), [&section](bool on) {
                                                             section.setEnabled(on);
                                                             section.setAlpha(on ? 1.0f : 0.5f);
                                                         });
}

void FluxDeckEditor::elementChanged(const String&)
{
    stopTimer();
    processor = dynamic_cast<FluxDeckProcessor*>(getElement());
    if (processor != nullptr)
        startTimer(20);
}

void FluxDeckEditor::advance()
{
    if (processor == nullptr || !processor->isPrepared() || !reelRunning)
        return;
    const double frame = std::fmod(double(reelTime), 179.0);
    reelLeft.setValue(frame, juce::sendNotificationAsync);
    reelRight.setValue(frame, juce::sendNotificationAsync);
    const float speed = processor->floatParameter(FluxDeckProcessor::ids().speed);
    // At 10^Speed = 2 the reels move one frame a tick, 50 frames a second.
    reelTime += float(std::pow(10.0, double(speed)) * double(0.1f)) * 5.0f;
}

void FluxDeckEditor::mouseDown(const juce::MouseEvent& e)
{
    if (e.eventComponent == &reelLeft || e.eventComponent == &reelRight)
        reelRunning = !reelRunning;
}
} // namespace oxa
