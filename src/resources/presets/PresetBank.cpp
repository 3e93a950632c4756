#include "resources/presets/PresetBank.h"

#include "element/Element.h"
#include "element/ElementFactory.h"
#include "element/ElementPersistence.h"
#include "element/LegacyScales.h"
#include "element/ParameterDescription.h"
#include "resources/UserFolders.h"
#include "resources/Volume.h"

#include <tinyxml2.h>

#include <algorithm>
#include <cstring>
#include <cmath>
#include <mutex>
#include <set>

namespace oxa
{
namespace
{
const char* const tapePropertyKey = "TapePresetPath";
const char* const fullPropertyKey = "PresetPath";

// How one apply treats the values it reads.
struct ApplyRules
{
    bool boolsFirst = false;    // two passes, so that "SyncToHost" is known before the values it governs
    bool syncException = false; // a tempo-synced value may lie outside its range
    const std::set<uint32_t>* only = nullptr; // null: every parameter
};

bool readFloat(const tinyxml2::XMLElement& node, const char* name, float& value)
{
    float parsed = 0.0f;
    if (node.QueryFloatAttribute(name, &parsed) != tinyxml2::XML_SUCCESS || !std::isfinite(parsed))
        return false;
    value = parsed;
    return true;
}

void applyOne(Element& element, const ParameterInfoBase& record, const tinyxml2::XMLElement& node, int version,
              const ApplyRules& rules, uint32_t syncId)
{
    const char* attribute = record.name().c_str();
    const uint32_t id = record.id();
    const bool synced = rules.syncException && syncId != 0 && element.boolParameter(syncId);
    switch (record.kind())
    {
    case ParameterKind::Float:
    {
        const auto& d = static_cast<const ParameterDescription<float>&>(*record.description());
        float value = d.defaultValue;
        if (readFloat(node, attribute, value))
        {
            if (d.hasRange() && !(synced && isSyncDisplayType(d.displayType)))
                value = std::fmin(std::fmax(value, d.min), d.max);
            value = LegacyScales::toCurrent(attribute, value, version);
        }
        element.setFloatParameter(id, value);
        break;
    }
    case ParameterKind::Int:
    {
        const auto& d = static_cast<const ParameterDescription<int>&>(*record.description());
        int value = d.defaultValue;
        if (node.QueryIntAttribute(attribute, &value) != tinyxml2::XML_SUCCESS)
            value = d.defaultValue;
        else if (d.hasRange() && !(synced && isSyncDisplayType(d.displayType)))
            value = std::clamp(value, d.min, d.max);
        element.setIntParameter(id, value);
        break;
    }
    case ParameterKind::Bool:
    {
        const auto& d = static_cast<const ParameterDescription<bool>&>(*record.description());
        int parsed = 0;
        const bool given = node.QueryIntAttribute(attribute, &parsed) == tinyxml2::XML_SUCCESS;
        element.setBoolParameter(id, given ? parsed > 0 : d.defaultValue);
        break;
    }
    default:
        break; // texts and other kinds are not part of a preset's sound
    }
}

// Writes the node's values into the element's parameters, leaving outputs,
// transient and locked parameters alone. The caller holds the tree lock.
void applyValues(Element& element, const tinyxml2::XMLElement& node, int version, const ApplyRules& rules)
{
    const uint32_t syncId = element.parameterId("SyncToHost");
    const int passes = rules.boolsFirst ? 2 : 1;
    for (int pass = 0; pass < passes; ++pass)
        for (const auto& record : element.parameters())
        {
            const bool isBool = record->kind() == ParameterKind::Bool;
            if (rules.boolsFirst && (pass == 0) != isBool)
                continue;
            if (rules.only != nullptr && rules.only->count(record->id()) == 0)
                continue;
            const ParameterFlags& flags = record->flags();
            if (!flags.isPersistent() || flags.isOutput() || element.isParameterLocked(record->id()))
                continue;
            applyOne(element, *record, node, version, rules, syncId);
        }
}

bool hasExtension(const Path& path)
{
    return juce::String(path.fileName()).endsWithIgnoreCase(PresetBank::extension);
}

// Children of a folder, folders and files alike, in name order.
void collectPresets(const Path& folder, std::vector<Path>& found, int depth)
{
    constexpr int deepestFolder = 8; // a link loop must not walk for ever
    if (depth > deepestFolder)
        return;
    std::vector<Path> entries;
    folder.list(entries);
    std::sort(entries.begin(), entries.end(), [](const Path& a, const Path& b) {
        const juce::String nameA(a.fileName()), nameB(b.fileName());
        const int byName = nameA.compareNatural(nameB);
        return byName != 0 ? byName < 0 : a.str() < b.str();
    });
    for (const Path& entry : entries)
    {
        const FileInfo info = entry.info();
        if (info.isFolder)
            collectPresets(entry, found, depth + 1);
        else if (hasExtension(entry))
            found.push_back(entry);
    }
}
} // namespace

// ---------------------------------------------------------------------------

PresetBank::PresetBank(const String& key, const Path& factory, const Path& user)
    : propertyKey(key), factoryRoot(factory), userRoot(user)
{
}

PresetBank::~PresetBank() = default;

void PresetBank::bind(const std::shared_ptr<Element>& element)
{
    element_ = element;
}

bool PresetBank::tagMatches(const Element& element, const tinyxml2::XMLElement& node)
{
    // The factory's alias table holds nothing for this effect's tag.
    return element.typeName().text() == node.Name();
}

bool PresetBank::loadPreset(const Path& path)
{
    const std::shared_ptr<Element> bound = element();
    if (bound == nullptr)
        return false;
    auto document = makeXmlDocument();
    if (!readXmlFile(*document, path))
        return false;
    tinyxml2::XMLElement* root = document->RootElement();
    if (root == nullptr || std::strcmp(root->Name(), rootTag) != 0)
        return false;
    tinyxml2::XMLElement* child = root->FirstChildElement();
    if (child == nullptr)
        return false;
    int version = 0;
    if (child->QueryIntAttribute((bound->typeName().text() + "Version").c_str(), &version) != tinyxml2::XML_SUCCESS)
        version = 0;
    return applyPreset(*bound, *child, version, path);
}

bool PresetBank::loadDefaults()
{
    const std::shared_ptr<Element> bound = element();
    if (bound == nullptr)
        return false;
    const std::shared_ptr<Element> fresh = ElementFactory::instance().create(bound->typeName().text());
    if (fresh == nullptr)
        return false;
    auto document = makeXmlDocument();
    tinyxml2::XMLElement* root = document->NewElement("Module");
    document->InsertEndChild(root);
    SaveOptions options;
    tinyxml2::XMLElement* node = fresh->saveXml(root, options);
    if (node == nullptr)
        return false;
    int version = 0;
    if (node->QueryIntAttribute((bound->typeName().text() + "Version").c_str(), &version) != tinyxml2::XML_SUCCESS)
        version = 0;
    return applyPreset(*bound, *node, version, Path());
}

bool PresetBank::savePreset(const Path& chosen)
{
    const std::shared_ptr<Element> bound = element();
    if (bound == nullptr || chosen.isEmpty())
        return false;
    if (!userRoot.isEmpty() && !userRoot.exists())
        userRoot.createFolders();

    const Path target = hasExtension(chosen) ? chosen : Path(chosen.str() + extension);
    auto document = makeXmlDocument();
    tinyxml2::XMLElement* root = document->NewElement(rootTag);
    document->InsertEndChild(root);
    SaveOptions options;
    options.documentPath = target;
    options.documentFolder = target.parent();
    options.relativePaths = true;
    tinyxml2::XMLElement* node = nullptr;
    {
        const std::lock_guard<std::recursive_mutex> tree(bound->lock());
        node = bound->saveXml(root, options);
    }
    if (node == nullptr)
        return false;

    // The file names itself, as the property will once the write succeeded, so
    // that saving again after a reload writes the same bytes.
    tinyxml2::XMLElement* properties = node->FirstChildElement("Properties");
    if (properties == nullptr)
        properties = node->InsertNewChildElement("Properties");
    properties->SetAttribute(propertyKey.c_str(), target.str().c_str());

    if (!writeXmlFile(*document, target))
        return false;
    bound->setProperty(propertyKey, ElementProperty(String(target.str()), true));
    if (clearsModifiedOnSave_)
        bound->clearModified();
    return true;
}

std::vector<Path> PresetBank::listPresets() const
{
    std::vector<Path> found;
    collectPresets(factoryRoot, found, 0);
    collectPresets(userRoot, found, 0);
    return found;
}

Path PresetBank::stepFrom(const Path& current, int step) const
{
    const std::vector<Path> all = listPresets();
    if (all.empty())
        return {};
    const auto count = static_cast<long>(all.size());
    const auto at = std::find(all.begin(), all.end(), current);
    if (at == all.end())
        return step < 0 ? all.back() : all.front();
    long index = (static_cast<long>(at - all.begin()) + step) % count;
    if (index < 0)
        index += count;
    return all[static_cast<std::size_t>(index)];
}

Path PresetBank::currentPreset() const
{
    const std::shared_ptr<Element> bound = element();
    if (bound == nullptr || !bound->hasProperty(propertyKey))
        return {};
    return Path(bound->property(propertyKey).value.str());
}

// ---------------------------------------------------------------------------

FullPresetBank::FullPresetBank(const Path& factory, const Path& user) : PresetBank(fullPropertyKey, factory, user) {}

FullPresetBank::FullPresetBank() : FullPresetBank(Path("$Resource/resource/presets"), userPresetFolder()) {}

bool FullPresetBank::applyPreset(Element& element, tinyxml2::XMLElement& node, int version, const Path& path)
{
    // A preset neither renames the effect nor switches its bypass.
    node.SetAttribute("Name", element.name().text().c_str());
    const uint32_t bypassId = element.parameterId("Bypass");
    if (bypassId != 0)
        node.SetAttribute("Bypass", element.boolParameter(bypassId) ? "1" : "0");
    if (!tagMatches(element, node))
        return false;

    const std::lock_guard<std::recursive_mutex> tree(element.lock());
    ApplyRules rules;
    rules.boolsFirst = true;
    rules.syncException = true;
    applyValues(element, node, version, rules);
    element.valuesReplaced();
    element.setProperty(propertyKey, ElementProperty(String(path.str()), true));
    element.removeProperty(tapePropertyKey);
    element.clearModified();
    return true;
}

// ---------------------------------------------------------------------------

TapePresetBank::TapePresetBank(const Path& factory, const Path& user) : PresetBank(tapePropertyKey, factory, user) {}

TapePresetBank::TapePresetBank() : TapePresetBank(Path("$Resource/resource/tapepresets"), tapeUserPresetFolder()) {}

const std::vector<const char*>& TapePresetBank::tapeParameterNames()
{
    static const std::vector<const char*> names = {
        "ApplyRecordHead", "MagneticHardness", "Hysteresis", "DegradeDepth", "DegradeRate", "NoiseGain",
        "ApplyPlayheadFilter", "Spacing", "Thickness", "Azimuth", "TrackWidthRatio", "Speed", "ApplyTransport",
        "WowMod", "WowRate", "FlutterMod", "FlutterRate", "NoiseSync", "NoiseMod", "NoiseRate", "ApplyCompander",
        "NoiseReductionEncoder", "NoiseReductionDecoder", "NRLink", "OutputPad", "ApplyLowLatency"};
    return names;
}

bool TapePresetBank::applyPreset(Element& element, tinyxml2::XMLElement& node, int version, const Path& path)
{
    // Parameter ids are the same for every element of a type, so one table serves all banks.
    static std::set<uint32_t> tapeIds;
    static std::once_flag filled;
    std::call_once(filled, [&element] {
        for (const char* name : tapeParameterNames())
            if (const uint32_t id = element.parameterId(name); id != 0)
                tapeIds.insert(id);
    });
    if (!tagMatches(element, node))
        return false;

    const std::lock_guard<std::recursive_mutex> tree(element.lock());
    ApplyRules rules;
    rules.only = &tapeIds;
    applyValues(element, node, version, rules);
    element.valuesReplaced();
    element.setProperty(propertyKey, ElementProperty(String(path.str()), true));
    element.clearModified();
    return true;
}

// ---------------------------------------------------------------------------

const std::vector<const char*>& lockableParameterNames()
{
    static const std::vector<const char*> names = {"Mix", "InputGain", "OutputGain", "Drive", "ApplyLowLatency"};
    return names;
}

void unlockAll(Element& element)
{
    for (const char* name : lockableParameterNames())
        if (const uint32_t id = element.parameterId(name); id != 0)
            element.setParameterLocked(id, false);
}

} // namespace oxa
