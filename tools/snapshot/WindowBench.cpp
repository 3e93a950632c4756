#include "snapshot/WindowBench.h"

#include "snapshot/WindowDriver.h"

#include <atomic>
#include <chrono>
#include <ctime>
#include <thread>

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
} // namespace

WindowLoad measureAnimatedWindow(float scale, double seconds)
{
    WindowDriver d;
    d.setBool("ApplyTransport", true);
    d.setFloat("WowMod", 0.7f);
    d.setFloat("FlutterMod", 0.5f);
    d.setFloat("MaxRelativeDelay", 0.012f);
    d.setFloat("LFOFreq", 0.4f);
    d.openWindow(true, true);
    FluxDeckPluginUI& ui = d.window();
    FluxDeckEditor& panel = d.panel();

    juce::Array<juce::Rectangle<int>> animated;
    for (juce::Component* c : {static_cast<juce::Component*>(&panel.getFlangeDisplay()),
                               static_cast<juce::Component*>(&panel.getScrollCurve()),
                               static_cast<juce::Component*>(&panel.getMeter(true)),
                               static_cast<juce::Component*>(&panel.getMeter(false)),
                               static_cast<juce::Component*>(&panel.getReel(true)),
                               static_cast<juce::Component*>(&panel.getReel(false))})
        animated.add(ui.getLocalArea(c->getParentComponent(), c->getBounds()));
    juce::Image screen(juce::Image::ARGB, juce::roundToInt(float(ui.getWidth()) * scale),
                       juce::roundToInt(float(ui.getHeight()) * scale), true);
    repaintRegions(ui, screen, scale, {ui.getLocalBounds()}); // the first full paint warms the image cache

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

    WindowLoad load;
    const auto start = std::chrono::steady_clock::now();
    const double cpuStart = threadCpuMilliseconds();
    auto frameEnd = start;
    while (std::chrono::steady_clock::now() - start < std::chrono::duration<double>(seconds))
    {
        frameEnd += std::chrono::milliseconds(20);
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(frameEnd - std::chrono::steady_clock::now());
        juce::MessageManager::getInstance()->runDispatchLoopUntil(int(std::max<long long>(1, left.count())));
        repaintRegions(ui, screen, scale, animated);
        ++load.frames;
    }
    load.cpuMillisecondsPerSecond = threadCpuMilliseconds() - cpuStart;
    load.wallSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    load.cpuMillisecondsPerSecond /= load.wallSeconds;
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
