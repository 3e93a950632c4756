#pragma once
// Watched copies of a few parameters of one element, for a picture that redraws
// when any of them changes; the callback gets the watch itself, as it also runs
// once from the constructor. Boolean parameters read as 0 or 1. Message thread only.

#include "engine/ElementView.h"

#include <functional>
#include <initializer_list>
#include <memory>
#include <vector>

namespace oxa
{
class EngineProxy;

class ParameterWatch
{
public:
    ParameterWatch(EngineProxy* proxy, const String& elementPath, std::initializer_list<unsigned> parameterIds,
                   std::function<void(const ParameterWatch&)> changed);

    // The last value of the parameter at this place in the list (0 before it is known).
    float operator[](std::size_t index) const;

    ParameterWatch(const ParameterWatch&) = delete;
    ParameterWatch& operator=(const ParameterWatch&) = delete;

private:
    std::function<void(const ParameterWatch&)> onChange;
    bool complete = false;
    std::vector<std::unique_ptr<ElementParameterValue<float>>> copies;
};
} // namespace oxa
