#pragma once
// An image button bound to one parameter: its toggle state follows the parameter, and
// a click writes it inside one host gesture.

#include "editor/widgets/Button.h"
#include "editor/widgets/ParameterAccess.h"

namespace oxa
{
class ParamButton : public Button, public SimpleElementParameterView
{
public:
    ParamButton(EngineProxy* proxy, const String& path, uint32_t id);
    ~ParamButton() override;

    bool openSettingsOnAltRightClick = true;
    bool openSettingsOnRightClick = true;
    bool settingsThirdOption = true;
    /** A disabled button gets a wash of the panel colour over it. */
    bool dimWhenDisabled = true;
    /** Set when the panel decides visibility; otherwise binding shows the button. */
    bool panelControlsVisibility = false;
    int offValue = 0;
    int onValue = 1;

    void elementChanged(const String& path) override;
    void floatChanged(const String& path, unsigned id, float value) override;
    void intChanged(const String& path, unsigned id, int value) override;
    void boolChanged(const String& path, unsigned id, bool value) override;

    void clicked() override;
    void mouseDown(const juce::MouseEvent& e) override;
    void mouseUp(const juce::MouseEvent& e) override;
    void paintOverChildren(juce::Graphics& g) override;

private:
    void show(bool on);

    GestureBracket gesture;
};
} // namespace oxa
