#pragma once
// The one road by which the window's images are read: from the virtual file system
// ("$Resource/..." lies in the embedded archive), through one process-wide cache, with
// the "@2x" twin chosen on high-density screens. An image keeps its pixel size; its
// "__ScaleFactor" property says how many pixels make one logical pixel.

#include <juce_graphics/juce_graphics.h>

namespace oxa
{
/** The image at `path`, or a null image when there is none. Message thread. */
juce::Image loadImage(const juce::String& path, bool useHighResolution = true);

/** Pixels per logical pixel of an image loaded here (1 for any other image). */
float imageScaleFactor(const juce::Image& image);

/** An image's logical size: its pixel size over its scale factor. */
juce::Rectangle<int> logicalBounds(const juce::Image& image);

/** The whole display scale that picks the twins: the largest of 1 and every display's
    scale times the desktop's, rounded up. */
int displayImageScale();

/** Makes the loader act as if the displays had this scale (0: follow the displays).
    For tools and tests that draw the window without a screen. */
void overrideDisplayImageScale(int scale);

/** The file name with "@<k>x" put before its extension ("a/b.png" -> "a/b@2x.png"). */
juce::String scaledImagePath(const juce::String& path, int k);
} // namespace oxa
