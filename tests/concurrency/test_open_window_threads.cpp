// The window open with every picture animating while the host renders on one
// thread and writes parameters on another: the message thread runs the window's
// timers (trace, reels, flange picture, meters, footer) and repaints the whole
// window again and again. Under ThreadSanitizer this shows that the live roads
// to the window (monitor, flange position, output levels) and the parameter
// notifications are race-free; in any build the pictures must have moved.
#include "editor/EditorTestRig.h"
#include "support/RenderLoop.h"


using namespace oxa;
using oxa::test::clickOn;

namespace
{
constexpr int blockSize = 256;

/** Host parameters worth moving while the pictures watch: each one redraws something. */
const char* const animatedParameters[] = {"MaxRelativeDelay", "PhaseInvert", "MagneticHardness", "Hysteresis",
                                          "Speed",            "Spacing",     "Thickness",        "Azimuth",
                                          "WowMod",           "FlutterMod",  "NRLink",           "ApplyRecordHead",
                                          "ApplyTransport",   "OutputGain",  "LFOSymmetry",      "LFOShape"};
} // namespace

TEST(OpenWindowThreads, PicturesAnimateWhileTheHostRendersAndWrites)
{
    const windowSettings::KeptAsTheUserLeftThem keep;
    overrideDisplayImageScale(1);

    FluxDeckPlugin plugin;
    plugin.prepareToPlay(48000.0, blockSize);
    Element* effect = plugin.getEngine()->findElement(String("FluxDeck"));
    ASSERT_NE(effect, nullptr);
    effect->setFloatParameter(parameterIdByName("WowMod"), 1.0f, true);
    effect->setFloatParameter(parameterIdByName("FlutterMod"), 1.0f, true);

    std::vector<juce::AudioProcessorParameter*> written;
    for (const char* name : animatedParameters)
    {
        const auto slot = plugin.findSlot(String("/FluxDeck"), parameterIdByName(name));
        ASSERT_TRUE(slot.has_value()) << name;
        written.push_back(plugin.getParameters()[int(*slot)]);
    }

    std::unique_ptr<juce::AudioProcessorEditor> editor(plugin.createEditor());
    auto& ui = dynamic_cast<FluxDeckPluginUI&>(*editor);
    ui.setExpanded(true);
    FluxDeckEditor& panel = ui.getEditor();
    if (!panel.isReelRunning())
        panel.mouseDown(clickOn(panel.getReel(true))); // the reels turn from the start
    ASSERT_TRUE(panel.isReelRunning());
    const float reelTimeBefore = panel.getReelTime();

    test::RenderLoop audio(plugin, std::chrono::minutes(10));
    std::atomic<bool> running {true};
    std::atomic<long> writes {0};
    std::thread host([&] {
        juce::Random random(5);
        while (running.load())
        {
            juce::AudioProcessorParameter* p = written[std::size_t(random.nextInt(int(written.size())))];
            p->beginChangeGesture();
            p->setValueNotifyingHost(random.nextFloat());
            p->endChangeGesture();
            writes.fetch_add(1, std::memory_order_relaxed);
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    });

    // The message thread: timers and queued notifications, then a whole-window
    // paint, as a screen refresh would ask for.
    int paints = 0;
    std::size_t tracePoints = 0;
    float flangeLow = 1.0f, flangeHigh = -1.0f;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(4);
    while (std::chrono::steady_clock::now() < end || paints < 10)
    {
        juce::MessageManager::getInstance()->runDispatchLoopUntil(25);
        (void) ui.createComponentSnapshot(ui.getLocalBounds(), true, 1.0f);
        ++paints;
        tracePoints = std::max(tracePoints, panel.getScrollCurve().getValues(0).size());
        const float position = panel.getFlangeDisplay().getValues().flangePosition;
        flangeLow = std::min(flangeLow, position);
        flangeHigh = std::max(flangeHigh, position);
    }
    running = false;
    audio.stop();
    host.join();
    juce::MessageManager::getInstance()->runDispatchLoopUntil(20);

    EXPECT_GT(audio.blocks.load(), 0);
    EXPECT_GT(writes.load(), 0);
    EXPECT_EQ(audio.nonFinite.load(), 0);
    // Every live picture took data while the threads ran.
    EXPECT_GT(tracePoints, 0u);
    EXPECT_LT(flangeLow, flangeHigh) << "the flange picture never moved";
    EXPECT_GT(panel.getReelTime(), reelTimeBefore) << "the reels never turned";

    editor.reset();
    overrideDisplayImageScale(0);
}
