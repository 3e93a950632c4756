#pragma once
// Per-user key-value store shared by every instance and process of the
// plug-in. A key such as "SOFTWARE\OXA\Flux Deck" becomes a chain of folders
// below the user's configuration folder, holding one small XML file.
// Each read and each write opens the file afresh, so two instances never
// cache each other's values: the last writer wins.
// A read that fails gives the caller's default; a write that fails is dropped.
#include "element/Signal.h"
#include "element/String.h"

#include <juce_core/juce_core.h>

namespace oxa
{

class SettingsStore
{
public:
    explicit SettingsStore(const String& keyText);
    // The same key below another folder than the user's configuration folder
    // (tests, portable installs).
    SettingsStore(const String& keyText, const juce::File& rootFolder);

    // "SOFTWARE\<company>\<product>", the key every instance shares.
    static String productKey(const String& company, const String& product);

    const String& keyText() const { return keyText_; }
    // The file that holds this key's values (it may not exist yet).
    juce::File file() const { return file_; }

    bool readBool(const char* name, bool def) const;
    void writeBool(const char* name, bool v);
    int readInt(const char* name, int def) const;
    void writeInt(const char* name, int v);
    float readFloat(const char* name, float def) const;
    void writeFloat(const char* name, float v);
    String readString(const char* name, const String& def) const;
    void writeString(const char* name, const String& v);

    // Fired with a value's name after a write changed what the file holds.
    Signal<const String&> changed;

private:
    // The stored text and type word of a value; false when missing or unreadable.
    bool readRaw(const char* name, juce::String& type, juce::String& text) const;
    void writeRaw(const char* name, const juce::String& type, const juce::String& text);

    String keyText_;
    juce::File file_;
};

} // namespace oxa
