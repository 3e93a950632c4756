#include "editor/ParameterContextMenu.h"

#include "editor/widgets/SimpleEditionSettingsPanel.h"
#include "engine/EngineProxy.h"
#include "engine/MidiLearn.h"
#include "resources/presets/PresetBank.h"

namespace oxa
{
ParameterContextMenu::ParameterContextMenu(EngineProxy& engineProxy, const String& elementPath, uint32_t id)
    : proxy(engineProxy), path(elementPath), parameterId(id)
{
}

juce::String ParameterContextMenu::unlearnText() const
{
    const int controller = MidiLearn(proxy, path, parameterId).boundController();
    return controller >= 0 ? "MIDI Unlearn (CC #" + juce::String(controller) + ")" : juce::String("MIDI Unlearn");
}

juce::PopupMenu ParameterContextMenu::build() const
{
    Element* element = proxy.acquireProxy(path);
    const bool locked = element != nullptr && element->isParameterLocked(parameterId);
    const MidiLearn learn(proxy, path, parameterId);
    juce::PopupMenu menu;
    menu.addItem(lockedId, "Locked", element != nullptr, locked);
    menu.addItem(unlockAllId, "Unlock all Parameters", element != nullptr);
    menu.addItem(learnId, "MIDI Learn", learn.canBind());
    menu.addItem(unlearnId, unlearnText(), learn.hasMidiConnection());
    return menu;
}

void ParameterContextMenu::perform(int result, juce::Component& from) const
{
    Element* element = proxy.acquireProxy(path);
    if (element == nullptr)
        return;
    switch (result)
    {
        case lockedId: element->setParameterLocked(parameterId, !element->isParameterLocked(parameterId)); break;
        case unlockAllId: unlockAll(*element); break;
        case learnId: SimpleEditionSettingsPanel::open(from, &proxy, path, parameterId); break;
        case unlearnId: MidiLearn(proxy, path, parameterId).unbind(); break;
        default: break;
    }
}

void ParameterContextMenu::show(juce::Component& from) const
{
    // The menu may outlive neither the window nor the proxy: both are checked on return.
    juce::Component::SafePointer<juce::Component> target(&from);
    EngineProxy* engineProxy = &proxy;
    const String elementPath = path;
    const uint32_t id = parameterId;
    build().showMenuAsync(juce::PopupMenu::Options().withMousePosition(), [target, engineProxy, elementPath, id](int result) {
        if (target != nullptr && result != 0)
            ParameterContextMenu(*engineProxy, elementPath, id).perform(result, *target);
    });
}
} // namespace oxa
