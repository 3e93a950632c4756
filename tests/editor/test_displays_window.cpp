// The pictures inside the main panel: where they sit, how the section switches dim
// them, which record picture the two buttons show, and the trace fed by the timer.
#include "EditorTestRig.h"

#include "editor/FluxDeckEditor.h"

using namespace oxa;
using namespace oxa::test;

namespace
{
FluxDeckEditor& mainPanelOf(juce::Component& window)
{
    FluxDeckEditor* found = nullptr;
    std::function<void(juce::Component&)> visit = [&](juce::Component& c) {
        if (auto* panel = dynamic_cast<FluxDeckEditor*>(&c))
            found = panel;
        for (juce::Component* child : c.getChildren())
            visit(*child);
    };
    visit(window);
    if (found == nullptr)
        throw std::runtime_error("no main panel");
    return *found;
}
} // namespace

TEST_F(EditorTest, PicturesSitAtTheirBoundsAndTheSwitchesDimThem)
{
    FluxDeckEditor& panel = mainPanelOf(*ui);
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
        {"ApplyTransport", &panel.getTransportSection(), {&panel.getScrollCurve()}}};
    for (const Switch& s : switches)
    {
        SCOPED_TRACE(s.parameter);
        for (const bool on : {false, true})
        {
            effect().setBoolParameter(parameterIdByName(s.parameter), on);
            pump();
            EXPECT_EQ(s.section->isEnabled(), on);
            for (juce::Component* picture : s.pictures)
                EXPECT_NEAR(picture->getAlpha(), on ? 1.0f : 0.5f, 1.0f / 255.0f); // alpha is kept in 8 bits
        }
    }
}

TEST_F(EditorTest, TheButtonsChooseOneRecordPictureAndTheTimerFeedsTheTrace)
{
    FluxDeckEditor& panel = mainPanelOf(*ui);
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
    for (float v : trace)
        EXPECT_LE(std::fabs(v), 0.4f);
}
