#pragma once
// The small picture of the LFO's shape on the LFO settings button, with a menu of
// five ready shapes. It draws the very function the flange LFO runs.

#include "engine/ElementView.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>

namespace oxa
{
/** One shape of the menu, drawn as a picture of that shape. */
class LFOWaveformPopupMenuCustomComponent : public juce::PopupMenu::CustomComponent
{
public:
    LFOWaveformPopupMenuCustomComponent(float phase, float shape, float symmetry);

    void getIdealSize(int& width, int& height) override;
    void paint(juce::Graphics& g) override;
    void resized() override;

private:
    float phase, shape, symmetry;
    juce::Path curve;
};

class LFOWaveformDisplay : public juce::Component, public SimpleElementView
{
public:
    struct Preset
    {
        const char* name;
        float phase, shape, symmetry;
    };
    /** The five shapes of the menu, in menu order. */
    static const Preset presets[5];

    explicit LFOWaveformDisplay(EngineProxy* proxy);
    ~LFOWaveformDisplay() override;

    /** Writes one of the five shapes (menu order) as the menu does. */
    void applyPreset(int index);
    /** The picture's polyline, in component coordinates. */
    juce::Path buildCurve() const;

    void elementChanged(const String& path) override;
    void paint(juce::Graphics& g) override;
    void mouseDown(const juce::MouseEvent& e) override;

private:
    std::unique_ptr<ElementParameterValue<float>> shapeView, symmetryView, phaseView, swingView;
};
} // namespace oxa
