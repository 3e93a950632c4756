// The archive carries every image the window names, at its size and with its twin,
// and every control of the layout shows an image of its own size.
#include "editor/Layout.h"
#include "editor/widgets/ImageLoader.h"
#include "resources/Path.h"
#include "resources/Volume.h"
#include "resources/VolumeTable.h"

#include <gtest/gtest.h>
#include <juce_graphics/juce_graphics.h>

#include <cstring>
#include <vector>

using namespace oxa;

namespace
{
juce::Image readFromArchive(const juce::String& name)
{
    const std::unique_ptr<DefaultInputStream> in = Path(juce::String(layout::assetRoot) + name).openInput();
    return in != nullptr ? juce::ImageFileFormat::loadFrom(*in) : juce::Image();
}

std::vector<juce::String> filesOf(const layout::ImageSpec& spec)
{
    switch (spec.style)
    {
        case layout::ImageStyle::button4:
            return {juce::String(spec.name) + "-off", juce::String(spec.name) + "-on",
                    juce::String(spec.name) + "-off-over", juce::String(spec.name) + "-on-over"};
        case layout::ImageStyle::button2: return {juce::String(spec.name) + "-off", juce::String(spec.name) + "-on"};
        default: return {spec.name};
    }
}

const layout::ImageSpec* specOf(const char* name)
{
    for (std::size_t i = 0; i < layout::imageCount(); ++i)
        if (std::strcmp(layout::image(i).name, name) == 0)
            return &layout::image(i);
    return nullptr;
}
} // namespace

TEST(WindowImages, EveryImageIsInTheArchiveAtItsSizeWithATwiceAsLargeTwin)
{
    ensureDefaultVolumes();
    ASSERT_GE(layout::imageCount(), 33u);
    for (std::size_t i = 0; i < layout::imageCount(); ++i)
    {
        const layout::ImageSpec& spec = layout::image(i);
        for (const juce::String& base : filesOf(spec))
        {
            const juce::Image one = readFromArchive(base + ".png");
            const juce::Image two = readFromArchive(base + "@2x.png");
            ASSERT_TRUE(one.isValid()) << base;
            ASSERT_TRUE(two.isValid()) << base << "@2x";
            EXPECT_EQ(one.getWidth(), spec.width) << base;
            EXPECT_EQ(one.getHeight(), spec.height * spec.frames) << base;
            EXPECT_EQ(two.getWidth(), 2 * one.getWidth()) << base;
            EXPECT_EQ(two.getHeight(), 2 * one.getHeight()) << base;
        }
    }
}

TEST(WindowImages, EveryControlShowsAnImageOfItsOwnSize)
{
    for (std::size_t p = 0; p < layout::placedPanelCount(); ++p)
        for (const layout::Control& c : *layout::placedPanel(p).panel)
        {
            if (c.image == nullptr)
                continue;
            const layout::ImageSpec* spec = specOf(c.image);
            ASSERT_NE(spec, nullptr) << c.image;
            EXPECT_EQ(spec->width, c.bounds.w) << c.image;
            EXPECT_EQ(spec->height, c.bounds.h) << c.image;
            const int frames = c.kind == layout::Kind::knob ? c.frames
                               : c.kind == layout::Kind::reel ? c.frames / layout::reelSymmetry
                                                              : 1;
            EXPECT_EQ(spec->frames, frames) << c.image;
        }
}

TEST(WindowImages, TwinsAreChosenByTheDisplayScaleAndKeepTheirLogicalSize)
{
    ensureDefaultVolumes();
    EXPECT_EQ(scaledImagePath("$Resource/a/b_sync-on.png", 2), "$Resource/a/b_sync-on@2x.png");
    const juce::String knob = juce::String(layout::assetRoot) + "k_grey_26x26x129.png";
    const struct
    {
        int displayScale;
        float pixelsPerPoint;
    } cases[] = {{1, 1.0f}, {2, 2.0f}, {3, 2.0f}}; // a 300% screen takes the only twin there is
    for (const auto& c : cases)
    {
        overrideDisplayImageScale(c.displayScale);
        const juce::Image image = loadImage(knob);
        ASSERT_TRUE(image.isValid());
        EXPECT_EQ(imageScaleFactor(image), c.pixelsPerPoint) << c.displayScale;
        EXPECT_EQ(logicalBounds(image).getWidth(), 26) << c.displayScale;
        EXPECT_TRUE(loadImage(knob) == image) << "the cache hands out the same image";
    }
    overrideDisplayImageScale(0);
    EXPECT_FALSE(loadImage("$Resource/resource/assets/no-such-image.png").isValid());
}
