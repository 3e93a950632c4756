#include "editor/FluxDeckPluginUI.h"

#include "editor/FluxDeckLookAndFeel.h"
#include "editor/WindowSettings.h"
#include "editor/widgets/ImageLoader.h"
#include "plugin/FluxDeckPlugin.h"

namespace oxa
{
namespace
{
juce::String asset(const char* image, const char* suffix = "")
{
    return juce::String(layout::assetRoot) + image + suffix + ".png";
}

void place(juce::Component& c, const layout::Box& b)
{
    c.setBounds(b.x, b.y, b.w, b.h);
}

void setFourImages(Button& button, const char* image)
{
    button.setImages(asset(image, "-off"), asset(image, "-on"), asset(image, "-off-over"), asset(image, "-on-over"));
}
} // namespace

void ImageDisplay::setImage(const juce::String& path)
{
    if (path == imagePath)
        return;
    imagePath = path;
    image = loadImage(path);
    // The backgrounds have no transparent pixel: kept without alpha, every repaint of a
    // picture's rectangle starts with a plain copy of them instead of a blend.
    if (image.isValid() && image.hasAlphaChannel())
    {
        const juce::var scale = image.getProperties()->getWithDefault("__ScaleFactor", {});
        image = image.convertedToFormat(juce::Image::RGB);
        if (!scale.isVoid())
            image.getProperties()->set("__ScaleFactor", scale);
    }
    // Opaque, the window's own fill beneath it is never painted.
    setOpaque(image.isValid());
    repaint();
}

void ImageDisplay::paint(juce::Graphics& g)
{
    if (!image.isValid() || covered.containsRectangle(g.getClipBounds()))
        return;
    // Left, top, and only ever reduced: the image's logical size is the window's.
    const juce::Rectangle<int> logical = logicalBounds(image);
    const int w = std::min(logical.getWidth(), getWidth()), h = std::min(logical.getHeight(), getHeight());
    const float k = imageScaleFactor(image);
    g.drawImage(image, 0, 0, w, h, 0, 0, juce::roundToInt(float(w) * k), juce::roundToInt(float(h) * k));
}

FluxDeckPluginUI::FluxDeckPluginUI(FluxDeckPlugin& plugin)
    : PluginEditor(plugin, false), editor(getProxy()), toolBar(getProxy()),
      syncButton(getProxy(), effectPath(), parameterIdByName("SyncToHost")), lfoModeUI(getProxy()),
      lfoWaveformDisplay(getProxy()), modeComboBox(getProxy(), effectPath(), parameterIdByName("FlangeMode")),
      manualModeUI(getProxy())
{
    if (&juce::LookAndFeel::getDefaultLookAndFeel() != &FluxDeckLookAndFeel::instance())
        juce::LookAndFeel::setDefaultLookAndFeel(&FluxDeckLookAndFeel::instance());
    setOpaque(true);

    background.setName("background");
    background.setInterceptsMouseClicks(false, false);
    background.setImage(asset(layout::backgroundName(layout::lfoMainPage, false)));
    addAndMakeVisible(background);
    addAndMakeVisible(toolBar);
    addAndMakeVisible(editor);
    place(manualModeUI, layout::manualPanel().bounds);
    addAndMakeVisible(manualModeUI);
    place(lfoModeUI, layout::lfoPanelBounds);
    addAndMakeVisible(lfoModeUI);
    // The footer shows tooltips but takes no clicks: what lies below it stays usable.
    footer.setInterceptsMouseClicks(false, false);
    addAndMakeVisible(footer);

    const layout::Panel& window = layout::windowControls();
    const layout::Control& expand = window.at(layout::Kind::button, "expandButton");
    const bool wasExpanded = windowSettings::readBool("ui.expanded", false);
    expandButton.setClickingTogglesState(true);
    place(expandButton, expand.bounds);
    setFourImages(expandButton, expand.image);
    expandButton.setTooltip(expand.tooltip);
    expandButton.onClick = [this] { updateBackgroundAndSize(); };
    addAndMakeVisible(expandButton);
    expandButton.setToggleState(wasExpanded, juce::dontSendNotification);

    const layout::Control& sync = window.at(layout::Kind::button, "SyncToHost");
    place(syncButton, sync.bounds);
    setFourImages(syncButton, sync.image);
    syncButton.setTooltip(sync.tooltip);
    syncButton.openSettingsOnRightClick = false;
    syncButton.openSettingsOnAltRightClick = false;
    syncButton.settingsThirdOption = false;
    addAndMakeVisible(syncButton);

    const layout::Panel& lfoControls = layout::lfoWindowControls();
    const layout::Control& settings = lfoControls.at(layout::Kind::button, "lfoSettingsButton");
    place(lfoSettingsButton, settings.bounds);
    setFourImages(lfoSettingsButton, settings.image);
    lfoSettingsButton.setClickingTogglesState(true);
    lfoSettingsButton.setTooltip(settings.tooltip);
    lfoSettingsButton.onClick = [this] { setLfoSettingsOpen(lfoSettingsButton.getToggleState()); };
    addAndMakeVisible(lfoSettingsButton);
    place(lfoWaveformDisplay, lfoControls.at(layout::Kind::overlay, "lfoWaveformDisplay").bounds);
    addAndMakeVisible(lfoWaveformDisplay);

    const layout::Control& mode = window.at(layout::Kind::comboBox, "FlangeMode");
    place(modeComboBox, mode.bounds);
    modeComboBox.setColour(juce::ComboBox::textColourId, juce::Colour(layout::legendColour));
    for (int colour : {juce::ComboBox::backgroundColourId, juce::ComboBox::outlineColourId,
                       juce::ComboBox::arrowColourId, juce::ComboBox::buttonColourId,
                       juce::ComboBox::focusedOutlineColourId})
        modeComboBox.setColour(colour, juce::Colours::transparentBlack);
    modeComboBox.setJustificationType(juce::Justification::centredLeft);
    modeComboBox.getProperties().set("menuHeight", 22);
    modeComboBox.setTooltip(mode.tooltip);
    modeComboBox.openSettingsOnRightClick = false;
    modeComboBox.openSettingsOnAltRightClick = false;
    modeComboBox.settingsThirdOption = false;
    addAndMakeVisible(modeComboBox);

    updateBackgroundAndSize();
    lfoModeUI.setShowEdit(lfoSettingsButton.getToggleState());
    // Bound last: it reports the mode at once, and again whenever anything changes it.
    modeView = std::make_unique<ElementParameterValue<int>>(getProxy(), effectPath(), parameterIdByName("FlangeMode"),
                                                            [this](int m) { modeChanged(m); });
    if (modeView->getElement() == nullptr)
        modeChanged(currentMode);
}

FluxDeckPluginUI::~FluxDeckPluginUI()
{
    windowSettings::writeBool("ui.expanded", expandButton.getToggleState());
    modeView.reset();
}

void FluxDeckPluginUI::setExpanded(bool expanded)
{
    expandButton.setToggleState(expanded, juce::dontSendNotification);
    updateBackgroundAndSize();
}

void FluxDeckPluginUI::setLfoSettingsOpen(bool open)
{
    lfoSettingsButton.setToggleState(open, juce::dontSendNotification);
    updateBackgroundAndSize();
    lfoModeUI.setShowEdit(open);
}

void FluxDeckPluginUI::modeChanged(int mode)
{
    currentMode = mode;
    const bool lfo = mode == 1;
    lfoModeUI.setVisible(lfo);
    lfoSettingsButton.setVisible(lfo);
    lfoWaveformDisplay.setVisible(lfo);
    manualModeUI.setVisible(mode == 0);
    updateBackgroundAndSize();
}

void FluxDeckPluginUI::updateBackgroundAndSize()
{
    const bool expanded = expandButton.getToggleState();
    unsigned page = 0; // any other mode keeps the image it has
    if (currentMode == 1)
        page = lfoSettingsButton.getToggleState() ? layout::lfoEditPage : layout::lfoMainPage;
    else if (currentMode == 0)
        page = layout::manualPage;
    if (page != 0)
        background.setImage(asset(layout::backgroundName(page, expanded)));
    setSize(layout::windowWidth, expanded ? layout::expandedHeight : layout::collapsedHeight);
}

void FluxDeckPluginUI::paint(juce::Graphics& g)
{
    g.fillAll(juce::Colour(layout::panelColour));
}

void FluxDeckPluginUI::resized()
{
    const int w = getWidth(), h = getHeight();
    background.setBounds(0, 0, w, h);
    toolBar.setBounds(0, 0, w, layout::topBarHeight);
    editor.setBounds(0, layout::topBarHeight, w, h - layout::topBarHeight - layout::footerHeight);
    footer.setBounds(0, h - layout::footerHeight, w, layout::footerHeight);
    footer.repaint(); // the version text follows the expand button
    juce::RectangleList<int> reels;
    for (bool left : {true, false})
        if (const Slider& reel = editor.getReel(left); reel.isOpaque())
            reels.add(getLocalArea(&editor, reel.getBounds().getIntersection(editor.getLocalBounds())));
    background.setCoveredAreas(reels);
}

int FluxDeckPluginUI::getControlParameterIndex(juce::Component& component)
{
    auto* view = dynamic_cast<SimpleElementParameterView*>(&component);
    if (view == nullptr && component.getParentComponent() != nullptr)
        view = dynamic_cast<SimpleElementParameterView*>(component.getParentComponent());
    if (view == nullptr)
        return -1;
    const std::optional<size_t> slot = getPlugin().findSlot(view->getElementPath(), view->resolvedId());
    return slot ? int(*slot) : -1;
}
} // namespace oxa
