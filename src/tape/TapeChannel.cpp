#include "tape/TapeChannel.h"

namespace oxa
{

void TapeChannel::prepare(double sampleRate, TapeStorage storage)
{
    for (TapeDeck& deck : decks)
        deck.prepare(sampleRate, storage);
}

TapeChannel TapeChannel::copyWithoutTape()
{
    TapeChannel copy;
    for (int d = 0; d < 2; ++d)
        copy.decks[d] = decks[d].copyWithoutTape();
    copy.phaseInvert = phaseInvert;
    copy.flangeMode = flangeMode;
    return copy;
}

void TapeChannel::reset() noexcept
{
    for (TapeDeck& deck : decks)
        deck.reset();
}

} // namespace oxa
