#include "editor/LFOWaveformDisplay.h"

#include "editor/BoundPanel.h"
#include "engine/EngineProxy.h"
#include "tape/LfoWaveform.h"

namespace oxa
{
namespace
{
// Screen y of a normalised height, leaving room for the stroke at both edges.
float curveY(float v, float height)
{
    return (1.0f - v) * (height - 5.0f) + 2.5f;
}
} // namespace

const LFOWaveformDisplay::Preset LFOWaveformDisplay::presets[5] = {
    {"Triangle", 0.0f, 0.0f, 0.0f}, {"Sine", 0.0f, 0.2f, 0.0f},    {"Square", 0.0f, 0.99f, 0.0f},
    {"Ramp Down", 0.0f, 0.0f, -1.0f}, {"Ramp", -0.5f, 0.0f, 1.0f},
};

LFOWaveformPopupMenuCustomComponent::LFOWaveformPopupMenuCustomComponent(float phase, float shape, float symmetry)
    : phase(phase), shape(std::min(shape, 0.99f)), symmetry(juce::jlimit(-0.99f, 0.99f, symmetry))
{
}

void LFOWaveformPopupMenuCustomComponent::getIdealSize(int& width, int& height)
{
    width = 96;
    height = 18;
}

void LFOWaveformPopupMenuCustomComponent::resized()
{
    curve.clear();
    const float span = float(getWidth() - 24);
    if (span <= 0.0f)
        return;
    const float h = float(getHeight());
    for (float x = 0.0f; x <= span; x += 0.25f)
    {
        const float value = lfoWaveform(x / span, phase, shape, symmetry, 0.0f);
        const juce::Point<float> p(x + 12.0f, (0.5f - 0.5f * value) * (h - 20.0f) + 10.0f);
        if (x == 0.0f)
            curve.startNewSubPath(p);
        else
            curve.lineTo(p);
    }
}

void LFOWaveformPopupMenuCustomComponent::paint(juce::Graphics& g)
{
    g.fillAll(juce::Colour(0xFFE6E6E6));
    g.setColour(juce::Colour(0xFF424242));
    g.strokePath(curve, juce::PathStrokeType(1.0f));
    if (isItemHighlighted())
        g.fillAll(findColour(juce::PopupMenu::highlightedBackgroundColourId).withAlpha(0.25f));
}

LFOWaveformDisplay::LFOWaveformDisplay(EngineProxy* proxy) : SimpleElementView(proxy, effectPath())
{
    setName("lfoWaveformDisplay");
    const auto follow = [&](const char* name) {
        return std::make_unique<ElementParameterValue<float>>(proxy, effectPath(), parameterIdByName(name),
                                                              [this](float) { repaint(); });
    };
    shapeView = follow("LFOShape");
    symmetryView = follow("LFOSymmetry");
    phaseView = follow("LFOPhase");
    swingView = follow("LFOSwing");
    watch(effectPath());
}

LFOWaveformDisplay::~LFOWaveformDisplay()
{
    stopWatching();
}

void LFOWaveformDisplay::elementChanged(const String&)
{
    setEnabled(getElement() != nullptr);
    repaint();
}

juce::Path LFOWaveformDisplay::buildCurve() const
{
    const float shape = shapeView->get(), symmetry = symmetryView->get();
    const float phase = phaseView->get(), swing = swingView->get();
    const float w = float(getWidth()), h = float(getHeight());
    const float normaliser = LfoWaveform::normaliser(shape);
    juce::Path path;
    if (w <= 0.0f)
        return path;
    for (float x = 0.0f; x <= w; x += 0.25f)
    {
        // Two periods across the width.
        const float value = lfoWaveform(2.0f * x / w, phase, shape, symmetry, swing) * normaliser * 0.5f;
        const juce::Point<float> p(x, curveY(0.5f + value, h));
        if (x == 0.0f)
            path.startNewSubPath(p);
        else
            path.lineTo(p);
    }
    return path;
}

void LFOWaveformDisplay::paint(juce::Graphics& g)
{
    g.setColour(juce::Colour(0xFF808080));
    g.strokePath(buildCurve(), juce::PathStrokeType(1.0f));
}

void LFOWaveformDisplay::applyPreset(int index)
{
    Element* element = getElement();
    if (element == nullptr || index < 0 || index >= 5)
        return;
    const Preset& preset = presets[index];
    const std::pair<ElementParameterValue<float>*, float> writes[] = {
        {phaseView.get(), preset.phase}, {shapeView.get(), preset.shape}, {symmetryView.get(), preset.symmetry}};
    for (const auto& [view, value] : writes)
    {
        if (view->getElement() == nullptr)
            continue;
        proxy->beginGesture(*element, view->resolvedId());
        view->set(value);
        proxy->endGesture(*element, view->resolvedId());
    }
    repaint();
}

void LFOWaveformDisplay::mouseDown(const juce::MouseEvent&)
{
    if (!isEnabled())
        return;
    juce::PopupMenu menu;
    for (int i = 0; i < 5; ++i)
    {
        juce::PopupMenu::Item item(presets[i].name);
        item.itemID = i + 1;
        item.customComponent = new LFOWaveformPopupMenuCustomComponent(presets[i].phase, presets[i].shape,
                                                                        presets[i].symmetry);
        menu.addItem(std::move(item));
    }
    menu.showMenuAsync(juce::PopupMenu::Options().withTargetComponent(this).withStandardItemHeight(18),
                       [safe = juce::Component::SafePointer<LFOWaveformDisplay>(this)](int result) {
                           if (safe != nullptr && result > 0)
                               safe->applyPreset(result - 1);
                       });
}
} // namespace oxa
