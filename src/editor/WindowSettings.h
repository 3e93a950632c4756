#pragma once
// The window's per-user values ("ui.expanded", "ui.reel", "ui.reelTime"), shared by all
// instances through the user settings store.

namespace oxa::windowSettings
{
bool readBool(const char* name, bool defaultValue);
void writeBool(const char* name, bool value);
float readFloat(const char* name, float defaultValue);
void writeFloat(const char* name, float value);

// Puts the user's window values back when it goes out of scope: for programs that open
// windows on the user's behalf (pictures, tests), which would otherwise leave them changed.
struct KeptAsTheUserLeftThem
{
    bool expanded = readBool("ui.expanded", false);
    bool reelRunning = readBool("ui.reel", false);
    float reelTime = readFloat("ui.reelTime", 0.0f);
    ~KeptAsTheUserLeftThem()
    {
        writeBool("ui.expanded", expanded);
        writeBool("ui.reel", reelRunning);
        writeFloat("ui.reelTime", reelTime);
    }
};
} // namespace oxa::windowSettings
