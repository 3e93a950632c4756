#pragma once
// Where every control of the window sits, which image it shows and which legend the
// background prints at it. The panels build their widgets from these tables and the
// asset drawing program paints the backgrounds from the very same tables, so a moved
// control takes its legend, ring and frame along. All numbers are 1x pixels.
//
// Plain data with no JUCE and no element framework: the drawing program links it alone.

#include <cstddef>

namespace oxa::layout
{
struct Box
{
    int x = 0, y = 0, w = 0, h = 0;

    constexpr int right() const { return x + w; }
    constexpr int bottom() const { return y + h; }
    constexpr float centreX() const { return x + w * 0.5f; }
    constexpr float centreY() const { return y + h * 0.5f; }
    constexpr Box movedBy(int dx, int dy) const { return {x + dx, y + dy, w, h}; }
};

/** The three background families, as a bit mask for "shown in". */
enum Page : unsigned
{
    lfoMainPage = 1,
    lfoEditPage = 2,
    manualPage = 4,
    lfoPages = lfoMainPage | lfoEditPage,
    allPages = lfoPages | manualPage
};

enum class Kind
{
    knob,       // filmstrip slider bound to a parameter
    valueLabel, // the value of a parameter as text
    button,     // image button, bound when `parameter` is set
    comboBox,   // the background draws its box (unless ownBox); the widget draws only text
    display,    // a picture drawn by code over a screen in the background
    overlay,    // a picture drawn by code over a button, with no screen of its own
    reel,       // the turning reel filmstrips
    meter,      // level meter over a track in the background
    textBox     // a text field over a box in the background (preset names)
};

enum class LegendAt
{
    none,
    above,
    below,
    left,
    right
};

struct Control
{
    Kind kind;
    /** The element parameter's name for a bound widget (capitalised, as parameters are
        named), or the widget's role for an unbound one ("expandButton"). */
    const char* name;
    Box bounds;            // relative to the panel
    const char* image;     // below "resource/assets/", without state suffix and ".png"
    int frames;            // filmstrip frames; 0 for other images
    const char* tooltip;
    const char* legend = nullptr; // printed in the background at the control
    LegendAt legendAt = LegendAt::none;
    /** A combo box whose panel draws its box, because the box changes with the panel's state. */
    bool ownBox = false;

    bool isBound() const { return name != nullptr && name[0] >= 'A' && name[0] <= 'Z'; }
};

struct Panel
{
    const char* name;
    Box bounds; // in the window
    const Control* first;
    std::size_t count;
    unsigned pages = allPages;

    const Control* begin() const { return first; }
    const Control* end() const { return first + count; }
    /** The first control of a kind with that name, or null. */
    const Control* find(Kind kind, const char* name) const;
    /** Like find, for controls that must exist: a missing one is a programming error. */
    const Control& at(Kind kind, const char* name) const;
    /** The first control of a kind showing the image, or null. */
    const Control* findImage(const char* image) const;
};

/** Background-only shapes: plates, screens, rules and captions. */
enum class Shape
{
    plate,     // raised panel of the upper window
    well,      // recessed area of the lower, expanded window
    screen,    // light inset under a display
    rule,      // a one-pixel separator line (w or h is 1)
    caption,   // a text
    title      // the product's name
};

struct Decoration
{
    Shape shape;
    Box bounds; // in the window
    const char* text = nullptr;
    unsigned pages = allPages;
};

// ---- the window ---------------------------------------------------------------------
constexpr int windowWidth = 1130;
constexpr int expandedHeight = 656;
constexpr int collapseBy = 221;
constexpr int collapsedHeight = expandedHeight - collapseBy;
constexpr int topBarHeight = 45;
constexpr int footerHeight = 20;

constexpr unsigned panelColour = 0xFFD3D3D3;
constexpr unsigned legendColour = 0xFF424242;
constexpr unsigned accentColour = 0xFF785991;
constexpr unsigned valueColour = 0xFF906AAE;
constexpr unsigned footerColour = 0xFF646464;
constexpr unsigned boxFillColour = 0xFFE8E8E8; // inside of combo boxes and text fields
constexpr unsigned boxEdgeColour = 0xFFA6A6A6; // their rim, and the screens' rim
constexpr unsigned iconColour = 0xFF6A6A6A;    // arrows and button glyphs

/** Folder of all images inside the archive, with the "$Resource/" volume prefix. */
constexpr const char* assetRoot = "$Resource/resource/assets/";

/** The background for a page and height, below `assetRoot`, without ".png". */
const char* backgroundName(unsigned page, bool expanded);

// ---- panels -------------------------------------------------------------------------
const Panel& windowControls();   // children of the top-level window
const Panel& lfoWindowControls(); // the LFO settings button and its picture
const Panel& topBar();           // the A/B bar
const Panel& presetBar();        // the effect's preset bar inside the top bar
const Panel& mainPanel();        // the main panel, below the top bar
const Panel& tapeSection();      // these four sit inside the main panel
const Panel& playbackSection();
const Panel& transportSection();
const Panel& companderSection();
const Panel& tapePresetBar();    // the tape preset bar inside the main panel
const Panel& lfoMainPanel();     // both LFO pages inside the LFO panel
const Panel& lfoEditPanel();
const Panel& manualPanel();

/** The LFO panel's own bounds in the window; its pages lie at (0, 0, 350, 97) in it. */
constexpr Box lfoPanelBounds {416, 262, 300, 97};
constexpr Box lfoPageBounds {0, 0, 350, 97};

/** Every panel, with bounds in the window (nested panels already moved). */
struct PlacedPanel
{
    const Panel* panel;
    int originX, originY;
};
std::size_t placedPanelCount();
PlacedPanel placedPanel(std::size_t index);

std::size_t decorationCount();
const Decoration& decoration(std::size_t index);

/** Shapes of a reel strip that the backgrounds continue (the tape path), in the reel's
    own 1x coordinates. The left reel's guide roller sits right of its hub, the right
    reel's left of it, so that the tape runs between them. */
struct ReelGeometry
{
    float hubX, hubY;
    float flangeRadius, packRadius;
    float rollerX, rollerY, rollerRadius;
};
ReelGeometry reelGeometry(bool leftReel);

// ---- the images ---------------------------------------------------------------------
enum class ImageStyle
{
    background,
    knob,
    reel,
    button4,   // off, on, off-over, on-over
    button2,   // off, on
    single     // one image of its own name
};

struct ImageSpec
{
    const char* name; // below "resource/assets/", without suffix and ".png"
    ImageStyle style;
    int width, height; // one frame, 1x
    int frames;        // stacked vertically; 1 for non-strips
};

/** Every image the window uses, each also drawn at twice the size as "<name>@2x.png". */
std::size_t imageCount();
const ImageSpec& image(std::size_t index);
} // namespace oxa::layout
