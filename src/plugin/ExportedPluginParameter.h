#pragma once
// One host parameter bound by path and name to one element parameter. Host writes
// are deferred into the element (any thread); element changes reach the host on the
// message thread. A slot that cannot bind keeps what the host wrote and goes no further.

#include "engine/ElementView.h"
#include "element/ParameterDescription.h"
#include "plugin/HostReaderGate.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <atomic>
#include <limits>

namespace oxa
{
class Plugin;

class ExportedPluginParameter : public SimpleElementView,
                                public Trackable,
                                public juce::AsyncUpdater,
                                public juce::AudioProcessorParameterWithID
{
public:
    ExportedPluginParameter(Plugin& owner, EngineProxy* proxy, unsigned slotIndex, const String& defaultName);
    ~ExportedPluginParameter() override;

    /** Binds to (path, name), now if the element is there, else when it appears. */
    void setTarget(const String& path, const String& name, const String& displayName);
    /** Gives up the binding; the target is remembered as the last one. */
    void unbindSlot(bool tellHost);

    bool isBound() const { return bound.load(); }
    ParameterKind kind() const { return parameterKind.load(); }
    unsigned parameterId() const { return id.load(); }
    unsigned slotIndex() const { return slot; }
    const String& targetPath() const { return path; }
    const String& targetName() const { return name; }
    const String& lastTargetPath() const { return lastPath; }
    const String& lastTargetName() const { return lastName; }
    const String& displayNameOverride() const { return displayName; }
    /** A new name for the host to show; empty shows the parameter's own. */
    void setDisplayNameOverride(const String& shown);

    /** Fired when binding or kind change. */
    Signal<> changed;

    /** The slot's identity for hosts that name parameters (LV2 writes it into its Turtle as
        an IRI): the default name's letters and digits, "MagneticHardness". */
    static juce::String hostIdentifier(const String& defaultName, unsigned slotIndex);

    // ---- juce::AudioProcessorParameter ----
    float getValue() const override;
    void setValue(float newValue) override;
    float getDefaultValue() const override { return defaultValue.load(); }
    juce::String getName(int maximumStringLength) const override;
    juce::String getLabel() const override { return {}; }
    int getNumSteps() const override;
    bool isDiscrete() const override;
    bool isBoolean() const override;
    juce::String getText(float normalisedValue, int maximumStringLength) const override;
    float getValueForText(const juce::String& text) const override;
    bool isOrientationInverted() const override { return false; }
    bool isAutomatable() const override { return true; }
    bool isMetaParameter() const override { return false; }
    Category getCategory() const override { return genericParameter; }

    void elementChanged(const String& elementPath) override;
    void detachFromProxy();

    /** Points host calls at `element` (null: none) when it holds the bound parameter. Any
        thread; the plug-in then waits at its reader gate before an old tree may go. */
    void pointHostAt(Element* element);

private:
    void handleAsyncUpdate() override { tryBind(false); }
    void tryBind(bool fromAppearance);
    void dropBinding();
    void stopListening();
    /** The element host calls may use while `pass` is held. */
    Element* hostTarget(const HostReaderGate::Pass& pass) const;
    void parameterChanged(Element* from, unsigned changedId);
    bool isThisParameter(const Element& from, unsigned changedId) const;
    void gestureBegan(Element& from, unsigned changedId);
    void gestureEnded(Element& from, unsigned changedId);
    void tellHost();
    float normalise(Element& e, const ParameterDescriptionBase* d) const;

    Plugin& plugin;
    std::atomic<ParameterKind> parameterKind {ParameterKind::Invalid};
    std::atomic<unsigned> id {0};
    String displayName;
    String defaultName;
    unsigned slot;
    std::atomic<bool> ignoreOwnWrite {false};
    std::atomic<float> unboundValue {0.0f};
    // The host's latest write to the element, as the host sent it, until that write's change
    // notice comes back: the host knows that value already and is not sent it back. Where
    // the element holds it a little differently (stored precision, steps), the host is told.
    std::atomic<float> hostWrite {std::numeric_limits<float>::quiet_NaN()};
    std::atomic<float> defaultValue {0.0f};
    std::atomic<const ParameterDescriptionBase*> description {nullptr};
    std::atomic<bool> bound {false};
    String path;
    String name;
    String lastPath;
    String lastName;
    bool listening = false;
    std::atomic<Element*> hostElement {nullptr}; // what host threads use; see pointHostAt
};
} // namespace oxa
