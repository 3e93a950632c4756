#include "MenuStates.h"

#include "editor/FluxDeckLookAndFeel.h"
#include "editor/FluxDeckPluginUI.h"
#include "editor/ParameterContextMenu.h"
#include "editor/widgets/ImageLoader.h"
#include "editor/widgets/SimpleEditionSettingsPanel.h"
#include "engine/MidiLearn.h"
#include "plugin/FluxDeckPlugin.h"

#include <iostream>

namespace oxa::snapshot
{
namespace
{
void settle()
{
    juce::MessageManager::getInstance()->runDispatchLoopUntil(60);
}

bool writePng(const juce::Image& image, const juce::File& file)
{
    file.deleteFile();
    juce::FileOutputStream out(file);
    juce::PNGImageFormat png;
    return out.openedOk() && png.writeImageToStream(image, out);
}

/** A popup menu drawn the way the window's look draws it when it opens: pop-up
    windows need a screen, these pictures have none. */
class MenuPicture
{
public:
    MenuPicture(const juce::PopupMenu& shown, int itemHeight, int minimumWidth) : menu(shown)
    {
        juce::LookAndFeel& look = FluxDeckLookAndFeel::instance();
        for (juce::PopupMenu::MenuItemIterator it(menu); it.next();)
        {
            const juce::PopupMenu::Item& item = it.getItem();
            int w = 0, h = 0;
            look.getIdealPopupMenuItemSize(item.text, item.isSeparator, itemHeight, w, h);
            if (item.isSectionHeader)
            {
                h += h / 2;
                w += w / 5;
            }
            rows.push_back({&item, h});
            width = std::max(width, w);
            height += h;
        }
        const int border = look.getPopupMenuBorderSize();
        width = std::max(width + 2 * border, minimumWidth);
        height += 2 * border;
    }

    int getWidth() const { return width; }
    int getHeight() const { return height; }
    /** The top of a row, from the menu's top. */
    int rowTop(int row) const
    {
        int y = FluxDeckLookAndFeel::instance().getPopupMenuBorderSize();
        for (int i = 0; i < row; ++i)
            y += rows[std::size_t(i)].height;
        return y;
    }
    int rowWithText(const juce::String& text) const
    {
        for (std::size_t i = 0; i < rows.size(); ++i)
            if (rows[i].item->text == text)
                return int(i);
        return -1;
    }
    const juce::PopupMenu* subMenu(int row) const { return rows[std::size_t(row)].item->subMenu.get(); }

