#include "editor/OxaLookAndFeel.h"

#include "editor/widgets/BoxArt.h"

#include <vector>

namespace oxa
{
namespace
{
struct ColourEntry
{
    int id;
    juce::Colour colour;
};

/** The colour table, built once per process. */
const std::vector<ColourEntry>& colourTable()
{
    static const std::vector<ColourEntry> table = [] {
        const juce::Colour key(0xFF555555);
        const juce::Colour halfBlack = juce::Colours::black.withAlpha(0.5f);
        // 0xFF3C3C3C is the key colour with each component divided by 1.4.
        const juce::Colour darkKey(juce::uint8(key.getRed() / 1.4f), juce::uint8(key.getGreen() / 1.4f),
                                   juce::uint8(key.getBlue() / 1.4f));
        return std::vector<ColourEntry> {
            {juce::TextButton::buttonColourId, key},
            {juce::TextButton::buttonOnColourId, juce::Colour(0xFF4169E1)},
            {juce::TextButton::textColourOffId, juce::Colours::white},
            {juce::TextButton::textColourOnId, juce::Colours::white},
            {juce::PopupMenu::textColourId, juce::Colour(0xFF424242)},
            {juce::PopupMenu::headerTextColourId, juce::Colour(0xFF785991)},
            {juce::PopupMenu::backgroundColourId, juce::Colour(0xFFE6E6E6)},
            {juce::PopupMenu::highlightedTextColourId, juce::Colours::white},
            {juce::PopupMenu::highlightedBackgroundColourId, juce::Colour(0xFF785991)},
            {juce::ComboBox::textColourId, juce::Colour(0xFF6A6A6A)},
            {0x1000AF0, darkKey},
            {0x1000AF1, halfBlack},
            {juce::ComboBox::backgroundColourId, juce::Colour(0xFF212121)},
            {juce::ComboBox::outlineColourId, halfBlack},
            {juce::ComboBox::arrowColourId, key},
            {juce::TooltipWindow::backgroundColourId, darkKey},
            {juce::TooltipWindow::textColourId, juce::Colour(0xFFC8C8C8)},
        };
    }();
    return table;
}
} // namespace

class OxaLookAndFeelHolder : private juce::DeletedAtShutdown
{
public:
    ~OxaLookAndFeelHolder() override
    {
        if (&juce::LookAndFeel::getDefaultLookAndFeel() == &look)
            juce::LookAndFeel::setDefaultLookAndFeel(nullptr);
        clearSingletonInstance();
    }
    OxaLookAndFeel look;
    JUCE_DECLARE_SINGLETON_SINGLETHREADED_MINIMAL(OxaLookAndFeelHolder)
};
JUCE_IMPLEMENT_SINGLETON(OxaLookAndFeelHolder)

OxaLookAndFeel::OxaLookAndFeel()
{
    for (const ColourEntry& entry : colourTable())
        setColour(entry.id, entry.colour);
}

OxaLookAndFeel::~OxaLookAndFeel() = default;

OxaLookAndFeel& OxaLookAndFeel::instance()
{
    return OxaLookAndFeelHolder::getInstance()->look;
}

juce::Label* OxaLookAndFeel::createComboBoxTextBox(juce::ComboBox&)
{
    auto* label = new juce::Label();
    label->setEditable(false, false, false);
    return label;
}

void OxaLookAndFeel::positionComboBoxText(juce::ComboBox& box, juce::Label& label)
{
    label.setBounds(0, 0, box.getWidth(), box.getHeight());
    label.setBorderSize(boxArt::comboBoxTextBorder(box.getWidth()));
    label.setMinimumHorizontalScale(boxArt::comboBoxTextSqueeze);
    label.setFont(getComboBoxFont(box));
}

void OxaLookAndFeel::drawComboBox(juce::Graphics& g, int width, int height, bool, int buttonX, int buttonY,
                                  int buttonW, int buttonH, juce::ComboBox& box)
{
    const juce::Rectangle<float> area(0.0f, 0.0f, float(width), float(height));
    g.setColour(box.findColour(juce::ComboBox::backgroundColourId));
    g.fillRoundedRectangle(area, 3.0f);
    g.setColour(box.findColour(juce::ComboBox::outlineColourId));
    g.drawRoundedRectangle(area.reduced(0.5f), 3.0f, 1.0f);
    juce::Path arrow;
    const float cx = float(buttonX) + float(buttonW) * 0.5f, cy = float(buttonY) + float(buttonH) * 0.5f;
    arrow.addTriangle(cx - 3.5f, cy - 2.0f, cx + 3.5f, cy - 2.0f, cx, cy + 2.5f);
    g.setColour(box.findColour(juce::ComboBox::buttonColourId));
    g.fillPath(arrow);
}

juce::Font OxaLookAndFeel::getSliderPopupFont(juce::Slider&)
{
    return juce::Font(15.0f);
}
} // namespace oxa
