#include "snapshot/WindowDriver.h"

#include "element/ParameterRegistry.h"
#include "tape/FluxDeckProcessor.h"

#include <cmath>

namespace oxa::snapshot
{
namespace
{
Element& effectOf(FluxDeckPlugin& plugin)
{
    return *plugin.getEngine()->findElement(String("FluxDeck"));
}
} // namespace

WindowDriver::WindowDriver() : effectPlugin(std::make_unique<FluxDeckPlugin>())
{
    effectPlugin->prepareToPlay(sampleRate, blockSize);
    midi.ensureSize(256);
}

WindowDriver::~WindowDriver()
{
    ui.reset();
    effectPlugin.reset();
}

void WindowDriver::openWindow(bool expanded, bool reelsRunning)
{
    ui.reset();
    ui.reset(dynamic_cast<FluxDeckPluginUI*>(effectPlugin->createEditor()));
    ui->setExpanded(expanded);
    FluxDeckEditor& main = ui->getEditor();
    if (main.isReelRunning() != reelsRunning)
    {
        // A click on a reel starts or stops both, as the user would.
        juce::Slider& reel = main.getReel(true);
        const juce::Point<float> centre = reel.getLocalBounds().getCentre().toFloat();
        const juce::Time now = juce::Time::getCurrentTime();
        main.mouseDown(juce::MouseEvent(juce::Desktop::getInstance().getMainMouseSource(), centre,
                                        juce::ModifierKeys::leftButtonModifier, juce::MouseInputSource::defaultPressure,
                                        0.0f, 0.0f, 0.0f, 0.0f, &reel, &reel, now, centre, now, 1, false));
    }
    settle();
}

void WindowDriver::setFloat(const char* parameter, float value)
{
    effectOf(*effectPlugin).setFloatParameter(parameterIdByName(parameter), value);
}

void WindowDriver::setInt(const char* parameter, int value)
{
    effectOf(*effectPlugin).setIntParameter(parameterIdByName(parameter), value);
}

void WindowDriver::setBool(const char* parameter, bool value)
{
    effectOf(*effectPlugin).setBoolParameter(parameterIdByName(parameter), value);
}

void WindowDriver::renderBlock()
{
    // A 220 Hz tone whose level swells and falls every two seconds, so the meters move.
    constexpr double twoPi = 6.283185307179586;
    for (int i = 0; i < blockSize; ++i)
    {
        const double t = double(blocksRendered * blockSize + i) / sampleRate;
        const float level = float(0.05 + 0.3 * (0.5 - 0.5 * std::cos(twoPi * t * 0.5)));
        const float sample = level * float(std::sin(phase));
        phase = std::fmod(phase + twoPi * 220.0 / sampleRate, twoPi);
        buffer.setSample(0, i, sample);
        buffer.setSample(1, i, sample);
    }
    midi.clear();
    effectPlugin->processBlock(buffer, midi);
    ++blocksRendered;
}

void WindowDriver::render(double seconds)
{
    const long blocks = long(seconds * sampleRate / blockSize);
    for (long b = 0; b < blocks; ++b)
    {
        renderBlock();
        if (ui != nullptr && b % 2 == 1)
            ui->getEditor().advance();
    }
    settle();
}

void WindowDriver::settle(int milliseconds)
{
    juce::MessageManager::getInstance()->runDispatchLoopUntil(milliseconds);
}

float WindowDriver::flangePosition() const
{
    auto* processor = dynamic_cast<FluxDeckProcessor*>(&effectOf(*effectPlugin));
    return processor != nullptr ? processor->flangePosition.load() : 0.0f;
}
} // namespace oxa::snapshot
