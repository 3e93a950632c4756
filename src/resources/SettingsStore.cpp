#include "resources/SettingsStore.h"

#include <cmath>
#include <cstdio>

namespace oxa
{
namespace
{
const char* const fileName = "settings.xml";
const char* const rootTag = "Settings";
const char* const valueTag = "Value";
const char* const intType = "int";
const char* const floatType = "float";
const char* const textType = "string";

// A settings file is a handful of short lines; anything far bigger is not ours.
constexpr juce::int64 largestReadableFile = 1 << 20;
constexpr int interProcessTimeoutMs = 2000;

// The inter-process lock is a file lock, which a process holds once for all
// its threads; this section keeps two threads of one process apart as well.
juce::CriticalSection& inProcessWriteLock()
{
    static juce::CriticalSection section;
    return section;
}

juce::File folderForKey(const juce::File& root, const String& keyText)
{
    juce::File folder = root;
    juce::StringArray parts;
    parts.addTokens(juce::String::fromUTF8(keyText.c_str()), "\\/", "");
    for (auto part : parts)
    {
        part = part.trim();
        // "." and ".." would climb out of the settings tree.
        if (part.isEmpty() || part == "." || part == "..")
            continue;
        folder = folder.getChildFile(juce::File::createLegalFileName(part));
    }
    return folder;
}

std::unique_ptr<juce::XmlElement> readDocument(const juce::File& file)
{
    if (!file.existsAsFile() || file.getSize() > largestReadableFile)
        return nullptr;
    auto document = juce::XmlDocument::parse(file);
    if (document == nullptr || !document->hasTagName(rootTag))
        return nullptr;
    return document;
}

juce::XmlElement* findValue(juce::XmlElement& document, const char* name)
{
    for (auto* child : document.getChildWithTagNameIterator(valueTag))
        if (child->getStringAttribute("name") == name)
            return child;
    return nullptr;
}

CheckedValue<long long> parseInteger(const juce::String& text)
{
    const auto trimmed = text.trim();
    if (trimmed.isEmpty() || !trimmed.containsOnly("-0123456789"))
        return {};
    const auto value = trimmed.getLargeIntValue();
    if (juce::String(value) != trimmed)
        return {}; // overflowed or a stray sign in the middle
    return value;
}
} // namespace

SettingsStore::SettingsStore(const String& keyText)
    : SettingsStore(keyText, juce::File::getSpecialLocation(juce::File::userApplicationDataDirectory))
{
}

SettingsStore::SettingsStore(const String& keyText, const juce::File& rootFolder)
    : keyText_(keyText), file_(folderForKey(rootFolder, keyText).getChildFile(fileName))
{
}

String SettingsStore::productKey(const String& company, const String& product)
{
    return String("SOFTWARE\\%1\\%2").arg(company).arg(product);
}

bool SettingsStore::readRaw(const char* name, juce::String& type, juce::String& text) const
{
    if (name == nullptr)
        return false;
    const auto document = readDocument(file_);
    if (document == nullptr)
        return false;
    const auto* value = findValue(*document, name);
    if (value == nullptr || !value->hasAttribute("value"))
        return false;
    type = value->getStringAttribute("type");
    text = value->getStringAttribute("value");
    return true;
}

void SettingsStore::writeRaw(const char* name, const juce::String& type, const juce::String& text)
{
    if (name == nullptr || *name == 0)
        return;
    bool written = false;
    {
        const juce::ScopedLock inProcess(inProcessWriteLock());
        juce::InterProcessLock processLock("FluxDeck.settings."
                                           + juce::String::toHexString(file_.getFullPathName().hashCode64()));
        if (!processLock.enter(interProcessTimeoutMs))
            return;

        // A corrupt file is replaced rather than left to block every later write.
        auto document = readDocument(file_);
        if (document == nullptr)
            document = std::make_unique<juce::XmlElement>(rootTag);

        auto* value = findValue(*document, name);
        if (value != nullptr && value->getStringAttribute("type") == type
            && value->getStringAttribute("value") == text)
        {
            processLock.exit();
            return;
        }
        if (value == nullptr)
        {
            value = document->createNewChildElement(valueTag);
            value->setAttribute("name", name);
        }
        value->setAttribute("type", type);
        value->setAttribute("value", text);

        // Written beside the target and moved over it, so that a reader in
        // another process sees the old file or the new one, never half of one.
        if (file_.getParentDirectory().createDirectory().wasOk())
        {
            juce::TemporaryFile temporary(file_);
            written = document->writeTo(temporary.getFile()) && temporary.overwriteTargetFileWithTemporary();
        }
        processLock.exit();
    }
    if (written)
        changed(String(name));
}

bool SettingsStore::readBool(const char* name, bool def) const
{
    return readInt(name, def ? 1 : 0) != 0;
}

void SettingsStore::writeBool(const char* name, bool v)
{
    writeInt(name, v ? 1 : 0);
}

int SettingsStore::readInt(const char* name, int def) const
{
    juce::String type, text;
    if (!readRaw(name, type, text) || type != intType)
        return def;
    const auto value = parseInteger(text);
    if (!value || *value < INT32_MIN || *value > INT32_MAX)
        return def;
    return static_cast<int>(*value);
}

void SettingsStore::writeInt(const char* name, int v)
{
    writeRaw(name, intType, juce::String(v));
}

float SettingsStore::readFloat(const char* name, float def) const
{
    juce::String type, text;
    if (!readRaw(name, type, text) || type != floatType)
        return def;
    const auto value = String(text.toStdString()).toFloat();
    if (!value || !std::isfinite(*value))
        return def;
    return *value;
}

void SettingsStore::writeFloat(const char* name, float v)
{
    if (!std::isfinite(v))
        return;
    char text[32];
    std::snprintf(text, sizeof(text), "%.9g", static_cast<double>(v));
    writeRaw(name, floatType, text);
}

String SettingsStore::readString(const char* name, const String& def) const
{
    juce::String type, text;
    if (!readRaw(name, type, text) || type != textType)
        return def;
    return String(text.toStdString());
}

void SettingsStore::writeString(const char* name, const String& v)
{
    writeRaw(name, textType, juce::String::fromUTF8(v.c_str(), static_cast<int>(v.length())));
}

} // namespace oxa
