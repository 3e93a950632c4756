// The pictures inside the main panel: where they sit, how the section switches dim
// their sections and them, which record picture the two buttons show, the trace fed by the timer, the
// LFO picture's ramps and the compander's decoder box with the link on and off.
#include "EditorTestRig.h"

#include "editor/FluxDeckEditor.h"
#include "editor/widgets/BoxArt.h"

#include <cmath>

using namespace oxa;
using namespace oxa::test;

TEST_F(EditorTest, PicturesSitAtTheirBoundsAndTheSwitchesDimThem)
{
    FluxDeckEditor& panel = ui->getEditor();
    const std::pair<juce::Component*, juce::Rectangle<int>> places[] {
        {&panel.getRecordResponseDisplay(), {63, 424, 201, 59}},
        {&panel.getMagneticWaveformDisplay(), {63, 424, 201, 59}},
        {&panel.getPlayHeadResponseDisplay(), {514, 424, 225, 59}},
        {&panel.getScrollCurve(), {818, 424, 275, 59}},
        {&panel.getMeter(true), {16, 52, 5, 264}},
        {&panel.getMeter(false), {1106, 52, 5, 264}},
        {&panel.getFlangeDisplay(), {430, 59, 271, 94}}};
    for (const auto& [picture, bounds] : places)
        EXPECT_EQ(picture->getBounds(), bounds);

    struct Switch
    {
        const char* parameter;
        juce::Component* section;
        std::vector<juce::Component*> pictures;
    };
    const Switch switches[] {
        {"ApplyRecordHead", &panel.getTapeSection(), {&panel.getRecordResponseDisplay(), &panel.getMagneticWaveformDisplay()}},
        {"ApplyPlayheadFilter", &panel.getPlaybackSection(), {&panel.getPlayHeadResponseDisplay()}},
        {"ApplyTransport", &panel.getTransportSection(), {&panel.getScrollCurve()}},
        {"ApplyCompander", &panel.getCompanderSection(), {}}};
    for (const Switch& s : switches)
    {
        SCOPED_TRACE(s.parameter);
        for (const bool on : {false, true})
        {
            effect().setBoolParameter(parameterIdByName(s.parameter), on);
            pump();
            EXPECT_EQ(s.section->isEnabled(), on);
            EXPECT_NEAR(s.section->getAlpha(), on ? 1.0f : 0.5f, 0.01f);
            for (juce::Component* picture : s.pictures)
                EXPECT_NEAR(picture->getAlpha(), on ? 1.0f : 0.5f, 1.0f / 255.0f); // alpha is kept in 8 bits
        }
    }
}

TEST_F(EditorTest, TheButtonsChooseOneRecordPictureAndTheTimerFeedsTheTrace)
{
    FluxDeckEditor& panel = ui->getEditor();
    EXPECT_TRUE(panel.getMagneticWaveformDisplay().isVisible());
    EXPECT_FALSE(panel.getRecordResponseDisplay().isVisible());
    panel.getResponseDisplayButton().triggerClick();
    pump();
    EXPECT_FALSE(panel.getMagneticWaveformDisplay().isVisible());
    EXPECT_TRUE(panel.getRecordResponseDisplay().isVisible());

    // 100 ms of audio with wow: ten trace points, each the largest deviation of its 10 ms.
    effect().setFloatParameter(parameterIdByName("WowMod"), 1.0f);
    const int before = static_cast<int>(panel.getScrollCurve().getValues(0).size());
    juce::AudioBuffer<float> buffer(2, 480);
    juce::MidiBuffer midi;
    for (int block = 0; block < 10; ++block)
    {
        buffer.clear();
        plugin->processBlock(buffer, midi);
    }
    panel.advance();
    const std::vector<float> trace = panel.getScrollCurve().getValues(0);
    ASSERT_EQ(static_cast<int>(trace.size()), before + 10);
    float largest = 0.0f;
    for (float v : trace)
        largest = std::max(largest, std::fabs(v));
    EXPECT_GT(largest, 0.0f) << "wow moves the tape";
    EXPECT_LE(largest, 0.4f);
}

