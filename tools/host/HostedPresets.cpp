#include "host/HostedPresets.h"

#include "host/PluginHost.h"

namespace oxa::host
{
namespace
{
const char* const stateMagic = "OXA4";
constexpr int stateFormatVersion = 1;
const char* const effectTag = "FluxDeck";
const char* const versionAttribute = "FluxDeckVersion";

juce::String folderOf(PresetKind kind)
{
    return kind == PresetKind::tape ? "resource/tapepresets/" : "resource/presets/";
}

// "01 Classic" -> "Classic"; a name without a leading number stays.
juce::String withoutNumber(const juce::String& name)
{
    const auto rest = name.fromFirstOccurrenceOf(" ", false, false);
    return name.upToFirstOccurrenceOf(" ", false, false).containsOnly("0123456789") && rest.isNotEmpty() ? rest
                                                                                                        : name;
}

juce::String decodeState(const juce::MemoryBlock& chunk)
{
    juce::MemoryInputStream in(chunk, false);
    char magic[4] = {};
    if (in.read(magic, 4) != 4 || juce::String(magic, 4) != stateMagic || in.readInt() != stateFormatVersion)
        return {};
    const int length = in.readInt();
    if (length <= 0)
        return {};
    juce::GZIPDecompressorInputStream inflater(&in, false);
    return inflater.readEntireStreamAsString();
}

void encodeState(const juce::String& text, juce::MemoryBlock& chunk)
{
    const auto* utf8 = text.toRawUTF8();
    const auto length = (int) std::strlen(utf8);
    juce::MemoryOutputStream out(chunk, false);
    out.write(stateMagic, 4);
    out.writeInt(stateFormatVersion);
    out.writeInt(length);
    juce::GZIPCompressorOutputStream deflater(out);
    deflater.write(utf8, (size_t) length);
    deflater.flush();
}

// A VST3 host keeps the plug-in's own chunk inside an XML wrapper of its own, as
// base64 text of "IComponent"; a plug-in hosted directly hands the chunk over as it is.
struct HostState
{
    std::unique_ptr<juce::XmlElement> wrapper;
    juce::MemoryBlock chunk;

    explicit HostState(const juce::MemoryBlock& state)
    {
        wrapper = juce::AudioProcessor::getXmlFromBinary(state.getData(), (int) state.getSize());
        if (auto* component = wrapper != nullptr ? wrapper->getChildByName("IComponent") : nullptr)
            chunk.fromBase64Encoding(component->getAllSubText());
        else
            chunk = state;
    }

