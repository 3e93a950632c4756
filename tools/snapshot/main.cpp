// flux-deck-snapshot DIR [--bench]
// Opens the plug-in's window in-process, with no display, and writes a picture of it
// for each background: LFO, LFO settings and manual mode, collapsed and expanded, at
// scale 1 and 2, and of the open menus, the A/B states and the MIDI settings panel.
// With --bench it also times full repaints of the expanded window.

#include "MenuStates.h"
#include "editor/FluxDeckPluginUI.h"
#include "editor/WindowSettings.h"
#include "editor/widgets/ImageLoader.h"
#include "plugin/FluxDeckPlugin.h"
#include "tape/FluxDeckProcessor.h"

#include <juce_events/juce_events.h>

#include <chrono>
#include <iostream>

namespace
{
using namespace oxa;

void settle()
{
    // Parameter notifications reach the window through the message queue.
    juce::MessageManager::getInstance()->runDispatchLoopUntil(60);
}

void setFlangeMode(FluxDeckPlugin& plugin, int mode)
{
    if (Element* fx = plugin.getEngine()->findElement(String("FluxDeck")))
        fx->setIntParameter(FluxDeckProcessor::ids().flangeMode, mode, true);
    settle();
}

bool writePng(const juce::Image& image, const juce::File& file)
{
    file.deleteFile();
    juce::FileOutputStream out(file);
    juce::PNGImageFormat png;
    return out.openedOk() && png.writeImageToStream(image, out);
}

double millisecondsPerRepaint(FluxDeckPluginUI& ui, float scale, int runs)
{
    (void) ui.createComponentSnapshot(ui.getLocalBounds(), true, scale); // warm the image cache
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < runs; ++i)
        (void) ui.createComponentSnapshot(ui.getLocalBounds(), true, scale);
    const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
    return elapsed.count() / runs;
}
} // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
    {
        std::cerr << "usage: flux-deck-snapshot DIR [--bench]\n";
        return 2;
    }
    juce::ScopedJuceInitialiser_GUI juceSystem;
    const juce::File dir = juce::File::getCurrentWorkingDirectory().getChildFile(argv[1]);
    const bool bench = argc > 2 && juce::String(argv[2]) == "--bench";
    if (!dir.createDirectory())
    {
        std::cerr << "cannot create " << dir.getFullPathName() << "\n";
        return 1;
    }

    struct Page
    {
        const char* name;
        int mode;
        bool lfoSettings;
    };
    const Page pages[] = {{"lfo", 1, false}, {"lfo-edit", 1, true}, {"manual", 0, false}};

    // The pictures toggle the window's height; the user's own choice is put back after.
    const bool userExpanded = windowSettings::readBool("ui.expanded", false);
    int written = 0;
    for (int scale : {1, 2})
    {
        overrideDisplayImageScale(scale); // the twins a screen of this density would get
        FluxDeckPlugin plugin;
        plugin.prepareToPlay(48000.0, 512);
        for (const Page& page : pages)
            for (bool expanded : {false, true})
            {
                setFlangeMode(plugin, page.mode);
                std::unique_ptr<juce::AudioProcessorEditor> editor(plugin.createEditor());
                auto& ui = dynamic_cast<FluxDeckPluginUI&>(*editor);
                ui.setExpanded(expanded);
                if (page.mode == 1)
                    ui.setLfoSettingsOpen(page.lfoSettings);
                settle();
                const juce::Image picture = ui.createComponentSnapshot(ui.getLocalBounds(), true, float(scale));
                const juce::String name = juce::String("flux-deck-") + page.name + (expanded ? "-expanded" : "-collapsed")
                                          + "@" + juce::String(scale) + "x.png";
                if (!writePng(picture, dir.getChildFile(name)))
                {
                    std::cerr << "cannot write " << name << "\n";
                    return 1;
                }
                ++written;
                if (bench && expanded && page.mode == 1 && !page.lfoSettings)
                    std::cout << "full repaint, expanded window, scale " << scale << ": "
                              << juce::String(millisecondsPerRepaint(ui, float(scale), 20), 2) << " ms\n";
            }
    }
    for (int scale : {1, 2})
    {
        overrideDisplayImageScale(scale);
        const int menus = snapshot::writeMenuStates(dir, scale);
        if (menus < 0)
            return 1;
        written += menus;
    }
    windowSettings::writeBool("ui.expanded", userExpanded);
    std::cout << "wrote " << written << " pictures into " << dir.getFullPathName() << "\n";
    return 0;
}
