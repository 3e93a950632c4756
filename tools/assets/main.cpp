// flux-deck-draw-assets OUT_DIR FONT_FILE
// Draws every image of the window into OUT_DIR/resource/assets/, each at its 1x size and
// again at twice the size as "<name>@2x.png", from the same vector drawing. The build
// runs it before packing the resource archive.

#include "assets/Art.h"

#include <juce_events/juce_events.h>

#include <iostream>

namespace
{
using namespace oxa;

bool isLeftReel(const layout::ImageSpec& spec)
{
    return juce::String(spec.name).contains("-L_");
}

/** The window's background under a reel, at the drawing scale. Every page draws the same
    platter and tape path there, so one page serves. */
juce::Image reelBackdrop(const layout::ImageSpec& spec, int scale)
{
    const layout::Panel& main = layout::mainPanel();
    const layout::Box box =
        main.at(layout::Kind::reel, isLeftReel(spec) ? "reelLeft" : "reelRight").bounds.movedBy(main.bounds.x, main.bounds.y);
    juce::Image backdrop(juce::Image::RGB, spec.width * scale, spec.height * scale, true, juce::SoftwareImageType());
    juce::Graphics g(backdrop);
    g.addTransform(juce::AffineTransform::scale(float(scale)));
    g.setOrigin(-box.x, -box.y);
    art::paintBackground(g, layout::lfoMainPage, true);
    return backdrop;
}

void paintFrame(juce::Graphics& g, const layout::ImageSpec& spec, int frame, int state)
{
    switch (spec.style)
    {
        case layout::ImageStyle::background:
        {
            const std::string name = spec.name;
            const unsigned page = name.find("manual") != std::string::npos ? layout::manualPage
                                  : name.find("edit") != std::string::npos ? layout::lfoEditPage
                                                                            : layout::lfoMainPage;
            art::paintBackground(g, page, spec.height == layout::expandedHeight);
            break;
        }
        case layout::ImageStyle::knob:
            art::paintKnobFrame(g, spec, float(frame) / float(spec.frames - 1));
            break;
        case layout::ImageStyle::reel:
            art::paintReelFrame(g, isLeftReel(spec), float(frame) / float(layout::reelPositions));
            break;
        default: art::paintButton(g, spec, state); break;
    }
}

juce::Image draw(const layout::ImageSpec& spec, int state, int scale)
{
    // A reel's frames carry the background beneath them and no alpha: the window then
    // shows a frame with a plain copy, and never repaints what lies under it.
    const bool reel = spec.style == layout::ImageStyle::reel;
    const juce::Image backdrop = reel ? reelBackdrop(spec, scale) : juce::Image();
    juce::Image image(reel ? juce::Image::RGB : juce::Image::ARGB, spec.width * scale,
                      spec.height * spec.frames * scale, true, juce::SoftwareImageType());
    juce::Graphics g(image);
    for (int frame = 0; frame < spec.frames && reel; ++frame)
        g.drawImageAt(backdrop, 0, frame * spec.height * scale);
    g.addTransform(juce::AffineTransform::scale(float(scale)));
    for (int frame = 0; frame < spec.frames; ++frame)
    {
        juce::Graphics::ScopedSaveState save(g);
        g.setOrigin(0, frame * spec.height);
        g.reduceClipRegion(0, 0, spec.width, spec.height);
        paintFrame(g, spec, frame, state);
    }
    return image;
}

bool write(const juce::Image& image, const juce::File& file)
{
    file.getParentDirectory().createDirectory();
    juce::MemoryOutputStream bytes;
    juce::PNGImageFormat png;
    if (!png.writeImageToStream(image, bytes))
        return false;
    // Unchanged images keep their time stamps, so the archive is repacked only when needed.
    if (file.existsAsFile() && file.getSize() == int64_t(bytes.getDataSize()))
    {
        juce::MemoryBlock old;
        if (file.loadFileAsData(old) && old == bytes.getMemoryBlock())
            return true;
    }
    return file.replaceWithData(bytes.getData(), bytes.getDataSize());
}
} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
    {
        std::cerr << "usage: flux-deck-draw-assets OUT_DIR FONT_FILE\n";
        return 2;
    }
    juce::ScopedJuceInitialiser_GUI juce;
    const juce::File out = juce::File::getCurrentWorkingDirectory().getChildFile(argv[1]).getChildFile("resource/assets");
    art::loadTypeface(juce::File::getCurrentWorkingDirectory().getChildFile(argv[2]));

    static const char* const buttonSuffixes[] = {"-off", "-on", "-off-over", "-on-over"};
    int written = 0;
    for (std::size_t i = 0; i < layout::imageCount(); ++i)
    {
        const layout::ImageSpec& spec = layout::image(i);
        const int states = spec.style == layout::ImageStyle::button4 ? 4 : spec.style == layout::ImageStyle::button2 ? 2 : 1;
        for (int state = 0; state < states; ++state)
        {
            const juce::String base = juce::String(spec.name) + (states > 1 ? buttonSuffixes[state] : "");
            for (int scale : {1, 2})
            {
                const juce::String name = base + (scale == 2 ? "@2x.png" : ".png");
                if (!write(draw(spec, state, scale), out.getChildFile(name)))
                {
                    std::cerr << "cannot write " << name << "\n";
                    return 1;
                }
                ++written;
            }
        }
    }
    std::cout << "drew " << written << " images into " << out.getFullPathName() << "\n";
    return 0;
}
