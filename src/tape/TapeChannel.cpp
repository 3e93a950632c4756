#include "tape/TapeChannel.h"

namespace oxa
{

void TapeChannel::prepare(double sampleRate)
{
    for (TapeDeck& deck : decks)
        deck.prepare(sampleRate);
}

void TapeChannel::reset() noexcept
{
    for (TapeDeck& deck : decks)
        deck.reset();
}

} // namespace oxa
