#pragma once
// The plug-in's window: background, top bar, main panel, the flange mode panels and
// the footer, at 1130 x 656, or 1130 x 435 with the tape settings folded away.

#include "editor/ABToolBar.h"
#include "editor/FluxDeckEditor.h"
#include "editor/Footer.h"
#include "editor/LFOWaveformDisplay.h"
#include "editor/LFOModeUI.h"
#include "editor/ManualModeUI.h"
#include "editor/PluginEditor.h"
#include "editor/widgets/Button.h"
#include "editor/widgets/ParamButton.h"
#include "editor/widgets/ParamComboBox.h"

#include <memory>

namespace oxa
{
class FluxDeckPlugin;

/** A full-window image, drawn at its logical size from the top left corner. */
class ImageDisplay : public juce::Component
{
public:
    void setImage(const juce::String& path);
    const juce::String& getImagePath() const { return imagePath; }
    /** Areas that opaque pictures above paint whole: a repaint inside one skips the image. */
    void setCoveredAreas(const juce::RectangleList<int>& areas) { covered = areas; }
    void paint(juce::Graphics& g) override;

private:
    juce::String imagePath;
    juce::Image image;
    juce::RectangleList<int> covered;
};

class FluxDeckPluginUI : public PluginEditor
{
public:
    explicit FluxDeckPluginUI(FluxDeckPlugin& plugin);
    ~FluxDeckPluginUI() override;

    bool isExpanded() const { return expandButton.getToggleState(); }
    /** FlangeMode as last seen: 0 manual, 1 LFO. */
    int getMode() const { return currentMode; }
    /** What a click on the expand button does, for tools and tests. */
    void setExpanded(bool expanded);
    /** What a click on the LFO settings button does, for tools and tests. */
    void setLfoSettingsOpen(bool open);
    /** Picks the background by mode, settings button and height, and sizes the window. */
    void updateBackgroundAndSize();

    ImageDisplay& getBackground() { return background; }
    FluxDeckEditor& getEditor() { return editor; }
    ABToolBar& getToolBar() { return toolBar; }
    Footer& getFooter() { return footer; }
    Button& getExpandButton() { return expandButton; }
    Button& getLfoSettingsButton() { return lfoSettingsButton; }
    ParamButton& getSyncButton() { return syncButton; }
    ParamComboBox& getModeComboBox() { return modeComboBox; }
    LFOModeUI& getLfoModeUI() { return lfoModeUI; }
    ManualModeUI& getManualModeUI() { return manualModeUI; }
    LFOWaveformDisplay& getLfoWaveformDisplay() { return lfoWaveformDisplay; }

    void paint(juce::Graphics& g) override;
    void resized() override;
    int getControlParameterIndex(juce::Component& component) override;

private:
    void modeChanged(int mode);

    FluxDeckEditor editor;
    ImageDisplay background;
    ABToolBar toolBar;
    Footer footer;
    Button expandButton {"expandButton"};
    ParamButton syncButton;
    Button lfoSettingsButton {"lfoSettingsButton"};
    LFOModeUI lfoModeUI;
    LFOWaveformDisplay lfoWaveformDisplay;
    ParamComboBox modeComboBox;
    ManualModeUI manualModeUI;
    std::unique_ptr<ElementParameterValue<int>> modeView;
    int currentMode = 1; // FlangeMode's default until the element reports
};
} // namespace oxa
