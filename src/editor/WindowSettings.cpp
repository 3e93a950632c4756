#include "editor/WindowSettings.h"

#if __has_include("resources/SettingsStore.h")
#include "resources/SettingsStore.h"
#define OXA_HAS_SETTINGS_STORE 1
#endif

namespace oxa::windowSettings
{
#if OXA_HAS_SETTINGS_STORE
namespace
{
SettingsStore open()
{
    return SettingsStore(SettingsStore::productKey());
}
} // namespace

bool isPersistent()
{
    return true;
}
bool readBool(const char* name, bool defaultValue)
{
    return open().readBool(name, defaultValue);
}
void writeBool(const char* name, bool value)
{
    open().writeBool(name, value);
}
float readFloat(const char* name, float defaultValue)
{
    return open().readFloat(name, defaultValue);
}
void writeFloat(const char* name, float value)
{
    open().writeFloat(name, value);
}
#else
// Until the settings store is part of the build the window keeps its defaults.
bool isPersistent()
{
    return false;
}
bool readBool(const char*, bool defaultValue)
{
    return defaultValue;
}
void writeBool(const char*, bool) {}
float readFloat(const char*, float defaultValue)
{
    return defaultValue;
}
void writeFloat(const char*, float) {}
#endif
} // namespace oxa::windowSettings
