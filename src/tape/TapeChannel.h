#pragma once

#include "tape/TapeDeck.h"

#include <cstdint>

namespace oxa
{

// One audio channel: two decks whose outputs comb against each other. The
// first runs at nominal speed, the second at the speed the flange asks for.
struct TapeChannel
{
    static constexpr std::int32_t manualMode = 0;
    static constexpr std::int32_t lfoMode = 1;

    TapeDeck decks[2];
    bool phaseInvert = false;
    std::int32_t flangeMode = lfoMode;

    void prepare(double sampleRate, TapeStorage storage = TapeStorage::allocated);
    void reset() noexcept;
    // Settings and state without the decks' tape; see TapeDeck::copyWithoutTape.
    TapeChannel copyWithoutTape();

    TapeDeck& first() noexcept { return decks[0]; }
    TapeDeck& second() noexcept { return decks[1]; }
};

} // namespace oxa
