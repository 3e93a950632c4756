#include "render/ProgressBar.h"

#include <cstdio>
#include <unistd.h>

namespace oxa::render
{
namespace
{
constexpr juce::uint32 kQuietMs = 2000;
constexpr int kWidth = 40;
} // namespace

ProgressBar::ProgressBar()
    : toTerminal(isatty(STDERR_FILENO) != 0), startMs(juce::Time::getMillisecondCounter())
{
}

void ProgressBar::update(double fraction)
{
    if (!toTerminal && juce::Time::getMillisecondCounter() - startMs < kQuietMs)
        return;

    const auto percent = juce::jlimit(0, 100, (int) (fraction * 100.0));

    // Off a terminal every redraw is a new line, so draw only every tenth.
    const auto step = toTerminal ? 1 : 10;
    if (percent / step == lastPercent / step)
        return;

    lastPercent = percent;
    draw(fraction);
}

void ProgressBar::draw(double fraction)
{
    const auto filled = juce::jlimit(0, kWidth, (int) (fraction * kWidth));
    char bar[kWidth + 1];

    for (int i = 0; i < kWidth; ++i)
        bar[i] = i < filled ? '#' : '.';
    bar[kWidth] = 0;

    std::fprintf(stderr, toTerminal ? "\r[%s] %3d%%" : "[%s] %3d%%\n", bar, lastPercent);
    std::fflush(stderr);
    shown = true;
}

void ProgressBar::finish()
{
    if (shown && toTerminal)
        std::fprintf(stderr, "\n");
}
} // namespace oxa::render
