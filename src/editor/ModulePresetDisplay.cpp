#include "editor/ModulePresetDisplay.h"

#include "editor/BoundPanel.h"
#include "editor/FluxDeckLookAndFeel.h"
#include "resources/Volume.h"

#include <algorithm>

namespace oxa
{
namespace
{
juce::String asset(const char* image, const char* suffix)
{
    return juce::String(layout::assetRoot) + image + suffix + ".png";
}

juce::String withoutTrailingSlash(const std::string& text)
{
    juce::String s = juce::String::fromUTF8(text.c_str());
    while (s.endsWithChar('/'))
        s = s.dropLastCharacters(1);
    return s;
}

/** "01 Classic" is listed as "Classic": the number only sorts the banks. */
juce::String folderTitle(const juce::String& folder)
{
    const juce::String rest = folder.trimStart().fromFirstOccurrenceOf(" ", false, false);
    return folder.initialSectionContainingOnly("0123456789").isNotEmpty() && rest.isNotEmpty() ? rest : folder;
}

juce::String fileTitle(const juce::String& file)
{
    return file.containsChar('.') ? file.upToLastOccurrenceOf(".", false, false) : file;
}

/** One folder of a menu tree; files and subfolders keep the listing's order. */
struct MenuFolder
{
    struct Entry
    {
        juce::String name;
        int id = 0;                          // a file
        std::unique_ptr<MenuFolder> folder;  // or a folder
    };
    std::vector<Entry> entries;

    MenuFolder& folderNamed(const juce::String& name)
    {
        for (Entry& e : entries)
            if (e.folder != nullptr && e.name == name)
                return *e.folder;
        entries.push_back({name, 0, std::make_unique<MenuFolder>()});
        return *entries.back().folder;
    }

