// The favourite places and their persistence in the product's settings key.
#include "resources/UserFolders.h"

#include <gtest/gtest.h>

namespace oxa
{
namespace
{

class UserFoldersTest : public ::testing::Test
{
protected:
    void TearDown() override { root.deleteRecursively(); }

    std::vector<std::string> names(const std::vector<Favorite>& list) const
    {
        std::vector<std::string> out;
        for (const auto& f : list)
            out.push_back(f.name.str());
        return out;
    }

    juce::TemporaryFile scratch;
    juce::File root = scratch.getFile();
    SettingsStore settings { SettingsStore::productKey("OXA", "Flux Deck"), root };
};

TEST_F(UserFoldersTest, StandardPlacesComeOnceInAUsersLife)
{
    FavoriteTable first;
    mountStandardPlaces(first, settings);
    EXPECT_EQ(names(first.folders()), (std::vector<std::string> {"Desktop", "Documents", "Music"}));
    EXPECT_TRUE(settings.readBool(SettingNames::standardPlacesMounted, false));

    // The user removed them; a second start must not bring them back.
    FavoriteTable second;
    mountStandardPlaces(second, settings);
    EXPECT_TRUE(second.folders().empty());
}

TEST_F(UserFoldersTest, FoldersRoundTripAndSkipWhatTheyDoNotKnow)
{
    FavoriteTable table;
    EXPECT_TRUE(table.add(std::make_unique<Favorite>("Samples", Path("/data/samples"))));
    EXPECT_FALSE(table.add(std::make_unique<Favorite>("Again", Path("/data/samples")))); // same place
    EXPECT_FALSE(table.add(std::make_unique<DummyFavorite>("Empty row")));
    EXPECT_TRUE(table.add(std::make_unique<Favorite>("Bank", Path("/data/bank.img"), Favorite::diskImageKind)));
    EXPECT_TRUE(table.setFolder("net.oxa.FluxDeck", Path("/old/place")));
    EXPECT_TRUE(table.setFolder("net.oxa.FluxDeck", Path("/new/place"))); // a moved module keeps one entry
    saveFolders(table, settings);

    FavoriteTable loaded;
    loadFolders(loaded, settings);
    EXPECT_EQ(names(loaded.folders()), (std::vector<std::string> {"Samples", "net.oxa.FluxDeck"}));
    EXPECT_EQ(loaded.folders()[1].path.str(), "/new/place");
    EXPECT_EQ(names(loaded.diskImages()), std::vector<std::string> {"Bank"});

    // An unknown entry is skipped and the others stay; text that does not parse changes nothing.
    settings.writeString(SettingNames::folders,
                         "<Folders><Folder Name=\"A\" Path=\"/a\"/><Shortcut Name=\"B\" Path=\"/b\"/>"
                         "<Folder Name=\"C\" Path=\"/c\"/></Folders>");
    FavoriteTable partial;
    loadFolders(partial, settings);
    EXPECT_EQ(names(partial.folders()), (std::vector<std::string> {"A", "C"}));
    settings.writeString(SettingNames::folders, "<Folders><Folder Name=");
    FavoriteTable none;
    loadFolders(none, settings);
    EXPECT_TRUE(none.folders().empty());
}

TEST(UserPresetFolders, LieBelowTheDocumentsFolder)
{
    const auto documents = juce::File::getSpecialLocation(juce::File::userDocumentsDirectory).getFullPathName();
    EXPECT_EQ(userPresetFolder().str(), (documents + "/OXA/Flux Deck/User Presets/").toStdString());
    EXPECT_EQ(tapeUserPresetFolder().str(), (documents + "/OXA/Flux Deck/Tape User Presets/").toStdString());
}

} // namespace
} // namespace oxa
