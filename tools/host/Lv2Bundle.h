#pragma once
// What a host can learn about an LV2 bundle from its manifest, before loading it.

#include <juce_core/juce_core.h>

namespace oxa::host
{
/** The URI of the first plug-in the bundle's manifest.ttl declares, or empty when the
    manifest is missing or declares none. */
juce::String lv2PluginUriOfBundle(const juce::File& bundle);

/** Another bundle in the standard LV2 folders (~/.lv2, /usr/lib/lv2, /usr/local/lib/lv2)
    that declares the same plug-in URI, or a null File. Hosts know LV2 plug-ins by URI
    only, so such a copy would be loaded in place of the bundle asked for. */
juce::File otherLv2BundleWithUri(const juce::String& uri, const juce::File& bundle);
} // namespace oxa::host
