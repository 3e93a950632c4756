#pragma once
// What the open window costs the message thread. Without a screen nothing asks the
// window to paint, so the bench plays the screen's part: at 50 frames a second it
// repaints, as a window system would, the rectangles of every animated picture
// (flange picture, trace, meters, reels), after the timers and notifications of
// that frame have run, while another thread renders audio in real time.

#include <juce_core/juce_core.h>

#include <utility>
#include <vector>

namespace oxa
{
class FluxDeckPluginUI;
}

namespace oxa::snapshot
{
struct WindowLoad
{
    double cpuMillisecondsPerSecond = 0.0; // message thread's CPU per second of wall time, the window's share
    double closedWindowMillisecondsPerSecond = 0.0; // the same loop with the window closed, taken off
    int frames = 0;
    /** Each animated picture's repaint alone, in ms of CPU, with its name. */
    std::vector<std::pair<juce::String, double>> repaintMilliseconds;
};

/** The window open and expanded at a display scale, every picture moving (the reels
    too, when asked), for a while. */
WindowLoad measureAnimatedWindow(float scale, double seconds, bool reelsRunning);

/** One paint of the whole window at a scale, in milliseconds (mean of `runs`). */
double millisecondsPerRepaint(FluxDeckPluginUI& ui, float scale, int runs);
} // namespace oxa::snapshot