    juce::MemoryBlock with(const juce::MemoryBlock& newChunk) const
    {
        auto* component = wrapper != nullptr ? wrapper->getChildByName("IComponent") : nullptr;
        if (component == nullptr)
            return newChunk;
        component->deleteAllTextElements();
        component->addTextElement(newChunk.toBase64Encoding());
        juce::MemoryBlock result;
        juce::AudioProcessor::copyXmlToBinary(*wrapper, result);
        return result;
    }
};

juce::XmlElement* findEffect(juce::XmlElement& element)
{
    if (element.hasTagName(effectTag))
        return &element;
    for (auto* child : element.getChildIterator())
        if (auto* found = findEffect(*child))
            return found;
    return nullptr;
}

bool isLocked(const juce::XmlElement& effect, const juce::String& name)
{
    const auto* properties = effect.getChildByName("Properties");
    return properties != nullptr && properties->getStringAttribute(name + "Locked").getIntValue() >= 1;
}

void copyAttribute(const juce::XmlElement& from, juce::XmlElement& to, const juce::String& name)
{
    if (from.hasAttribute(name))
        to.setAttribute(name, from.getStringAttribute(name));
    else
        to.removeAttribute(name);
}

juce::XmlElement& propertiesOf(juce::XmlElement& effect)
{
    if (auto* properties = effect.getChildByName("Properties"))
        return *properties;
    return *effect.createNewChildElement("Properties");
}

// The effect's new node for a full preset: the preset's values, with the
// effect's name, bypass, locked values and children (connections, mappers,
// properties) kept.
void applyFull(juce::XmlElement& effect, const juce::XmlElement& presetNode, const juce::String& pathText)
{
    juce::XmlElement replaced(presetNode);
    replaced.deleteAllChildElements();
    copyAttribute(effect, replaced, "Name");
    copyAttribute(effect, replaced, "Bypass");
    for (int i = 0; i < effect.getNumAttributes(); ++i)
        if (isLocked(effect, effect.getAttributeName(i)))
            copyAttribute(effect, replaced, effect.getAttributeName(i));
    for (auto* child : effect.getChildIterator())
        replaced.addChildElement(new juce::XmlElement(*child));

    auto& properties = propertiesOf(replaced);
    properties.setAttribute("PresetPath", pathText);
    properties.removeAttribute("TapePresetPath");

    effect = replaced;
}

// The tape values only. The state loader keeps tempo-synced values out of range
// where a tape load clamps them, but no tape value is tempo-synced, so both agree.
void applyTape(juce::XmlElement& effect, const juce::XmlElement& presetNode, const juce::String& pathText)
{
    const bool hysteresisFromPreset = !isLocked(effect, "Hysteresis");
    for (const auto& name : tapeParameterNames())
        if (!isLocked(effect, name))
            copyAttribute(presetNode, effect, name);
    // The file's version says which scale its "Hysteresis" is in; every other
    // value that version governs comes from the file too.
    if (hysteresisFromPreset)
        copyAttribute(presetNode, effect, versionAttribute);
    propertiesOf(effect).setAttribute("TapePresetPath", pathText);
}

PresetSource readArchiveEntry(const juce::File& archive, const juce::String& entryName)
{
    juce::ZipFile zip(archive);
    const int index = zip.getIndexOfFileName(entryName);
    std::unique_ptr<juce::InputStream> in(index >= 0 ? zip.createStreamForEntry(index) : nullptr);
    if (in == nullptr)
        return { {}, {}, "cannot read \"" + entryName + "\" from " + archive.getFullPathName() };
    return { in->readEntireStreamAsString(), "$Resource/" + entryName, {} };
}
} // namespace

const juce::StringArray& tapeParameterNames()
{
    static const juce::StringArray names{
        "ApplyRecordHead", "MagneticHardness", "Hysteresis", "DegradeDepth", "DegradeRate", "NoiseGain",
        "ApplyPlayheadFilter", "Spacing", "Thickness", "Azimuth", "TrackWidthRatio", "Speed", "ApplyTransport",
        "WowMod", "WowRate", "FlutterMod", "FlutterRate", "NoiseSync", "NoiseMod", "NoiseRate", "ApplyCompander",
        "NoiseReductionEncoder", "NoiseReductionDecoder", "NRLink", "OutputPad", "ApplyLowLatency" };
    return names;
}

juce::StringArray listFactoryPresets(const juce::File& archive, PresetKind kind)
{
    juce::StringArray names;
    if (!archive.existsAsFile())
        return names;
    juce::ZipFile zip(archive);
    const auto folder = folderOf(kind);
    for (int i = 0; i < zip.getNumEntries(); ++i)
    {
        const auto name = zip.getEntry(i)->filename;
        if (name.startsWith(folder) && name.endsWithIgnoreCase(".fxps"))
            names.add(name);
    }
    names.sort(false);
    return names;
}

PresetSource findPreset(const juce::File& archive, PresetKind kind, const juce::String& nameOrPath)
{
    const auto wanted = nameOrPath.trim().trimCharactersAtEnd("/");
    if (wanted.isEmpty())
        return { {}, {}, "no preset named" };
    const auto folder = folderOf(kind);
    for (const auto& entry : listFactoryPresets(archive, kind))
    {
        const auto inFolder = entry.fromFirstOccurrenceOf(folder, false, false).dropLastCharacters(5);
        const auto fileName = inFolder.fromLastOccurrenceOf("/", false, false);
        if (wanted.equalsIgnoreCase(inFolder) || wanted.equalsIgnoreCase(fileName)
            || wanted.equalsIgnoreCase(withoutNumber(fileName)))
            return readArchiveEntry(archive, entry);
    }

    const auto file = juce::File::getCurrentWorkingDirectory().getChildFile(nameOrPath);
    if (!file.existsAsFile())
        return { {}, {}, "no " + juce::String(kind == PresetKind::tape ? "tape " : "") + "preset \"" + nameOrPath
                             + "\" in the factory bank and no such file" };
    constexpr juce::int64 largestPreset = 16 << 20;
    if (file.getSize() > largestPreset)
        return { {}, {}, "\"" + nameOrPath + "\" is too big for a preset" };
    return { file.loadFileAsString(), file.getFullPathName(), {} };
}

juce::String applyPreset(juce::AudioProcessor& plugin, const PresetSource& preset, PresetKind kind)
{
    if (preset.error.isNotEmpty())
        return preset.error;
    const auto name = preset.pathText.isNotEmpty() ? preset.pathText : juce::String("the preset");
    const auto document = juce::parseXML(preset.text);
    if (document == nullptr)
        return name + " is not an XML file";
    if (!document->hasTagName("ModulePreset"))
        return name + " is not a module preset (its root is <" + document->getTagName() + ">)";
    const auto* presetNode = document->getFirstChildElement();
    if (presetNode == nullptr)
        return name + " holds no effect";
    if (!presetNode->hasTagName(effectTag))
        return name + " is a preset of <" + presetNode->getTagName() + ">, not of this effect";

    juce::MemoryBlock current;
    plugin.getStateInformation(current);
    const HostState hostState(current);
    auto state = juce::parseXML(decodeState(hostState.chunk));
    auto* effect = state != nullptr ? findEffect(*state) : nullptr;
    if (effect == nullptr)
        return "the plug-in's state does not hold the effect";

    if (kind == PresetKind::full)
        applyFull(*effect, *presetNode, preset.pathText);
    else
        applyTape(*effect, *presetNode, preset.pathText);

    const auto sent = state->toString(juce::XmlElement::TextFormat().withoutHeader());
    juce::MemoryBlock changed;
    encodeState(sent, changed);
    const auto newState = hostState.with(changed);
    plugin.setStateInformation(newState.getData(), (int) newState.getSize());

    // A plug-in may apply a state later, on a message thread of its own; until
    // then it hands the chunk back unchanged. Wait, so that what comes next
    // (--set, rendering) meets the preset and not the state before it.
    const auto deadline = juce::Time::getMillisecondCounter() + 10000;
    for (;;)
    {
        juce::MemoryBlock now;
        plugin.getStateInformation(now);
        if (decodeState(HostState(now).chunk) != sent)
            break;
        if (juce::Time::getMillisecondCounter() > deadline)
            return "the plug-in did not take the preset's state";
        PluginHost::pumpMessages(2);
        juce::Thread::sleep(2);
    }
    PluginHost::pumpMessages(20); // parameter notifications of the new state
    return {};
}
} // namespace oxa::host
