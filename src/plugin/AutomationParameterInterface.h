#pragma once
// How the engine saves, loads and changes the bindings of host parameters.

#include "element/String.h"

namespace tinyxml2
{
class XMLElement;
}

namespace oxa
{
/** A host parameter's target: an element path and a parameter name. */
struct AutomationTarget
{
    String path;
    String parameterName;
};

class AutomationParameterInterface
{
public:
    virtual ~AutomationParameterInterface() = default;
    virtual bool bind(const AutomationTarget& target, const String& displayName) = 0;
    virtual void unbind(const AutomationTarget& target) = 0;
    virtual bool save(tinyxml2::XMLElement* node) = 0;
    virtual void load(const tinyxml2::XMLElement* node) = 0;
};
} // namespace oxa
