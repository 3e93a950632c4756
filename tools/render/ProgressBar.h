#pragma once
// A one-line progress bar on stderr: drawn at once on a terminal, and otherwise only
// once a render has run for a while, so that short renders in scripts stay quiet.

#include <juce_core/juce_core.h>

namespace oxa::render
{
class ProgressBar
{
public:
    ProgressBar();

    void update(double fraction);
    void finish();

private:
    void draw(double fraction);

    bool toTerminal;
    bool shown = false;
    int lastPercent = -1;
    juce::uint32 startMs;
};
} // namespace oxa::render
