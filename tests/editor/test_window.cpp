// The window as a whole: every bound widget where its table puts it and bound to the
// right parameter, the backgrounds by mode, the two heights, the footer.
#include "EditorTestRig.h"

#include "editor/WindowSettings.h"

#include <map>
#include <set>

using namespace oxa;
using namespace oxa::test;

namespace
{
struct Found
{
    juce::Rectangle<int> bounds;
    std::string parameter;
};

const char* kindName(layout::Kind kind)
{
    switch (kind)
    {
        case layout::Kind::knob: return "knob";
        case layout::Kind::valueLabel: return "label";
        case layout::Kind::button: return "button";
        case layout::Kind::comboBox: return "combo";
        default: return "other";
    }
}

layout::Kind kindOf(juce::Component& c)
{
    if (dynamic_cast<ParamSlider*>(&c) != nullptr)
        return layout::Kind::knob;
    if (dynamic_cast<ParamLabel*>(&c) != nullptr)
        return layout::Kind::valueLabel;
    if (dynamic_cast<ParamButton*>(&c) != nullptr)
        return layout::Kind::button;
    return layout::Kind::comboBox;
}
} // namespace

TEST_F(EditorTest, EveryBoundWidgetSitsAtItsBoundsAndFollowsItsParameter)
{
    // What the tables ask for, in window coordinates.
    std::multiset<std::tuple<std::string, std::string, int, int, int, int>> wanted, built;
    for (std::size_t p = 0; p < layout::placedPanelCount(); ++p)
    {
        const layout::PlacedPanel placed = layout::placedPanel(p);
        for (const layout::Control& c : *placed.panel)
        {
            const bool widget = c.kind == layout::Kind::knob || c.kind == layout::Kind::valueLabel
                                || c.kind == layout::Kind::button || c.kind == layout::Kind::comboBox;
            if (!widget || !c.isBound())
                continue;
            const layout::Box b = c.bounds.movedBy(placed.originX, placed.originY);
            wanted.emplace(kindName(c.kind), c.name, b.x, b.y, b.w, b.h);
        }
    }
    ui->setExpanded(true);
    walk(*ui, [&](juce::Component& c) {
        auto* view = dynamic_cast<SimpleElementParameterView*>(&c);
        if (view == nullptr)
            return;
        EXPECT_EQ(view->getElementPath().str(), "/FluxDeck");
        EXPECT_NE(view->getElement(), nullptr) << "bound to an element that exists";
        const juce::Rectangle<int> b = ui->getLocalArea(c.getParentComponent(), c.getBounds());
        built.emplace(kindName(kindOf(c)), ParameterRegistry::instance().nameOf(view->requestedId()).str(), b.getX(),
                      b.getY(), b.getWidth(), b.getHeight());
    });
    // The top bar's own widgets come with the preset bars; all others are built.
    EXPECT_EQ(wanted, built);
}

TEST_F(EditorTest, BackgroundAndPanelsFollowModeSettingsButtonAndHeight)
{
    const struct
    {
        int mode;
        bool lfoSettings, expanded;
        const char* background;
        int height;
    } cases[] = {
        {1, false, false, "_bkg_lfo_min", 435},      {1, false, true, "_bkg_lfo_max", 656},
        {1, true, false, "_bkg_lfo-edit_min", 435},  {1, true, true, "_bkg_lfo-edit_max", 656},
        {0, true, false, "_bkg_manual_min", 435},    {0, false, true, "_bkg_manual_max", 656},
    };
    for (const auto& c : cases)
    {
        // The host changes the mode; panels and background follow together.
        hostParameter("FlangeMode").setValueNotifyingHost(c.mode == 1 ? 1.0f : 0.0f);
        pump();
        ui->setLfoSettingsOpen(c.lfoSettings);
        ui->setExpanded(c.expanded);
        SCOPED_TRACE(c.background);
        EXPECT_EQ(ui->getMode(), c.mode);
        EXPECT_TRUE(ui->getBackground().getImagePath().endsWith(juce::String(c.background) + ".png"));
        EXPECT_EQ(ui->getHeight(), c.height);
        EXPECT_EQ(ui->getWidth(), 1130);
        EXPECT_EQ(ui->getLfoModeUI().isVisible(), c.mode == 1);
        EXPECT_EQ(ui->getLfoSettingsButton().isVisible(), c.mode == 1);
        EXPECT_EQ(ui->getLfoWaveformDisplay().isVisible(), c.mode == 1);
        EXPECT_EQ(ui->getManualModeUI().isVisible(), c.mode == 0);
        EXPECT_EQ(ui->getFooter().getBounds(), juce::Rectangle<int>(0, c.height - 20, 1130, 20));
        EXPECT_EQ(ui->getExpandButton().getBounds(), juce::Rectangle<int>(1075, 395, 33, 33)) << "never moves";
        if (c.mode == 1)
        {
            EXPECT_EQ(ui->getLfoModeUI().getEditMenu().isVisible(), c.lfoSettings);
        }
    }
}

TEST_F(EditorTest, HostLearnsWhichParameterLiesUnderTheMouse)
{
    ParamSlider* feedback = ui->getLfoModeUI().getMainMenu().knob("Feedback");
    ASSERT_NE(feedback, nullptr);
    const auto slot = plugin->findSlot(String("/FluxDeck"), parameterIdByName("Feedback"));
    ASSERT_TRUE(slot.has_value());
    EXPECT_EQ(ui->getControlParameterIndex(*feedback), int(*slot));
    EXPECT_EQ(ui->getControlParameterIndex(ui->getBackground()), -1);
    EXPECT_EQ(ui->getControlParameterIndex(ui->getExpandButton()), -1);
}

TEST_F(EditorTest, ExpandedStatePersistsAcrossInstancesAndTheVersionTextClearsTheExpandButton)
{
    EXPECT_EQ(Footer::versionText(), "1.0.0 x64");
    ui->setExpanded(false);
    const int collapsed = ui->getFooter().versionTextWidth();
    ui->setExpanded(true);
    EXPECT_EQ(ui->getFooter().versionTextWidth() - collapsed, 50) << "shorter only while collapsed";
    bool clicksOnFooter = true, clicksOnChildren = true;
    ui->getFooter().getInterceptsMouseClicks(clicksOnFooter, clicksOnChildren);
    EXPECT_FALSE(clicksOnFooter);

    for (bool expanded : {true, false})
    {
        ui->setExpanded(expanded);
        openWindow(); // the old window writes at destruction, the new one reads at construction
        EXPECT_EQ(ui->isExpanded(), expanded);
        EXPECT_EQ(ui->getHeight(), expanded ? 656 : 435);
    }
}
