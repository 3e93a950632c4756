#include "element/NoteLengths.h"

#include <cmath>
#include <cstring>

namespace oxa
{
namespace
{
struct NoteRow
{
    const char* text;
    float length;
};

constexpr NoteRow noteRows[noteCount] = {
    {"32x", 128.0f},          {"16x", 64.0f},          {"8x", 32.0f},
    {"7x", 28.0f},            {"6x", 24.0f},           {"5x", 20.0f},
    {"4x", 16.0f},            {"3x", 12.0f},           {"2x", 8.0f},
    {"1/1 dot", 6.0f},        {"1/1", 4.0f},           {"1/2 dot", 3.0f},
    {"1/1 tri", 2.6666667f},  {"1/2", 2.0f},           {"1/4 dot", 1.5f},
    {"1/2 tri", 1.3333334f},  {"1/4", 1.0f},           {"1/8 dot", 0.75f},
    {"1/4 tri", 0.6666667f},  {"1/8", 0.5f},           {"1/16 dot", 0.375f},
    {"1/8 tri", 0.33333334f}, {"1/16", 0.25f},         {"1/32 dot", 0.1875f},
    {"1/16 tri", 0.16666667f}, {"1/32", 0.125f},       {"1/64 dot", 0.09375f},
    {"1/32 tri", 0.083333336f}, {"1/64", 0.0625f},     {"1/64 tri", 0.041666668f},
};

// Lengths reachable when a free rate is switched to sync, with their own thresholds.
// They are not all "length less 0.0001": the triplet rows are set slightly apart.
struct SyncThreshold
{
    float length;
    float threshold;
};

constexpr SyncThreshold syncThresholds[] = {
    {128.0f, 127.9999f},          {64.0f, 63.9999f},          {32.0f, 31.9999f},
    {28.0f, 27.9999f},            {24.0f, 23.9999f},          {20.0f, 19.9999f},
    {16.0f, 15.9999f},            {12.0f, 11.9999f},          {8.0f, 7.9999f},
    {6.0f, 5.9999f},              {4.0f, 3.9999f},            {3.0f, 2.9999f},
    {2.6666667f, 2.6665668f},     {2.0f, 1.9999f},            {1.5f, 1.4999f},
    {1.3333334f, 1.3332334f},     {1.0f, 0.9999f},            {0.75f, 0.7499f},
    {0.6666667f, 0.66656667f},    {0.5f, 0.4999f},            {0.375f, 0.3749f},
    {0.33333334f, 0.33323336f},   {0.25f, 0.2499f},           {0.1875f, 0.1874f},
    {0.16666667f, 0.16656667f},   {0.125f, 0.1249f},          {0.09375f, 0.09365f},
    {0.083333336f, 0.083233334f}, {0.0625f, 0.0624f},
};

constexpr float shortestSyncLength = 0.041666668f;
} // namespace

float noteLength(int index)
{
    return index >= 0 && index < noteCount ? noteRows[index].length : 0.0f;
}

const char* noteText(int index)
{
    return index >= 0 && index < noteCount ? noteRows[index].text : "";
}

int noteIndexOfLength(float beats)
{
    for (int i = 0; i < lastNoteIndex; ++i)
        if (beats >= noteRows[i].length - 0.0001f)
            return i;
    return lastNoteIndex;
}

int noteIndexOfNormalised(float normalised)
{
    const float step = std::floor(normalised * (float) lastNoteIndex + 0.5f);
    if (!(step > 0.0f)) // also catches NaN
        return 0;
    if (step >= (float) lastNoteIndex)
        return lastNoteIndex;
    return (int) step;
}

float noteNormalisedOfIndex(int index)
{
    return (float) index * 0.03448276f;
}

int noteIndexOfText(const char* name)
{
    if (name == nullptr)
        return -1;
    for (int i = 0; i < noteCount; ++i)
        if (std::strcmp(name, noteRows[i].text) == 0)
            return i;
    return -1;
}

float nearestNoteLengthBelow(float beats)
{
    for (const auto& row : syncThresholds)
        if (beats >= row.threshold)
            return row.length;
    return shortestSyncLength;
}
} // namespace oxa
