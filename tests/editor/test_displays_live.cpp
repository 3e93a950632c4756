// The pictures that take live data, the meter's ballistics, the trace's scrolling,
// the binding through the proxy (also across a state load), and an offscreen
// render of every picture, written as PNGs next to the test program.
#include "editor/displays/AudioMeter.h"
#include "editor/displays/FlangeDisplay.h"
#include "editor/displays/MagneticWaveformDisplay.h"
#include "editor/displays/PlayHeadResponseDisplay.h"
#include "editor/displays/RecordResponseDisplay.h"
#include "editor/displays/ScrollCurve.h"
#include "element/AsyncSignal.h"
#include "engine/EngineProxy.h"
#include "plugin/FluxDeckPlugin.h"
#include "tape/FluxDeckProcessor.h"
#include "tape/OutputLevels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace oxa
{
namespace
{
void pumpMessages(int milliseconds = 30)
{
    ParameterChangedAsyncSignal::drainNow();
    juce::MessageManager::getInstance()->runDispatchLoopUntil(milliseconds);
    ParameterChangedAsyncSignal::drainNow();
}

FluxDeckProcessor* processorOf(FluxDeckPlugin& plugin)
{
    return dynamic_cast<FluxDeckProcessor*>(plugin.getProxy()->currentElement(String("/FluxDeck")));
}

TEST(OutputLevels, KeepsTheHighestPeakUntilTakenAndShowsMonoOnBoth)
{
    OutputLevels levels;
    float left[] {0.1f, -0.7f, 0.2f}, right[] {0.05f, std::numeric_limits<float>::quiet_NaN(), -0.3f};
    const float* stereo[] {left, right};
    levels.publish(stereo, 2, 3);
    float quieter[] {0.2f, 0.2f, 0.2f};
    const float* later[] {quieter, quieter};
    levels.publish(later, 2, 3);
    EXPECT_FLOAT_EQ(levels.take(0), 0.7f) << "a later quieter block must not hide the peak";
    EXPECT_FLOAT_EQ(levels.take(1), 0.3f) << "samples that are not finite are left out";
    EXPECT_EQ(levels.take(0), 0.0f);
    EXPECT_EQ(levels.take(7), 0.0f);

    const float* mono[] {left};
    levels.publish(mono, 1, 3);
    EXPECT_FLOAT_EQ(levels.take(0), 0.7f);
    EXPECT_FLOAT_EQ(levels.take(1), 0.7f);
}

TEST(AudioMeter, RisesAtOnceFallsTwentyDecibelsASecondAndStaysInRange)
{
    AudioMeter meter(0);
    meter.setBounds(0, 0, 5, 264);
    meter.addPeak(1.0f, 0.02f);
    EXPECT_FLOAT_EQ(meter.getShownDecibels(), 0.0f);
    for (int tick = 0; tick < 50; ++tick)
        meter.addPeak(0.0f, 0.02f);
    EXPECT_NEAR(meter.getShownDecibels(), -20.0f, 1e-3f);
    EXPECT_EQ(meter.getHoldDecibels(), 0.0f) << "the peak is held";
    for (int tick = 0; tick < 50; ++tick)
        meter.addPeak(0.0f, 0.02f);
    EXPECT_NEAR(meter.getHoldDecibels(), -10.0f, 0.5f) << "held 1.5 s, then falling at the same rate";
    meter.addPeak(0.5f, 0.02f);
    EXPECT_NEAR(meter.getShownDecibels(), -6.0206f, 1e-3f);
    meter.addPeak(100.0f, 0.02f);
    EXPECT_EQ(meter.getShownDecibels(), AudioMeter::ceilingDecibels);
    meter.addPeak(0.0f, 60.0f);
    EXPECT_EQ(meter.getShownDecibels(), AudioMeter::floorDecibels);
    EXPECT_FLOAT_EQ(AudioMeterVU::proportionOf(-70.0f), 0.0f);
    EXPECT_FLOAT_EQ(AudioMeterVU::proportionOf(-32.0f), 0.5f);
    EXPECT_FLOAT_EQ(AudioMeterVU::proportionOf(400.0f), 1.0f);
}

TEST(ScrollCurve, NewValuesEnterAtTheRightAndTheOldestFallOffAtTheWidth)
{
    ScrollCurve trace;
    trace.setBounds(0, 0, 4, 20);
    const int curve = trace.addCurve({ScrollCurve::line, -0.4f, 0.4f, juce::Colour(0xFF369977), 2.0f});
    for (float v : {0.1f, 0.2f, 0.3f})
        trace.addValue(curve, v);
    EXPECT_EQ(trace.getValues(curve), (std::vector<float>{0.1f, 0.2f, 0.3f}));
    trace.addValue(curve, std::numeric_limits<float>::infinity());
    trace.addValue(curve + 1, 0.0f);
    for (float v : {0.4f, 0.5f})
        trace.addValue(curve, v);
    EXPECT_EQ(trace.getValues(curve), (std::vector<float>{0.2f, 0.3f, 0.4f, 0.5f}));
    trace.setBounds(0, 0, 2, 20);
    EXPECT_EQ(trace.getValues(curve), (std::vector<float>{0.4f, 0.5f})) << "a narrower trace keeps the newest";
}

TEST(DisplayBinding, PicturesFollowTheirParametersAndTheLiveValuesAcrossAStateLoad)
{
    FluxDeckPlugin plugin;
    plugin.prepareToPlay(48000.0, 256);
    EngineProxy* proxy = plugin.getProxy();
    const String path("/FluxDeck");
    const auto& id = FluxDeckProcessor::ids();

    RecordResponseDisplay record;
    PlayHeadResponseDisplay playback;
    FlangeDisplay flange;
    AudioMeter meter(1);
    record.bind(proxy, path);
    playback.bind(proxy, path);
    flange.bind(proxy, path);
    meter.bind(proxy, path);

    Element* element = proxy->currentElement(path);
    ASSERT_NE(element, nullptr);
    element->setFloatParameter(id.hysteresis, 0.25f);
    element->setBoolParameter(id.applyRecordHead, false);
    element->setFloatParameter(id.thickness, 0.5f);
    element->setFloatParameter(id.maxRelativeDelay, 0.01f);
    pumpMessages();
    EXPECT_EQ(record.getValues(), (RecordResponseDisplay::Values{1.0f, 0.25f, false}));
    EXPECT_FLOAT_EQ(playback.getValues().thickness, 0.5f);
    EXPECT_FLOAT_EQ(flange.getValues().maxRelativeDelay, 0.01f);

    // The 20 ms timers read what the audio thread published.
    processorOf(plugin)->flangePosition.store(0.5f);
    juce::AudioBuffer<float> buffer(2, 256);
    for (int c = 0; c < 2; ++c)
        for (int i = 0; i < 256; ++i)
            buffer.setSample(c, i, 0.5f * std::sin(0.05f * static_cast<float>(i)));
    processorOf(plugin)->outputLevels.publish(buffer.getArrayOfReadPointers(), 2, 256);
    pumpMessages(80);
    EXPECT_FLOAT_EQ(flange.getValues().flangePosition, 0.5f);
    // Taken at once at -6 dB, then falling 20 dB a second for the rest of the wait.
    EXPECT_GT(meter.getShownDecibels(), -6.03f - 20.0f * 0.2f);
    EXPECT_LT(meter.getShownDecibels(), -6.0f);

    // A state load replaces the element; every picture follows the new one.
    juce::MemoryBlock state;
    plugin.getStateInformation(state);
    element->setFloatParameter(id.hysteresis, 0.75f);
    pumpMessages();
    EXPECT_FLOAT_EQ(record.getValues().hysteresis, 0.75f);
    plugin.setStateInformation(state.getData(), static_cast<int>(state.getSize()));
    pumpMessages(60);
    ASSERT_NE(proxy->currentElement(path), nullptr);
    EXPECT_FLOAT_EQ(record.getValues().hysteresis, 0.25f);
    processorOf(plugin)->flangePosition.store(-0.25f);
    pumpMessages(80);
    EXPECT_FLOAT_EQ(flange.getValues().flangePosition, -0.25f);
}

// ---- offscreen renders -------------------------------------------------------

juce::File snapshotFolder()
{
    return juce::File::getSpecialLocation(juce::File::currentExecutableFile)
        .getParentDirectory()
        .getChildFile("display-snapshots");
}

// A picture on a stand-in of its well in the window's light panel, at scale 2.
juce::Image render(juce::Component& picture, const juce::String& name)
{
    const int margin = 8;
    const auto area = picture.getLocalBounds();
    juce::Image image(juce::Image::ARGB, (area.getWidth() + 2 * margin) * 2, (area.getHeight() + 2 * margin) * 2, true);
    {
        juce::Graphics g(image);
        g.addTransform(juce::AffineTransform::scale(2.0f));
        g.fillAll(juce::Colour(0xFFD3D3D3));
        const auto well = area.translated(margin, margin).toFloat();
        g.setColour(juce::Colour(0xFFE9E9E9));
        g.fillRoundedRectangle(well.expanded(2.0f), 3.0f);
        g.setColour(juce::Colour(0xFFB4B4B4));
        g.drawRoundedRectangle(well.expanded(2.5f), 3.0f, 1.0f);
        g.setOrigin(margin, margin);
        picture.paintEntireComponent(g, true);
    }
    const juce::File file = snapshotFolder().getChildFile(name + ".png");
    file.getParentDirectory().createDirectory();
    file.deleteFile();
    juce::FileOutputStream out(file);
    juce::PNGImageFormat().writeImageToStream(image, out);
    return image;
}

// The picture's own pixel at (x, y) in its 1x coordinates, from a render.
juce::Colour pixelOf(const juce::Image& rendered, int x, int y)
{
    return rendered.getPixelAt((x + 8) * 2, (y + 8) * 2);
}

bool near(juce::Colour a, juce::uint32 b)
{
    const juce::Colour c(b);
    return std::abs(a.getRed() - c.getRed()) < 12 && std::abs(a.getGreen() - c.getGreen()) < 12
        && std::abs(a.getBlue() - c.getBlue()) < 12;
}

TEST(DisplaySnapshots, EveryPictureRendersOffscreenWhereItsCurveBelongs)
{
    RecordResponseDisplay record;
    record.setBounds(0, 0, 201, 59);
    record.setValues({0.4f, 0.45f, true});
    render(record, "record-response-on");
    record.setValues({0.4f, 0.45f, false});
    // Head off: a flat line at 0 dB, 70/90 of the way up.
    const int zeroDbRow = static_cast<int>((1.0f - 70.0f / 90.0f) * 54.0f + 2.5f);
    EXPECT_TRUE(near(pixelOf(render(record, "record-response-off"), 100, zeroDbRow), RecordResponseDisplay::curveColour));

    MagneticWaveformDisplay waveform;
    waveform.setBounds(0, 0, 201, 59);
    waveform.setValues({1.0f, 0.55f, true});
    render(waveform, "magnetic-waveform-on");
    waveform.setValues({1.0f, 0.55f, false});
    EXPECT_TRUE(near(pixelOf(render(waveform, "magnetic-waveform-off"), 0, 29), MagneticWaveformDisplay::curveColour));

    PlayHeadResponseDisplay playback;
    playback.setBounds(0, 0, 225, 59);
    render(playback, "playhead-response-default");
    playback.setValues({0.2f, 0.6f, 0.5f, 0.4f, 1.0f, true});
    render(playback, "playhead-response-slow-worn");

    FlangeDisplay flange;
    flange.setBounds(0, 0, 271, 94);
    flange.setValues({0.008f, false, 0.6f});
    render(flange, "flange-moving");
    flange.setValues({0.008f, true, 0.0f});
    const juce::Image inverted = render(flange, "flange-phase-invert");
    // Mirrored about the middle: where deck one peaks (x = D - w / 8), deck two dips to the bottom.
    const int crest = static_cast<int>(std::round(0.008f * 26.66666666666667f * 271.0f - 271.0f / 8.0f));
    EXPECT_TRUE(near(pixelOf(inverted, crest, 91), FlangeDisplay::secondDeckColour));
    EXPECT_FALSE(near(pixelOf(inverted, crest, 3), FlangeDisplay::secondDeckColour));

    ScrollCurve trace;
    trace.setBounds(0, 0, 275, 59);
    const int curve = trace.addCurve({ScrollCurve::line, -0.4f, 0.4f, juce::Colour(0xFF369977), 2.0f});
    for (int i = 0; i < 275; ++i)
        trace.addValue(curve, 0.15f * std::sin(i * 0.07f) + 0.06f * std::sin(i * 0.61f));
    render(trace, "transport-trace");

    AudioMeter meter(0);
    meter.setBounds(0, 0, 5, 264);
    meter.addPeak(1.2f, 0.02f);
    for (int i = 0; i < 40; ++i)
        meter.addPeak(0.3f, 0.02f);
    const juce::Image level = render(meter, "meter");
    EXPECT_TRUE(near(pixelOf(level, 2, 250), 0xFFA3A3A3)) << "the bar fills from the bottom";
    EXPECT_TRUE(near(pixelOf(level, 2, 5), 0xFFFFFFFF)) << "above the level the track stays empty";
}

} // namespace
} // namespace oxa
