#include "host/PluginHost.h"

namespace oxa::host
{
PluginHost::PluginHost()
{
    formats.addFormat(new juce::VST3PluginFormat());
}

LoadedPlugin PluginHost::load(const juce::File& bundle, double sampleRate, int blockSize)
{
    LoadedPlugin result;

    if (!bundle.isDirectory())
    {
        result.error = "no VST3 bundle at \"" + bundle.getFullPathName() + "\"";
        return result;
    }

    auto* format = formats.getFormat(0);
    juce::OwnedArray<juce::PluginDescription> found;
    format->findAllTypesForFile(found, bundle.getFullPathName());

    if (found.isEmpty())
    {
        result.error = "\"" + bundle.getFullPathName() + "\" holds no loadable VST3 plug-in";
        return result;
    }

    juce::String reason;
    result.instance = formats.createPluginInstance(*found.getFirst(), sampleRate, blockSize, reason);

    if (result.instance == nullptr)
        result.error = "cannot instantiate \"" + found.getFirst()->name + "\": "
                       + (reason.isEmpty() ? juce::String("unknown reason") : reason);

    return result;
}

juce::File PluginHost::bundleOfModule(const juce::File& moduleBinary)
{
    return moduleBinary.getParentDirectory().getParentDirectory().getParentDirectory();
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
