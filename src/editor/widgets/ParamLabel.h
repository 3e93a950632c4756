#pragma once
// The value of one parameter as text; typed text is parsed by the parameter when a
// panel makes the label editable.

#include "editor/widgets/ParameterAccess.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>

namespace oxa
{
class ParamLabel : public juce::Label, public SimpleElementParameterView
{
public:
    ParamLabel(EngineProxy* proxy, const String& path, uint32_t id);
    ~ParamLabel() override;

    void elementChanged(const String& path) override;
    void floatChanged(const String& path, unsigned id, float value) override;
    void intChanged(const String& path, unsigned id, int value) override;
    void boolChanged(const String& path, unsigned id, bool value) override;
    void textWasEdited() override;

private:
    std::unique_ptr<ElementParameterValue<bool>> syncView; // note names follow "SyncToHost"
};
} // namespace oxa
