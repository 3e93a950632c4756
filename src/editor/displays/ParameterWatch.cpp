#include "editor/displays/ParameterWatch.h"

namespace oxa
{
ParameterWatch::ParameterWatch(EngineProxy* proxy, const String& elementPath,
                               std::initializer_list<unsigned> parameterIds, std::function<void(const ParameterWatch&)> changed)
    : onChange(std::move(changed))
{
    copies.reserve(parameterIds.size());
    // Each copy reports its value as soon as it is bound; the picture hears of it
    // only once the whole list exists, and then once for all of them.
    for (unsigned id : parameterIds)
        copies.push_back(std::make_unique<ElementParameterValue<float>>(proxy, elementPath, id, [this](float) {
            if (complete && onChange)
                onChange(*this);
        }));
    complete = true;
    // Without an element the copies hold zeros, not values: the picture keeps its own.
    if (onChange && !copies.empty() && copies.front()->getElement() != nullptr)
        onChange(*this);
}

float ParameterWatch::operator[](std::size_t index) const
{
    return index < copies.size() ? copies[index]->get() : 0.0f;
}
} // namespace oxa
