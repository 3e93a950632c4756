#include "editor/widgets/ParamSlider.h"

#include "editor/widgets/SimpleEditionSettingsPanel.h"
#include "element/NoteLengths.h"
#include "element/ParameterRegistry.h"
#include "engine/ProcessingElement.h"

#include <cmath>

namespace oxa
{
namespace
{
const ParameterDescription<float>* floatDescriptionOf(uint32_t id)
{
    return ParameterRegistry::instance().floatDescription(id);
}
} // namespace

ParamSlider::ParamSlider(EngineProxy* proxy, const String& path, uint32_t id, juce::Slider::SliderStyle style,
                         bool showValuePopup)
    : Slider(style, showValuePopup), SimpleElementParameterView(proxy, path), gesture(*this)
{
    if (const auto* d = floatDescriptionOf(id))
        syncable = isSyncDisplayType(d->displayType);
    if (syncable)
        syncView = std::make_unique<ElementParameterValue<bool>>(proxy, path, ProcessingElement::syncToHostId(),
                                                                 [this](bool on) { syncChanged(on); });
    setParameter(path, id);
}

ParamSlider::~ParamSlider()
{
    syncView.reset();
}

void ParamSlider::syncChanged(bool on)
{
    if (on == syncOn)
        return;
    syncOn = on;
    updateRange();
    if (Element* e = getElement())
        notifyAll(getElementPath(), e, requestedId());
}

double ParamSlider::toSlider(float plain) const
{
    if (kind() != ParameterKind::Float)
        return plain;
    if (isSynchronised())
        return noteIndexOfLength(plain);
    if (const auto* d = floatDescriptionOf(resolvedId()))
        return d->unmap(getElement(), plain);
    return plain;
}

float ParamSlider::toPlain(double sliderValue) const
{
    if (isSynchronised())
        return noteLength(juce::roundToInt(sliderValue));
    if (const auto* d = floatDescriptionOf(resolvedId()))
        return d->map(getElement(), float(sliderValue));
    return float(sliderValue);
}

void ParamSlider::updateRange()
{
    const ParameterRegistry& registry = ParameterRegistry::instance();
    switch (kind())
    {
        case ParameterKind::Int:
            if (const auto* d = registry.intDescription(resolvedId()); d != nullptr && d->hasRange())
            {
                setRange(d->min, d->max, 1.0);
                if (getSliderStyle() == RotaryHorizontalDrag || getSliderStyle() == RotaryVerticalDrag)
                    setMouseDragSensitivity(juce::jlimit(100, 250, 40 * (d->max - d->min)));
            }
            break;
        case ParameterKind::Bool: setRange(0.0, 1.0, 1.0); break;
        case ParameterKind::Float:
            if (isSynchronised())
                setRange(0.0, double(lastNoteIndex), 1.0);
            else
                setRange(0.0, 1.0, 0.0); // the mapper's normalised span: log parameters turn evenly
            break;
        default: break;
    }
}

void ParamSlider::elementChanged(const String&)
{
    Element* e = getElement();
    if (e == nullptr)
    {
        setEnabled(false);
        const double rest = getMinimum() <= 0.0 && getMaximum() >= 0.0 ? 0.0 : getMinimum();
        setValue(rest, juce::dontSendNotification);
        return;
    }
    setEnabled(true);
    if (syncable)
        syncOn = e->boolParameter(ProcessingElement::syncToHostId());
    updateRange();
}

void ParamSlider::show(double sliderValue)
{
    // A control in the user's hand ignores the host until it is let go.
    if (isMouseButtonDown())
        return;
    setValue(sliderValue, juce::dontSendNotification);
    refreshValueText();
    repaint();
}

void ParamSlider::floatChanged(const String&, unsigned, float value)
{
    show(toSlider(value));
}

void ParamSlider::intChanged(const String&, unsigned, int value)
{
    show(value);
}

void ParamSlider::boolChanged(const String&, unsigned, bool value)
{
    show(value ? 1.0 : 0.0);
}

void ParamSlider::valueChanged()
{
    Slider::valueChanged();
    Element* e = getElement();
    if (e == nullptr)
        return;
    const double v = getValue();
    switch (kind())
    {
        case ParameterKind::Float: e->setFloatParameter(resolvedId(), toPlain(v), true); break;
        case ParameterKind::Int: e->setIntParameter(resolvedId(), int(v), true); break;
        case ParameterKind::Bool: e->setBoolParameter(resolvedId(), v != 0.0, true); break;
        default: break;
    }
}

double ParamSlider::snapValue(double attemptedValue, juce::Slider::DragMode)
{
    switch (kind())
    {
        case ParameterKind::Float:
            // Round trip through the parameter, so the knob rests where the parameter can.
            return isSynchronised() ? double(juce::roundToInt(attemptedValue)) : toSlider(toPlain(attemptedValue));
        case ParameterKind::Int: return std::trunc(attemptedValue);
        case ParameterKind::Bool: return attemptedValue >= 0.5 ? 1.0 : 0.0;
        default: return attemptedValue;
    }
}

juce::String ParamSlider::getTextFromValue(double value)
{
    const Element* e = getElement();
    switch (kind())
    {
        case ParameterKind::Float: return floatText(e, resolvedId(), toPlain(value));
        case ParameterKind::Int: return intText(e, resolvedId(), int(value));
        case ParameterKind::Bool: return boolText(e, resolvedId(), value != 0.0);
        default: return juce::Slider::getTextFromValue(value);
    }
}

double ParamSlider::getValueFromText(const juce::String& text)
{
    const ParameterRegistry& registry = ParameterRegistry::instance();
    const Element* e = getElement();
    const String typed(text.toStdString());
    switch (kind())
    {
        case ParameterKind::Float:
            if (const auto* d = registry.floatDescription(resolvedId()))
            {
                float plain = 0.0f;
                if (d->textToValue(e, typed, plain))
                    return isSynchronised() ? double(plain) : toSlider(d->clamp(plain));
            }
            break;
        case ParameterKind::Int:
            if (const auto* d = registry.intDescription(resolvedId()))
            {
                int value = 0;
                if (d->textToValue(e, typed, value))
                    return d->clamp(value);
            }
            break;
        case ParameterKind::Bool:
            if (const auto* d = registry.boolDescription(resolvedId()))
            {
                bool value = false;
                if (d->textToValue(e, typed, value))
                    return value ? 1.0 : 0.0;
            }
            break;
        default: break;
    }
    return getValue(); // text that does not parse changes nothing
}

void ParamSlider::resetToDefault()
{
    if (getElement() == nullptr)
        return;
    const bool wasOpen = gesture.isOpen();
    gesture.begin();
    const ParameterRegistry& registry = ParameterRegistry::instance();
    double target = getValue();
    switch (kind())
    {
        case ParameterKind::Float:
            if (isSynchronised())
                target = 10.0;
            else if (const auto* d = registry.floatDescription(resolvedId()))
                target = toSlider(defaultOverride.value_or(d->defaultValue));
            break;
        case ParameterKind::Int:
            if (const auto* d = registry.intDescription(resolvedId()))
                target = d->defaultValue;
            break;
        case ParameterKind::Bool:
            if (const auto* d = registry.boolDescription(resolvedId()))
                target = d->defaultValue ? 1.0 : 0.0;
            break;
        default: break;
    }
    // Written at once, so the value lands inside the gesture.
    setValue(target, juce::sendNotificationSync);
    if (!wasOpen)
        gesture.end();
}

void ParamSlider::mouseDown(const juce::MouseEvent& e)
{
    const bool alt = e.mods.isAltDown();
    const bool right = e.mods.isRightButtonDown();
    if (alt && !right)
    {
        resetToDefault();
        return;
    }
    if (right && (openSettingsOnRightClick || openSettingsOnAltRightClick))
    {
        if (alt ? openSettingsOnAltRightClick : openSettingsOnRightClick)
            SimpleEditionSettingsPanel::open(*this, getProxy(), getElementPath(), resolvedId(), alt);
        return;
    }
    if (!right && getElement() != nullptr)
        gesture.begin();
    Slider::mouseDown(e);
}

void ParamSlider::mouseUp(const juce::MouseEvent& e)
{
    gesture.end();
    if (!e.mods.isAltDown() && !e.mods.isRightButtonDown())
        Slider::mouseUp(e);
}

void ParamSlider::mouseExit(const juce::MouseEvent& e)
{
    if (!juce::ModifierKeys::currentModifiers.isAnyMouseButtonDown())
        gesture.end();
    Slider::mouseExit(e);
}

void ParamSlider::mouseWheelMove(const juce::MouseEvent& e, const juce::MouseWheelDetails& wheel)
{
    // The wheel's gesture stays open until the mouse leaves or presses.
    if (getElement() != nullptr && !isCurrentlyBlockedByAnotherModalComponent())
        gesture.begin();
    Slider::mouseWheelMove(e, wheel);
}
} // namespace oxa
