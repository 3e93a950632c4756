#pragma once
// The test instrument's oscillator: an element that holds the waveform choice, with
// band-limited steps (BandLimitedOscillator does the sound).

#include "element/Element.h"
#include "engine/instrument/BandLimitedOscillator.h"

namespace oxa
{
class MinBlepGenerator : public Element
{
public:
    static uint32_t waveformId();
    static void registerType();

    explicit MinBlepGenerator(const String& name = String("Oscillator"));

    /** 0 sine, 1 sawtooth, 2 square. Any thread. */
    int waveform() const { return waveform_; }

private:
    int waveformValue() const { return waveform_; }
    void setWaveform(int v) { waveform_ = v < 0 ? 0 : (v > 2 ? 2 : v); }

    int waveform_ = BandLimitedOscillator::sawtooth;
};
} // namespace oxa
