#pragma once
// One timed event of a block: MIDI, a parameter write, or a transport command.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace oxa
{
class Element;

namespace EventType
{
    constexpr uint32_t noteOff = 128;
    constexpr uint32_t noteOn = 144;
    constexpr uint32_t aftertouch = 160;
    constexpr uint32_t controller = 176;
    constexpr uint32_t programChange = 192;
    constexpr uint32_t channelPressure = 208;
    constexpr uint32_t pitchWheel = 224;
    constexpr uint32_t setInt = 1;
    constexpr uint32_t setBool = 2;
    constexpr uint32_t setFloat = 267;
    constexpr uint32_t transportStart = 260;
    constexpr uint32_t transportStop = 261;
    constexpr uint32_t transportRecord = 262;
    constexpr uint32_t transportRecordOff = 263;
    constexpr uint32_t transportLocate = 264;
} // namespace EventType

struct EngineEvent
{
    uint32_t type = 0;
    uint64_t sampleOffset = 0;
    uint64_t sequence = 0;
    uint32_t port = 0;
    int32_t channel = 0;
    int32_t noteId = -1;
    uint32_t data1 = 0;
    uint32_t data2 = 0;
    float gain = 1.0f;          // expression values: only instrument voices read them
    float position = 0.0f;      // quarter notes, for a locate
    Element* target = nullptr;  // addressee of a parameter write; null means any element
    union
    {
        float floatValue;
        int32_t intValue;
        uint8_t boolValue;
    } value { 0.0f };
};

/** Events of one block, kept in order of sample offset before rendering. */
class EventList
{
public:
    void reserve(size_t n) { events.reserve(n); }
    void push_back(const EngineEvent& e) { events.push_back(e); }
    void clear() { events.clear(); }
    size_t size() const { return events.size(); }
    size_t capacity() const { return events.capacity(); }
    bool empty() const { return events.empty(); }
    EngineEvent& operator[](size_t i) { return events[i]; }
    const EngineEvent& operator[](size_t i) const { return events[i]; }
    std::vector<EngineEvent>::iterator begin() { return events.begin(); }
    std::vector<EngineEvent>::iterator end() { return events.end(); }
    std::vector<EngineEvent>::const_iterator begin() const { return events.begin(); }
    std::vector<EngineEvent>::const_iterator end() const { return events.end(); }

    /** Stable insertion sort by sample offset: allocation free, and blocks hold few events. */
    void sortByOffset();

private:
    std::vector<EngineEvent> events;
};
} // namespace oxa
