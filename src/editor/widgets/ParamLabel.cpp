#include "editor/widgets/ParamLabel.h"

#include "element/ParameterRegistry.h"
#include "engine/ProcessingElement.h"

namespace oxa
{
ParamLabel::ParamLabel(EngineProxy* proxy, const String& path, uint32_t id) : SimpleElementParameterView(proxy, path)
{
    setEditable(false, false, false);
    if (const auto* d = ParameterRegistry::instance().floatDescription(id); d != nullptr && isSyncDisplayType(d->displayType))
        syncView = std::make_unique<ElementParameterValue<bool>>(proxy, path, ProcessingElement::syncToHostId(),
                                                                 [this](bool) {
                                                                     if (Element* e = getElement())
                                                                         notifyAll(getElementPath(), e, requestedId());
                                                                 });
    setParameter(path, id);
}

ParamLabel::~ParamLabel()
{
    syncView.reset();
}

void ParamLabel::elementChanged(const String&)
{
    if (getElement() == nullptr)
        setText({}, juce::dontSendNotification);
}

void ParamLabel::floatChanged(const String&, unsigned, float value)
{
    setText(floatText(getElement(), resolvedId(), value), juce::dontSendNotification);
}

void ParamLabel::intChanged(const String&, unsigned, int value)
{
    setText(intText(getElement(), resolvedId(), value), juce::dontSendNotification);
}

void ParamLabel::boolChanged(const String&, unsigned, bool value)
{
    setText(boolText(getElement(), resolvedId(), value), juce::dontSendNotification);
}

void ParamLabel::textWasEdited()
{
    Element* e = getElement();
    if (e == nullptr)
        return;
    const ParameterRegistry& registry = ParameterRegistry::instance();
    const String typed(getText().toStdString());
    switch (kind())
    {
        case ParameterKind::Float:
            if (const auto* d = registry.floatDescription(resolvedId()))
                if (float v = 0.0f; d->textToValue(e, typed, v))
                    e->setFloatParameter(resolvedId(), d->clamp(v), true);
            break;
        case ParameterKind::Int:
            if (const auto* d = registry.intDescription(resolvedId()))
                if (int v = 0; d->textToValue(e, typed, v))
                    e->setIntParameter(resolvedId(), d->clamp(v), true);
            break;
        case ParameterKind::Bool:
            if (const auto* d = registry.boolDescription(resolvedId()))
                if (bool v = false; d->textToValue(e, typed, v))
                    e->setBoolParameter(resolvedId(), v, true);
            break;
        default: break;
    }
    notifyAll(getElementPath(), e, requestedId()); // show what the parameter took
}
} // namespace oxa
