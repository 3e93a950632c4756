// Bound widgets in both directions: the user's edits reach the parameter (and the host
// as gestures), the host's writes reach the widget.
#include "EditorTestRig.h"

#include "element/NoteLengths.h"
#include "engine/ProcessingElement.h"

#include <cmath>

using namespace oxa;
using namespace oxa::test;

TEST_F(EditorTest, KnobEditsWriteTheParameterAndHostWritesMoveTheKnob)
{
    LFOMainMenu& page = ui->getLfoModeUI().getMainMenu();
    ManualModeUI& manual = ui->getManualModeUI();
    const uint32_t id = parameterIdByName("MaxRelativeDelay");
    ParamSlider* lfoKnob = page.knob("MaxRelativeDelay");
    ParamSlider* manualKnob = manual.knob("MaxRelativeDelay");
    ASSERT_TRUE(lfoKnob != nullptr && manualKnob != nullptr);

    // A drag moves the slider with notification: the parameter takes the mapped value.
    lfoKnob->setValue(1.0, juce::sendNotificationSync);
    EXPECT_FLOAT_EQ(effect().floatParameter(id), 0.015f);
    pump();
    EXPECT_DOUBLE_EQ(manualKnob->getValue(), 1.0) << "the other mode's knob follows the same parameter";
    EXPECT_EQ(manual.valueLabel("MaxRelativeDelay")->getText(), page.valueLabel("MaxRelativeDelay")->getText());

    // The host writes: both knobs and labels follow once the message thread drains.
    hostParameter("MaxRelativeDelay").setValueNotifyingHost(0.0f);
    pump();
    EXPECT_DOUBLE_EQ(lfoKnob->getValue(), 0.0);
    EXPECT_DOUBLE_EQ(manualKnob->getValue(), 0.0);
    EXPECT_EQ(lfoKnob->currentFrame(), 0);

    // A button and a combo box write too.
    ParamButton* compensation = page.button("ApplyFeedbackCompensation");
    const bool before = effect().boolParameter(parameterIdByName("ApplyFeedbackCompensation"));
    compensation->triggerClick();
    pump();
    EXPECT_NE(effect().boolParameter(parameterIdByName("ApplyFeedbackCompensation")), before);
    EXPECT_EQ(manual.button("ApplyFeedbackCompensation")->getToggleState(), !before);
    ui->getModeComboBox().choose(0);
    pump();
    EXPECT_EQ(effect().intParameter(FluxDeckProcessor::ids().flangeMode), 0);
    EXPECT_TRUE(ui->getManualModeUI().isVisible());
}

TEST_F(EditorTest, KnobFramesFollowTheValueAndTypedValuesAreClamped)
{
    ParamSlider* feedback = ui->getLfoModeUI().getMainMenu().knob("Feedback");
    ASSERT_NE(feedback, nullptr);
    for (const auto& [normalised, frame] : {std::pair {0.0f, 0}, {0.5f, 64}, {1.0f, 128}, {0.999f, 127}})
    {
        hostParameter("Feedback").setValueNotifyingHost(normalised);
        pump();
        EXPECT_EQ(feedback->currentFrame(), frame) << normalised;
    }
    EXPECT_NEAR(feedback->getValueFromText(feedback->getTextFromValue(0.25)), 0.25, 1e-4);
    EXPECT_DOUBLE_EQ(feedback->getValueFromText(feedback->getTextFromValue(1.0) + "0000"), 1.0) << "clamped";
    EXPECT_DOUBLE_EQ(feedback->getValueFromText("not a number"), feedback->getValue());
}

TEST(FilmstripSlider, PositionsBeyondAShortStripShowItsFramesAgain)
{
    // Three stacked 4 x 4 frames of distinct colours serve nine positions.
    const juce::Colour colours[] = {juce::Colours::red, juce::Colours::green, juce::Colours::blue};
    juce::Image strip(juce::Image::RGB, 4, 12, true);
    for (int i = 0; i < 3; ++i)
        strip.clear({0, 4 * i, 4, 4}, colours[i]);
    Slider slider;
    slider.setImageStrip(strip, 9, 1, 3);
    slider.setRange(0.0, 8.0, 0.0);
    EXPECT_EQ(slider.getBounds(), juce::Rectangle<int>(0, 0, 4, 4)) << "one frame, not a ninth of the strip";
    for (double position : {0.0, 1.0, 2.5, 3.0, 4.9, 7.0, 8.0})
    {
        slider.setValue(position, juce::dontSendNotification);
        const juce::Image shot = slider.createComponentSnapshot(slider.getLocalBounds(), false, 1.0f);
        EXPECT_EQ(shot.getPixelAt(2, 2), colours[int(position) % 3]) << "position " << position;
    }
}

