#include "editor/widgets/SimpleEditionSettingsPanel.h"

#include "editor/FluxDeckLookAndFeel.h"
#include "editor/Layout.h"
#include "editor/widgets/ParameterAccess.h"
#include "element/ParameterRegistry.h"
#include "engine/EngineProxy.h"
#include "engine/MidiControllers.h"
#include "plugin/Plugin.h"

namespace oxa
{
namespace
{
// Rows from the top, in 1x pixels.
constexpr int margin = 12;
constexpr int titleTop = 10, titleHeight = 22;
constexpr int boxTop = 40, boxHeight = 26;
constexpr int hintTop = 68, hintHeight = 16;
constexpr int hostTop = 90, rowHeight = 22;
constexpr int buttonHeight = 24, buttonWidth = 70;

juce::Component::SafePointer<SimpleEditionSettingsPanel>& openPanel()
{
    static juce::Component::SafePointer<SimpleEditionSettingsPanel> panel;
    return panel;
}

juce::Font panelFont(float height = SimpleEditionSettingsPanel::fontHeight)
{
    return FluxDeckLookAndFeel::instance().fontOfHeight(height);
}
} // namespace

/** The panel's two buttons, flat in the window's colours. */
class SimpleEditionSettingsPanel::FlatButton : public juce::TextButton
{
public:
    explicit FlatButton(const juce::String& text) : juce::TextButton(text) {}

