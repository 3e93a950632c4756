#pragma once
// A panel whose bound widgets come from its layout table: knobs, value labels, bound
// buttons and combo boxes, each at its table's bounds with its image and tooltip.
// Panels add what is theirs alone (displays, unbound buttons) themselves.

#include "editor/Layout.h"
#include "editor/widgets/ParamButton.h"
#include "editor/widgets/ParamComboBox.h"
#include "editor/widgets/ParamLabel.h"
#include "editor/widgets/ParamSlider.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>
#include <vector>

namespace oxa
{
/** How a panel dresses its widgets. */
struct WidgetStyle
{
    bool knobValuePopup = true;
    juce::Colour labelColour {0xFF785991};
    juce::Justification comboJustification = juce::Justification::centred;
    bool dimButtonsWhenDisabled = false;
};

/** The small panels of the expanded window: knobs without labels show a value bubble. */
WidgetStyle sectionStyle();

/** The element path of the effect, which every widget of the window binds to. */
const String& effectPath();

/** Whether right clicks on the parameter go to the main panel's lock menu. */
bool isLockable(const char* parameterName);

class BoundPanel : public juce::Component
{
public:
    BoundPanel(EngineProxy* proxy, const layout::Panel& table, const WidgetStyle& style);
    ~BoundPanel() override;

    const layout::Panel& table() const { return panelTable; }
    ParamSlider* knob(const char* parameter) const;
    ParamLabel* valueLabel(const char* parameter) const;
    ParamButton* button(const char* parameter) const;
    ParamComboBox* comboBox(const char* parameter) const;

protected:
    /** Builds one bound widget for a table row and adds it; other rows give null. */
    static std::unique_ptr<juce::Component> makeWidget(EngineProxy* proxy, const layout::Control& c,
                                                       const WidgetStyle& style);

    EngineProxy* proxy;

private:
    juce::Component* find(layout::Kind kind, const char* parameter) const;

    const layout::Panel& panelTable;
    std::vector<std::pair<const layout::Control*, std::unique_ptr<juce::Component>>> widgets;
};
} // namespace oxa
