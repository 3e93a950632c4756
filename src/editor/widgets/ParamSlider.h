#pragma once
// A slider bound to one parameter: it follows the parameter and writes it, with the
// host seeing every drag, wheel turn or reset as one gesture.

#include "editor/widgets/ParameterAccess.h"
#include "editor/widgets/Slider.h"

#include <memory>
#include <optional>

namespace oxa
{
class ParamSlider : public Slider, public SimpleElementParameterView
{
public:
    ParamSlider(EngineProxy* proxy, const String& path, uint32_t id,
                juce::Slider::SliderStyle style = juce::Slider::RotaryVerticalDrag, bool showValuePopup = true);
    ~ParamSlider() override;

    // Where a right click leads; the lockable controls clear all three so that their
    // panel's own menu hears the click.
    bool openSettingsOnAltRightClick = true;
    bool openSettingsOnRightClick = true;
    bool settingsThirdOption = true;
    /** Replaces the description's default for alt-click. */
    std::optional<float> defaultOverride;

    /** True while a tempo-synchronisable parameter shows note divisions. */
    bool isSynchronised() const { return syncOn && syncable; }
    bool isGestureOpen() const { return gesture.isOpen(); }

    /** Alt-click: the default, written as one gesture. */
    void resetToDefault();

    // ---- the view's slots ----
    void elementChanged(const String& path) override;
    void floatChanged(const String& path, unsigned id, float value) override;
    void intChanged(const String& path, unsigned id, int value) override;
    void boolChanged(const String& path, unsigned id, bool value) override;

    // ---- juce::Slider ----
    void valueChanged() override;
    double snapValue(double attemptedValue, juce::Slider::DragMode mode) override;
    juce::String getTextFromValue(double value) override;
    double getValueFromText(const juce::String& text) override;
    void mouseDown(const juce::MouseEvent& e) override;
    void mouseUp(const juce::MouseEvent& e) override;
    void mouseExit(const juce::MouseEvent& e) override;
    void mouseWheelMove(const juce::MouseEvent& e, const juce::MouseWheelDetails& wheel) override;

private:
    void updateRange();
    /** Slider value of a plain parameter value, and back. */
    double toSlider(float plain) const;
    float toPlain(double sliderValue) const;
    void show(double sliderValue);
    void syncChanged(bool on);

    GestureBracket gesture;
    bool syncable = false;
    bool syncOn = false;
    std::unique_ptr<ElementParameterValue<bool>> syncView;
};
} // namespace oxa
