#include "element/ParameterText.h"

#include "element/NoteLengths.h"
#include "element/ParameterMapper.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace oxa
{
namespace
{
bool isSyncType(int displayType)
{
    return displayType == 4 || displayType == 6 || displayType == 8;
}

std::string fixed(float value, int decimals)
{
    char buffer[64];
    std::snprintf(buffer, sizeof(buffer), "%.*f", decimals, (double) value);
    return buffer;
}

// floor(x + 0.5) as an int; NaN and out-of-range values cannot reach the cast.
int roundToInt(float x)
{
    const float r = std::floor(x + 0.5f);
    if (!(r > (float) INT_MIN))
        return r < 0.0f ? INT_MIN : 0;
    if (r >= (float) INT_MAX)
        return INT_MAX;
    return (int) r;
}

std::string secondsText(float v)
{
    const float a = std::fabs(v);
    if (a == 0.0f)
        return "0 s";
    if (a < 1e-5f)
        return fixed(v * 1e6f, 2) + " us";
    if (a < 0.0001f)
        return fixed(v * 1e6f, 1) + " us";
    if (a < 0.001f)
        return fixed(v * 1e6f, 0) + " us";
    if (a < 0.01f)
        return fixed(v * 1000.0f, 2) + " ms";
    if (a < 0.1f)
        return fixed(v * 1000.0f, 1) + " ms";
    if (a < 1.0f)
        return fixed(v * 1000.0f, 0) + " ms";
    return fixed(v, 2) + " s";
}

std::string millisecondsText(float v)
{
    const float a = std::fabs(v);
    if (a == 0.0f)
        return "0 ms";
    if (a < 0.01f)
        return fixed(v * 1000.0f, 2) + " us";
    if (a < 0.1f)
        return fixed(v * 1000.0f, 1) + " us";
    if (a < 1.0f)
        return fixed(v * 1000.0f, 0) + " us";
    if (a < 10.0f)
        return fixed(v, 2) + " ms";
    if (a < 100.0f)
        return fixed(v, 1) + " ms";
    if (a < 1000.0f)
        return fixed(v, 0) + " ms";
    return fixed(v * 0.001f, 2) + " s";
}

std::string gainText(float v)
{
    if (v <= 0.0f)
        return "-oo dB";
    const float db = v < 1e-20f ? -400.0f : std::log(v) * 8.685889f;
    return fixed(db, 2) + " dB";
}

std::string filterSideText(float v)
{
    if (v < 0.0f)
        return std::to_string(roundToInt(v * 127.0f) + 127) + " LPF";
    if (v > 0.0f)
        return std::to_string(roundToInt(v * 127.0f)) + " HPF";
    return "Off";
}

std::string panText(float v)
{
    if (v < 0.0f)
        return "Left " + fixed(v * -100.0f, 0);
    if (v == 0.0f)
        return "Center";
    return "Right " + fixed(v * 100.0f, 0);
}

// --- parsing helpers ------------------------------------------------------------------

std::string lowered(const std::string& text)
{
    std::string out = text;
    for (char& c : out)
        c = (char) std::tolower((unsigned char) c);
    return out;
}

std::string trimmed(const std::string& text)
{
    std::size_t begin = 0, end = text.size();
    while (begin < end && std::isspace((unsigned char) text[begin]))
        ++begin;
    while (end > begin && std::isspace((unsigned char) text[end - 1]))
        --end;
    return text.substr(begin, end - begin);
}

// Removes the first occurrence of word; exact case or any case.
bool cutWord(std::string& text, const char* word, bool exactCase)
{
    const std::string w = word;
    const std::size_t at = exactCase ? text.find(w) : lowered(text).find(lowered(w));
    if (at == std::string::npos)
        return false;
    text.erase(at, w.size());
    return true;
}

// Whole-text decimal number with surrounding spaces allowed. On failure value keeps
// whatever prefix did parse (0 when none).
bool parseNumber(const std::string& text, float& value)
{
    const std::string body = trimmed(text);
    const char* begin = body.c_str();
    char* end = nullptr;
    value = std::strtof(begin, &end);
    return end != begin && *end == '\0';
}

constexpr float stepOf127 = 0.007874016f;

bool parseSeconds(float min, float max, std::string text, float& value)
{
    if (cutWord(text, "ms", true))
    {
        if (!parseNumber(text, value))
            return false;
        value *= 0.001f;
        return true;
    }
    if (cutWord(text, "s", true))
        return parseNumber(text, value);
    if (!parseNumber(text, value))
        return false;
    // A bare number below 1000 on a range of up to one second is taken as milliseconds.
    const bool keep = min <= max && (max > 1.0f || value >= 1000.0f);
    if (!keep)
        value *= 0.001f;
    return true;
}

bool parseMilliseconds(std::string text, float& value)
{
    if (cutWord(text, "ms", true))
        return parseNumber(text, value);
    if (cutWord(text, "s", true))
    {
        if (!parseNumber(text, value))
            return false;
        value *= 1000.0f;
        return true;
    }
    return parseNumber(text, value);
}

bool parseHertz(float min, float max, std::string text, float& value)
{
    if (cutWord(text, "kHz", false))
    {
        if (!parseNumber(text, value))
            return false;
        value *= 1000.0f;
        return true;
    }
    if (cutWord(text, "Hz", false))
        return parseNumber(text, value);
    if (!parseNumber(text, value))
        return false;
    if (min <= max)
    {
        // A bare number under the range is read as kilohertz.
        if (value < min)
            value *= 1000.0f;
        if (value > max)
            return false;
    }
    return true;
}

bool parseFilterSide(std::string text, float& value)
{
    if (lowered(trimmed(text)) == "off")
    {
        value = 0.0f;
        return true;
    }
    if (cutWord(text, "HPF", false))
    {
        if (!parseNumber(text, value))
            return false;
        value *= stepOf127;
        return true;
    }
    if (cutWord(text, "LPF", false))
    {
        if (!parseNumber(text, value))
            return false;
        value = (value - 127.0f) * stepOf127;
        return true;
    }
    if (!parseNumber(text, value))
        return false;
    if (value < 0.0f)
        value -= 127.0f;
    value *= stepOf127;
    return true;
}

bool parsePan(std::string text, float& value)
{
    if (cutWord(text, "Left", false))
    {
        if (!parseNumber(text, value))
            return false;
        value *= -0.01f;
        return true;
    }
    if (cutWord(text, "Right", false))
    {
        if (!parseNumber(text, value))
            return false;
        value *= 0.01f;
        return true;
    }
    if (cutWord(text, "Center", false))
    {
        value = 0.0f;
        return true;
    }
    if (!parseNumber(text, value))
        return false;
    if (std::fabs(value) >= 1.0f)
        value *= 0.01f;
    return true;
}

bool parseSemitones(std::string text, float& value)
{
    if (cutWord(text, "Semitones", false))
        return parseNumber(text, value);
    if (cutWord(text, "Cents", false))
    {
        if (!parseNumber(text, value))
            return false;
        value *= 0.01f;
        return true;
    }
    return parseNumber(text, value);
}

bool parseScaled(std::string text, const char* word, float factor, float& value)
{
    cutWord(text, word, false);
    if (!parseNumber(text, value))
        return false;
    value *= factor;
    return true;
}
} // namespace

// --- float ----------------------------------------------------------------------------

std::string formatFloatValue(int displayType, float min, float max, float value, bool synced)
{
    if (synced && isSyncType(displayType))
        return noteText(noteIndexOfLength(value));

    const float v = value;
    switch (displayType)
    {
        case 1: return fixed(v, 2) + "%";
        case 2: return fixed(v * 100.0f, 2) + "%";
        case 3:
        case 4: return secondsText(v);
        case 5:
        case 6: return millisecondsText(v);
        case 7:
        case 8:
            return std::fabs(v) >= 1000.0f ? fixed(v * 0.001f, 2) + " kHz" : fixed(v, 2) + " Hz";
        case 9: return fixed(v, 2) + " dB";
        case 10: return filterSideText(v);
        case 11: return gainText(v);
        case 12: return panText(v);
        case 13: return fixed(v, 2) + " MB";
        case 14:
            return std::fabs(v) >= 1.0f ? fixed(v, 2) + " Semitones" : fixed(v * 100.0f, 2) + " Cents";
        case 15:
        {
            const bool pastSemitone = max > 100.0f || min < -100.0f;
            if (std::fabs(v) >= 100.0f && pastSemitone)
                return fixed(v * 0.01f, 2) + " Semitones";
            return fixed(v, 2) + " Cents";
        }
        default: return fixed(v, 2);
    }
}

bool parseFloatText(int displayType, float min, float max, const std::string& text, bool synced, float& value)
{
    if (synced && isSyncType(displayType))
    {
        // Synced entry answers with the table index, not the note length.
        const int index = noteIndexOfText(text.c_str());
        if (index < 0)
            return false;
        value = (float) index;
        return true;
    }

    switch (displayType)
    {
        case 1: return parseScaled(text, "%", 1.0f, value);
        case 2: return parseScaled(text, "%", 0.01f, value);
        case 3:
        case 4: return parseSeconds(min, max, text, value);
        case 5:
        case 6: return parseMilliseconds(text, value);
        case 7:
        case 8: return parseHertz(min, max, text, value);
        case 9: return parseScaled(text, "dB", 1.0f, value);
        case 11:
            if (!parseScaled(text, "dB", 1.0f, value))
                return false;
            value = std::exp(value * 0.115129255f);
            return true;
        case 10: return parseFilterSide(text, value);
        case 12: return parsePan(text, value);
        case 14: return parseSemitones(text, value);
        default: return parseNumber(text, value);
    }
}

// --- int and bool ---------------------------------------------------------------------

std::string formatIntValue(int displayType, int value)
{
    static const char* const noteNames[12] = {"C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B"};
    const std::string v = std::to_string(value);
    switch (displayType)
    {
        case 1: return v + "%";
        case 3: return v + " s";
        case 5: return value >= 1000 ? fixed((float) value * 0.001f, 2) + " s" : v + " ms";
        case 7: return value >= 1000 ? fixed((float) value * 0.001f, 2) + " kHz" : v + " Hz";
        case 14: return v + " Semitones";
        case 15: return v + " Cents";
        case 16: return std::string(noteNames[(value % 12 + 12) % 12]) + std::to_string(value / 12 - 2);
        default: return v;
    }
}

bool parseIntText(const std::string& text, int& value)
{
    const std::string body = trimmed(text);
    const char* begin = body.c_str();
    char* end = nullptr;
    errno = 0;
    const long parsed = std::strtol(begin, &end, 10);
    if (end == begin || *end != '\0' || errno == ERANGE || parsed < INT_MIN || parsed > INT_MAX)
        return false;
    value = (int) parsed;
    return true;
}

// --- String forms for descriptions ----------------------------------------------------

String floatValueToText(int displayType, float min, float max, float value, const Element* owner)
{
    const bool synced = isSyncType(displayType) && syncsToHost(owner);
    return String(formatFloatValue(displayType, min, max, value, synced));
}

bool floatTextToValue(int displayType, float min, float max, const String& text, const Element* owner,
                      float& value)
{
    const bool synced = isSyncType(displayType) && syncsToHost(owner);
    return parseFloatText(displayType, min, max, text.str(), synced, value);
}

String intValueToText(int displayType, int value)
{
    return String(formatIntValue(displayType, value));
}

bool intTextToValue(const String& text, int& value)
{
    return parseIntText(text.str(), value);
}
} // namespace oxa
