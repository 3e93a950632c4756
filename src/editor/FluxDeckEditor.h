#pragma once
// The main panel below the top bar: the gain knobs, the reels, the section switches and
// the tape settings of the expanded window, over the background image. Its 20 ms timer
// turns the reels while they run.

#include "editor/BoundPanel.h"
#include "editor/CompanderSection.h"
#include "editor/PlaybackSection.h"
#include "editor/TapeSection.h"
#include "editor/TransportSection.h"
#include "editor/widgets/Button.h"
#include "editor/widgets/Slider.h"

#include <memory>

namespace oxa
{
class FluxDeckProcessor;

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

    bool isReelRunning() const { return reelRunning; }
    float getReelTime() const { return reelTime; }
    /** One timer tick: the reels move by the tape speed. */
    void advance();

    void elementChanged(const String& path) override;
    void mouseDown(const juce::MouseEvent& e) override;

private:
    void timerCallback() override { advance(); }
    void setUpReel(Slider& reel, const layout::Control& c);
    void setUpDisplayButton(Button& button, const layout::Control& c);
    std::unique_ptr<ElementParameterValue<bool>> switchView(const char* parameter, juce::Component& section);

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
    std::unique_ptr<ElementParameterValue<bool>> recordHeadView, playbackView, companderView, transportView;
};
} // namespace oxa
