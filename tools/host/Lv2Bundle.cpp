#include "host/Lv2Bundle.h"

namespace oxa::host
{
namespace
{
constexpr juce::int64 kLargestManifestBytes = 1 << 20;
}

juce::String lv2PluginUriOfBundle(const juce::File& bundle)
{
    const auto manifest = bundle.getChildFile("manifest.ttl");

    if (!manifest.existsAsFile() || manifest.getSize() > kLargestManifestBytes)
        return {};

    // Enough Turtle for manifests as plug-in builders write them: "<uri> a lv2:Plugin".
    const auto text = manifest.loadFileAsString();
    const auto declaration = text.indexOf("a lv2:Plugin");

    if (declaration < 0)
        return {};

    const auto open = text.substring(0, declaration).lastIndexOfChar('<');
    const auto close = text.indexOfChar(open, '>');

    if (open < 0 || close < 0 || close > declaration)
        return {};

    return text.substring(open + 1, close);
}

juce::File otherLv2BundleWithUri(const juce::String& uri, const juce::File& bundle)
{
    const juce::File standardFolders[] = { juce::File("~/.lv2"), juce::File("/usr/lib/lv2"),
                                           juce::File("/usr/local/lib/lv2") };

    for (const auto& folder : standardFolders)
        for (const auto& candidate : folder.findChildFiles(juce::File::findDirectories, false, "*.lv2"))
            if (candidate != bundle && lv2PluginUriOfBundle(candidate) == uri)
                return candidate;

    return {};
}
} // namespace oxa::host