    void addTo(juce::PopupMenu& menu, int tickedId) const
    {
        for (const Entry& e : entries)
        {
            if (e.folder == nullptr)
            {
                menu.addItem(e.id, fileTitle(e.name), true, e.id == tickedId);
                continue;
            }
            juce::PopupMenu sub;
            e.folder->addTo(sub, tickedId);
            menu.addSubMenu(folderTitle(e.name), sub);
        }
    }
};

/** The presets below `root` as a tree, with the ids of their places in `all`. */
MenuFolder treeBelow(const Path& root, const std::vector<Path>& all)
{
    MenuFolder top;
    const juce::String prefix = withoutTrailingSlash(root.str()) + "/";
    for (std::size_t i = 0; i < all.size(); ++i)
    {
        const juce::String path = juce::String::fromUTF8(all[i].str().c_str());
        if (!path.startsWith(prefix))
            continue;
        juce::StringArray parts = juce::StringArray::fromTokens(path.substring(prefix.length()), "/", "");
        parts.removeEmptyStrings();
        if (parts.isEmpty())
            continue;
        MenuFolder* folder = &top;
        for (int p = 0; p < parts.size() - 1; ++p)
            folder = &folder->folderNamed(parts[p]);
        folder->entries.push_back({parts[parts.size() - 1], ModulePresetDisplay::firstPresetId + int(i), nullptr});
    }
    return top;
}

juce::File nativeFile(const Path& path)
{
    return juce::File(withoutTrailingSlash(path.str()));
}
} // namespace

ModulePresetDisplay::ModulePresetDisplay(EngineProxy* proxy)
    : ModulePresetDisplay(proxy, std::make_unique<FullPresetBank>(), layout::presetBar(),
                          {juce::Colour(layout::accentColour), 20.0f, juce::Justification::centred, true})
{
}

ModulePresetDisplay::ModulePresetDisplay(EngineProxy* proxy, std::unique_ptr<PresetBank> presetBank,
                                         const layout::Panel& panelTable, const NameStyle& style)
    : SimpleElementView(proxy, effectPath()), bank(std::move(presetBank)), table(panelTable),
      nameLabel(bank->propertyKey, style.showModifiedMark)
{
    setName(table.name);
    setUpButton(menuButton, "menuButton", "MenuButton");
    setUpButton(prevButton, "prevButton", "PrevButton");
    setUpButton(nextButton, "nextButton", "NextButton");
    menuButton.onClick = [this] { showMenu(); };
    prevButton.onClick = [this] { step(-1); };
    nextButton.onClick = [this] { step(+1); };
    for (Button* nav : {&prevButton, &nextButton})
    {
        for (int id : {juce::TextButton::buttonColourId, juce::TextButton::buttonOnColourId})
            nav->setColour(id, juce::Colours::transparentBlack);
        nav->setColour(juce::TextButton::textColourOffId, juce::Colour(0xFF919191));
        nav->setColour(juce::TextButton::textColourOnId, juce::Colour(0xFF919191).withAlpha(0.6f));
        nav->setVisible(false);
    }

    nameLabel.setBaseColour(style.colour);
    nameLabel.setFont(FluxDeckLookAndFeel::instance().fontOfHeight(style.fontHeight));
    nameLabel.setJustificationType(style.justification);
    nameLabel.setBorderSize({0, 4, 0, 4});
    if (const layout::Control* c = table.find(layout::Kind::textBox, "nameLabel"); c != nullptr && c->tooltip)
        nameLabel.setTooltip(c->tooltip);
    addAndMakeVisible(nameLabel);

    // Hover shows the arrows: the bar hears the mouse over itself and all its children.
    addMouseListener(this, true);
    watch(effectPath());
    resized();
}

ModulePresetDisplay::~ModulePresetDisplay()
{
    cancelPendingUpdate();
    stopWatching();
}

void ModulePresetDisplay::setUpButton(Button& button, const char* role, const char* componentName)
{
    const layout::Control& c = table.at(layout::Kind::button, role);
    button.setName(componentName);
    // Two images: the second shows under the mouse and while pressed.
    button.setImages(asset(c.image, "-off"), asset(c.image, "-on"), asset(c.image, "-on"), asset(c.image, "-on"));
    if (c.tooltip != nullptr)
        button.setTooltip(c.tooltip);
    addAndMakeVisible(button);
}

void ModulePresetDisplay::resized()
{
    auto place = [this](juce::Component& c, layout::Kind kind, const char* role) {
        const layout::Box& b = table.at(kind, role).bounds;
        c.setBounds(b.x, b.y, b.w, b.h);
    };
    place(menuButton, layout::Kind::button, "menuButton");
    place(prevButton, layout::Kind::button, "prevButton");
    place(nextButton, layout::Kind::button, "nextButton");
    place(nameLabel, layout::Kind::textBox, "nameLabel");
}

void ModulePresetDisplay::elementChanged(const String&)
{
    Element* e = getElement();
    bank->bind(e != nullptr ? e->weak_from_this().lock() : nullptr);
    nameLabel.setElement(e);
}

void ModulePresetDisplay::afterChange()
{
    nameLabel.refresh();
}

bool ModulePresetDisplay::loadPreset(const Path& path)
{
    const bool loaded = bank->loadPreset(path);
    afterChange();
    return loaded;
}

bool ModulePresetDisplay::savePreset(const Path& path)
{
    const bool saved = bank->savePreset(path);
    afterChange();
    return saved;
}

bool ModulePresetDisplay::loadDefaults()
{
    const bool loaded = bank->loadDefaults();
    afterChange();
    return loaded;
}

bool ModulePresetDisplay::step(int direction)
{
    const std::vector<Path> all = bank->listPresets();
    if (all.empty())
        return false;
    const Path current = bank->currentPreset();
    // From no preset, or one that is not in the folders, both arrows start at the first.
    const bool listed = std::find(all.begin(), all.end(), current) != all.end();
    return loadPreset(listed ? bank->stepFrom(current, direction < 0 ? -1 : 1) : all.front());
}

juce::PopupMenu ModulePresetDisplay::buildMenu()
{
    menuPresets = bank->listPresets();
    const Path current = bank->currentPreset();
    int tickedId = 0;
    for (std::size_t i = 0; i < menuPresets.size(); ++i)
        if (menuPresets[i] == current)
            tickedId = firstPresetId + int(i);

    juce::PopupMenu menu;
    menu.addItem(loadId, "Load");
    menu.addItem(saveId, "Save");
    menu.addSeparator();
    menu.addSectionHeader("Factory Presets");
    menu.addItem(defaultId, "Default");
    treeBelow(bank->factoryRoot, menuPresets).addTo(menu, tickedId);
    if (bank->userRoot.exists())
    {
        menu.addSectionHeader("User Presets");
        treeBelow(bank->userRoot, menuPresets).addTo(menu, tickedId);
    }
    return menu;
}

void ModulePresetDisplay::menuItemChosen(int result)
{
    switch (result)
    {
        case 0: return;
        case loadId: openLoadChooser(); return;
        case saveId: openSaveChooser(); return;
        case defaultId: loadDefaults(); return;
        default: break;
    }
    const int index = result - firstPresetId;
    if (index >= 0 && index < int(menuPresets.size()))
        loadPreset(menuPresets[std::size_t(index)]);
}

void ModulePresetDisplay::showMenu(juce::PopupMenu::Options options)
{
    const int itemHeight = std::max(22, juce::roundToInt(FluxDeckLookAndFeel::instance().getPopupMenuFont().getHeight()));
    juce::Component::SafePointer<ModulePresetDisplay> self(this);
    buildMenu().showMenuAsync(options.withStandardItemHeight(itemHeight), [self](int result) {
        if (self != nullptr)
            self->menuItemChosen(result);
    });
}

void ModulePresetDisplay::showMenu()
{
    showMenu(juce::PopupMenu::Options().withTargetComponent(&menuButton));
}

void ModulePresetDisplay::openLoadChooser()
{
    const juce::String filter = juce::String("*") + PresetBank::extension;
    chooser = std::make_unique<juce::FileChooser>("Load Preset", nativeFile(bank->userRoot), filter);
    juce::Component::SafePointer<ModulePresetDisplay> self(this);
    chooser->launchAsync(juce::FileBrowserComponent::openMode | juce::FileBrowserComponent::canSelectFiles,
                         [self](const juce::FileChooser& fc) {
                             const juce::File chosen = fc.getResult();
                             if (self != nullptr && chosen != juce::File())
                                 self->loadPreset(Path(chosen.getFullPathName()));
                         });
}

void ModulePresetDisplay::openSaveChooser()
{
    // The chooser opens in the user folder, which the first save makes.
    bank->userRoot.createFolders();
    const juce::String name = presetDisplayName(juce::String::fromUTF8(bank->currentPreset().str().c_str()), false, false);
    const juce::String filter = juce::String("*") + PresetBank::extension;
    chooser = std::make_unique<juce::FileChooser>("Save Preset as...",
                                                  nativeFile(bank->userRoot).getChildFile(name + PresetBank::extension),
                                                  filter);
    juce::Component::SafePointer<ModulePresetDisplay> self(this);
    chooser->launchAsync(juce::FileBrowserComponent::saveMode | juce::FileBrowserComponent::canSelectFiles
                             | juce::FileBrowserComponent::warnAboutOverwriting,
                         [self](const juce::FileChooser& fc) {
                             const juce::File chosen = fc.getResult();
                             if (self != nullptr && chosen != juce::File())
                                 self->savePreset(Path(chosen.getFullPathName()));
                         });
}

void ModulePresetDisplay::mouseDown(const juce::MouseEvent& e)
{
    // Heard as the listener of every child: only the name box opens the menu here.
    if (e.eventComponent == &nameLabel && e.mods.isLeftButtonDown())
        showMenu(juce::PopupMenu::Options().withTargetComponent(&nameLabel));
}

void ModulePresetDisplay::handleAsyncUpdate()
{
    showHover(isMouseOver(true));
}

void ModulePresetDisplay::showHover(bool over)
{
    prevButton.setVisible(over);
    nextButton.setVisible(over);
    nameLabel.setFaded(over);
}
} // namespace oxa