TEST_F(EditorTest, TheLfoPictureDrawsRampsAtFullSymmetryWithoutDividingByZero)
{
    LFOWaveformDisplay& display = ui->getLfoWaveformDisplay();
    const float height = float(display.getHeight());
    for (const float symmetry : {-1.0f, 1.0f})
        for (const float shape : {-0.99f, 0.0f, 0.99f})
            for (const float swing : {0.0f, 1.0f})
            {
                SCOPED_TRACE(testing::Message() << "symmetry " << symmetry << ", shape " << shape << ", swing " << swing);
                effect().setFloatParameter(parameterIdByName("LFOSymmetry"), symmetry);
                effect().setFloatParameter(parameterIdByName("LFOShape"), shape);
                effect().setFloatParameter(parameterIdByName("LFOSwing"), swing);
                pump();
                // A ramp runs one way the whole period and jumps back once: over the two
                // periods across the picture the direction changes only at those jumps.
                std::vector<float> ys;
                const juce::Path curve = display.buildCurve();
                for (juce::Path::Iterator it(curve); it.next();)
                    ys.push_back(it.y1);
                ASSERT_GT(ys.size(), 4u * std::size_t(display.getWidth()));
                int turns = 0, lastDirection = 0;
                for (std::size_t i = 0; i < ys.size(); ++i)
                {
                    ASSERT_TRUE(std::isfinite(ys[i])) << "point " << i;
                    ASSERT_GE(ys[i], 0.0f);
                    ASSERT_LE(ys[i], height);
                    if (i == 0 || std::fabs(ys[i] - ys[i - 1]) < 1e-4f)
                        continue;
                    const int direction = ys[i] > ys[i - 1] ? 1 : -1;
                    turns += lastDirection != 0 && direction != lastDirection;
                    lastDirection = direction;
                }
                EXPECT_LE(turns, 4);
            }
}

TEST_F(EditorTest, TheDecoderBoxIsAMenuUnlinkedAndShowsTheEncodersChoiceLinked)
{
    ui->setExpanded(true);
    effect().setBoolParameter(parameterIdByName("ApplyCompander"), true); // full colour
    CompanderSection& compander = ui->getEditor().getCompanderSection();
    ParamComboBox& decoder = *compander.comboBox("NoiseReductionDecoder");
    ParamComboBox& encoder = *compander.comboBox("NoiseReductionEncoder");

    // The background leaves the decoder's place bare; the panel draws the box itself.
    const juce::Rectangle<int> box = ui->getLocalArea(&compander, decoder.getBounds());
    const juce::Colour fill(layout::boxFillColour), icon(layout::iconColour);
    const juce::Image background = ui->getBackground().createComponentSnapshot(box, true, 1.0f);
    EXPECT_NE(background.getPixelAt(box.getWidth() / 2, box.getHeight() / 2), fill);
    // The arrow's middle, where the box's shared drawing puts it.
    const juce::Point<int> arrow(box.getRight() - 9, box.getCentreY());

    const struct
    {
        bool linked;
        int encoderChoice;
    } steps[] = {{false, 1}, {true, 1}, {true, 3}, {false, 2}};
    for (const auto& step : steps)
    {
        SCOPED_TRACE(testing::Message() << (step.linked ? "linked" : "unlinked") << ", encoder " << step.encoderChoice);
        effect().setBoolParameter(parameterIdByName("NRLink"), step.linked);
        effect().setIntParameter(parameterIdByName("NoiseReductionEncoder"), step.encoderChoice);
        pump();
        EXPECT_EQ(decoder.isVisible(), !step.linked);
        EXPECT_EQ(compander.getDecoderBox().isLinked(), step.linked);
        EXPECT_TRUE(encoder.isVisible());
        const juce::Image shot = ui->createComponentSnapshot(ui->getLocalBounds(), true, 1.0f);
        const bool arrowInk = shot.getPixelAt(arrow.x, arrow.y).getBrightness() < (icon.getBrightness() + fill.getBrightness()) / 2;
        EXPECT_EQ(arrowInk, !step.linked) << "the arrow goes with the menu";
        if (step.linked)
        {
            EXPECT_EQ(compander.getDecoderBox().getLinkedText(), encoder.getText());
        }
    }
}
