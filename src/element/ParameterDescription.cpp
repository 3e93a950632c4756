#include "element/ParameterDescription.h"

#include "element/ParameterText.h"

#include <algorithm>

namespace oxa
{
const std::shared_ptr<ParameterModulationType>& AdditiveParameterModulation::shared()
{
    static const std::shared_ptr<ParameterModulationType> instance = std::make_shared<AdditiveParameterModulation>();
    return instance;
}

const std::shared_ptr<ParameterModulationType>& MultiplicativeParameterModulation::shared()
{
    static const std::shared_ptr<ParameterModulationType> instance =
        std::make_shared<MultiplicativeParameterModulation>();
    return instance;
}

ParameterDescription<float>::ParameterDescription(const String& name, float defaultValue, float min, float max,
                                                  int displayType, uint32_t mapperFlags, ParameterMapper* mapper,
                                                  bool isOutput, bool isGlobal, uint32_t controlRate)
    : ParameterDescriptionCommon<float>(name, defaultValue, isOutput, isGlobal), min(min), max(max),
      displayType(displayType), mapperFlags(mapperFlags), controlRate(controlRate)
{
    std::shared_ptr<ParameterMapper> shared(mapper);
    if (!shared)
    {
        if (isSyncDisplayType(displayType))
            shared = std::make_shared<SyncLinearParameterMapper>(min, max);
        else
            shared = std::make_shared<LinearParameterMapper>(min, max);
    }
    mappers[0] = mappers[1] = mappers[2] = shared;
}

float ParameterDescription<float>::clamp(float value) const
{
    if (!hasRange())
        return value;
    return std::clamp(value, min, max);
}

float ParameterDescription<float>::map(const Element* owner, float normalised) const
{
    mappers[1]->map(owner, normalised);
    return normalised;
}

float ParameterDescription<float>::unmap(const Element* owner, float plain) const
{
    mappers[1]->unmap(owner, plain);
    return plain;
}

String ParameterDescription<float>::defaultText(const Element* owner, const float& value) const
{
    return floatValueToText(displayType, min, max, value, owner);
}

bool ParameterDescription<float>::defaultParse(const Element* owner, const String& text, float& value) const
{
    return floatTextToValue(displayType, min, max, text, owner, value);
}

ParameterDescription<int>::ParameterDescription(const String& name, int defaultValue, int min, int max,
                                                int displayType, bool isOutput, bool isGlobal)
    : ParameterDescriptionCommon<int>(name, defaultValue, isOutput, isGlobal), min(min), max(max),
      displayType(displayType)
{
}

int ParameterDescription<int>::clamp(int value) const
{
    if (!hasRange())
        return value;
    return std::clamp(value, min, max);
}

String ParameterDescription<int>::defaultText(const Element*, const int& value) const
{
    return intValueToText(displayType, value);
}

bool ParameterDescription<int>::defaultParse(const Element*, const String& text, int& value) const
{
    return intTextToValue(text, value);
}

ParameterDescription<bool>::ParameterDescription(const String& name, bool defaultValue, bool isOutput, bool isGlobal)
    : ParameterDescriptionCommon<bool>(name, defaultValue, isOutput, isGlobal)
{
}

String ParameterDescription<bool>::defaultText(const Element*, const bool& value) const
{
    return value ? "true" : "false";
}

bool ParameterDescription<bool>::defaultParse(const Element*, const String& text, bool& value) const
{
    int number = 0;
    if (!intTextToValue(text, number))
        return false;
    value = number != 0;
    return true;
}

ParameterDescription<String>::ParameterDescription(const String& name, const String& defaultValue, bool isOutput,
                                                   bool isGlobal)
    : ParameterDescriptionCommon<String>(name, defaultValue, isOutput, isGlobal)
{
}

String ParameterDescription<String>::defaultText(const Element*, const String& value) const
{
    return String("%1").arg(value);
}

bool ParameterDescription<String>::defaultParse(const Element*, const String& text, String& value) const
{
    value = text;
    return true;
}
} // namespace oxa
