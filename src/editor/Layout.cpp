#include "editor/Layout.h"

#include <cstdlib>
#include <cstring>

namespace oxa::layout
{
namespace
{
using K = Kind;
using L = LegendAt;

constexpr const char* bigKnob = "k_black-large_44x44x129";
constexpr const char* greyKnob = "k_grey_26x26x129";
constexpr const char* smallKnob = "k_black-small_28x28x129";
constexpr const char* tinyKnob = "k_17x17x129";
constexpr const char* reelLeft = "_flanger/k_reel-flanger-L_166x255x180";
constexpr const char* reelRight = "_flanger/k_reel-flanger-R_166x255x180";
constexpr const char* feedbackCompensationTip =
    "Compensate playback filter gain in feedback loop to avoid instability";

template <std::size_t N>
constexpr Panel makePanel(const char* name, Box bounds, const Control (&controls)[N], unsigned pages = allPages)
{
    return Panel {name, bounds, controls, N, pages};
}

const Control windowTable[] = {
    {K::button, "expandButton", {1075, 395, 33, 33}, "b_expand", 0, "Show tape settings"},
    {K::button, "SyncToHost", {914, 16, 27, 26}, "b_sync", 0, "Sync to host", "SYNC", L::right},
    {K::comboBox, "FlangeMode", {448, 248, 74, 18}, nullptr, 0, "Select mode (LFO/Manual)", "MODE", L::above},
};

const Control lfoWindowTable[] = {
    {K::button, "lfoSettingsButton", {590, 234, 101, 30}, "_flanger/b_lfo", 0, "Show LFO Settings", "LFO SHAPE",
     L::above},
    {K::overlay, "lfoWaveformDisplay", {603, 240, 64, 18}, nullptr, 0, nullptr},
};

const Control topBarTable[] = {
    {K::button, "abButton", {851, 16, 47, 26}, "b_ab-off", 0, "Store Current State to Memory A"},
};

const Control presetBarTable[] = {
    {K::button, "menuButton", {0, 16, 35, 26}, "b_burger", 0, "Load/Save presets"},
    {K::button, "prevButton", {44, 16, 16, 26}, "b_nav-prev", 0, "Load the previous preset"},
    {K::textBox, "nameLabel", {75, 16, 478, 26}, nullptr, 0, "PresetName: click to load/save presets"},
    {K::button, "nextButton", {568, 16, 16, 26}, "b_nav-next", 0, "Load the next preset"},
};

const Control mainTable[] = {
    {K::knob, "InputGain", {76, 83, 44, 44}, bigKnob, 129,
     "Input gain - not compensated on output -  right click to lock", "INPUT", L::below},
    {K::valueLabel, "InputGain", {58, 160, 80, 18}, nullptr, 0, nullptr},
    {K::knob, "Drive", {76, 228, 44, 44}, bigKnob, 129,
     "Amount of tape drive - compensated on output  - right click to lock", "DRIVE", L::below},
    {K::valueLabel, "Drive", {58, 305, 80, 18}, nullptr, 0, nullptr},
    {K::knob, "OutputGain", {1010, 83, 44, 44}, bigKnob, 129, "Output gain - right click to lock", "OUTPUT",
     L::below},
    {K::valueLabel, "OutputGain", {992, 160, 80, 18}, nullptr, 0, nullptr},
    {K::knob, "Mix", {1010, 228, 44, 44}, bigKnob, 129, "Dry/wet mix  - right click to lock", "MIX", L::below},
    {K::valueLabel, "Mix", {992, 305, 80, 18}, nullptr, 0, nullptr},
    {K::button, "ApplyRecordHead", {18, 381, 138, 18}, "b_xt-tapesim", 0, "Enable tape filtering and distortion"},
    {K::display, "recordResponseDisplay", {63, 424, 201, 59}, nullptr, 0, nullptr},
    {K::display, "magneticWaveformDisplay", {63, 424, 201, 59}, nullptr, 0, nullptr},
    {K::button, "magneticDisplayButton", {22, 429, 24, 24}, "b_rateFreq", 0,
     "Display magnetization effect on signal waveform"},
    {K::button, "responseDisplayButton", {22, 454, 24, 24}, "b_rateInt", 0, "Display tape frequency response"},
    {K::button, "ApplyCompander", {299, 381, 116, 18}, "b_xt-compander", 0, "Enable noise reduction"},
    {K::button, "ApplyPlayheadFilter", {473, 381, 154, 18}, "b_xt-filtering", 0, "Enable playback filtering"},
    {K::display, "playHeadResponseDisplay", {514, 424, 225, 59}, nullptr, 0, nullptr},
    {K::button, "ApplyTransport", {777, 381, 120, 18}, "b_xt-modulations", 0, "Enable transport modulations"},
    {K::button, "ApplyLowLatency", {895, 377, 24, 24}, "b_lowlatency", 0,
     "Reduce latency to 10 ms instead of 60 ms (maximal wow depth and flange depth are reduced as a "
     "consequence) - right click to lock",
     "LOW LATENCY", L::right},
    {K::display, "scrollCurve", {818, 424, 275, 59}, nullptr, 0, nullptr},
    {K::meter, "meterLeft", {16, 52, 5, 264}, nullptr, 0, nullptr},
    {K::meter, "meterRight", {1106, 52, 5, 264}, nullptr, 0, nullptr},
    {K::reel, "reelLeft", {177, 57, 166, 255}, reelLeft, 180, "Click to start/stop"},
    {K::reel, "reelRight", {787, 57, 166, 255}, reelRight, 180, "Click to start/stop"},
    {K::button, "PhaseInvert", {556, 197, 18, 18}, "_flanger/b_phase", 0, "Invert phase of second deck", "PHASE",
     L::above},
    {K::display, "flangeDisplay", {430, 59, 271, 94}, nullptr, 0, nullptr},
    {K::knob, "OutputPad", {794, 345, 17, 17}, tinyKnob, 129, "Tape settings makeup gain", "MAKEUP", L::left},
};

const Control tapeSectionTable[] = {
    {K::knob, "MagneticHardness", {0, 18, 26, 26}, greyKnob, 129, "Amount of magnetic response and distortion",
     "HARDNESS", L::below},
    {K::knob, "Hysteresis", {65, 18, 26, 26}, greyKnob, 129, "Magnetic highpass cutoff", "LOW CUT", L::below},
    {K::knob, "DegradeDepth", {126, 18, 26, 26}, greyKnob, 129, "Amount of random demagnetization", "DEPTH",
     L::below},
    {K::knob, "DegradeRate", {173, 18, 26, 26}, greyKnob, 129, "Rate of random demagnetization", "RATE", L::below},
    {K::knob, "NoiseGain", {220, 18, 26, 26}, greyKnob, 129, "Amount of internal noise", "NOISE", L::below},
    {K::button, "ApplyNoiseGate", {244, 0, 24, 24}, "b_clip", 0, "Enable noise gate", "GATE", L::above},
};

const Control playbackSectionTable[] = {
    {K::knob, "Speed", {0, 0, 26, 26}, greyKnob, 129,
     "Tape speed - affects playback fidelity only, not delay times (tape length is compensated)", "SPEED",
     L::below},
    {K::knob, "Spacing", {56, 0, 26, 26}, greyKnob, 129, "Spacing between playback head and tape", "SPACING",
     L::below},
    {K::knob, "Thickness", {111, 0, 26, 26}, greyKnob, 129, "Tape thickness", "THICKNESS", L::below},
    {K::knob, "Azimuth", {166, 0, 26, 26}, greyKnob, 129, "Angle between playback head and tape", "AZIMUTH",
     L::below},
    {K::knob, "TrackWidthRatio", {221, 0, 26, 26}, greyKnob, 129, "Ratio between playback head and tape widths",
     "WIDTH", L::below},
};

const Control transportSectionTable[] = {
    {K::knob, "WowMod", {0, 31, 26, 26}, greyKnob, 129, "Amount of low frequency modulation", "DEPTH", L::below},
    {K::knob, "WowRate", {47, 31, 26, 26}, greyKnob, 129, "Rate of low frequency modulation", "RATE", L::below},
    {K::knob, "FlutterMod", {112, 31, 26, 26}, greyKnob, 129, "Amount of mid frequency modulation", "DEPTH",
     L::below},
    {K::knob, "FlutterRate", {159, 31, 26, 26}, greyKnob, 129, "Rate of mid frequency modulation", "RATE",
     L::below},
    {K::knob, "NoiseMod", {225, 31, 26, 26}, greyKnob, 129, "Amount of random modulation", "DEPTH", L::below},
    {K::knob, "NoiseRate", {272, 31, 26, 26}, greyKnob, 129, "Rate of random modulation", "RATE", L::below},
    {K::button, "NoiseSync", {290, 0, 24, 24}, "b_phase", 0, "Unsync random modulations for all channels", "UNSYNC",
     L::above},
};

const Control companderSectionTable[] = {
    {K::comboBox, "NoiseReductionEncoder", {15, 1, 119, 24}, nullptr, 0, "Noise reduction encoder", "ENCODER",
     L::above},
    {K::comboBox, "NoiseReductionDecoder", {15, 92, 119, 24}, nullptr, 0, "Noise reduction decoder", "DECODER",
     L::below, true},
    {K::button, "NRLink", {54, 41, 41, 41}, "b_link", 0, "Link noise reduction encoder and decoder", "LINK",
     L::right},
};

const Control tapePresetBarTable[] = {
    {K::button, "menuButton", {0, 0, 35, 26}, "b_burger", 0, "Load/Save presets"},
    {K::textBox, "nameLabel", {34, 3, 180, 20}, nullptr, 0, nullptr},
    {K::button, "prevButton", {220, 0, 16, 26}, "b_nav-prev", 0, "Load the previous preset"},
    {K::button, "nextButton", {238, 0, 16, 26}, "b_nav-next", 0, "Load the next preset"},
};

const Control lfoMainTable[] = {
    {K::knob, "LFOFreq", {23, 25, 28, 28}, smallKnob, 129, "LFO rate", "RATE", L::below},
    {K::valueLabel, "LFOFreq", {0, 79, 74, 18}, nullptr, 0, nullptr},
    {K::knob, "MaxRelativeDelay", {98, 25, 28, 28}, smallKnob, 129, "Maximal relative delay between decks", "DEPTH",
     L::below},
    {K::valueLabel, "MaxRelativeDelay", {75, 79, 74, 18}, nullptr, 0, nullptr},
    {K::knob, "Delay", {172, 25, 28, 28}, smallKnob, 129, "Delay before feedback", "DELAY", L::below},
    {K::valueLabel, "Delay", {149, 79, 74, 18}, nullptr, 0, nullptr},
    {K::knob, "Feedback", {247, 25, 28, 28}, smallKnob, 129, "Amount of feedback", "FEEDBACK", L::below},
    {K::valueLabel, "Feedback", {224, 79, 74, 18}, nullptr, 0, nullptr},
    {K::button, "ApplyFeedbackCompensation", {276, 0, 24, 24}, "b_fbcomp", 0, feedbackCompensationTip, "FB COMP",
     L::left},
};

const Control lfoEditTable[] = {
    {K::knob, "LFOShape", {23, 25, 28, 28}, smallKnob, 129, "LFO shape", "SHAPE", L::below},
    {K::valueLabel, "LFOShape", {0, 79, 74, 18}, nullptr, 0, nullptr},
    {K::knob, "LFOSymmetry", {98, 25, 28, 28}, smallKnob, 129, "LFO symmetry", "SYMMETRY", L::below},
    {K::valueLabel, "LFOSymmetry", {75, 79, 74, 18}, nullptr, 0, nullptr},
    {K::knob, "LFOPhase", {172, 25, 28, 28}, smallKnob, 129, "LFO phase", "PHASE", L::below},
    {K::valueLabel, "LFOPhase", {149, 79, 74, 18}, nullptr, 0, nullptr},
    {K::knob, "LFOSwing", {247, 25, 28, 28}, smallKnob, 129, "LFO swing", "SWING", L::below},
    {K::valueLabel, "LFOSwing", {224, 79, 74, 18}, nullptr, 0, nullptr},
};

const Control manualTable[] = {
    {K::knob, "RelativeDelay", {18, 25, 28, 28}, smallKnob, 129, "Instant relative delay between decks",
     "POSITION", L::below},
    {K::valueLabel, "RelativeDelay", {0, 79, 64, 18}, nullptr, 0, nullptr},
    {K::knob, "MaxRelativeDelay", {83, 25, 28, 28}, smallKnob, 129, "Maximal relative delay between decks", "DEPTH",
     L::below},
    {K::valueLabel, "MaxRelativeDelay", {65, 79, 64, 18}, nullptr, 0, nullptr},
    {K::knob, "Fade", {148, 25, 28, 28}, smallKnob, 129, "Fade duration at flange beginning and ending", "FADE",
     L::below},
    {K::valueLabel, "Fade", {130, 79, 64, 18}, nullptr, 0, nullptr},
    {K::knob, "Delay", {213, 25, 28, 28}, smallKnob, 129, "Delay before feedback", "DELAY", L::below},
    {K::valueLabel, "Delay", {195, 79, 64, 18}, nullptr, 0, nullptr},
    {K::knob, "Feedback", {278, 25, 28, 28}, smallKnob, 129, "Amount of feedback", "FEEDBACK", L::below},
    {K::valueLabel, "Feedback", {260, 79, 64, 18}, nullptr, 0, nullptr},
    {K::button, "ApplyFeedbackCompensation", {305, 0, 24, 24}, "b_fbcomp", 0, feedbackCompensationTip, "FB COMP",
     L::left},
};

// The main panel's origin in the window; its nested panels are given in its coordinates.
constexpr int mainX = 0, mainY = topBarHeight;

const Decoration decorations[] = {
    {Shape::title, {22, 0, 320, topBarHeight}, "FLUX DECK"},
    {Shape::caption, {1000, 0, 110, topBarHeight}, "OXA"},
    // Upper window: the two gain columns and the deck between them.
    {Shape::plate, {30, 58, 136, 322}},
    {Shape::plate, {172, 58, 786, 322}},
    {Shape::plate, {964, 58, 136, 322}},
    {Shape::well, {396, 214, 340, 152}},
    {Shape::caption, {430, 87, 271, 14}, "DECK OFFSET"},
    // Lower window: the tape settings, four columns.
    {Shape::well, {0, 416, windowWidth, 220}},
    {Shape::rule, {294, 426, 1, 200}},
    {Shape::rule, {470, 426, 1, 200}},
    {Shape::rule, {764, 426, 1, 200}},
    {Shape::caption, {28, 557, 91, 13}, "MAGNETICS"},
    {Shape::caption, {154, 557, 73, 13}, "DEGRADE"},
    {Shape::caption, {807, 557, 73, 13}, "WOW"},
    {Shape::caption, {919, 557, 73, 13}, "FLUTTER"},
    {Shape::caption, {1032, 557, 73, 13}, "RANDOM"},
};

} // namespace

const Control* Panel::find(Kind kind, const char* name) const
{
    for (const Control& c : *this)
        if (c.kind == kind && std::strcmp(c.name, name) == 0)
            return &c;
    return nullptr;
}

const Control& Panel::at(Kind kind, const char* name) const
{
    if (const Control* c = find(kind, name))
        return *c;
    std::abort(); // a panel asked for a control its table lacks: fix the table
}

const Control* Panel::findImage(const char* imageName) const
{
    for (const Control& c : *this)
        if (c.image != nullptr && std::strcmp(c.image, imageName) == 0)
            return &c;
    return nullptr;
}

const char* backgroundName(unsigned page, bool expanded)
{
    if (page == manualPage)
        return expanded ? "_flanger/_bkg_manual_max" : "_flanger/_bkg_manual_min";
    if (page == lfoEditPage)
        return expanded ? "_flanger/_bkg_lfo-edit_max" : "_flanger/_bkg_lfo-edit_min";
    return expanded ? "_flanger/_bkg_lfo_max" : "_flanger/_bkg_lfo_min";
}

#define OXA_PANEL(function, name, bounds, table, ...)                                                              \
    const Panel& function()                                                                                        \
    {                                                                                                              \
        static const Panel panel = makePanel(name, bounds, table, ##__VA_ARGS__);                                  \
        return panel;                                                                                              \
    }

OXA_PANEL(windowControls, "window", (Box {0, 0, windowWidth, expandedHeight}), windowTable)
OXA_PANEL(lfoWindowControls, "lfoWindow", (Box {0, 0, windowWidth, expandedHeight}), lfoWindowTable, lfoPages)
OXA_PANEL(topBar, "topBar", (Box {0, 0, windowWidth, topBarHeight}), topBarTable)
OXA_PANEL(presetBar, "presetBar", (Box {249, 0, 602, topBarHeight}), presetBarTable)
OXA_PANEL(mainPanel, "main", (Box {mainX, mainY, windowWidth, expandedHeight - topBarHeight - footerHeight}),
          mainTable)
OXA_PANEL(tapeSection, "tapeSection", (Box {28, 511, 268, 50}), tapeSectionTable)
OXA_PANEL(playbackSection, "playbackSection", (Box {503, 529, 247, 26}), playbackSectionTable)
OXA_PANEL(transportSection, "transportSection", (Box {807, 498, 314, 57}), transportSectionTable)
OXA_PANEL(companderSection, "companderSection", (Box {314, 441, 150, 117}), companderSectionTable)
OXA_PANEL(tapePresetBar, "tapePresetBar", (Box {807, 341, 254, 26}), tapePresetBarTable)
OXA_PANEL(lfoMainPanel, "lfoMain", lfoPageBounds, lfoMainTable, layout::lfoMainPage)
OXA_PANEL(lfoEditPanel, "lfoEdit", lfoPageBounds, lfoEditTable, layout::lfoEditPage)
OXA_PANEL(manualPanel, "manual", (Box {403, 262, 329, 97}), manualTable, manualPage)
#undef OXA_PANEL

namespace
{
struct Placement
{
    const Panel& (*panel)();
    int originX, originY; // of the panel that holds it; the panel's own offset is added
};

const Placement placements[] = {
    {&windowControls, 0, 0},
    {&lfoWindowControls, 0, 0},
    {&topBar, 0, 0},
    {&presetBar, 0, 0},
    {&mainPanel, 0, 0},
    {&tapeSection, mainX, mainY},
    {&playbackSection, mainX, mainY},
    {&transportSection, mainX, mainY},
    {&companderSection, mainX, mainY},
    {&tapePresetBar, mainX, mainY},
    {&lfoMainPanel, lfoPanelBounds.x, lfoPanelBounds.y},
    {&lfoEditPanel, lfoPanelBounds.x, lfoPanelBounds.y},
    {&manualPanel, 0, 0},
};
} // namespace

std::size_t placedPanelCount()
{
    return sizeof(placements) / sizeof(placements[0]);
}

PlacedPanel placedPanel(std::size_t index)
{
    const Placement& p = placements[index];
    const Panel& panel = p.panel();
    return {&panel, p.originX + panel.bounds.x, p.originY + panel.bounds.y};
}

std::size_t decorationCount()
{
    return sizeof(decorations) / sizeof(decorations[0]);
}

const Decoration& decoration(std::size_t index)
{
    return decorations[index];
}

ReelGeometry reelGeometry(bool leftReel)
{
    return {83.0f, 83.0f, 79.0f, 60.0f, leftReel ? 124.0f : 42.0f, 224.0f, 13.0f};
}

namespace
{
using S = ImageStyle;
const ImageSpec images[] = {
    {"_flanger/_bkg_lfo_min", S::background, windowWidth, collapsedHeight, 1},
    {"_flanger/_bkg_lfo_max", S::background, windowWidth, expandedHeight, 1},
    {"_flanger/_bkg_lfo-edit_min", S::background, windowWidth, collapsedHeight, 1},
    {"_flanger/_bkg_lfo-edit_max", S::background, windowWidth, expandedHeight, 1},
    {"_flanger/_bkg_manual_min", S::background, windowWidth, collapsedHeight, 1},
    {"_flanger/_bkg_manual_max", S::background, windowWidth, expandedHeight, 1},
    {bigKnob, S::knob, 44, 44, 129},
    {greyKnob, S::knob, 26, 26, 129},
    {smallKnob, S::knob, 28, 28, 129},
    {tinyKnob, S::knob, 17, 17, 129},
    {reelLeft, S::reel, 166, 255, 180},
    {reelRight, S::reel, 166, 255, 180},
    {"b_expand", S::button4, 33, 33, 1},
    {"b_sync", S::button4, 27, 26, 1},
    {"_flanger/b_lfo", S::button4, 101, 30, 1},
    {"b_xt-tapesim", S::button4, 138, 18, 1},
    {"b_xt-compander", S::button4, 116, 18, 1},
    {"b_xt-filtering", S::button4, 154, 18, 1},
    {"b_xt-modulations", S::button4, 120, 18, 1},
    {"b_rateFreq", S::button4, 24, 24, 1},
    {"b_rateInt", S::button4, 24, 24, 1},
    {"b_lowlatency", S::button4, 24, 24, 1},
    {"_flanger/b_phase", S::button4, 18, 18, 1},
    {"b_clip", S::button4, 24, 24, 1},
    {"b_phase", S::button4, 24, 24, 1},
    {"b_link", S::button4, 41, 41, 1},
    {"b_fbcomp", S::button4, 24, 24, 1},
    {"b_burger", S::button2, 35, 26, 1},
    {"b_nav-prev", S::button2, 16, 26, 1},
    {"b_nav-next", S::button2, 16, 26, 1},
    {"b_ab-off", S::single, 47, 26, 1},
    {"b_ab-a-off", S::single, 47, 26, 1},
    {"b_ab-b-off", S::single, 47, 26, 1},
};
} // namespace

std::size_t imageCount()
{
    return sizeof(images) / sizeof(images[0]);
}

const ImageSpec& image(std::size_t index)
{
    return images[index];
}
} // namespace oxa::layout
