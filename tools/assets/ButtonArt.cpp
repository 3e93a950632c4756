// Buttons in their states: off, on, off-over, on-over (or off and on, or one image).

#include "assets/Art.h"

#include <cstring>
#include <functional>
#include <map>
#include <string>

namespace oxa::art
{
namespace
{
constexpr float pi = juce::MathConstants<float>::pi;

struct State
{
    bool on, over;
};

juce::Colour iconColour(State s)
{
    if (s.on)
        return juce::Colours::white;
    return s.over ? ink::iconOver : ink::icon;
}

/** The rounded key that the icon buttons share. */
void drawKey(juce::Graphics& g, juce::Rectangle<float> area, State s, float corner = 4.0f)
{
    area = area.reduced(1.0f);
    g.setColour(juce::Colours::white.withAlpha(0.5f));
    g.drawRoundedRectangle(area.translated(0.0f, 1.0f), corner, 1.0f);
    const juce::Colour top = s.on ? (s.over ? ink::accentLight : ink::accent).brighter(0.12f)
                                  : juce::Colour(s.over ? 0xFFF2F2F2 : 0xFFE8E8E8);
    const juce::Colour bottom = s.on ? (s.over ? ink::accentLight : ink::accent).darker(0.12f)
                                     : juce::Colour(s.over ? 0xFFD8D8D8 : 0xFFCFCFCF);
    g.setGradientFill(juce::ColourGradient(top, 0.0f, area.getY(), bottom, 0.0f, area.getBottom(), false));
    g.fillRoundedRectangle(area, corner);
    g.setColour(s.on ? ink::accent.darker(0.4f) : juce::Colour(0xFF9C9C9C));
    g.drawRoundedRectangle(area.reduced(0.5f), corner, 1.0f);
}

juce::PathStrokeType pen(float width)
{
    return juce::PathStrokeType(width, juce::PathStrokeType::curved, juce::PathStrokeType::rounded);
}

juce::Path sine(juce::Rectangle<float> a, float cycles, float phase = 0.0f)
{
    juce::Path p;
    for (int i = 0; i <= 48; ++i)
    {
        const float t = float(i) / 48.0f;
        const float x = a.getX() + t * a.getWidth();
        const float y = a.getCentreY() - 0.5f * a.getHeight() * std::sin(2.0f * pi * (cycles * t + phase));
        if (i == 0)
            p.startNewSubPath(x, y);
        else
            p.lineTo(x, y);
    }
    return p;
}

void arrowHead(juce::Path& p, juce::Point<float> tip, float angle, float size)
{
    p.addTriangle(tip, tip.getPointOnCircumference(size, angle + pi * 0.83f),
                  tip.getPointOnCircumference(size, angle - pi * 0.83f));
}

using Icon = std::function<void(juce::Graphics&, juce::Rectangle<float>, juce::Colour)>;

const std::map<std::string, Icon>& icons()
{
    static const std::map<std::string, Icon> table = {
        {"b_sync",
         [](juce::Graphics& g, juce::Rectangle<float> a, juce::Colour c) {
             // Two arrows chasing round a circle: follow the host's clock.
             const juce::Point<float> centre = a.getCentre();
             const float r = a.getHeight() * 0.28f;
             juce::Path arcs, heads;
             arcs.addCentredArc(centre.x, centre.y, r, r, 0.0f, 0.35f, pi - 0.35f, true);
             arcs.addCentredArc(centre.x, centre.y, r, r, 0.0f, pi + 0.35f, 2.0f * pi - 0.35f, true);
             g.setColour(c);
             g.strokePath(arcs, pen(1.3f));
             arrowHead(heads, centre.getPointOnCircumference(r, pi - 0.35f), pi - 0.35f + pi * 0.5f, 3.2f);
             arrowHead(heads, centre.getPointOnCircumference(r, 2.0f * pi - 0.35f), -0.35f + pi * 0.5f, 3.2f);
             g.fillPath(heads);
         }},
        {"b_rateFreq",
         [](juce::Graphics& g, juce::Rectangle<float> a, juce::Colour c) {
             g.setColour(c);
             g.strokePath(sine(a.reduced(5.0f, 7.0f), 1.5f), pen(1.3f));
         }},
        {"b_rateInt",
         [](juce::Graphics& g, juce::Rectangle<float> a, juce::Colour c) {
             // A response that is flat and then falls away: the frequency picture.
             const juce::Rectangle<float> r = a.reduced(5.0f, 7.0f);
             juce::Path p;
             p.startNewSubPath(r.getX(), r.getY() + 2.0f);
             p.lineTo(r.getCentreX(), r.getY() + 2.0f);
             p.quadraticTo(r.getRight() - 3.0f, r.getY() + 2.0f, r.getRight(), r.getBottom());
             g.setColour(c);
             g.strokePath(p, pen(1.3f));
             g.drawLine(r.getX(), r.getBottom() + 0.5f, r.getRight(), r.getBottom() + 0.5f, 0.8f);
         }},
        {"b_lowlatency",
         [](juce::Graphics& g, juce::Rectangle<float> a, juce::Colour c) {
             const juce::Rectangle<float> r = a.reduced(7.5f, 5.0f);
             juce::Path bolt;
             bolt.startNewSubPath(r.getX() + r.getWidth() * 0.65f, r.getY());
             bolt.lineTo(r.getX(), r.getY() + r.getHeight() * 0.58f);
             bolt.lineTo(r.getCentreX(), r.getY() + r.getHeight() * 0.55f);
             bolt.lineTo(r.getX() + r.getWidth() * 0.35f, r.getBottom());
             bolt.lineTo(r.getRight(), r.getY() + r.getHeight() * 0.42f);
             bolt.lineTo(r.getCentreX(), r.getY() + r.getHeight() * 0.45f);
             bolt.closeSubPath();
             g.setColour(c);
             g.fillPath(bolt);
         }},
        {"_flanger/b_phase",
         [](juce::Graphics& g, juce::Rectangle<float> a, juce::Colour c) {
             const juce::Rectangle<float> r = a.reduced(5.0f);
             g.setColour(c);
             g.drawEllipse(r, 1.1f);
             g.drawLine(r.getX() - 1.0f, r.getBottom() + 1.0f, r.getRight() + 1.0f, r.getY() - 1.0f, 1.1f);
         }},
        {"b_clip",
         [](juce::Graphics& g, juce::Rectangle<float> a, juce::Colour c) {
             // A gate: closed, open, closed.
             const juce::Rectangle<float> r = a.reduced(5.0f, 7.0f);
             juce::Path p;
             p.startNewSubPath(r.getX(), r.getBottom());
             p.lineTo(r.getX() + r.getWidth() * 0.3f, r.getBottom());
             p.lineTo(r.getX() + r.getWidth() * 0.3f, r.getY());
             p.lineTo(r.getX() + r.getWidth() * 0.7f, r.getY());
             p.lineTo(r.getX() + r.getWidth() * 0.7f, r.getBottom());
             p.lineTo(r.getRight(), r.getBottom());
             g.setColour(c);
             g.strokePath(p, pen(1.3f));
         }},
        {"b_phase",
         [](juce::Graphics& g, juce::Rectangle<float> a, juce::Colour c) {
             // Two channels whose random drifts part ways.
             g.setColour(c);
             g.strokePath(sine(a.reduced(5.0f, 8.0f).translated(0.0f, -2.0f), 1.0f), pen(1.1f));
             g.setColour(c.withMultipliedAlpha(0.7f));
             g.strokePath(sine(a.reduced(5.0f, 8.0f).translated(0.0f, 2.5f), 1.0f, 0.3f), pen(1.1f));
         }},
        {"b_link",
         [](juce::Graphics& g, juce::Rectangle<float> a, juce::Colour c) {
             const juce::Point<float> centre = a.getCentre();
             juce::Path chain;
             for (float side : {-1.0f, 1.0f})
                 chain.addRoundedRectangle(juce::Rectangle<float>(15.0f, 8.0f)
                                               .withCentre(centre.translated(side * 5.0f, side * -5.0f)),
                                           4.0f);
             g.setColour(c);
             g.strokePath(chain, pen(1.6f), juce::AffineTransform::rotation(-pi * 0.25f, centre.x, centre.y));
         }},
        {"b_fbcomp",
         [](juce::Graphics& g, juce::Rectangle<float> a, juce::Colour c) {
             // A loop that comes back on itself, held level.
             const juce::Point<float> centre = a.getCentre();
             const float r = 6.0f;
             juce::Path loop, head;
             loop.addCentredArc(centre.x, centre.y, r, r, 0.0f, 0.5f, 2.0f * pi - 0.3f, true);
             g.setColour(c);
             g.strokePath(loop, pen(1.3f));
             arrowHead(head, centre.getPointOnCircumference(r, 2.0f * pi - 0.3f), -0.3f + pi * 0.5f, 3.4f);
             g.fillPath(head);
             g.drawLine(centre.x - 2.5f, centre.y, centre.x + 2.5f, centre.y, 1.1f);
         }},
    };
    return table;
}

void paintIconKey(juce::Graphics& g, const layout::ImageSpec& spec, State s, const Icon& icon)
{
    const juce::Rectangle<float> area(0.0f, 0.0f, float(spec.width), float(spec.height));
    drawKey(g, area, s, spec.width <= 18 ? 3.0f : 4.0f);
    icon(g, area, iconColour(s));
}

/** A section switch: a lamp and the section's name. */
void paintSwitch(juce::Graphics& g, const layout::ImageSpec& spec, State s, const char* text)
{
    const float h = float(spec.height);
    const juce::Rectangle<float> lamp(2.0f, h * 0.5f - 5.0f, 10.0f, 10.0f);
    if (s.on)
    {
        g.setColour(ink::accentLight.withAlpha(0.3f));
        g.fillEllipse(lamp.expanded(2.0f));
    }
    g.setGradientFill(juce::ColourGradient(s.on ? ink::accentLight.brighter(0.3f) : juce::Colour(0xFFB8B8B8),
                                           lamp.getX(), lamp.getY(), s.on ? ink::accent : juce::Colour(0xFF8C8C8C),
                                           lamp.getX(), lamp.getBottom(), false));
    g.fillEllipse(lamp.reduced(1.0f));
    g.setColour(juce::Colours::black.withAlpha(0.35f));
    g.drawEllipse(lamp.reduced(1.0f), 0.8f);
    const juce::Colour textColour = s.on ? (s.over ? ink::accentLight : ink::accent) : (s.over ? ink::iconOver : ink::legend);
    // The name fills the switch's width at most: the widest of them sets the size.
    const float room = float(spec.width) - 18.0f;
    const float natural = font(13.0f, 0.09f).getStringWidthFloat(text);
    const float height = natural > room ? 13.0f * room / natural : 13.0f;
    drawLegend(g, text, {17.0f, 0.0f, room + 1.0f, h}, height, textColour, juce::Justification::centredLeft);
}

void paintExpand(juce::Graphics& g, State s)
{
    const juce::Rectangle<float> area(3.0f, 3.0f, 27.0f, 27.0f);
    g.setColour(juce::Colours::white.withAlpha(0.5f));
    g.drawEllipse(area.translated(0.0f, 1.0f), 1.0f);
    g.setGradientFill(juce::ColourGradient(juce::Colour(s.over ? 0xFFF4F4F4 : 0xFFE9E9E9), 0.0f, area.getY(),
                                           juce::Colour(s.over ? 0xFFD6D6D6 : 0xFFCACACA), 0.0f, area.getBottom(),
                                           false));
    g.fillEllipse(area);
    g.setColour(juce::Colour(0xFF9A9A9A));
    g.drawEllipse(area.reduced(0.5f), 1.0f);
    // Down to open the tape settings, up to fold them away.
    const float cx = area.getCentreX(), cy = area.getCentreY(), d = s.on ? -1.0f : 1.0f;
    juce::Path chevron;
    chevron.startNewSubPath(cx - 6.0f, cy - 3.0f * d);
    chevron.lineTo(cx, cy + 3.0f * d);
    chevron.lineTo(cx + 6.0f, cy - 3.0f * d);
    g.setColour(s.over ? ink::accent : ink::icon);
    g.strokePath(chevron, pen(1.8f));
}

void paintLfoButton(juce::Graphics& g, const layout::ImageSpec& spec, State s)
{
    const juce::Rectangle<float> area(0.5f, 0.5f, float(spec.width) - 1.0f, float(spec.height) - 1.0f);
    g.setColour(s.on ? juce::Colour(0xFFE6DDEE) : juce::Colour(s.over ? 0xFFF1F1F1 : 0xFFE8E8E8));
    g.fillRoundedRectangle(area, 4.0f);
    g.setColour(s.on ? ink::accent : juce::Colour(s.over ? 0xFF7E7E7E : 0xFFA6A6A6));
    g.drawRoundedRectangle(area, 4.0f, s.on ? 1.4f : 1.0f);
    // Three little faders at the right: the shape settings behind the button.
    const float x0 = float(spec.width) - 22.0f;
    const juce::Colour c = s.on ? ink::accent : (s.over ? ink::iconOver : ink::icon);
    const float knobs[] = {0.35f, 0.7f, 0.5f};
    for (int i = 0; i < 3; ++i)
    {
        const float x = x0 + 5.0f * float(i) + 2.0f;
        g.setColour(c.withMultipliedAlpha(0.6f));
        g.drawLine(x, 8.0f, x, float(spec.height) - 8.0f, 1.0f);
        g.setColour(c);
        g.fillRoundedRectangle(x - 2.0f, 8.0f + knobs[i] * (float(spec.height) - 18.0f), 4.0f, 2.5f, 1.0f);
    }
}

void paintBurger(juce::Graphics& g, const layout::ImageSpec& spec, State s)
{
    g.setColour(s.on ? ink::accent : ink::icon);
    for (int i = -1; i <= 1; ++i)
        g.fillRoundedRectangle(spec.width * 0.5f - 8.0f, spec.height * 0.5f + 5.0f * float(i) - 0.8f, 16.0f, 1.6f,
                               0.8f);
}

void paintNav(juce::Graphics& g, const layout::ImageSpec& spec, State s, bool next)
{
    const float cx = spec.width * 0.5f, cy = spec.height * 0.5f, d = next ? 1.0f : -1.0f;
    juce::Path chevron;
    chevron.startNewSubPath(cx - 2.5f * d, cy - 6.0f);
    chevron.lineTo(cx + 2.5f * d, cy);
    chevron.lineTo(cx - 2.5f * d, cy + 6.0f);
    g.setColour(s.on ? ink::accent : juce::Colour(0xFF919191));
    g.strokePath(chevron, pen(1.6f));
}

void paintCompare(juce::Graphics& g, const layout::ImageSpec& spec, char lit)
{
    drawKey(g, {0.0f, 0.0f, float(spec.width), float(spec.height)}, {false, false});
    const juce::Font f = font(15.0f, 0.05f);
    const juce::String parts[] = {"A", "/", "B"};
    float total = 0.0f;
    for (const auto& p : parts)
        total += f.getStringWidthFloat(p);
    float x = (float(spec.width) - total) * 0.5f;
    g.setFont(f);
    for (const auto& p : parts)
    {
        const bool isLit = p[0] == lit;
        g.setColour(isLit ? ink::accent : (lit == 0 ? ink::legend : juce::Colour(0xFF9A9A9A)));
        const float w = f.getStringWidthFloat(p);
        g.drawText(p, juce::Rectangle<float>(x, 0.0f, w + 2.0f, float(spec.height)), juce::Justification::centredLeft,
                   false);
        x += w;
    }
}
} // namespace

void paintButton(juce::Graphics& g, const layout::ImageSpec& spec, int state)
{
    const State s {state == 1 || state == 3, state >= 2};
    const std::string name = spec.name;
    static const std::map<std::string, const char*> switches = {{"b_xt-tapesim", "TAPE SIMULATION"},
                                                                {"b_xt-compander", "COMPANDER"},
                                                                {"b_xt-filtering", "PLAYBACK FILTER"},
                                                                {"b_xt-modulations", "TRANSPORT"}};
    if (auto sw = switches.find(name); sw != switches.end())
        return paintSwitch(g, spec, s, sw->second);
    if (auto icon = icons().find(name); icon != icons().end())
        return paintIconKey(g, spec, s, icon->second);
    if (name == "b_expand")
        return paintExpand(g, s);
    if (name == "_flanger/b_lfo")
        return paintLfoButton(g, spec, s);
    if (name == "b_burger")
        return paintBurger(g, spec, s);
    if (name == "b_nav-prev" || name == "b_nav-next")
        return paintNav(g, spec, s, name == "b_nav-next");
    if (name == "b_ab-off")
        return paintCompare(g, spec, 0);
    if (name == "b_ab-a-off")
        return paintCompare(g, spec, 'A');
    if (name == "b_ab-b-off")
        return paintCompare(g, spec, 'B');
}
} // namespace oxa::art
