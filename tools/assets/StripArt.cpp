// Filmstrip frames: the four knob families and the two reels.

#include "assets/Art.h"

#include <cstring>

namespace oxa::art
{
namespace
{
constexpr float pi = juce::MathConstants<float>::pi;

struct KnobLook
{
    juce::Colour top, bottom, edge, pointer;
    bool grip;
};

KnobLook lookOf(const layout::ImageSpec& spec)
{
    if (std::strstr(spec.name, "black") != nullptr)
        return {juce::Colour(0xFF4E4E4E), juce::Colour(0xFF1C1C1C), juce::Colour(0xFF0E0E0E), juce::Colour(0xFFB592D2),
                spec.width >= 40};
    if (std::strstr(spec.name, "grey") != nullptr)
        return {juce::Colour(0xFFF4F4F4), juce::Colour(0xFFB9B9B9), juce::Colour(0xFF858585), juce::Colour(0xFF3A3A3A),
                false};
    return {juce::Colour(0xFFF0F0F0), juce::Colour(0xFFB4B4B4), juce::Colour(0xFF7E7E7E),
            juce::Colour(layout::accentColour), false};
}
} // namespace

void paintKnobFrame(juce::Graphics& g, const layout::ImageSpec& spec, float proportion)
{
    const KnobLook look = lookOf(spec);
    const float size = float(spec.width);
    const juce::Point<float> centre(size * 0.5f, size * 0.5f);
    const float radius = size * 0.5f - std::max(1.0f, size * 0.05f);
    const float angle = -0.75f * pi + 1.5f * pi * proportion;
    const auto disc = [&](float r) { return juce::Rectangle<float>(r * 2.0f, r * 2.0f).withCentre(centre); };

    g.setGradientFill(juce::ColourGradient(look.top, 0.0f, centre.y - radius, look.bottom, 0.0f, centre.y + radius,
                                           false));
    g.fillEllipse(disc(radius));
    if (look.grip)
    {
        // Knurling that turns with the knob.
        g.setColour(juce::Colours::black.withAlpha(0.55f));
        for (int i = 0; i < 36; ++i)
        {
            const float a = angle + 2.0f * pi * float(i) / 36.0f;
            g.drawLine({centre.getPointOnCircumference(radius - 2.2f, a), centre.getPointOnCircumference(radius, a)},
                       0.9f);
        }
    }
    // The cap: a slightly raised inner disc lit from above.
    const float cap = radius * (look.grip ? 0.78f : 0.84f);
    g.setGradientFill(juce::ColourGradient(look.top.brighter(0.25f), 0.0f, centre.y - cap, look.bottom.darker(0.1f),
                                           0.0f, centre.y + cap, false));
    g.fillEllipse(disc(cap));
    g.setColour(juce::Colours::white.withAlpha(look.grip ? 0.12f : 0.5f));
    g.drawEllipse(disc(cap - 0.5f), 0.8f);
    g.setColour(look.edge);
    g.drawEllipse(disc(radius - 0.4f), 0.8f);

    const float width = std::max(1.5f, size * 0.06f);
    const juce::Point<float> tip = centre.getPointOnCircumference(radius - width * 0.6f, angle);
    const juce::Point<float> tail = centre.getPointOnCircumference(radius * 0.38f, angle);
    g.setColour(look.pointer);
    g.drawLine({tail, tip}, width);
    g.fillEllipse(juce::Rectangle<float>(width, width).withCentre(tip));
    g.fillEllipse(juce::Rectangle<float>(width, width).withCentre(tail));
}

void paintReelFrame(juce::Graphics& g, bool leftReel, float turns)
{
    const layout::ReelGeometry r = layout::reelGeometry(leftReel);
    const juce::Point<float> hub(r.hubX, r.hubY);
    const float angle = 2.0f * pi * turns;
    const auto disc = [](juce::Point<float> c, float radius) {
        return juce::Rectangle<float>(radius * 2.0f, radius * 2.0f).withCentre(c);
    };

    // The wound tape, with faint grooves.
    g.setColour(ink::tape);
    g.fillEllipse(disc(hub, r.packRadius));
    g.setColour(juce::Colours::white.withAlpha(0.06f));
    for (float rr = 26.0f; rr < r.packRadius; rr += 5.0f)
        g.drawEllipse(disc(hub, rr), 0.7f);

    // The flange: a metal disc with three windows onto the tape, turning as one piece.
    juce::Path flange;
    flange.addEllipse(disc(hub, r.flangeRadius));
    flange.setUsingNonZeroWinding(false);
    for (int i = 0; i < 3; ++i)
    {
        const float a = angle + 2.0f * pi * float(i) / 3.0f;
        juce::Path window;
        window.addCentredArc(hub.x, hub.y, r.flangeRadius - 9.0f, r.flangeRadius - 9.0f, 0.0f, a - 0.62f, a + 0.62f,
                             true);
        window.addCentredArc(hub.x, hub.y, 27.0f, 27.0f, 0.0f, a + 0.45f, a - 0.45f, false);
        window.closeSubPath();
        flange.addPath(window);
    }
    g.setColour(juce::Colours::black.withAlpha(0.25f));
    g.fillPath(flange, juce::AffineTransform::translation(0.0f, 1.5f));
    g.setGradientFill(juce::ColourGradient(juce::Colour(0xFFE6E6E6), hub.x - r.flangeRadius, hub.y - r.flangeRadius,
                                           juce::Colour(0xFFA2A2A2), hub.x + r.flangeRadius, hub.y + r.flangeRadius,
                                           false));
    g.fillPath(flange);
    g.setColour(juce::Colour(0xFF7C7C7C));
    g.strokePath(flange, juce::PathStrokeType(0.9f));
    g.setColour(juce::Colours::white.withAlpha(0.35f));
    g.drawEllipse(disc(hub, r.flangeRadius - 3.0f), 0.7f);

    // Hub with its three drive notches.
    g.setColour(juce::Colour(0xFF5A5A5A));
    g.fillEllipse(disc(hub, 17.0f));
    g.setColour(juce::Colour(0xFFD0D0D0));
    g.fillEllipse(disc(hub, 12.0f));
    g.setColour(juce::Colour(0xFF5A5A5A));
    for (int i = 0; i < 3; ++i)
    {
        const float a = angle + 2.0f * pi * float(i) / 3.0f + pi / 3.0f;
        g.drawLine({hub.getPointOnCircumference(7.0f, a), hub.getPointOnCircumference(12.5f, a)}, 2.4f);
    }
    g.fillEllipse(disc(hub, 3.5f));

    // The guide roller turns faster than the reel: three turns for the reel's one.
    const juce::Point<float> roller(r.rollerX, r.rollerY);
    g.setGradientFill(juce::ColourGradient(juce::Colour(0xFFEDEDED), roller.x, roller.y - r.rollerRadius,
                                           juce::Colour(0xFF9A9A9A), roller.x, roller.y + r.rollerRadius, false));
    g.fillEllipse(disc(roller, r.rollerRadius));
    g.setColour(juce::Colour(0xFF6C6C6C));
    g.drawEllipse(disc(roller, r.rollerRadius - 0.5f), 1.0f);
    for (int i = 0; i < 3; ++i)
    {
        const float a = 3.0f * angle + 2.0f * pi * float(i) / 3.0f;
        g.fillEllipse(disc(roller.getPointOnCircumference(r.rollerRadius * 0.5f, a), 1.8f));
    }
    g.fillEllipse(disc(roller, 2.2f));
}
} // namespace oxa::art
