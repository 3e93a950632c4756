#include "editor/widgets/ImageLoader.h"

#include "resources/Path.h"
#include "resources/Volume.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <cmath>

namespace oxa
{
namespace
{
const juce::Identifier scaleProperty("__ScaleFactor");

int& scaleOverride()
{
    static int value = 0;
    return value;
}

/** Asked at each load, so a changed display configuration is seen at once: the
    displays' list is JUCE's own cached copy, and loads happen at construction only. */
int scaleOfDisplays()
{
    const juce::Desktop& desktop = juce::Desktop::getInstance();
    double largest = 1.0;
    for (const juce::Displays::Display& d : desktop.getDisplays().displays)
        largest = std::max(largest, d.scale * double(desktop.getGlobalScaleFactor()));
    return int(std::ceil(largest - 1e-9));
}

juce::Image readImage(const juce::String& path)
{
    const std::unique_ptr<DefaultInputStream> stream = Path(path).openInput();
    if (stream == nullptr)
        return {};
    return juce::ImageFileFormat::loadFrom(*stream);
}
} // namespace

juce::String scaledImagePath(const juce::String& path, int k)
{
    const int slash = path.lastIndexOfChar('/');
    const int dot = path.lastIndexOfChar('.');
    const juce::String suffix = "@" + juce::String(k) + "x";
    if (dot <= slash)
        return path + suffix;
    return path.substring(0, dot) + suffix + path.substring(dot);
}

int displayImageScale()
{
    if (scaleOverride() > 0)
        return scaleOverride();
    return scaleOfDisplays();
}

void overrideDisplayImageScale(int scale)
{
    scaleOverride() = std::max(0, scale);
}

juce::Image loadImage(const juce::String& path, bool useHighResolution)
{
    const int scale = useHighResolution ? displayImageScale() : 1;
    // One cache entry per path and scale, so a scale change never returns the other twin.
    const juce::int64 key = (path + "#" + juce::String(scale)).hashCode64();
    juce::Image image = juce::ImageCache::getFromHashCode(key);
    if (image.isValid())
        return image;

    for (int k = scale; k >= 2 && !image.isValid(); --k)
    {
        image = readImage(scaledImagePath(path, k));
        if (image.isValid())
            image.getProperties()->set(scaleProperty, k);
    }
    if (!image.isValid())
        image = readImage(path);
    if (image.isValid())
        juce::ImageCache::addImageToCache(image, key);
    return image;
}

float imageScaleFactor(const juce::Image& image)
{
    if (!image.isValid())
        return 1.0f;
    const float k = float(image.getProperties()->getWithDefault(scaleProperty, 1.0));
    return k > 0.0f ? k : 1.0f;
}

juce::Rectangle<int> logicalBounds(const juce::Image& image)
{
    const float k = imageScaleFactor(image);
    return {juce::roundToInt(float(image.getWidth()) / k), juce::roundToInt(float(image.getHeight()) / k)};
}
} // namespace oxa
