#include "engine/MidiControllers.h"

#include <cstring>

namespace oxa::MidiControllers
{
namespace
{
constexpr const char* sourcePrefix = "@MIDI CC ";

const char* const names[count] = {
    "Bank Select", "Modulation Wheel", "Breath Controller", "Undefined", "Foot Controller", "Portamento Time",
    "Data Entry", "Channel Volume", "Balance", "Undefined", "Pan", "Expression", "Effect Control 1",
    "Effect Control 2", "Undefined", "Undefined", "General Purpose 1", "General Purpose 2", "General Purpose 3",
    "General Purpose 4", "Undefined", "Undefined", "Undefined", "Undefined", "Undefined", "Undefined", "Undefined",
    "Undefined", "Undefined", "Undefined", "Undefined", "Undefined",
    // 32-63: the low bytes of 0-31
    "Bank Select LSB", "Modulation Wheel LSB", "Breath Controller LSB", "Undefined LSB", "Foot Controller LSB",
    "Portamento Time LSB", "Data Entry LSB", "Channel Volume LSB", "Balance LSB", "Undefined LSB", "Pan LSB",
    "Expression LSB", "Effect Control 1 LSB", "Effect Control 2 LSB", "Undefined LSB", "Undefined LSB",
    "General Purpose 1 LSB", "General Purpose 2 LSB", "General Purpose 3 LSB", "General Purpose 4 LSB",
    "Undefined LSB", "Undefined LSB", "Undefined LSB", "Undefined LSB", "Undefined LSB", "Undefined LSB",
    "Undefined LSB", "Undefined LSB", "Undefined LSB", "Undefined LSB", "Undefined LSB", "Undefined LSB",
    // 64-
    "Sustain Pedal", "Portamento On/Off", "Sostenuto", "Soft Pedal", "Legato Footswitch", "Hold 2",
    "Sound Variation", "Timbre/Harmonic Intensity", "Release Time", "Attack Time", "Brightness", "Decay Time",
    "Vibrato Rate", "Vibrato Depth", "Vibrato Delay", "Sound Controller 10", "General Purpose 5",
    "General Purpose 6", "General Purpose 7", "General Purpose 8", "Portamento Control", "Undefined", "Undefined",
    "Undefined", "High Resolution Velocity Prefix", "Undefined", "Undefined", "Reverb Send Level",
    "Tremolo Depth", "Chorus Send Level", "Celeste Depth", "Phaser Depth", "Data Increment", "Data Decrement",
    "NRPN LSB", "NRPN MSB", "RPN LSB", "RPN MSB", "Undefined", "Undefined", "Undefined", "Undefined", "Undefined",
    "Undefined", "Undefined", "Undefined", "Undefined", "Undefined", "Undefined", "Undefined", "Undefined",
    "Undefined", "Undefined", "Undefined", "Undefined", "Undefined",
    // 120-127: channel mode messages
    "All Sound Off", "Reset All Controllers", "Local Control", "All Notes Off", "Omni Mode Off", "Omni Mode On",
    "Mono Mode On", "Poly Mode On"};
} // namespace

String sourceFor(int number) { return String(sourcePrefix) + String::fromInt(number); }

bool isMidiSource(const String& source) { return source.startsWith(String("@MIDI")); }

int controllerOfSource(const String& source)
{
    const std::string& text = source.str();
    const size_t prefix = std::strlen(sourcePrefix);
    if (text.size() <= prefix || text.compare(0, prefix, sourcePrefix) != 0 || text.size() > prefix + 3)
        return -1;
    int number = 0;
    for (size_t i = prefix; i < text.size(); ++i)
    {
        if (text[i] < '0' || text[i] > '9')
            return -1;
        number = number * 10 + (text[i] - '0');
    }
    return number < count ? number : -1;
}

const char* standardName(int number) { return number >= 0 && number < count ? names[number] : "Undefined"; }

String listEntry(int number) { return String("MIDI CC %1 (%2)").arg(number).arg(String(standardName(number))); }

String bindingLabel(int number) { return number < 0 ? String("None") : String("MIDI CC %1").arg(number); }

bool isLearnable(int number) { return number >= 0 && number < 117; }
} // namespace oxa::MidiControllers
