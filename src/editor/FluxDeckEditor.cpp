#include "editor/FluxDeckEditor.h"

#include "editor/ParameterContextMenu.h"
#include "editor/WindowSettings.h"
#include "resources/presets/PresetBank.h"
#include "tape/FluxDeckProcessor.h"

#include <algorithm>
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
      tapeSection(proxy), companderSection(proxy), playbackSection(proxy), transportSection(proxy),
      tapePresetDisplay(proxy)
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
    setUpPictures(table);
    place(tapePresetDisplay, layout::tapePresetBar().bounds);
    addAndMakeVisible(tapePresetDisplay);
    if (ParamSlider* makeup = knob("OutputPad"))
        makeup->toFront(false); // the makeup knob comes after the tape bar and overlaps it
    // The lockable controls leave right clicks to this panel's menu.
    for (const char* name : lockableParameterNames())
        if (juce::Component* control = knob(name) != nullptr ? static_cast<juce::Component*>(knob(name)) : button(name))
            control->addMouseListener(this, true);

    companderSection.setEnabled(false);
    companderSection.setAlpha(0.5f);
    watch(effectPath());
    recordHeadView = switchView("ApplyRecordHead", tapeSection, {&magneticWaveformDisplay, &recordResponseDisplay});
    playbackView = switchView("ApplyPlayheadFilter", playbackSection, {&playHeadResponseDisplay});
    companderView = switchView("ApplyCompander", companderSection);
    transportView = switchView("ApplyTransport", transportSection, {&scrollCurve});
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
    reel.setImage(asset(c.image, ""), c.frames, layout::reelStripFrames);
    place(reel, c.bounds);
    // The strip's frames carry the background beneath them, so a turning reel repaints
    // only itself, with a plain copy.
    reel.setOpaque(reel.getImage().isValid() && !reel.getImage().hasAlphaChannel());
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

void FluxDeckEditor::setUpPictures(const layout::Panel& table)
{
    EngineProxy* const engineProxy = SimpleElementView::proxy;
    auto add = [&](juce::Component& picture, layout::Kind kind, const char* name) {
        place(picture, table.at(kind, name).bounds);
        addAndMakeVisible(picture);
    };
    add(recordResponseDisplay, layout::Kind::display, "recordResponseDisplay");
    add(magneticWaveformDisplay, layout::Kind::display, "magneticWaveformDisplay");
    add(playHeadResponseDisplay, layout::Kind::display, "playHeadResponseDisplay");
    add(scrollCurve, layout::Kind::display, "scrollCurve");
    add(meterLeft, layout::Kind::meter, "meterLeft");
    add(meterRight, layout::Kind::meter, "meterRight");
    add(flangeDisplay, layout::Kind::display, "flangeDisplay");

    recordResponseDisplay.bind(engineProxy, effectPath());
    magneticWaveformDisplay.bind(engineProxy, effectPath());
    playHeadResponseDisplay.bind(engineProxy, effectPath());
    flangeDisplay.bind(engineProxy, effectPath());
    meterLeft.bind(engineProxy, effectPath());
    meterRight.bind(engineProxy, effectPath());

    // The trace of the tape speed's deviation, newest at the right.
    scrollCurve.setColour(ScrollCurve::backgroundColourId, juce::Colours::transparentBlack);
    scrollCurve.addCurve({ScrollCurve::line, -0.4f, 0.4f, juce::Colour(0xFF369977), 2.0f});

    magneticDisplayButton.onClick = [this] { updateResponseDisplay(); };
    responseDisplayButton.onClick = [this] { updateResponseDisplay(); };
    updateResponseDisplay();
}

void FluxDeckEditor::updateResponseDisplay()
{
    magneticWaveformDisplay.setVisible(magneticDisplayButton.getToggleState());
    recordResponseDisplay.setVisible(responseDisplayButton.getToggleState());
}

std::unique_ptr<ElementParameterValue<bool>> FluxDeckEditor::switchView(const char* parameter,
                                                                        juce::Component& section,
                                                                        std::initializer_list<juce::Component*> dimmedOnly)
{
    std::vector<juce::Component*> pictures(dimmedOnly);
    return std::make_unique<ElementParameterValue<bool>>(SimpleElementView::proxy, effectPath(),
                                                         parameterIdByName(parameter), [&section, pictures](bool on) {
                                                             section.setEnabled(on);
                                                             section.setAlpha(on ? 1.0f : 0.5f);
                                                             for (juce::Component* picture : pictures)
                                                                 picture->setAlpha(on ? 1.0f : 0.5f);
                                                         });
}

void FluxDeckEditor::elementChanged(const String&)
{
    stopTimer();
    monitor.reset();
    processor = dynamic_cast<FluxDeckProcessor*>(getElement());
    if (processor != nullptr)
    {
        monitor = processor->getMonitor();
        startTimer(20);
    }
}

void FluxDeckEditor::advance()
{
    if (processor == nullptr || !processor->isPrepared())
        return;
    drainMonitor();
    if (!reelRunning)
        return;
    const double frame = std::fmod(double(reelTime), 179.0);
    // A new value repaints a reel; its picture changes only with the frame index, which
    // at slow tape speeds stays for several ticks.
    if (reelLeft.frameForValue(frame) != reelLeft.currentFrame())
    {
        reelLeft.setValue(frame, juce::sendNotificationAsync);
        reelRight.setValue(frame, juce::sendNotificationAsync);
    }
    const float speed = processor->floatParameter(FluxDeckProcessor::ids().speed);
    // At 10^Speed = 2 the reels move one frame a tick, 50 frames a second.
    reelTime += float(std::pow(10.0, double(speed)) * double(0.1f)) * 5.0f;
}

void FluxDeckEditor::drainMonitor()
{
    const auto count = static_cast<std::uint32_t>(processor->sampleRate() * 0.01f);
    if (monitor == nullptr || count == 0)
        return;
    traceScratch.resize(count, 0.0f);
    while (monitor->available() >= count)
    {
        monitor->read(traceScratch.data(), count);
        scrollCurve.addValue(0, *std::max_element(traceScratch.begin(), traceScratch.end()));
    }
}

void FluxDeckEditor::mouseDown(const juce::MouseEvent& e)
{
    if (e.mods.isRightButtonDown())
        if (auto* view = dynamic_cast<SimpleElementParameterView*>(e.eventComponent); view != nullptr && view->getProxy())
        {
            ParameterContextMenu(*view->getProxy(), view->getElementPath(), view->resolvedId()).show(*e.eventComponent);
            repaint();
        }
    if (e.eventComponent == &reelLeft || e.eventComponent == &reelRight)
        reelRunning = !reelRunning;
}
} // namespace oxa
