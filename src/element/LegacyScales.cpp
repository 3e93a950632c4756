#include "element/LegacyScales.h"

#include "element/Element.h"

#include <tinyxml2.h>

#include <cstring>
#include <mutex>

namespace oxa::LegacyScales
{
namespace
{
struct Declared
{
    const char* name = nullptr;
    Conversion fromVersion0 = nullptr;
};

// A handful at most; declared once at start-up, read on every load.
constexpr int capacity = 8;
Declared declared[capacity];
int declaredCount = 0;
std::mutex guard;

Conversion find(const char* parameterName)
{
    for (int i = 0; i < declaredCount; ++i)
        if (std::strcmp(declared[i].name, parameterName) == 0)
            return declared[i].fromVersion0;
    return nullptr;
}
} // namespace

void declare(const char* parameterName, Conversion fromVersion0)
{
    const std::lock_guard<std::mutex> lock(guard);
    for (int i = 0; i < declaredCount; ++i)
        if (std::strcmp(declared[i].name, parameterName) == 0)
        {
            declared[i].fromVersion0 = fromVersion0;
            return;
        }
    if (declaredCount < capacity)
        declared[declaredCount++] = {parameterName, fromVersion0};
}

float toCurrent(const char* parameterName, float stored, int version)
{
    if (version >= 1)
        return stored;
    const std::lock_guard<std::mutex> lock(guard);
    const Conversion convert = find(parameterName);
    return convert != nullptr ? convert(stored) : stored;
}

void convertLoaded(Element& element, const tinyxml2::XMLElement& node, int version)
{
    if (version >= 1)
        return;
    Declared snapshot[capacity];
    int count = 0;
    {
        const std::lock_guard<std::mutex> lock(guard);
        count = declaredCount;
        for (int i = 0; i < count; ++i)
            snapshot[i] = declared[i];
    }
    for (int i = 0; i < count; ++i)
    {
        const uint32_t id = element.parameterId(snapshot[i].name);
        if (id != 0 && node.Attribute(snapshot[i].name) != nullptr)
            element.setFloatParameter(id, snapshot[i].fromVersion0(element.floatParameter(id)));
    }
}
} // namespace oxa::LegacyScales