    void paintButton(juce::Graphics& g, bool over, bool down) override
    {
        const juce::Colour base = findColour(juce::TextButton::buttonColourId);
        const juce::Colour fill = down ? juce::Colour(layout::accentColour) : (over ? base.brighter(0.25f) : base);
        g.setColour(isEnabled() ? fill : fill.withAlpha(0.35f));
        g.fillRoundedRectangle(getLocalBounds().toFloat(), 3.0f);
        g.setColour(findColour(juce::TextButton::textColourOffId));
        g.setFont(panelFont(15.0f));
        g.drawText(getButtonText(), getLocalBounds(), juce::Justification::centred, false);
    }
};

SimpleEditionSettingsPanel::SimpleEditionSettingsPanel(EngineProxy* engineProxy, const String& elementPath,
                                                       uint32_t id, bool modulation)
    : proxy(engineProxy), path(elementPath), parameterId(id), asModulation(modulation), binding(*engineProxy, elementPath, id),
      clearButton(std::make_unique<FlatButton>("Clear")), closeButton(std::make_unique<FlatButton>("Close"))
{
    setName("SimpleEditionSettingsPanel");
    setWantsKeyboardFocus(true);
    clearButton->onClick = [this] { clear(); };
    closeButton->onClick = [this] { close(); };
    addAndMakeVisible(*clearButton);
    addAndMakeVisible(*closeButton);
    const int height = (getHostIndexText().isEmpty() ? hostTop : hostTop + rowHeight + 6) + 8 + buttonHeight + 12;
    setSize(panelWidth, height);

    // While the panel is open, the next controller a performer moves is bound.
    if (binding.canBind())
    {
        learner = std::make_unique<NextControllerLearner>(*proxy, path, parameterId, [this](int) { refresh(); });
        learner->start();
    }
    refresh();
}

SimpleEditionSettingsPanel::~SimpleEditionSettingsPanel()
{
    learner.reset();
}

SimpleEditionSettingsPanel* SimpleEditionSettingsPanel::open(juce::Component& from, EngineProxy* proxy,
                                                             const String& path, uint32_t id, bool asModulation)
{
    if (proxy == nullptr || path.isEmpty() || isAnyOpen() || !MidiLearn(*proxy, path, id).canBind())
        return nullptr;
    juce::Component* top = from.getTopLevelComponent();
    auto* panel = new SimpleEditionSettingsPanel(proxy, path, id, asModulation);
    top->addAndMakeVisible(panel);
    panel->setCentrePosition(top->getLocalBounds().getCentre());
    openPanel() = panel;
    panel->enterModalState(true, nullptr, true);
    return panel;
}

bool SimpleEditionSettingsPanel::isAnyOpen()
{
    return openPanel() != nullptr;
}

juce::String SimpleEditionSettingsPanel::getTitle() const
{
    const ParameterDescriptionBase* d = ParameterRegistry::instance().description(parameterId);
    const juce::String name = d != nullptr ? toJuce(d->displayName) : juce::String();
    if (asModulation)
        return "MIDI Modulation: " + name;
    return (getHostIndexText().isEmpty() ? "MIDI Control: " : "MIDI/Automation Control: ") + name;
}

juce::String SimpleEditionSettingsPanel::getBindingText() const
{
    return toJuce(MidiControllers::bindingLabel(binding.boundController()));
}

juce::String SimpleEditionSettingsPanel::getHostIndexText() const
{
    Plugin* plugin = proxy != nullptr ? proxy->plugin() : nullptr;
    if (plugin == nullptr)
        return {};
    const std::optional<size_t> slot = plugin->findSlot(path, parameterId);
    return slot ? juce::String(int(*slot)) : juce::String();
}

juce::PopupMenu SimpleEditionSettingsPanel::controllerMenu() const
{
    const int bound = binding.boundController();
    juce::PopupMenu menu;
    for (int number = 0; number < MidiControllers::count; ++number)
        menu.addItem(number + 1, toJuce(MidiControllers::listEntry(number)), true, number == bound);
    return menu;
}

void SimpleEditionSettingsPanel::chooseController(int number)
{
    binding.bind(number, asModulation);
    refresh();
}

void SimpleEditionSettingsPanel::clear()
{
    binding.unbind();
    refresh();
}

void SimpleEditionSettingsPanel::close()
{
    if (learner != nullptr)
        learner->cancel();
    if (isCurrentlyModal(false))
        exitModalState(0); // the modal manager deletes the panel
}

void SimpleEditionSettingsPanel::refresh()
{
    bindingText = getBindingText();
    clearButton->setEnabled(binding.hasMidiConnection());
    repaint();
}

juce::Rectangle<int> SimpleEditionSettingsPanel::bindingBox() const
{
    return {margin, boxTop, getWidth() - 2 * margin, boxHeight};
}

void SimpleEditionSettingsPanel::resized()
{
    const int y = getHeight() - 12 - buttonHeight;
    closeButton->setBounds(getWidth() - margin - buttonWidth, y, buttonWidth, buttonHeight);
    clearButton->setBounds(closeButton->getX() - 8 - buttonWidth, y, buttonWidth, buttonHeight);
}

void SimpleEditionSettingsPanel::paint(juce::Graphics& g)
{
    const juce::Rectangle<float> area = getLocalBounds().toFloat().reduced(0.5f);
    g.setColour(findColour(juce::PopupMenu::backgroundColourId));
    g.fillRoundedRectangle(area, 5.0f);
    g.setColour(juce::Colour(0xFF9A9A9A));
    g.drawRoundedRectangle(area, 5.0f, 1.0f);

    const int textWidth = getWidth() - 2 * margin;
    g.setFont(panelFont());
    g.setColour(juce::Colour(layout::accentColour));
    g.drawFittedText(getTitle(), margin, titleTop, textWidth, titleHeight, juce::Justification::centredLeft, 1, 0.8f);

    // The binding: a box that opens the list of controllers.
    const juce::Rectangle<float> box = bindingBox().toFloat();
    g.setColour(juce::Colours::white);
    g.fillRoundedRectangle(box, 3.0f);
    g.setColour(juce::Colour(0xFFB4B4B4));
    g.drawRoundedRectangle(box.reduced(0.5f), 3.0f, 1.0f);
    g.setColour(juce::Colour(layout::legendColour));
    g.drawText(bindingText, box.reduced(8.0f, 0.0f), juce::Justification::centredLeft, true);
    juce::Path arrow;
    const float ax = box.getRight() - 14.0f, ay = box.getCentreY();
    arrow.addTriangle(ax - 4.0f, ay - 2.0f, ax + 4.0f, ay - 2.0f, ax, ay + 3.0f);
    g.setColour(juce::Colour(0xFF787878));
    g.fillPath(arrow);

    g.setFont(panelFont(13.0f));
    g.setColour(juce::Colour(0xFF7A7A7A));
    g.drawText(isLearning() ? "Move a controller to learn it, or pick one" : "Pick a controller from the list", margin,
               hintTop, textWidth, hintHeight, juce::Justification::centredLeft, true);

    const juce::String hostIndex = getHostIndexText();
    if (hostIndex.isNotEmpty())
    {
        g.setColour(juce::Colour(0xFFC8C8C8));
        g.fillRect(margin, hostTop - 3, textWidth, 1);
        g.setFont(panelFont());
        g.setColour(juce::Colour(layout::legendColour));
        g.drawText("Host Automation", margin, hostTop, textWidth, rowHeight, juce::Justification::centredLeft, false);
        g.setColour(juce::Colour(layout::accentColour));
        g.drawText(hostIndex, margin, hostTop, textWidth, rowHeight, juce::Justification::centredRight, false);
    }
}

void SimpleEditionSettingsPanel::mouseDown(const juce::MouseEvent& e)
{
    if (!bindingBox().contains(e.getPosition()))
        return;
    juce::Component::SafePointer<SimpleEditionSettingsPanel> self(this);
    controllerMenu().showMenuAsync(juce::PopupMenu::Options()
                                       .withTargetScreenArea(localAreaToGlobal(bindingBox()))
                                       .withStandardItemHeight(22)
                                       .withMaximumNumColumns(4),
                                   [self](int result) {
                                       if (self != nullptr && result > 0)
                                           self->chooseController(result - 1);
                                   });
}

bool SimpleEditionSettingsPanel::keyPressed(const juce::KeyPress& key)
{
    if (key == juce::KeyPress::escapeKey || key == juce::KeyPress::returnKey)
    {
        close();
        return true;
    }
    return false;
}
} // namespace oxa
