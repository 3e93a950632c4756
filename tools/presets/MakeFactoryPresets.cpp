// flux-deck-presets: writes the factory preset files from FactoryPresetTable.h.
//
//   flux-deck-presets <resource folder>
//
// Each preset starts from a fresh effect (every parameter at its default) and
// takes the settings its table row names, so the files hold every attribute in
// the effect's own order and number format. Files get CRLF line ends.
#include "FactoryPresetTable.h"

#include "element/ElementPersistence.h"
#include "resources/presets/PresetBank.h"
#include "tape/FluxDeckProcessor.h"

#include <juce_events/juce_events.h>
#include <tinyxml2.h>

#include <iostream>
#include <set>

namespace
{
using namespace oxa;

// Attributes of the older module that tape files carry and this effect ignores.
const char* const legacyTapeAttributes[][2] = {
    {"SpeakerMix", "0"}, {"SampleGain", "0"}, {"SamplePath", ""}, {"SpeakerPath", ""}, {"SampleMode", "0"},
    {"Cutoff", "1"},     {"ApplyGate", "0"},  {"ApplyTexture", "0"}, {"ApplySpeaker", "0"}, {"SpeakerGain", "0"},
    {"Amount", "1"}};

bool applySettings(Element& effect, const char* settings, std::string& error)
{
    juce::StringArray pairs;
    pairs.addTokens(settings, " \t\n", "\"");
    for (auto pair : pairs)
    {
        pair = pair.trim();
        if (pair.isEmpty())
            continue;
        const auto name = pair.upToFirstOccurrenceOf("=", false, false);
        const auto text = pair.fromFirstOccurrenceOf("=", false, false);
        const uint32_t id = effect.parameterId(name.toRawUTF8());
        const ParameterInfoBase* info = id != 0 ? effect.findInfo(id) : nullptr;
        if (info == nullptr || !pair.contains("=") || !text.containsOnly("-+.0123456789eE"))
        {
            error = "bad setting \"" + pair.toStdString() + "\"";
            return false;
        }
        switch (info->kind())
        {
        case ParameterKind::Float: effect.setFloatParameter(id, text.getFloatValue()); break;
        case ParameterKind::Int: effect.setIntParameter(id, text.getIntValue()); break;
        case ParameterKind::Bool: effect.setBoolParameter(id, text.getIntValue() > 0); break;
        default: error = "cannot set " + name.toStdString(); return false;
        }
    }
    return true;
}

bool writeCrlf(const tinyxml2::XMLDocument& document, const juce::File& file)
{
    tinyxml2::XMLPrinter printer;
    document.Print(&printer);
    const juce::String text = juce::String::fromUTF8(printer.CStr()).replace("\r\n", "\n").replace("\n", "\r\n");
    return file.getParentDirectory().createDirectory().wasOk() && file.replaceWithText(text, false, false, nullptr);
}

// The effect's saved node under a "ModulePreset" root, naming where it lies in the archive.
tinyxml2::XMLElement* saveInto(tinyxml2::XMLDocument& document, Element& effect, const char* key,
                               const std::string& archivePath)
{
    auto* root = document.NewElement(PresetBank::rootTag);
    document.InsertEndChild(root);
    SaveOptions options;
    auto* node = effect.saveXml(root, options);
    auto* properties = node->FirstChildElement("Properties");
    if (properties == nullptr)
        properties = node->InsertNewChildElement("Properties");
    properties->SetAttribute(key, archivePath.c_str());
    return node;
}

// Keeps the name, the tape table's attributes and the version; adds the old module's extras.
void reduceToTape(tinyxml2::XMLElement& node)
{
    std::set<std::string> kept{"Name", "FluxDeckVersion"};
    for (const char* name : TapePresetBank::tapeParameterNames())
        kept.insert(name);
    std::vector<std::string> dropped;
    for (const auto* a = node.FirstAttribute(); a != nullptr; a = a->Next())
        if (kept.count(a->Name()) == 0)
            dropped.emplace_back(a->Name());
    for (const auto& name : dropped)
        node.DeleteAttribute(name.c_str());
    // The version goes last, after the extras, as an older writer would have put it.
    const std::string version = node.Attribute("FluxDeckVersion");
    node.DeleteAttribute("FluxDeckVersion");
    for (const auto& [name, value] : legacyTapeAttributes)
        node.SetAttribute(name, value);
    node.SetAttribute("FluxDeckVersion", version.c_str());
}

int writeAll(const juce::File& resourceFolder)
{
    FluxDeckProcessor::registerType();
    int written = 0;
    auto make = [&](const char* folder, const char* name, const char* settings, bool isTape) {
        auto effect = std::make_shared<FluxDeckProcessor>(String("FluxDeck"));
        std::string error;
        if (!applySettings(*effect, settings, error))
        {
            std::cerr << name << ": " << error << "\n";
            return false;
        }
        const std::string relative = std::string(folder) + "/" + name + PresetBank::extension;
        tinyxml2::XMLDocument document;
        auto* node = saveInto(document, *effect, isTape ? "TapePresetPath" : "PresetPath",
                              "$Resource/resource/" + relative);
        if (isTape)
            reduceToTape(*node);
        const auto file = resourceFolder.getChildFile(juce::String(relative));
        if (!writeCrlf(document, file))
        {
            std::cerr << "cannot write " << file.getFullPathName() << "\n";
            return false;
        }
        ++written;
        return true;
    };

    for (const auto& preset : factory::fullPresets)
        if (!make((std::string("presets/") + preset.bank).c_str(), preset.name, preset.settings, false))
            return 1;
    for (const auto& preset : factory::tapePresets)
        if (!make("tapepresets", preset.name, preset.settings, true))
            return 1;
    std::cout << "wrote " << written << " presets below " << resourceFolder.getFullPathName() << "\n";
    return 0;
}
} // namespace

int main(int argc, char* argv[])
{
    if (argc != 2)
    {
        std::cerr << "usage: flux-deck-presets <resource folder>\n";
        return 2;
    }
    juce::ScopedJuceInitialiser_GUI juceRuntime;
    return writeAll(juce::File::getCurrentWorkingDirectory().getChildFile(argv[1]));
}
