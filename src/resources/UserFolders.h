#pragma once
// What the plug-in keeps for a user outside any saved state: the favourite
// places and where the user's presets go. The places persist as the settings
// value "Folders" of the product's key, shared by every instance.
#include "resources/Favorites.h"
#include "resources/SettingsStore.h"

namespace oxa
{

namespace SettingNames
{
constexpr const char* standardPlacesMounted = "standardPlaces.mounted";
constexpr const char* folders = "Folders";
constexpr const char* uiExpanded = "ui.expanded";
constexpr const char* uiReel = "ui.reel";
constexpr const char* uiReelTime = "ui.reelTime";
} // namespace SettingNames

// The favourite places of the process-wide volume table.
FavoriteTable& favoriteTable();

// The process-wide store of the product's key, opened on first use.
SettingsStore& productSettings(const String& company, const String& product);

// Desktop, documents and music, added once in a user's life: a user who
// removes them later does not get them back.
void mountStandardPlaces(FavoriteTable& table, SettingsStore& settings);
// Adds the places saved as "Folders"; text that is missing or does not parse
// changes nothing, and an unknown entry is skipped.
void loadFolders(FavoriteTable& table, const SettingsStore& settings);
void saveFolders(const FavoriteTable& table, SettingsStore& settings);
// The forms the plug-in uses, on the process-wide table and the product's key.
void mountStandardPlaces(const String& company, const String& product);
void loadFolders(const String& company, const String& product);
void saveFolders(const String& company, const String& product);

// Through the process-wide table; false (and the entry gone) when refused.
bool addFavorite(std::unique_ptr<Favorite> favorite);

// Run by every plug-in instance at construction; only the first in a process
// reads the saved places, registers the module's folder under `identifier`
// and writes the table back.
void openUserFolders(const String& company, const String& product, const String& identifier,
                     const juce::File& moduleFolder);

// Below the user's documents folder; made by the first save, never at start.
Path userPresetFolder();
Path tapeUserPresetFolder();

} // namespace oxa
