#include "editor/BoundPanel.h"

#include "editor/FluxDeckLookAndFeel.h"
#include "resources/presets/PresetBank.h"

#include <cstring>

namespace oxa
{
const String& effectPath()
{
    static const String path("/FluxDeck");
    return path;
}

WidgetStyle sectionStyle()
{
    WidgetStyle style;
    style.knobValuePopup = true;
    return style;
}

bool isLockable(const char* parameterName)
{
    for (const char* name : lockableParameterNames())
        if (std::strcmp(name, parameterName) == 0)
            return true;
    return false;
}

namespace
{
juce::String assetPath(const char* image, const char* suffix)
{
    return juce::String(layout::assetRoot) + image + suffix + ".png";
}

template <typename Widget>
void setSettingsFlags(Widget& w, const char* parameter)
{
    const bool lockable = isLockable(parameter);
    w.openSettingsOnRightClick = !lockable;
    w.openSettingsOnAltRightClick = false;
    w.settingsThirdOption = false;
}
} // namespace

std::unique_ptr<juce::Component> BoundPanel::makeWidget(EngineProxy* proxy, const layout::Control& c,
                                                        const WidgetStyle& style)
{
    if (!c.isBound())
        return nullptr;
    const uint32_t id = parameterIdByName(c.name);
    const layout::Box& b = c.bounds;
    FluxDeckLookAndFeel& look = FluxDeckLookAndFeel::instance();
    switch (c.kind)
    {
        case layout::Kind::knob:
        {
            auto knob = std::make_unique<ParamSlider>(proxy, effectPath(), id, juce::Slider::RotaryVerticalDrag,
                                                      style.knobValuePopup && !isLockable(c.name));
            setSettingsFlags(*knob, c.name);
            knob->setImage(assetPath(c.image, ""), c.frames);
            knob->setBounds(b.x, b.y, b.w, b.h);
            if (c.tooltip != nullptr)
                knob->setTooltip(c.tooltip);
            return knob;
        }
        case layout::Kind::valueLabel:
        {
            auto label = std::make_unique<ParamLabel>(proxy, effectPath(), id);
            label->setColour(juce::Label::textColourId, style.labelColour);
            label->setColour(juce::Label::textWhenEditingColourId, style.labelColour);
            label->setJustificationType(juce::Justification::centred);
            label->setFont(look.fontOfHeight(15.0f));
            label->setBorderSize({0, 0, 0, 0});
            label->setInterceptsMouseClicks(false, false);
            label->setBounds(b.x, b.y, b.w, b.h);
            return label;
        }
        case layout::Kind::button:
        {
            auto button = std::make_unique<ParamButton>(proxy, effectPath(), id);
            setSettingsFlags(*button, c.name);
            button->dimWhenDisabled = style.dimButtonsWhenDisabled;
            button->setImages(assetPath(c.image, "-off"), assetPath(c.image, "-on"), assetPath(c.image, "-off-over"),
                              assetPath(c.image, "-on-over"));
            button->setBounds(b.x, b.y, b.w, b.h);
            if (c.tooltip != nullptr)
                button->setTooltip(c.tooltip);
            return button;
        }
        case layout::Kind::comboBox:
        {
            auto box = std::make_unique<ParamComboBox>(proxy, effectPath(), id);
            box->openSettingsOnRightClick = false;
            box->openSettingsOnAltRightClick = false;
            box->settingsThirdOption = false;
            box->setColour(juce::ComboBox::textColourId, juce::Colour(layout::legendColour));
            for (int colour : {juce::ComboBox::backgroundColourId, juce::ComboBox::outlineColourId,
                               juce::ComboBox::arrowColourId, juce::ComboBox::buttonColourId,
                               juce::ComboBox::focusedOutlineColourId})
                box->setColour(colour, juce::Colours::transparentBlack);
            box->setJustificationType(style.comboJustification);
            box->getProperties().set("menuHeight", 22);
            box->setBounds(b.x, b.y, b.w, b.h);
            if (c.tooltip != nullptr)
                box->setTooltip(c.tooltip);
            return box;
        }
        default: return nullptr;
    }
}

BoundPanel::BoundPanel(EngineProxy* proxy, const layout::Panel& table, const WidgetStyle& style)
    : proxy(proxy), panelTable(table)
{
    setName(table.name);
    setInterceptsMouseClicks(false, true);
    for (const layout::Control& c : table)
        if (std::unique_ptr<juce::Component> widget = makeWidget(proxy, c, style))
        {
            addAndMakeVisible(*widget);
            widgets.emplace_back(&c, std::move(widget));
        }
}

BoundPanel::~BoundPanel()
{
    // Widgets go before the children list they sit in.
    for (auto& entry : widgets)
        removeChildComponent(entry.second.get());
    widgets.clear();
}

juce::Component* BoundPanel::find(layout::Kind kind, const char* parameter) const
{
    for (const auto& entry : widgets)
        if (entry.first->kind == kind && std::strcmp(entry.first->name, parameter) == 0)
            return entry.second.get();
    return nullptr;
}

ParamSlider* BoundPanel::knob(const char* parameter) const
{
    return dynamic_cast<ParamSlider*>(find(layout::Kind::knob, parameter));
}

ParamLabel* BoundPanel::valueLabel(const char* parameter) const
{
    return dynamic_cast<ParamLabel*>(find(layout::Kind::valueLabel, parameter));
}

ParamButton* BoundPanel::button(const char* parameter) const
{
    return dynamic_cast<ParamButton*>(find(layout::Kind::button, parameter));
}

ParamComboBox* BoundPanel::comboBox(const char* parameter) const
{
    return dynamic_cast<ParamComboBox*>(find(layout::Kind::comboBox, parameter));
}
} // namespace oxa
