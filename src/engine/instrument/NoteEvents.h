#pragma once
// Note messages of one block, kept with their sample offsets until the render reaches
// them, and the keys held down. Fixed size: nothing here allocates.

#include "engine/EngineEvent.h"

#include <array>
#include <cstdint>

namespace oxa
{
/** A note on with velocity 0 is a note off, as MIDI has it. */
inline bool isNoteOff(const EngineEvent& e)
{
    return e.type == EventType::noteOff || (e.type == EventType::noteOn && e.data2 == 0);
}
inline bool isNoteOn(const EngineEvent& e) { return e.type == EventType::noteOn && e.data2 != 0; }

struct NoteMessage
{
    uint64_t offset = 0;
    uint8_t note = 0;
    uint8_t velocity = 0; // 0: released
};

/** The block's note messages in order of arrival; read up to a sample as the render advances. */
class NoteQueue
{
public:
    /** Keeps note ons and offs; anything else, and what does not fit, is passed over. */
    void push(const EngineEvent& e)
    {
        if (count_ == messages_.size() || e.data1 > 127 || !(isNoteOn(e) || isNoteOff(e)))
            return;
        messages_[count_++] = { e.sampleOffset, (uint8_t) e.data1, (uint8_t) (isNoteOn(e) ? e.data2 : 0) };
    }

    /** The next message at or before sample `upTo`, or null. */
    const NoteMessage* next(uint64_t upTo)
    {
        if (read_ == count_ || messages_[read_].offset > upTo)
            return nullptr;
        return &messages_[read_++];
    }

    /** The block of `length` samples is over: what was not reached moves to the start
        of the next one. */
    void endBlock(uint64_t length)
    {
        uint32_t kept = 0;
        for (uint32_t i = read_; i < count_; ++i)
        {
            NoteMessage m = messages_[i];
            m.offset = m.offset > length ? m.offset - length : 0;
            messages_[kept++] = m;
        }
        count_ = kept;
        read_ = 0;
    }

private:
    std::array<NoteMessage, 256> messages_ {};
    uint32_t count_ = 0;
    uint32_t read_ = 0;
};

/** Keys held down, newest last: a one-voice instrument plays the newest. */
class HeldNotes
{
public:
    void press(uint8_t note)
    {
        release(note);
        if (count_ == notes_.size())
            release(notes_[0]);
        notes_[count_++] = note;
    }

    void release(uint8_t note)
    {
        uint32_t kept = 0;
        for (uint32_t i = 0; i < count_; ++i)
            if (notes_[i] != note)
                notes_[kept++] = notes_[i];
        count_ = kept;
    }

    bool empty() const { return count_ == 0; }
    uint8_t newest() const { return count_ > 0 ? notes_[count_ - 1] : 0; }
    void clear() { count_ = 0; }

private:
    std::array<uint8_t, 16> notes_ {};
    uint32_t count_ = 0;
};
} // namespace oxa
