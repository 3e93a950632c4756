#pragma once
// The window's per-user values ("ui.expanded", "ui.reel", "ui.reelTime"), shared by all
// instances through the user settings store.

namespace oxa::windowSettings
{
bool readBool(const char* name, bool defaultValue);
void writeBool(const char* name, bool value);
float readFloat(const char* name, float defaultValue);
void writeFloat(const char* name, float value);
} // namespace oxa::windowSettings
