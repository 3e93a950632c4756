#include "editor/WindowSettings.h"

#include "resources/SettingsStore.h"

namespace oxa::windowSettings
{
namespace
{
// Every instance of the product, in every host, shares this key.
const String& key()
{
    static const String text = SettingsStore::productKey(String("OXA"), String("Flux Deck"));
    return text;
}
} // namespace

bool readBool(const char* name, bool defaultValue)
{
    return SettingsStore(key()).readBool(name, defaultValue);
}

void writeBool(const char* name, bool value)
{
    SettingsStore(key()).writeBool(name, value);
}

float readFloat(const char* name, float defaultValue)
{
    return SettingsStore(key()).readFloat(name, defaultValue);
}

void writeFloat(const char* name, float value)
{
    SettingsStore(key()).writeFloat(name, value);
}
} // namespace oxa::windowSettings
