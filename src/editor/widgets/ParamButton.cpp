#include "editor/widgets/ParamButton.h"

#include "editor/Layout.h"
#include "editor/widgets/SimpleEditionSettingsPanel.h"
#include "element/ParameterRegistry.h"

namespace oxa
{
ParamButton::ParamButton(EngineProxy* proxy, const String& path, uint32_t id)
    : Button(toJuce(ParameterRegistry::instance().nameOf(id))), SimpleElementParameterView(proxy, path),
      gesture(*this)
{
    setClickingTogglesState(true);
    setParameter(path, id);
}

ParamButton::~ParamButton() = default;

void ParamButton::elementChanged(const String&)
{
    if (getElement() == nullptr)
    {
        setVisible(false);
        setEnabled(false);
        return;
    }
    setEnabled(true);
    if (!panelControlsVisibility)
        setVisible(true);
    if (getTooltip().isEmpty())
        if (const auto* d = ParameterRegistry::instance().description(resolvedId()))
            setTooltip(toJuce(d->displayName));
}

void ParamButton::show(bool on)
{
    setToggleState(on, juce::dontSendNotification);
}

void ParamButton::floatChanged(const String&, unsigned, float value)
{
    show(value != 0.0f);
}

void ParamButton::intChanged(const String&, unsigned, int value)
{
    show(value == onValue);
}

void ParamButton::boolChanged(const String&, unsigned, bool value)
{
    show(value);
}

void ParamButton::clicked()
{
    Element* e = getElement();
    if (e == nullptr)
        return;
    const bool on = getToggleState();
    switch (kind())
    {
        case ParameterKind::Float: e->setFloatParameter(resolvedId(), on ? 1.0f : 0.0f, true); break;
        case ParameterKind::Int: e->setIntParameter(resolvedId(), on ? onValue : offValue, true); break;
        case ParameterKind::Bool: e->setBoolParameter(resolvedId(), on, true); break;
        default: break;
    }
}

void ParamButton::mouseDown(const juce::MouseEvent& e)
{
    if (e.mods.isRightButtonDown())
    {
        // Never a press: a right click must not toggle. With the flags clear, the
        // widget's mouse listeners still hear it and show their menu.
        const bool alt = e.mods.isAltDown();
        if (alt ? openSettingsOnAltRightClick : openSettingsOnRightClick)
            SimpleEditionSettingsPanel::open(*this, getProxy(), getElementPath(), resolvedId(), alt);
        return;
    }
    gesture.begin();
    Button::mouseDown(e);
}

void ParamButton::mouseUp(const juce::MouseEvent& e)
{
    Button::mouseUp(e);
    gesture.end();
}

void ParamButton::paintOverChildren(juce::Graphics& g)
{
    if (dimWhenDisabled && !isEnabled())
        g.fillAll(juce::Colour(layout::panelColour).withAlpha(0.5f));
}
} // namespace oxa
