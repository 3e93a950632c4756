#pragma once
// Several elements that match one path pattern, seen as one element: reads go to
// the first match, writes go to all of them.

#include "element/Element.h"

#include <vector>

namespace oxa
{
class ElementProxy : public Element
{
public:
    explicit ElementProxy(const String& pattern);

    void setMatches(const std::vector<Element*>& matches);
    const std::vector<Element*>& matches() const { return matches_; }
    Element* first() const { return matches_.empty() ? nullptr : matches_.front(); }

    /** Fires after the matches were replaced. */
    Signal<ElementProxy*> matchesChanged;

    uint32_t mapParameterId(uint32_t id) const override;
    uint32_t parameterId(const char* name) const override;

    void setStringParameter(uint32_t id, const String& value, bool deferred) override;
    void setIntParameter(uint32_t id, int value, bool deferred) override;
    void setBoolParameter(uint32_t id, bool value, bool deferred) override;
    void setFloatParameter(uint32_t id, float value, bool deferred) override;
    void setStringParameter(uint32_t id, const String& value) override { setStringParameter(id, value, false); }
    void setIntParameter(uint32_t id, int value) override { setIntParameter(id, value, false); }
    void setBoolParameter(uint32_t id, bool value) override { setBoolParameter(id, value, false); }
    void setFloatParameter(uint32_t id, float value) override { setFloatParameter(id, value, false); }

    float floatParameter(uint32_t id, bool* error = nullptr) const override;
    bool boolParameter(uint32_t id, bool* error = nullptr) const override;
    int intParameter(uint32_t id, bool* error = nullptr) const override;
    String stringParameter(uint32_t id, bool* error = nullptr) const override;
    ParameterInfo<float>* findFloatInfo(uint32_t id) const override;
    ParameterInfo<bool>* findBoolInfo(uint32_t id) const override;
    ParameterInfo<int>* findIntInfo(uint32_t id) const override;
    ParameterInfo<String>* findStringInfo(uint32_t id) const override;

private:
    std::vector<Element*> matches_;
};
} // namespace oxa
