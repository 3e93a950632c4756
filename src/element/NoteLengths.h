#pragma once
// Tempo-synced note values. A synced parameter stores a note length in beats
// (quarter notes); its normalised form is an index into this table, longest first.

namespace oxa
{
constexpr int noteCount = 30;
constexpr int lastNoteIndex = noteCount - 1;

/** Length in beats of the note at index; 0 for an index outside the table. */
float noteLength(int index);

/** Display name of the note at index ("1/8 dot"); empty for an index outside the table. */
const char* noteText(int index);

/** Index of a length: the first row, from the longest, whose length less 0.0001 the
    value reaches. Anything shorter than the second-last row allows gives the last row. */
int noteIndexOfLength(float beats);

/** Index for a normalised value: nearest of the evenly spaced steps, clamped. */
int noteIndexOfNormalised(float normalised);

/** Normalised position of a table index (index / 29). */
float noteNormalisedOfIndex(int index);

/** Index of a note name, compared whole and case-sensitively; -1 when none matches. */
int noteIndexOfText(const char* name);

/** The longest note length whose threshold the beat count reaches, on the threshold
    list used when a free rate is switched to a synced one. Below every threshold the
    answer is the shortest note. */
float nearestNoteLengthBelow(float beats);
} // namespace oxa
