#include "host/PluginHost.h"

#include "host/Lv2Bundle.h"

namespace oxa::host
{
namespace
{
juce::String quoted(const juce::File& file)
{
    return "\"" + file.getFullPathName() + "\"";
}

juce::AudioPluginFormat* formatNamed(juce::AudioPluginFormatManager& formats, const juce::String& name)
{
    for (auto* format : formats.getFormats())
        if (format->getName() == name)
            return format;

    return nullptr;
}
} // namespace

PluginHost::PluginHost()
{
    formats.addFormat(new juce::VST3PluginFormat());
}

PluginHost::~PluginHost() = default;

LoadedPlugin PluginHost::load(const juce::File& bundle, double sampleRate, int blockSize)
{
    LoadedPlugin result;
    juce::OwnedArray<juce::PluginDescription> found;

    if (bundle.hasFileExtension(".vst3"))
        result.error = findVst3(bundle, found);
    else if (bundle.hasFileExtension(".lv2"))
        result.error = findLv2(bundle, found);
    else
        result.error = quoted(bundle) + " is neither a VST3 bundle (.vst3) nor an LV2 bundle (.lv2)";

    if (result.error.isNotEmpty())
        return result;

    juce::String reason;
    result.instance = formats.createPluginInstance(*found.getFirst(), sampleRate, blockSize, reason);

    if (result.instance == nullptr)
        result.error = "cannot instantiate \"" + found.getFirst()->name + "\": "
                       + (reason.isEmpty() ? juce::String("unknown reason") : reason);

    return result;
}

juce::String PluginHost::findVst3(const juce::File& bundle, juce::OwnedArray<juce::PluginDescription>& found)
{
    if (!bundle.isDirectory())
        return "no VST3 bundle at " + quoted(bundle);

    formatNamed(formats, "VST3")->findAllTypesForFile(found, bundle.getFullPathName());

    if (found.isEmpty())
        return quoted(bundle) + " holds no loadable VST3 plug-in";

    return {};
}

juce::String PluginHost::findLv2(const juce::File& bundle, juce::OwnedArray<juce::PluginDescription>& found)
{
    if (!bundle.isDirectory())
        return "no LV2 bundle at " + quoted(bundle);

    // Without its manifest an LV2 bundle is invisible to every host.
    if (!bundle.getChildFile("manifest.ttl").existsAsFile())
        return quoted(bundle) + " is not an LV2 bundle: it has no manifest.ttl";

    const auto uri = lv2PluginUriOfBundle(bundle);
    if (uri.isEmpty())
        return quoted(bundle) + " declares no LV2 plug-in in its manifest.ttl";

    if (const auto other = otherLv2BundleWithUri(uri, bundle); other != juce::File())
        return "another copy of <" + uri + "> is installed at " + quoted(other)
               + "; LV2 hosts tell plug-ins apart by URI only, so remove one of the two";

    if (const auto loaded = lv2BundlesByUri.find(uri); loaded != lv2BundlesByUri.end() && loaded->second != bundle)
        return "this host has loaded <" + uri + "> from " + quoted(loaded->second)
               + " already and cannot tell a second copy from it";

    // The LV2 format finds plug-ins by URI in the folders it has read.
    // The LV2 format reads every standard LV2 folder when it is made: only when needed.
    auto* lv2 = formatNamed(formats, "LV2");
    if (lv2 == nullptr)
    {
        formats.addFormat(new juce::LV2PluginFormat());
        lv2 = formatNamed(formats, "LV2");
    }
    lv2->searchPathsForPlugins(juce::FileSearchPath(bundle.getParentDirectory().getFullPathName()), false, true);
    lv2->findAllTypesForFile(found, uri);

    if (found.isEmpty())
        return quoted(bundle) + " holds no loadable LV2 plug-in (its Turtle files do not describe <" + uri + ">)";

    lv2BundlesByUri[uri] = bundle;
    return {};
}

juce::File PluginHost::bundleOfModule(const juce::File& moduleBinary)
{
    return moduleBinary.getParentDirectory().getParentDirectory().getParentDirectory();
}

juce::File PluginHost::bundleOfLv2Module(const juce::File& moduleBinary)
{
    return moduleBinary.getParentDirectory();
}

void PluginHost::pumpMessages(int milliseconds)
{
    auto* messages = juce::MessageManager::getInstanceWithoutCreating();

    if (messages == nullptr || !messages->isThisTheMessageThread())
        return;

    const auto end = juce::Time::getMillisecondCounter() + (juce::uint32) juce::jmax(0, milliseconds);

    do
        messages->runDispatchLoopUntil(1);
    while (juce::Time::getMillisecondCounter() < end);
}
} // namespace oxa::host
