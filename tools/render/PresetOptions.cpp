#include "render/PresetOptions.h"

#include "host/HostedPresets.h"

#ifndef FLUXDECK_RESOURCE_ARCHIVE
#define FLUXDECK_RESOURCE_ARCHIVE ""
#endif

namespace oxa::render
{
namespace
{
// The archive that this build packs into the bundle: the factory banks are read from there.
juce::File factoryArchive()
{
    return juce::File(juce::String(FLUXDECK_RESOURCE_ARCHIVE));
}

juce::String describeBank(const char* title, host::PresetKind kind, const juce::String& folder)
{
    juce::String text = title;
    for (const auto& entry : host::listFactoryPresets(factoryArchive(), kind))
        text << "  " << entry.fromFirstOccurrenceOf(folder, false, false).dropLastCharacters(5) << "\n";
    return text;
}
} // namespace

juce::String applyPresetOptions(juce::AudioProcessor& plugin, const RenderOptions& options)
{
    const std::pair<const juce::String*, host::PresetKind> chosen[] = {
        { &options.presetName, host::PresetKind::full }, { &options.tapePresetName, host::PresetKind::tape } };
    for (const auto& [name, kind] : chosen)
    {
        if (name->isEmpty())
            continue;
        const auto source = host::findPreset(factoryArchive(), kind, *name);
        if (auto error = host::applyPreset(plugin, source, kind); error.isNotEmpty())
            return error;
    }
    return {};
}

juce::String describeFactoryPresets()
{
    if (!factoryArchive().existsAsFile())
        return "no resource archive at " + factoryArchive().getFullPathName() + "\n";
    return describeBank("presets:\n", host::PresetKind::full, "resource/presets/")
           + describeBank("tape presets:\n", host::PresetKind::tape, "resource/tapepresets/");
}
} // namespace oxa::render
