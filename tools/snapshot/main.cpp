// flux-deck-snapshot DIR [--bench | --bench-only]
// Opens the plug-in's window in-process, with no display, and writes pictures of it:
// each background (LFO, LFO settings and manual mode, collapsed and expanded), then
// the expanded window with its pictures at work (record head, compander, flange,
// phase invert, the transport trace), then the open menus, the A/B states and the
// MIDI settings panel, all at scale 1 and 2. With --bench it also times full
// repaints and what the animated window costs the message thread; --bench-only
// times without writing pictures.

#include "editor/WindowSettings.h"
#include "editor/widgets/ImageLoader.h"
#include "snapshot/MenuStates.h"
#include "snapshot/Scenes.h"
#include "snapshot/WindowBench.h"
#include "snapshot/WindowDriver.h"

#include <juce_events/juce_events.h>

#include <iostream>

namespace
{
using namespace oxa;
using namespace oxa::snapshot;

bool writePng(const juce::Image& image, const juce::File& file)
{
    file.deleteFile();
    juce::FileOutputStream out(file);
    juce::PNGImageFormat png;
    return out.openedOk() && png.writeImageToStream(image, out);
}


class Album
{
public:
    explicit Album(const juce::File& dir) : dir(dir) {}

    bool add(FluxDeckPluginUI& ui, const juce::String& name, int scale)
    {
        const juce::String file = "flux-deck-" + name + "@" + juce::String(scale) + "x.png";
        if (!writePng(ui.createComponentSnapshot(ui.getLocalBounds(), true, float(scale)), dir.getChildFile(file)))
        {
            std::cerr << "cannot write " << file << "\n";
            return false;
        }
        ++written;
        return true;
    }

    int written = 0;

private:
    juce::File dir;
};

bool writePages(Album& album, int scale, bool bench)
{
    struct Page
    {
        const char* name;
        int mode;
        bool lfoSettings;
    };
    const Page pages[] = {{"lfo", 1, false}, {"lfo-edit", 1, true}, {"manual", 0, false}};
    WindowDriver d;
    for (const Page& page : pages)
        for (bool expanded : {false, true})
        {
            d.setInt("FlangeMode", page.mode);
            d.openWindow(expanded);
            if (page.mode == 1)
                d.window().setLfoSettingsOpen(page.lfoSettings);
            WindowDriver::settle();
            if (!album.add(d.window(), juce::String(page.name) + (expanded ? "-expanded" : "-collapsed"), scale))
                return false;
            if (bench && expanded && page.mode == 1 && !page.lfoSettings)
                std::cout << "full repaint, expanded window, scale " << scale << ": "
                          << juce::String(millisecondsPerRepaint(d.window(), float(scale), 20), 2) << " ms\n";
        }
    return true;
}

bool writeScenes(Album& album, int scale)
{
    for (const Scene& scene : scenes())
    {
        WindowDriver d;
        d.openWindow(true);
        bool ok = true;
        scene.play(d, [&](const char* suffix) {
            ok = ok && album.add(d.window(), juce::String("state-") + scene.name + suffix, scale);
        });
        if (!ok)
            return false;
    }
    return true;
}
} // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
    {
        std::cerr << "usage: flux-deck-snapshot DIR [--bench | --bench-only]\n";
        return 2;
    }
    juce::ScopedJuceInitialiser_GUI juceSystem;
    const juce::File dir = juce::File::getCurrentWorkingDirectory().getChildFile(argv[1]);
    const juce::String option = argc > 2 ? argv[2] : "";
    const bool benchOnly = option == "--bench-only";
    const bool bench = benchOnly || option == "--bench";
    if (!dir.createDirectory())
    {
        std::cerr << "cannot create " << dir.getFullPathName() << "\n";
        return 1;
    }

    const windowSettings::KeptAsTheUserLeftThem keep;
    Album album(dir);
    for (int scale : {1, 2})
    {
        if (benchOnly)
            break;
        overrideDisplayImageScale(scale); // the twins a screen of this density would get
        if (!writePages(album, scale, bench) || !writeScenes(album, scale))
            return 1;
        const int menus = snapshot::writeMenuStates(dir, scale);
        if (menus < 0)
            return 1;
        album.written += menus;
    }
    if (!benchOnly)
        std::cout << "wrote " << album.written << " pictures into " << dir.getFullPathName() << "\n";

    if (bench)
        for (int scale : {1, 2})
            for (bool reels : {true, false})
            {
                overrideDisplayImageScale(scale);
                const WindowLoad load = measureAnimatedWindow(float(scale), 5.0, reels);
                std::cout << "animated window, scale " << scale << (reels ? ", reels running: " : ", reels stopped: ")
                          << juce::String(load.cpuMillisecondsPerSecond, 1) << " ms of message-thread CPU per second ("
                          << juce::String(load.cpuMillisecondsPerSecond / 10.0, 1) << "% of a core), " << load.frames
                          << " frames; the loop with the window closed: "
                          << juce::String(load.closedWindowMillisecondsPerSecond, 1) << " ms/s, not counted\n";
                for (const auto& [name, milliseconds] : load.repaintMilliseconds)
                    std::cout << "  " << name << ": " << juce::String(milliseconds, 3) << " ms a repaint\n";
            }
    overrideDisplayImageScale(0);
    return 0;
}