    void draw(juce::Graphics& g, juce::Point<int> at, int highlightedRow) const
    {
        juce::LookAndFeel& look = FluxDeckLookAndFeel::instance();
        const juce::Rectangle<int> area(at.x, at.y, width, height);
        juce::DropShadow(juce::Colours::black.withAlpha(0.35f), 8, {0, 3}).drawForRectangle(g, area);
        juce::Graphics::ScopedSaveState saved(g);
        g.setOrigin(at);
        g.reduceClipRegion(0, 0, width, height);
        look.drawPopupMenuBackground(g, width, height);
        const int border = look.getPopupMenuBorderSize();
        int y = border;
        for (std::size_t i = 0; i < rows.size(); ++i)
        {
            const juce::PopupMenu::Item& item = *rows[i].item;
            const juce::Rectangle<int> r(border, y, width - 2 * border, rows[i].height);
            if (item.isSectionHeader)
                look.drawPopupMenuSectionHeader(g, r, item.text);
            else
                look.drawPopupMenuItem(g, r, item.isSeparator, item.isEnabled, int(i) == highlightedRow,
                                       item.isTicked, item.subMenu != nullptr, item.text, item.shortcutKeyDescription,
                                       item.image.get(), item.colour == juce::Colour() ? nullptr : &item.colour);
            y += rows[i].height;
        }
    }

private:
    struct Row
    {
        const juce::PopupMenu::Item* item;
        int height;
    };
    const juce::PopupMenu menu; // the rows point into this copy
    std::vector<Row> rows;
    int width = 0, height = 0;
};

juce::Image windowPicture(FluxDeckPluginUI& ui, int scale)
{
    return ui.createComponentSnapshot(ui.getLocalBounds(), true, float(scale));
}

/** Draws on a window picture in the window's 1x coordinates. */
struct Overlay
{
    Overlay(juce::Image& picture, int scale) : g(picture) { g.addTransform(juce::AffineTransform::scale(float(scale))); }
    juce::Graphics g;
};

juce::Point<int> inWindow(FluxDeckPluginUI& ui, juce::Component& c, juce::Point<int> local)
{
    return ui.getLocalPoint(&c, local);
}

constexpr int presetItemHeight = 22;
} // namespace

int writeMenuStates(const juce::File& dir, int scale)
{
    const juce::String suffix = "@" + juce::String(scale) + "x.png";
    int written = 0;
    auto save = [&](const juce::Image& image, const char* name) {
        if (!writePng(image, dir.getChildFile(juce::String("flux-deck-") + name + suffix)))
        {
            std::cerr << "cannot write " << name << "\n";
            return false;
        }
        ++written;
        return true;
    };

    FluxDeckPlugin plugin;
    plugin.prepareToPlay(48000.0, 512);
    std::unique_ptr<juce::AudioProcessorEditor> editor(plugin.createEditor());
    auto& ui = dynamic_cast<FluxDeckPluginUI&>(*editor);
    ui.setExpanded(true);
    settle();

    // A factory preset and a tape preset in force, the mouse over the top bar, its menu
    // open on the first bank.
    ModulePresetDisplay& bar = ui.getToolBar().getPresetDisplay();
    bar.step(+1);
    ui.getEditor().getTapePresetDisplay().step(+1);
    bar.showHover(true);
    settle();
    {
        juce::Image picture = windowPicture(ui, scale);
        Overlay overlay(picture, scale);
        PresetName& name = bar.getNameLabel();
        const MenuPicture menu(bar.buildMenu(), presetItemHeight, 0);
        const juce::Point<int> at = inWindow(ui, name, {0, name.getHeight()});
        const int bank = menu.rowWithText("Classic");
        menu.draw(overlay.g, at, bank);
        if (bank >= 0 && menu.subMenu(bank) != nullptr)
        {
            const MenuPicture sub(*menu.subMenu(bank), presetItemHeight, 0);
            sub.draw(overlay.g, {at.x + menu.getWidth(), at.y + menu.rowTop(bank) - 2}, 0);
        }
        if (!save(picture, "preset-menu"))
            return -1;
    }
    bar.showHover(false);

    // The tape bar's menu, over the expanded window.
    {
        TapeModulePresetDisplay& tapeBar = ui.getEditor().getTapePresetDisplay();
        tapeBar.showHover(true);
        juce::Image picture = windowPicture(ui, scale);
        Overlay overlay(picture, scale);
        const MenuPicture menu(tapeBar.buildMenu(), presetItemHeight, 0);
        // Too long to open above or below the bar inside the window: beside it, as a menu
        // confined to the window opens.
        const juce::Point<int> barTopLeft = inWindow(ui, tapeBar, {0, 0});
        const juce::Point<int> at(barTopLeft.x - menu.getWidth(),
                                  juce::jlimit(4, std::max(4, ui.getHeight() - menu.getHeight() - 4),
                                               barTopLeft.y - menu.getHeight() / 2));
        menu.draw(overlay.g, at, menu.rowWithText("01 Personnal System"));
        tapeBar.showHover(false);
        if (!save(picture, "tape-preset-menu"))
            return -1;
    }

    // The A/B button before any press, showing A, and showing B: the top bar only.
    {
        ABToolBar& toolBar = ui.getToolBar();
        const juce::Rectangle<int> top(0, 0, ui.getWidth(), toolBar.getHeight());
        juce::Image strip(juce::Image::ARGB, top.getWidth() * scale, top.getHeight() * 3 * scale, true);
        juce::Graphics g(strip);
        for (int state = 0; state < 3; ++state)
        {
            if (state > 0)
                toolBar.compare();
            settle();
            g.drawImageAt(ui.createComponentSnapshot(top, true, float(scale)), 0, state * top.getHeight() * scale);
        }
        if (!save(strip, "ab-states"))
            return -1;
    }

    // A controller learnt on Speed, with its settings panel open.
    const uint32_t speed = parameterIdByName("Speed");
    MidiLearn(*ui.getProxy(), String("/FluxDeck"), speed).bind(74);
    ParamSlider* speedKnob = ui.getEditor().getPlaybackSection().knob("Speed");
    if (SimpleEditionSettingsPanel* panel =
            speedKnob != nullptr ? SimpleEditionSettingsPanel::open(*speedKnob, ui.getProxy(), String("/FluxDeck"), speed)
                                 : nullptr)
    {
        settle();
        if (!save(windowPicture(ui, scale), "settings-panel"))
            return -1;
        panel->close();
        settle();
    }

    // The menu of the locked Mix knob, with a controller learnt on it.
    {
        const uint32_t mix = parameterIdByName("Mix");
        MidiLearn(*ui.getProxy(), String("/FluxDeck"), mix).bind(7);
        if (Element* fx = plugin.getEngine()->findElement(String("FluxDeck")))
            fx->setParameterLocked(mix, true);
        ParamSlider* mixKnob = ui.getEditor().knob("Mix");
        juce::Image picture = windowPicture(ui, scale);
        if (mixKnob != nullptr)
        {
            Overlay overlay(picture, scale);
            const ParameterContextMenu contextMenu(*ui.getProxy(), String("/FluxDeck"), mix);
            const MenuPicture menu(contextMenu.build(), presetItemHeight, 0);
            // Opened at the mouse, on the knob; it turns left at the window's right edge.
            const juce::Point<int> mouse = inWindow(ui, *mixKnob, mixKnob->getLocalBounds().getCentre());
            menu.draw(overlay.g, {mouse.x - menu.getWidth(), mouse.y}, 0);
        }
        if (!save(picture, "context-menu"))
            return -1;
    }
    return written;
}
} // namespace oxa::snapshot