TEST_F(EditorTest, AltClickAndAWheelTurnAreOneGestureEach)
{
    GestureCounter counter;
    plugin->addListener(&counter);
    ParamSlider* feedback = ui->getLfoModeUI().getMainMenu().knob("Feedback");
    hostParameter("Feedback").setValueNotifyingHost(0.8f);
    pump();
    feedback->mouseDown(clickOn(*feedback, juce::ModifierKeys::altModifier | juce::ModifierKeys::leftButtonModifier));
    pump();
    EXPECT_FLOAT_EQ(effect().floatParameter(parameterIdByName("Feedback")), 0.0f) << "alt-click resets";
    EXPECT_EQ(counter.begins, 1);
    EXPECT_EQ(counter.ends, 1);
    EXPECT_FALSE(feedback->isGestureOpen());

    // A wheel turn stays one gesture until the mouse leaves.
    ParamSlider* delay = ui->getLfoModeUI().getMainMenu().knob("Delay");
    juce::MouseWheelDetails wheel {};
    wheel.deltaY = 0.1f;
    for (int i = 0; i < 3; ++i)
        delay->mouseWheelMove(clickOn(*delay, {}), wheel);
    EXPECT_TRUE(delay->isGestureOpen());
    delay->mouseExit(clickOn(*delay, {}));
    EXPECT_FALSE(delay->isGestureOpen());
    EXPECT_EQ(counter.begins, 2);
    EXPECT_EQ(counter.ends, 2);
    plugin->removeListener(&counter);
}

TEST_F(EditorTest, IntegerKnobsDragByTheirNumberOfSteps)
{
    for (const auto& [parameter, sensitivity] : {std::pair {"FlangeMode", 100}, {"NoiseReductionEncoder", 120}})
        EXPECT_EQ(ParamSlider(plugin->getProxy(), String("/FluxDeck"), parameterIdByName(parameter)).getMouseDragSensitivity(),
                  sensitivity) << parameter;
}

TEST_F(EditorTest, LfoRateShowsNoteDivisionsWhileSynchronised)
{
    ParamSlider* rate = ui->getLfoModeUI().getMainMenu().knob("LFOFreq");
    ASSERT_NE(rate, nullptr);
    EXPECT_FALSE(rate->isSynchronised());
    ui->getSyncButton().triggerClick();
    pump();
    ASSERT_TRUE(rate->isSynchronised());
    EXPECT_EQ(rate->getMaximum(), double(lastNoteIndex));
    rate->setValue(10.0, juce::sendNotificationSync);
    EXPECT_FLOAT_EQ(effect().floatParameter(parameterIdByName("LFOFreq")), noteLength(10));
    EXPECT_EQ(rate->getTextFromValue(10.0), juce::String(noteText(10)));
}

TEST_F(EditorTest, ShapeMenuWritesPhaseShapeAndSymmetry)
{
    LFOWaveformDisplay& display = ui->getLfoWaveformDisplay();
    for (int i = 0; i < 5; ++i)
    {
        display.applyPreset(i);
        const LFOWaveformDisplay::Preset& p = LFOWaveformDisplay::presets[i];
        EXPECT_FLOAT_EQ(effect().floatParameter(parameterIdByName("LFOPhase")), p.phase) << p.name;
        EXPECT_FLOAT_EQ(effect().floatParameter(parameterIdByName("LFOShape")), p.shape) << p.name;
        EXPECT_FLOAT_EQ(effect().floatParameter(parameterIdByName("LFOSymmetry")), p.symmetry) << p.name;
        // The picture stays inside its box, ramps included.
        const juce::Rectangle<float> box = display.buildCurve().getBounds();
        EXPECT_GE(box.getY(), 0.0f) << p.name;
        EXPECT_LE(box.getBottom(), float(display.getHeight())) << p.name;
    }
}

TEST_F(EditorTest, ReelsStartAndStopOnAClickAndTurnWithTheTapeSpeed)
{
    FluxDeckEditor& main = ui->getEditor();
    EXPECT_EQ(main.getReel(true).getFrameCount(), 180);
    for (bool left : {true, false})
    {
        // Drawn over its own backdrop, a reel hides what lies beneath it from repaints.
        EXPECT_FALSE(main.getReel(left).getImage().hasAlphaChannel());
        EXPECT_TRUE(main.getReel(left).isOpaque());
    }
    const bool running = main.isReelRunning();
    for (bool left : {true, false})
    {
        Slider& reel = main.getReel(left);
        main.mouseDown(clickOn(reel, juce::ModifierKeys::leftButtonModifier));
        EXPECT_NE(main.isReelRunning(), running) << "a click on either reel starts or stops both";
        main.mouseDown(clickOn(reel, juce::ModifierKeys::rightButtonModifier));
        EXPECT_EQ(main.isReelRunning(), running);
    }
    if (!main.isReelRunning())
        main.mouseDown(clickOn(main.getReel(true), juce::ModifierKeys::leftButtonModifier));
    // At 10^Speed = 2 the reels move one frame a tick.
    effect().setFloatParameter(parameterIdByName("Speed"), std::log10(2.0f), true);
    const float before = main.getReelTime();
    main.advance();
    EXPECT_NEAR(main.getReelTime() - before, 1.0f, 1e-4f);
}
