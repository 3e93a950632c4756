#pragma once
// A trace that scrolls left: each added value enters at the right edge, one
// pixel a value, and the oldest falls off the left when the width is full.

#include <juce_gui_basics/juce_gui_basics.h>

#include <vector>

namespace oxa
{
class ScrollCurve : public juce::Component
{
public:
    enum ColourIds
    {
        backgroundColourId = 0x40022001
    };

    enum Mode
    {
        fillToTop = 0,
        fillToBottom = 1,
        line = 2
    };

    struct Curve
    {
        int mode = line;
        float minimum = -1.0f;
        float maximum = 1.0f;
        juce::Colour colour {0xFF369977};
        float lineThickness = 1.0f;
    };

    ScrollCurve();

    // Returns the new curve's index.
    int addCurve(const Curve& curve);
    int getNumCurves() const noexcept { return static_cast<int>(curves.size()); }

    // Appends to a curve (ignored for an unknown index or a value that is not finite) and repaints.
    void addValue(int curve, float value);
    // The values a curve holds now, oldest first.
    std::vector<float> getValues(int curve) const;

    void resized() override;
    void paint(juce::Graphics& g) override;

private:
    struct Trace
    {
        Curve style;
        std::vector<float> ring; // capacity = width in pixels
        std::size_t start = 0, count = 0;

        void setCapacity(std::size_t capacity);
        void push(float value);
        float at(std::size_t i) const { return ring[(start + i) % ring.size()]; }
    };

    static juce::Path pathOf(const Trace& trace, float width, float height);

    std::vector<Trace> curves;
};
} // namespace oxa
