#include "editor/FluxDeckLookAndFeel.h"

#include "resources/Path.h"
#include "resources/Volume.h"

namespace oxa
{
namespace
{
constexpr const char* fontPath = "$Resource/resource/fonts/Acumin-Light.ttf";

juce::Typeface::Ptr readTypeface()
{
    const std::unique_ptr<DefaultInputStream> stream = Path(fontPath).openInput();
    if (stream == nullptr)
        return nullptr;
    juce::MemoryBlock bytes;
    stream->readIntoMemoryBlock(bytes);
    if (bytes.getSize() == 0)
        return nullptr;
    return juce::Typeface::createSystemTypefaceFor(bytes.getData(), bytes.getSize());
}
} // namespace

class FluxDeckLookAndFeelHolder : private juce::DeletedAtShutdown
{
public:
    ~FluxDeckLookAndFeelHolder() override
    {
        if (&juce::LookAndFeel::getDefaultLookAndFeel() == &look)
            juce::LookAndFeel::setDefaultLookAndFeel(nullptr);
        clearSingletonInstance();
    }
    FluxDeckLookAndFeel look;
    JUCE_DECLARE_SINGLETON_SINGLETHREADED_MINIMAL(FluxDeckLookAndFeelHolder)
};
JUCE_IMPLEMENT_SINGLETON(FluxDeckLookAndFeelHolder)

FluxDeckLookAndFeel::FluxDeckLookAndFeel()
{
    if (juce::Typeface::Ptr face = readTypeface())
    {
        font = juce::Font(face);
        embedded = true;
    }
    font.setHeight(15.0f);
}

FluxDeckLookAndFeel::~FluxDeckLookAndFeel() = default;

FluxDeckLookAndFeel& FluxDeckLookAndFeel::instance()
{
    return FluxDeckLookAndFeelHolder::getInstance()->look;
}

juce::Font FluxDeckLookAndFeel::getPopupMenuFont()
{
    return font.withHeight(19.0f);
}

juce::Font FluxDeckLookAndFeel::getComboBoxFont(juce::ComboBox&)
{
    return font.withHeight(19.0f);
}

juce::Font FluxDeckLookAndFeel::getSliderPopupFont(juce::Slider&)
{
    return font;
}

juce::Font FluxDeckLookAndFeel::getLabelFont(juce::Label& label)
{
    // Labels carry only a height; the face is always the window's.
    return font.withHeight(label.getFont().getHeight());
}
} // namespace oxa
