#pragma once
// The main panel below the top bar: the gain knobs, the reels, the meters, the flange
// picture, the section switches and the tape settings of the expanded window with their
// pictures, over the background image. Its 20 ms timer feeds the transport trace from
// the processor's monitor and turns the reels while they run.

#include "editor/BoundPanel.h"
#include "editor/CompanderSection.h"
#include "editor/PlaybackSection.h"
#include "editor/TapeModulePresetDisplay.h"
#include "editor/TapeSection.h"
#include "editor/TransportSection.h"
#include "editor/displays/AudioMeter.h"
#include "editor/displays/FlangeDisplay.h"
#include "editor/displays/MagneticWaveformDisplay.h"
#include "editor/displays/PlayHeadResponseDisplay.h"
#include "editor/displays/RecordResponseDisplay.h"
#include "editor/displays/ScrollCurve.h"
#include "editor/widgets/Button.h"
#include "editor/widgets/Slider.h"

#include <initializer_list>
#include <memory>
#include <vector>

namespace oxa
{
class FluxDeckProcessor;
class SignalMonitoringFIFO;

class FluxDeckEditor : public BoundPanel, public SimpleElementView, private juce::Timer
{
public:
    explicit FluxDeckEditor(EngineProxy* proxy);
    ~FluxDeckEditor() override;

    TapeSection& getTapeSection() { return tapeSection; }
    PlaybackSection& getPlaybackSection() { return playbackSection; }
    TransportSection& getTransportSection() { return transportSection; }
    CompanderSection& getCompanderSection() { return companderSection; }
    Slider& getReel(bool left) { return left ? reelLeft : reelRight; }
    Button& getMagneticDisplayButton() { return magneticDisplayButton; }
    Button& getResponseDisplayButton() { return responseDisplayButton; }
    RecordResponseDisplay& getRecordResponseDisplay() { return recordResponseDisplay; }
    MagneticWaveformDisplay& getMagneticWaveformDisplay() { return magneticWaveformDisplay; }
    PlayHeadResponseDisplay& getPlayHeadResponseDisplay() { return playHeadResponseDisplay; }
    ScrollCurve& getScrollCurve() { return scrollCurve; }
    FlangeDisplay& getFlangeDisplay() { return flangeDisplay; }
    AudioMeter& getMeter(bool left) { return left ? meterLeft : meterRight; }
    TapeModulePresetDisplay& getTapePresetDisplay() { return tapePresetDisplay; }

    /** Shows the record picture that the two display buttons choose. */
    void updateResponseDisplay();

    bool isReelRunning() const { return reelRunning; }
    float getReelTime() const { return reelTime; }
    /** One timer tick: the trace takes the monitor's new samples, the reels move by the tape speed. */
    void advance();

    void elementChanged(const String& path) override;
    void mouseDown(const juce::MouseEvent& e) override;

private:
    void timerCallback() override { advance(); }
    void setUpReel(Slider& reel, const layout::Control& c);
    void setUpDisplayButton(Button& button, const layout::Control& c);
    void setUpPictures(const layout::Panel& table);
    /** One trace point for each 10 ms of audio waiting in the monitor: their maximum. */
    void drainMonitor();
    std::unique_ptr<ElementParameterValue<bool>> switchView(const char* parameter, juce::Component& section,
                                                            std::initializer_list<juce::Component*> dimmedOnly = {});

    FluxDeckProcessor* processor = nullptr;
    float reelTime = 0.0f;
    bool reelRunning = false;

    TapeSection tapeSection;
    CompanderSection companderSection;
    PlaybackSection playbackSection;
    TransportSection transportSection;
    Button magneticDisplayButton {"magneticDisplayButton"};
    Button responseDisplayButton {"responseDisplayButton"};
    Slider reelLeft, reelRight;
    RecordResponseDisplay recordResponseDisplay;
    MagneticWaveformDisplay magneticWaveformDisplay;
    PlayHeadResponseDisplay playHeadResponseDisplay;
    ScrollCurve scrollCurve;
    AudioMeter meterLeft {0}, meterRight {1};
    FlangeDisplay flangeDisplay;
    TapeModulePresetDisplay tapePresetDisplay;
    std::shared_ptr<SignalMonitoringFIFO> monitor;
    std::vector<float> traceScratch;
    std::unique_ptr<ElementParameterValue<bool>> recordHeadView, playbackView, companderView, transportView;
};
} // namespace oxa
