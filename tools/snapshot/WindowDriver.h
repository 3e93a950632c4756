#pragma once
// A plug-in with its window open and no display: the parameters a picture needs are
// written straight into the effect, audio is rendered through processBlock as a host
// would, and the message loop runs so that the window's timers and notifications
// land, as they would between two screen refreshes.

#include "editor/FluxDeckPluginUI.h"
#include "plugin/FluxDeckPlugin.h"

#include <memory>

namespace oxa::snapshot
{
class WindowDriver
{
public:
    static constexpr double sampleRate = 48000.0;
    static constexpr int blockSize = 480; // 10 ms, one trace point a block

    WindowDriver();
    ~WindowDriver();

    FluxDeckPlugin& plugin() { return *effectPlugin; }
    FluxDeckPluginUI& window() { return *ui; }
    FluxDeckEditor& panel() { return ui->getEditor(); }

    /** Opens the window; the reels run when asked, started or stopped by a click. */
    void openWindow(bool expanded, bool reelsRunning = false);
    void closeWindow() { ui.reset(); }

    void setFloat(const char* parameter, float value);
    void setInt(const char* parameter, int value);
    void setBool(const char* parameter, bool value);

    /** Renders a few seconds of a level-swept tone; the main panel's timer step runs
        every 20 ms of audio, so the trace takes the monitor's points as it would live. */
    void render(double seconds);
    /** Runs the message loop for a while: notifications, the flange picture's and the
        meters' timers. */
    static void settle(int milliseconds = 60);
    /** Renders one block of the tone, as the audio thread would. */
    void renderBlock();

    float flangePosition() const;

private:
    std::unique_ptr<FluxDeckPlugin> effectPlugin;
    std::unique_ptr<FluxDeckPluginUI> ui;
    juce::AudioBuffer<float> buffer {2, blockSize};
    juce::MidiBuffer midi;
    double phase = 0.0;
    long blocksRendered = 0;
};
} // namespace oxa::snapshot
