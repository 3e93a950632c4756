#include "tape/TapeHead.h"

namespace oxa
{

void TapeHead::prepare(double newTickRate) noexcept
{
    tickRate = newTickRate;
    reset();
}

void TapeHead::reset() noexcept
{
    distance = 0.0;
    readTick = 1;
    startup = 1;
    lengthRamp.set(static_cast<float>(tapeLength));
}

void TapeHead::applyLength() noexcept
{
    if (tickRate > 0.0 && !startup)
        lengthRamp.rampTo(static_cast<float>(tapeLength), static_cast<std::int32_t>(tickRate * 0.5));
    else
        lengthRamp.set(static_cast<float>(tapeLength));
}

void TapeHead::setDelay(double seconds) noexcept
{
    delay = seconds;
    tapeLength = seconds * headSpeed;
    applyLength();
}

void TapeHead::setSpeed(double speed) noexcept
{
    headSpeed = speed;
    tapeLength = speed * delay;
    applyLength();
}

void TapeHead::tick(std::uint64_t tick, const double* history, std::uint64_t historyLength) noexcept
{
    const std::uint64_t m = historyLength;
    const double target = static_cast<double>(lengthRamp.value()) * tickRate;
    const std::uint64_t newest = tick % m;
    const std::uint64_t oldest = (tick + 1) % m;

    distance += history[newest];

    if (distance < target)
    {
        // Not enough tape yet: walk back towards older ticks.
        while (readTick != oldest)
        {
            readTick = (m - 1 + readTick) % m;
            distance += history[readTick];
            if (distance >= target)
                break;
        }
    }

    double fraction = 0.0;
    if (distance > target)
    {
        // Too much tape: walk forward, never past the newest tick: a head shorter than
        // one tick of tape would otherwise come out behind the oldest. The bound by m
        // keeps a broken history from looping for ever.
        for (std::uint64_t steps = 0; readTick != newest && steps < m; ++steps)
        {
            distance -= history[readTick];
            fraction = (target - distance) / (history[readTick] + 1e-16);
            readTick = (readTick + 1) % m;
            if (distance <= target)
                break;
        }
    }

    previousDelay = currentDelay;
    currentDelay = static_cast<double>((m - readTick + newest) % m) + fraction;
    if (!(currentDelay >= 0.0))
    {
        // The walk reached the present with tape to spare: the newest tick alone holds
        // more tape than this head's length, or the history no longer adds up to the
        // running distance. Read the newest tape and count afresh from there.
        currentDelay = 0.0;
        readTick = newest;
        distance = history[newest];
    }

    if (readTick == oldest)
    {
        // That entry is overwritten at the next tick.
        distance -= history[readTick];
        readTick = (readTick + 1) % m;
    }

    ++ticks;
    lengthRamp.advance(1);
}

} // namespace oxa
