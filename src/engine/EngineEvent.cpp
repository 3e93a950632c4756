#include "engine/EngineEvent.h"

namespace oxa
{
void EventList::sortByOffset()
{
    for (size_t i = 1; i < events.size(); ++i)
    {
        EngineEvent e = events[i];
        size_t j = i;
        while (j > 0 && events[j - 1].sampleOffset > e.sampleOffset)
        {
            events[j] = events[j - 1];
            --j;
        }
        events[j] = e;
    }
}
} // namespace oxa
