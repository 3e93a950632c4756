#include "plugin/ExportedPluginParameter.h"
#include "element/ParameterRegistry.h"
#include "element/StoredFloat.h"
#include "engine/EngineProxy.h"
#include "plugin/Plugin.h"

#include <cmath>

namespace oxa
{
namespace
{
juce::String cut(const String& text, int maximumLength)
{
    return juce::String::fromUTF8(text.c_str()).substring(0, std::max(maximumLength, 0));
}

float intRangeNormalise(int value, int min, int max)
{
    return max > min ? (float) (value - min) / (float) (max - min) : 0.0f;
}

int intFromNormalised(float v, int min, int max)
{
    return (int) std::floor((float) min + (float) (max - min) * v + 0.5f);
}
} // namespace

ExportedPluginParameter::ExportedPluginParameter(Plugin& owner, EngineProxy* proxy, unsigned slotIndex,
                                                 const String& defaultName)
    : SimpleElementView(proxy, String()),
      juce::AudioProcessorParameterWithID(juce::ParameterID(hostIdentifier(defaultName, slotIndex), 1),
                                          juce::String::fromUTF8(defaultName.c_str())),
      plugin(owner),
      displayName(defaultName),
      defaultName(defaultName),
      slot(slotIndex)
{
    if (proxy != nullptr)
    {
        proxy->beginGesture.connect(this, &ExportedPluginParameter::gestureBegan);
        proxy->endGesture.connect(this, &ExportedPluginParameter::gestureEnded);
    }
}

ExportedPluginParameter::~ExportedPluginParameter()
{
    cancelPendingUpdate();
    detachFromProxy();
}

void ExportedPluginParameter::detachFromProxy()
{
    cancelPendingUpdate();
    if (proxy != nullptr)
    {
        proxy->beginGesture.disconnect(this, &ExportedPluginParameter::gestureBegan);
        proxy->endGesture.disconnect(this, &ExportedPluginParameter::gestureEnded);
    }
    dropBinding();
    SimpleElementView::detachFromProxy();
}

void ExportedPluginParameter::setTarget(const String& newPath, const String& newName, const String& newDisplayName)
{
    cancelPendingUpdate();
    dropBinding();
    path = newPath;
    name = newName;
    displayName = newDisplayName;
    watch(newPath); // reports the element at once when it exists
}

void ExportedPluginParameter::setDisplayNameOverride(const String& shown)
{
    if (shown == displayName)
        return;
    displayName = shown;
    tellHost();
}

void ExportedPluginParameter::unbindSlot(bool notifyHost)
{
    cancelPendingUpdate();
    lastPath = path;
    lastName = name;
    dropBinding();
    stopWatching();
    path = String();
    name = String();
    displayName = defaultName;
    if (notifyHost)
        tellHost();
}

void ExportedPluginParameter::elementChanged(const String&)
{
    // A tree replaced by a state load brings the same parameter back at the same path:
    // the binding stays up meanwhile, so host reads never see the unbound value.
    stopListening();
    if (getElement() == nullptr)
        dropBinding();
    tryBind(true);
}

void ExportedPluginParameter::stopListening()
{
    if (listening && proxy != nullptr)
        proxy->removeParameterChangeListener(this, path, id.load());
    listening = false;
}

void ExportedPluginParameter::dropBinding()
{
    stopListening();
    hostWrite.store(std::numeric_limits<float>::quiet_NaN());
    hostElement.store(nullptr);
    bound.store(false);
    parameterKind.store(ParameterKind::Invalid);
    description.store(nullptr);
}

void ExportedPluginParameter::pointHostAt(Element* e)
{
    const unsigned pid = id.load();
    hostElement.store(bound.load() && e != nullptr && pid != 0 && e->findInfo(pid) != nullptr ? e : nullptr);
}

Element* ExportedPluginParameter::hostTarget(const HostReaderGate::Pass&) const
{
    return bound.load() ? hostElement.load() : nullptr;
}

void ExportedPluginParameter::tryBind(bool fromAppearance)
{
    Element* e = getElement();
    if (bound.load() && listening)
        return;
    if (e == nullptr || name.isEmpty())
    {
        changed();
        tellHost();
        return;
    }
    const ParameterRegistry& registry = ParameterRegistry::instance();
    const unsigned found = e->parameterId(name.c_str());
    if (!registry.isKnown(found))
    {
        // the element may still be declaring its parameters: look again on the message thread
        if (fromAppearance)
            triggerAsyncUpdate();
        else
        {
            changed();
            tellHost();
        }
        return;
    }

    const ParameterKind k = registry.kindOf(found);
    ParameterInfoBase* info = e->findInfo(found);
    if (info != nullptr && info->kind() == k)
    {
        const ParameterDescriptionBase* d = info->description();
        switch (k)
        {
            case ParameterKind::Float:
            {
                auto* f = static_cast<const ParameterDescription<float>*>(d);
                defaultValue = f->unmap(e, f->defaultValue);
                break;
            }
            case ParameterKind::Int:
            {
                auto* i = static_cast<const ParameterDescription<int>*>(d);
                defaultValue = intRangeNormalise(i->defaultValue, i->min, i->max);
                break;
            }
            case ParameterKind::Bool:
                defaultValue = static_cast<const ParameterDescription<bool>*>(d)->defaultValue ? 1.0f : 0.0f;
                break;
            default: defaultValue = 0.0f; break;
        }
        id.store(found);
        description.store(d);
        parameterKind.store(k);
        bound.store(true);
        hostElement.store(e);
        listening = true;
        proxy->addParameterChangeListener(this, path, found,
                                          [this](Element* from, unsigned changedId) { parameterChanged(from, changedId); });
    }
    else
        dropBinding();
    changed();
    tellHost();
}

void ExportedPluginParameter::tellHost()
{
    plugin.updateHostDisplay(juce::AudioProcessor::ChangeDetails().withParameterInfoChanged(true));
}

void ExportedPluginParameter::parameterChanged(Element* from, unsigned changedId)
{
    if (from == nullptr || from != getElement() || changedId != id.load() || ignoreOwnWrite.load())
        return;
    const float echo = hostWrite.exchange(std::numeric_limits<float>::quiet_NaN());
    const float value = getValue();
    if (value != echo)
        sendValueChangedMessageToListeners(value);
}

bool ExportedPluginParameter::isThisParameter(const Element& from, unsigned changedId) const
{
    return bound.load() && &from == getElement() && changedId == id.load();
}

void ExportedPluginParameter::gestureBegan(Element& from, unsigned changedId)
{
    if (isThisParameter(from, changedId))
        beginChangeGesture();
}

void ExportedPluginParameter::gestureEnded(Element& from, unsigned changedId)
{
    if (isThisParameter(from, changedId))
        endChangeGesture();
}

float ExportedPluginParameter::normalise(Element& e, const ParameterDescriptionBase* d) const
{
    // The value once the writes waiting now have applied: hosts compare a new write with
    // this and skip it when equal, so a stale value would drop a write a batch needs.
    const unsigned pid = id.load();
    switch (parameterKind.load())
    {
        case ParameterKind::Float:
        {
            float plain = e.pendingFloatParameter(pid);
            if (std::isnan(plain)) // not known before it applies
                plain = e.floatParameter(pid);
            // A host only understands 0..1; a synced or rounded value must not step outside.
            const float v = static_cast<const ParameterDescription<float>*>(d)->unmap(&e, plain);
            return std::isfinite(v) ? juce::jlimit(0.0f, 1.0f, v) : 0.0f;
        }
        case ParameterKind::Int:
        {
            auto* i = static_cast<const ParameterDescription<int>*>(d);
            return intRangeNormalise(e.pendingIntParameter(pid), i->min, i->max);
        }
        case ParameterKind::Bool: return e.pendingBoolParameter(pid) ? 1.0f : 0.0f;
        default: return 0.0f;
    }
}

juce::String ExportedPluginParameter::hostIdentifier(const String& defaultName, unsigned slotIndex)
{
    const auto identifier = juce::String::fromUTF8(defaultName.c_str())
                                .retainCharacters("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789");
    // An IRI's local name must not start with a digit.
    if (identifier.isEmpty() || juce::CharacterFunctions::isDigit(identifier[0]))
        return "p" + juce::String(slotIndex) + identifier;
    return identifier;
}

float ExportedPluginParameter::getValue() const
{
    const ParameterDescriptionBase* d = description.load();
    const auto pass = plugin.hostGate().enter();
    Element* e = d != nullptr ? hostTarget(pass) : nullptr;
    return e != nullptr ? normalise(*e, d) : unboundValue.load();
}

void ExportedPluginParameter::setValue(float v)
{
    if (!std::isfinite(v))
        return; // a broken host value never reaches the element
    const float asSent = v;
    v = juce::jlimit(0.0f, 1.0f, v);
    ignoreOwnWrite.store(true);
    const ParameterDescriptionBase* d = description.load();
    const auto pass = plugin.hostGate().enter();
    Element* e = d != nullptr ? hostTarget(pass) : nullptr;
    if (e == nullptr)
        unboundValue.store(v);
    else
    {
        // Compared with what the parameter will hold once the writes already waiting
        // apply, and in the precision the element stores: a write that an earlier one in
        // the same batch makes necessary is kept, and a repeat of the same host position
        // is not.
        const unsigned pid = id.load();
        switch (parameterKind.load())
        {
            case ParameterKind::Float:
            {
                const float plain = storedFloat(static_cast<const ParameterDescription<float>*>(d)->map(e, v));
                if (std::isfinite(plain) && !(plain == e->pendingFloatParameter(pid)))
                {
                    e->setFloatParameter(pid, plain, true);
                    hostWrite.store(asSent);
                }
                break;
            }
            case ParameterKind::Int:
            {
                auto* i = static_cast<const ParameterDescription<int>*>(d);
                const int plain = intFromNormalised(v, i->min, i->max);
                if (plain != e->pendingIntParameter(pid))
                {
                    e->setIntParameter(pid, plain, true);
                    hostWrite.store(asSent);
                }
                break;
            }
            case ParameterKind::Bool:
            {
                const bool plain = v > 0.5f;
                if (plain != e->pendingBoolParameter(pid))
                {
                    e->setBoolParameter(pid, plain, true);
                    hostWrite.store(asSent);
                }
                break;
            }
            default: break;
        }
    }
    ignoreOwnWrite.store(false);
}

juce::String ExportedPluginParameter::getName(int maximumStringLength) const
{
    if (!bound.load())
        return cut(defaultName, maximumStringLength);
    if (!displayName.isEmpty())
        return cut(displayName, maximumStringLength);
    const ParameterDescriptionBase* d = description.load();
    return cut(d != nullptr ? d->displayName : name, maximumStringLength);
}

int ExportedPluginParameter::getNumSteps() const
{
    if (bound.load())
    {
        if (parameterKind.load() == ParameterKind::Int)
        {
            auto* i = static_cast<const ParameterDescription<int>*>(description.load());
            return i->max - i->min + 1;
        }
        if (parameterKind.load() == ParameterKind::Bool)
            return 2;
    }
    return juce::AudioProcessor::getDefaultNumParameterSteps();
}

bool ExportedPluginParameter::isDiscrete() const
{
    const ParameterKind k = parameterKind.load();
    return bound.load() && (k == ParameterKind::Int || k == ParameterKind::Bool);
}

bool ExportedPluginParameter::isBoolean() const
{
    return bound.load() && parameterKind.load() == ParameterKind::Bool;
}

juce::String ExportedPluginParameter::getText(float v, int maximumStringLength) const
{
    const ParameterDescriptionBase* d = description.load();
    const auto pass = plugin.hostGate().enter();
    Element* e = d != nullptr ? hostTarget(pass) : nullptr;
    if (e == nullptr || !std::isfinite(v))
        return juce::String(v).substring(0, std::max(maximumStringLength, 0));
    v = juce::jlimit(0.0f, 1.0f, v);
    switch (parameterKind.load())
    {
        case ParameterKind::Float:
        {
            auto* f = static_cast<const ParameterDescription<float>*>(d);
            return cut(f->valueToText(e, f->map(e, v)), maximumStringLength);
        }
        case ParameterKind::Int:
        {
            auto* i = static_cast<const ParameterDescription<int>*>(d);
            return cut(i->valueToText(e, intFromNormalised(v, i->min, i->max)), maximumStringLength);
        }
        case ParameterKind::Bool:
            return cut(static_cast<const ParameterDescription<bool>*>(d)->valueToText(e, v > 0.5f),
                       maximumStringLength);
        default: return {};
    }
}

float ExportedPluginParameter::getValueForText(const juce::String& text) const
{
    const ParameterDescriptionBase* d = description.load();
    const auto pass = plugin.hostGate().enter();
    Element* e = d != nullptr ? hostTarget(pass) : nullptr;
    if (e == nullptr)
        return text.getFloatValue();
    const String parsed(text.toStdString());
    switch (parameterKind.load())
    {
        case ParameterKind::Float:
        {
            auto* f = static_cast<const ParameterDescription<float>*>(d);
            float plain = 0.0f;
            if (f->textToValue(e, parsed, plain) && std::isfinite(plain))
                return juce::jlimit(0.0f, 1.0f, f->unmap(e, f->hasRange() ? f->clamp(plain) : plain));
            break;
        }
        case ParameterKind::Int:
        {
            auto* i = static_cast<const ParameterDescription<int>*>(d);
            int plain = 0;
            if (i->textToValue(e, parsed, plain))
                return juce::jlimit(0.0f, 1.0f, intRangeNormalise(plain, i->min, i->max));
            break;
        }
        case ParameterKind::Bool:
        {
            // Hosts hand back the words getText showed them.
            if (text.trim().equalsIgnoreCase("true"))
                return 1.0f;
            if (text.trim().equalsIgnoreCase("false"))
                return 0.0f;
            bool plain = false;
            if (static_cast<const ParameterDescription<bool>*>(d)->textToValue(e, parsed, plain))
                return plain ? 1.0f : 0.0f;
            break;
        }
        default: break;
    }
    return getValue(); // text that does not parse leaves the value where it is
}
} // namespace oxa
