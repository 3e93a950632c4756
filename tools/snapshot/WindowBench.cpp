#include "snapshot/WindowBench.h"

#include "snapshot/WindowDriver.h"

#include <atomic>
#include <chrono>
#include <ctime>
#include <functional>
#include <thread>

namespace juce
{
// One step of JUCE's message loop: dispatches one pending message or timer callback,
// or returns false at once when none is waiting (runDispatchLoopUntil polls it with
// 1 ms sleeps, a cost of this program's loop rather than of the window).
bool dispatchNextMessageOnSystemQueue(bool returnIfNoPendingMessages);
} // namespace juce

namespace oxa::snapshot
{
namespace
{
double threadCpuMilliseconds()
{
    timespec t {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) * 1e3 + double(t.tv_nsec) * 1e-6;
}

/** A window system's repaint of some rectangles: whatever lies under them, back to front. */
void repaintRegions(juce::Component& window, juce::Image& screen, float scale,
                    const juce::Array<juce::Rectangle<int>>& regions)
{
    juce::Graphics g(screen);
    g.addTransform(juce::AffineTransform::scale(scale));
    for (const juce::Rectangle<int>& region : regions)
    {
        juce::Graphics::ScopedSaveState state(g);
        g.reduceClipRegion(region);
        window.paintEntireComponent(g, true);
    }
}

/** 50 frames a second for a while, as a screen would ask for them: each frame sleeps
    until its time, dispatches the messages and timers that came due meanwhile (as an
    event loop woken by them would), then paints. Message-thread CPU ms per second. */
double messageThreadLoad(double seconds, const std::function<void()>& paintFrame, int& frames)
{
    const auto start = std::chrono::steady_clock::now();
    const double cpuStart = threadCpuMilliseconds();
    auto frameEnd = start;
    frames = 0;
    while (std::chrono::steady_clock::now() - start < std::chrono::duration<double>(seconds))
    {
        frameEnd += std::chrono::milliseconds(20);
        std::this_thread::sleep_until(frameEnd);
        while (juce::dispatchNextMessageOnSystemQueue(true))
        {
        }
        if (paintFrame)
            paintFrame();
        ++frames;
    }
    const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return (threadCpuMilliseconds() - cpuStart) / wall;
}
} // namespace

WindowLoad measureAnimatedWindow(float scale, double seconds, bool reelsRunning)
{
    WindowDriver d;
    d.setBool("ApplyTransport", true);
    d.setFloat("WowMod", 0.7f);
    d.setFloat("FlutterMod", 0.5f);
    d.setFloat("MaxRelativeDelay", 0.012f);
    d.setFloat("LFOFreq", 0.4f);

    // The host's audio thread, one 10 ms block every 10 ms.
    std::atomic<bool> running {true};
    std::thread audio([&] {
        auto next = std::chrono::steady_clock::now();
        while (running.load())
        {
            d.renderBlock();
            next += std::chrono::milliseconds(10);
            std::this_thread::sleep_until(next);
        }
    });

    // What the message loop of this program costs with the window closed (polling,
    // the plug-in's own timers) is not the window's: it is measured first and taken off.
    WindowLoad load;
    int idleFrames = 0;
    load.closedWindowMillisecondsPerSecond = messageThreadLoad(seconds, {}, idleFrames);

    d.openWindow(true, reelsRunning);
    FluxDeckPluginUI& ui = d.window();
    FluxDeckEditor& panel = d.panel();
    std::vector<std::pair<const char*, juce::Component*>> pictures = {
        {"flange picture", &panel.getFlangeDisplay()}, {"trace", &panel.getScrollCurve()},
        {"left meter", &panel.getMeter(true)},         {"right meter", &panel.getMeter(false)}};
    if (reelsRunning)
        pictures.insert(pictures.end(), {{"left reel", &panel.getReel(true)}, {"right reel", &panel.getReel(false)}});
    juce::Array<juce::Rectangle<int>> animated;
    for (const auto& [name, c] : pictures)
        animated.add(ui.getLocalArea(c->getParentComponent(), c->getBounds()));
    juce::Image screen(juce::Image::ARGB, juce::roundToInt(float(ui.getWidth()) * scale),
                       juce::roundToInt(float(ui.getHeight()) * scale), true);
    repaintRegions(ui, screen, scale, {ui.getLocalBounds()}); // the first full paint warms the image cache

    load.cpuMillisecondsPerSecond =
        messageThreadLoad(seconds, [&] { repaintRegions(ui, screen, scale, animated); }, load.frames)
        - load.closedWindowMillisecondsPerSecond;

    for (std::size_t i = 0; i < pictures.size(); ++i)
    {
        constexpr int runs = 50;
        const double before = threadCpuMilliseconds();
        for (int r = 0; r < runs; ++r)
            repaintRegions(ui, screen, scale, {animated[int(i)]});
        load.repaintMilliseconds.emplace_back(pictures[i].first, (threadCpuMilliseconds() - before) / runs);
    }
    running = false;
    audio.join();
    return load;
}

double millisecondsPerRepaint(FluxDeckPluginUI& ui, float scale, int runs)
{
    (void) ui.createComponentSnapshot(ui.getLocalBounds(), true, scale); // warm the image cache
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < runs; ++i)
        (void) ui.createComponentSnapshot(ui.getLocalBounds(), true, scale);
    const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
    return elapsed.count() / runs;
}
} // namespace oxa::snapshot
