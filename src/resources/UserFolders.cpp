#include "resources/UserFolders.h"

#include "resources/VolumeTable.h"

#include <mutex>

namespace oxa
{
namespace
{
const char* const folderTag = "Folder";
const char* const diskImageTag = "DiskImage";

Path pathOf(const juce::File& file)
{
    return Path(file.getFullPathName());
}

juce::String toJuce(const String& text)
{
    return juce::String::fromUTF8(text.c_str(), static_cast<int>(text.length()));
}

String fromJuce(const juce::String& text)
{
    return String(text.toStdString());
}

class ProductSettingsHolder : private juce::DeletedAtShutdown
{
public:
    ProductSettingsHolder() = default;
    ~ProductSettingsHolder() override { clearSingletonInstance(); }

    std::unique_ptr<SettingsStore> store;
    std::mutex mutex;

    JUCE_DECLARE_SINGLETON(ProductSettingsHolder, false)
};
JUCE_IMPLEMENT_SINGLETON(ProductSettingsHolder)
} // namespace

FavoriteTable& favoriteTable()
{
    return VFSHolder::getInstance()->favorites();
}

SettingsStore& productSettings(const String& company, const String& product)
{
    auto* holder = ProductSettingsHolder::getInstance();
    const std::lock_guard<std::mutex> guard(holder->mutex);
    if (holder->store == nullptr)
        holder->store = std::make_unique<SettingsStore>(SettingsStore::productKey(company, product));
    return *holder->store;
}

void mountStandardPlaces(FavoriteTable& table, SettingsStore& settings)
{
    if (settings.readBool(SettingNames::standardPlacesMounted, false))
        return;
    settings.writeBool(SettingNames::standardPlacesMounted, true);

    const std::pair<juce::File::SpecialLocationType, const char*> places[] = {
        {juce::File::userDesktopDirectory, "Desktop"},
        {juce::File::userDocumentsDirectory, "Documents"},
        {juce::File::userMusicDirectory, "Music"}};
    for (const auto& [location, name] : places)
        table.add(std::make_unique<Favorite>(name, pathOf(juce::File::getSpecialLocation(location)),
                                             Favorite::folderKind));
}

void loadFolders(FavoriteTable& table, const SettingsStore& settings)
{
    const String text = settings.readString(SettingNames::folders, String());
    if (text.isEmpty())
        return;
    const auto document = juce::XmlDocument::parse(toJuce(text));
    if (document == nullptr)
        return;

    for (const auto* child : document->getChildIterator())
    {
        const bool isFolder = child->hasTagName(folderTag);
        if (!isFolder && !child->hasTagName(diskImageTag))
            continue;
        const Path path(child->getStringAttribute("Path"));
        const String name = fromJuce(child->getStringAttribute("Name"));
        if (!isFolder)
        {
            // An image that cannot be mounted now stays listed, so that a drive
            // that is away today does not drop it from the user's list for good.
            std::string error;
            path.mount(error);
        }
        table.add(std::make_unique<Favorite>(name, path, isFolder ? Favorite::folderKind : Favorite::diskImageKind));
    }
}

void saveFolders(const FavoriteTable& table, SettingsStore& settings)
{
    juce::XmlElement document("Folders");
    auto addAll = [&document](const std::vector<Favorite>& list, const char* tag) {
        for (const auto& favorite : list)
        {
            auto* child = document.createNewChildElement(tag);
            child->setAttribute("Name", toJuce(favorite.name));
            child->setAttribute("Path", favorite.path.text());
        }
    };
    addAll(table.folders(), folderTag);
    addAll(table.diskImages(), diskImageTag);
    settings.writeString(SettingNames::folders, fromJuce(document.toString(juce::XmlElement::TextFormat().singleLine().withoutHeader())));
}

void mountStandardPlaces(const String& company, const String& product)
{
    mountStandardPlaces(favoriteTable(), productSettings(company, product));
}

void loadFolders(const String& company, const String& product)
{
    loadFolders(favoriteTable(), productSettings(company, product));
}

void saveFolders(const String& company, const String& product)
{
    saveFolders(favoriteTable(), productSettings(company, product));
}

bool addFavorite(std::unique_ptr<Favorite> favorite)
{
    return favoriteTable().add(std::move(favorite));
}

void openUserFolders(const String& company, const String& product, const String& identifier,
                     const juce::File& moduleFolder)
{
    static std::mutex once;
    const std::lock_guard<std::mutex> guard(once);
    auto& table = favoriteTable();
    if (table.isLoaded())
        return;
    table.setLoaded();

    auto& settings = productSettings(company, product);
    loadFolders(table, settings);
    mountStandardPlaces(table, settings);
    table.setFolder(identifier, pathOf(moduleFolder));
    saveFolders(table, settings);
}

Path userPresetFolder()
{
    return pathOf(juce::File::getSpecialLocation(juce::File::userDocumentsDirectory)).joined("OXA/Flux Deck/User Presets/");
}

Path tapeUserPresetFolder()
{
    return pathOf(juce::File::getSpecialLocation(juce::File::userDocumentsDirectory))
        .joined("OXA/Flux Deck/Tape User Presets/");
}

} // namespace oxa
