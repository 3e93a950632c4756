// The window's backgrounds: plates, wells, screens, knob rings, legends, the combo
// boxes' boxes, the meter tracks and the tape path, all placed from the layout tables
// that the panels build their widgets from.

#include "assets/Art.h"

#include <cmath>

namespace oxa::art
{
namespace
{
using namespace layout;

constexpr float startAngle = -0.75f * juce::MathConstants<float>::pi; // a knob's frame 0
constexpr float sweep = 1.5f * juce::MathConstants<float>::pi;

float ringRadius(const Box& knob)
{
    return knob.w * 0.5f + (knob.w >= 40 ? 10.0f : knob.w >= 24 ? 6.0f : 4.0f);
}

float legendHeight(const Control& c)
{
    if (c.kind == Kind::knob)
        return c.bounds.w >= 40 ? 13.0f : c.bounds.w >= 28 ? 11.0f : 10.0f;
    return 11.0f;
}

void drawKnobRing(juce::Graphics& g, const Box& knob)
{
    const juce::Point<float> centre(knob.centreX(), knob.centreY());
    const float radius = ringRadius(knob);
    drawDropShadow(g, centre, knob.w * 0.5f - 1.0f);

    const int ticks = knob.w >= 40 ? 21 : knob.w >= 24 ? 11 : 7;
    for (int i = 0; i < ticks; ++i)
    {
        const float angle = startAngle + sweep * float(i) / float(ticks - 1);
        const bool major = i == 0 || i == ticks - 1 || i == ticks / 2;
        const float inner = radius - (major ? 4.0f : 2.5f);
        const juce::Point<float> a = centre.getPointOnCircumference(inner, angle);
        const juce::Point<float> b = centre.getPointOnCircumference(radius, angle);
        g.setColour(major ? juce::Colour(0xFF6F6F6F) : juce::Colour(0xFF9A9A9A));
        g.drawLine({a, b}, major ? 1.3f : 1.0f);
    }
}

void drawMeterTrack(juce::Graphics& g, const Box& box, bool ticksOnRight)
{
    const juce::Rectangle<float> area = toRect(box).expanded(1.5f);
    g.setColour(juce::Colour(0xFF8E8E8E));
    g.fillRoundedRectangle(area, 2.5f);
    g.setColour(juce::Colours::white.withAlpha(0.55f));
    g.drawRoundedRectangle(area.expanded(0.5f).translated(0.0f, 0.5f), 3.0f, 0.8f);
    // Marks every 10 dB of the meter's -70..6 dB span, 0 dB a little longer.
    for (int db = 0; db >= -60; db -= 10)
    {
        const float y = box.bottom() - (float(db) + 70.0f) / 76.0f * box.h;
        const float length = db == 0 ? 5.0f : 3.0f;
        const float x = ticksOnRight ? area.getRight() + 2.0f : area.getX() - 2.0f - length;
        g.setColour(juce::Colour(0xFF8A8A8A));
        g.drawLine(x, y, x + length, y, 1.0f);
    }
}

void drawReelPlatter(juce::Graphics& g, const Box& box, bool leftReel)
{
    const ReelGeometry r = reelGeometry(leftReel);
    const juce::Point<float> hub(box.x + r.hubX, box.y + r.hubY);
    const float radius = r.flangeRadius + 4.0f;
    g.setColour(juce::Colour(0xFFC3C3C3));
    g.fillEllipse(juce::Rectangle<float>(radius * 2.0f, radius * 2.0f).withCentre(hub));
    g.setGradientFill(juce::ColourGradient(juce::Colours::black.withAlpha(0.18f), hub.x, hub.y - radius,
                                           juce::Colours::white.withAlpha(0.35f), hub.x, hub.y + radius, false));
    g.drawEllipse(juce::Rectangle<float>(radius * 2.0f, radius * 2.0f).withCentre(hub), 1.5f);
    const juce::Point<float> roller(box.x + r.rollerX, box.y + r.rollerY);
    drawDropShadow(g, roller, r.rollerRadius);
}

/** From the left reel's pack round its guide roller, past the heads, to the right reel. */
void drawTapePath(juce::Graphics& g, const Box& left, const Box& right)
{
    constexpr float pi = juce::MathConstants<float>::pi;
    const ReelGeometry l = reelGeometry(true), r = reelGeometry(false);
    const juce::Point<float> leftRoller(left.x + l.rollerX, left.y + l.rollerY);
    const juce::Point<float> rightRoller(right.x + r.rollerX, right.y + r.rollerY);
    const float headLine = leftRoller.y + l.rollerRadius + 30.0f;
    const float leftPost = float(left.right()) + 28.0f, rightPost = float(right.x) - 28.0f;

    // The tape leaves each pack at its bottom, runs down the roller's outer side, round
    // its bottom, and on to the guide post at the head line.
    juce::Path tape;
    tape.startNewSubPath(left.x + l.hubX, left.y + l.hubY + l.packRadius);
    tape.lineTo(leftRoller.x - l.rollerRadius, leftRoller.y);
    tape.addCentredArc(leftRoller.x, leftRoller.y, l.rollerRadius, l.rollerRadius, 0.0f, 1.5f * pi, 0.8f * pi);
    tape.lineTo(leftPost, headLine - 4.0f);
    tape.lineTo(leftPost + 6.0f, headLine);
    tape.lineTo(rightPost - 6.0f, headLine);
    tape.lineTo(rightPost, headLine - 4.0f);
    const juce::Point<float> rightEntry = rightRoller.getPointOnCircumference(r.rollerRadius, 1.2f * pi);
    tape.lineTo(rightEntry);
    tape.addCentredArc(rightRoller.x, rightRoller.y, r.rollerRadius, r.rollerRadius, 0.0f, 1.2f * pi, 0.5f * pi);
    tape.lineTo(right.x + r.hubX, right.y + r.hubY + r.packRadius);
    g.setColour(ink::tape);
    g.strokePath(tape, juce::PathStrokeType(2.2f, juce::PathStrokeType::curved, juce::PathStrokeType::rounded));

    // Guide posts and the two heads the tape runs across.
    for (float x : {leftPost + 3.0f, rightPost - 3.0f})
    {
        g.setColour(juce::Colour(0xFF9C9C9C));
        g.fillEllipse(x - 4.5f, headLine - 11.0f, 9.0f, 9.0f);
        g.setColour(juce::Colour(0xFF5C5C5C));
        g.drawEllipse(x - 4.5f, headLine - 11.0f, 9.0f, 9.0f, 1.0f);
    }
    const float middle = (leftPost + rightPost) * 0.5f;
    const char* names[] = {"REC", "PLAY"};
    for (int i = 0; i < 2; ++i)
    {
        const juce::Rectangle<float> head(middle + (i == 0 ? -70.0f : 40.0f), headLine + 1.0f, 30.0f, 8.0f);
        g.setGradientFill(juce::ColourGradient(juce::Colour(0xFF7A7A7A), head.getX(), head.getY(),
                                               juce::Colour(0xFF4C4C4C), head.getX(), head.getBottom(), false));
        g.fillRoundedRectangle(head, 2.5f);
        drawLegend(g, names[i], head.withX(head.getRight() + 4.0f).withWidth(40.0f).withHeight(10.0f), 9.0f,
                   ink::caption, juce::Justification::centredLeft);
    }
}

void drawLegendOf(juce::Graphics& g, const Control& c, const Box& b)
{
    if (c.legend == nullptr || c.legendAt == LegendAt::none)
        return;
    float height = legendHeight(c);
    const float gap = c.kind == Kind::knob ? ringRadius(b) - b.w * 0.5f + 1.0f : 3.0f;
    // Small knobs sit close together: their legends may not reach the neighbour's.
    const float room = c.kind != Kind::knob || b.w >= 40 ? 200.0f : b.w >= 28 ? 70.0f : 56.0f;
    const float natural = font(height, 0.09f).getStringWidthFloat(c.legend);
    if (natural > room)
        height *= room / natural;
    const float width = font(height, 0.09f).getStringWidthFloat(c.legend) + 4.0f;
    juce::Rectangle<float> area;
    juce::Justification justification = juce::Justification::centred;
    switch (c.legendAt)
    {
        case LegendAt::above: area = {b.centreX() - width * 0.5f, b.y - gap - height - 1.0f, width, height + 2.0f}; break;
        case LegendAt::below: area = {b.centreX() - width * 0.5f, b.bottom() + gap, width, height + 2.0f}; break;
        case LegendAt::left:
            area = {b.x - gap - width, b.centreY() - height * 0.5f - 1.0f, width, height + 2.0f};
            justification = juce::Justification::centredRight;
            break;
        case LegendAt::right:
            area = {b.right() + gap, b.centreY() - height * 0.5f - 1.0f, width, height + 2.0f};
            justification = juce::Justification::centredLeft;
            break;
        case LegendAt::none: return;
    }
    // A legend at the window's edge moves inwards rather than being cut.
    area.setX(juce::jlimit(4.0f, float(windowWidth) - 4.0f - area.getWidth(), area.getX()));
    drawLegend(g, c.legend, area, height, ink::legend, justification);
}

void drawDecoration(juce::Graphics& g, const Decoration& d)
{
    const juce::Rectangle<float> area = toRect(d.bounds);
    switch (d.shape)
    {
        case Shape::plate: drawPlate(g, area); break;
        case Shape::well: drawWell(g, area, d.bounds.w >= windowWidth ? 0.0f : 6.0f); break;
        case Shape::screen: drawScreen(g, area, true); break;
        case Shape::rule:
            g.setColour(juce::Colour(0xFFABABAB));
            g.fillRect(area);
            g.setColour(juce::Colours::white.withAlpha(0.5f));
            g.fillRect(area.translated(1.0f, 0.0f));
            break;
        case Shape::caption:
            drawLegend(g, d.text, area, 11.0f, ink::caption,
                       d.bounds.h >= 30 ? juce::Justification::centredRight : juce::Justification::centred);
            break;
        case Shape::title:
        {
            g.setColour(ink::accent);
            g.setFont(font(25.0f, 0.16f));
            g.drawText(d.text, area, juce::Justification::centredLeft, false);
            // The subtitle only where it clears the preset bar's menu button.
            const float subtitleLeft = area.getX() + font(25.0f, 0.16f).getStringWidthFloat(d.text) + 12.0f;
            const Panel& bar = presetBar();
            const float room = float(bar.bounds.x + bar.at(Kind::button, "menuButton").bounds.x) - 8.0f - subtitleLeft;
            if (room >= font(11.0f, 0.09f).getStringWidthFloat("TAPE FLANGER"))
                drawLegend(g, "TAPE FLANGER", area.withLeft(subtitleLeft).translated(0.0f, 2.0f), 11.0f, ink::caption,
                           juce::Justification::centredLeft);
            break;
        }
    }
}

void drawControl(juce::Graphics& g, const Control& c, const Box& b)
{
    switch (c.kind)
    {
        case Kind::knob: drawKnobRing(g, b); break;
        case Kind::comboBox:
            if (!c.ownBox)
                boxArt::drawComboBox(g, toRect(b), true);
            break;
        case Kind::display: drawScreen(g, toRect(b), true); break;
        case Kind::textBox: drawInsetBox(g, toRect(b), 4.0f); break;
        case Kind::meter: drawMeterTrack(g, b, b.x > windowWidth / 2); break;
        case Kind::reel: drawReelPlatter(g, b, b.x < windowWidth / 2); break;
        case Kind::valueLabel:
        case Kind::button:
        case Kind::overlay: break;
    }
    drawLegendOf(g, c, b);
}

void drawBars(juce::Graphics& g, int height)
{
    const float w = float(windowWidth);
    g.setGradientFill(juce::ColourGradient(juce::Colour(0xFFDEDEDE), 0.0f, 0.0f, juce::Colour(0xFFC9C9C9), 0.0f,
                                           float(topBarHeight), false));
    g.fillRect(0.0f, 0.0f, w, float(topBarHeight));
    g.setColour(juce::Colour(0xFFA9A9A9));
    g.fillRect(0.0f, float(topBarHeight) - 1.0f, w, 1.0f);

    const float footerTop = float(height - footerHeight);
    g.setColour(juce::Colour(0xFFC6C6C6));
    g.fillRect(0.0f, footerTop, w, float(footerHeight));
    g.setColour(juce::Colour(0xFFABABAB));
    g.fillRect(0.0f, footerTop, w, 1.0f);
}
} // namespace

void paintBackground(juce::Graphics& g, unsigned page, bool expanded)
{
    const int height = expanded ? expandedHeight : collapsedHeight;
    g.fillAll(ink::panel);
    drawBars(g, height);
    // Everything is laid out for the full height; the collapsed window is its top part.
    g.reduceClipRegion(0, 0, windowWidth, height - footerHeight);

    for (std::size_t i = 0; i < decorationCount(); ++i)
        if ((decoration(i).pages & page) != 0)
            drawDecoration(g, decoration(i));

    const Panel& main = mainPanel();
    const Box leftReel = main.at(Kind::reel, "reelLeft").bounds.movedBy(main.bounds.x, main.bounds.y);
    const Box rightReel = main.at(Kind::reel, "reelRight").bounds.movedBy(main.bounds.x, main.bounds.y);
    drawTapePath(g, leftReel, rightReel);

    for (std::size_t i = 0; i < placedPanelCount(); ++i)
    {
        const PlacedPanel placed = placedPanel(i);
        if ((placed.panel->pages & page) == 0)
            continue;
        for (const Control& c : *placed.panel)
            drawControl(g, c, c.bounds.movedBy(placed.originX, placed.originY));
    }
}
} // namespace oxa::art
