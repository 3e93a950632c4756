// The per-user settings store: typed values survive a new store on the same
// key, bad files and unwritable places give defaults, and writers don't lose
// each other's values. Then the favourite places kept in the product's key.
#include "resources/SettingsStore.h"
#include "resources/UserFolders.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace oxa
{
namespace
{

class SettingsStoreTest : public ::testing::Test
{
protected:
    juce::TemporaryFile scratch;
    juce::File root = scratch.getFile();
    const String key = "SOFTWARE\\OXA\\Flux Deck Test";

    void SetUp() override { root.createDirectory(); }
    void TearDown() override { root.deleteRecursively(); }
};

TEST_F(SettingsStoreTest, ValuesRoundTripThroughAFreshStore)
{
    SettingsStore writer(key, root);
    writer.writeBool("ui.expanded", true);
    writer.writeInt("count", -123456);
    writer.writeFloat("ui.reelTime", 0.1f);
    writer.writeString("Folders", "<Folders a=\"&\"/>\nsecond line");

    SettingsStore reader(key, root);
    EXPECT_TRUE(reader.readBool("ui.expanded", false));
    EXPECT_EQ(reader.readInt("count", 0), -123456);
    EXPECT_EQ(reader.readFloat("ui.reelTime", 0.0f), 0.1f); // bit-exact
    EXPECT_EQ(reader.readString("Folders", ""), String("<Folders a=\"&\"/>\nsecond line"));

    // Missing values and values of another type give the default.
    EXPECT_FALSE(reader.readBool("ui.reel", false));
    EXPECT_EQ(reader.readFloat("count", 2.5f), 2.5f);
    EXPECT_EQ(reader.readString("ui.expanded", "def"), String("def"));

    // The key's path becomes folders below the root.
    EXPECT_EQ(reader.file().getParentDirectory(),
              root.getChildFile("SOFTWARE").getChildFile("OXA").getChildFile("Flux Deck Test"));
    EXPECT_EQ(SettingsStore::productKey("OXA", "Flux Deck"), String("SOFTWARE\\OXA\\Flux Deck"));
}

TEST_F(SettingsStoreTest, CorruptFilesGiveDefaultsAndAreReplacedOnWrite)
{
    SettingsStore store(key, root);
    const char* const contents[] = {"", "not xml at all", "<Other><Value name=\"n\" type=\"int\" value=\"5\"/></Other>",
                                    "<Settings><Value name=\"n\" type=\"int\" value=\"5x\"/>",
                                    "<Settings><Value name=\"n\" type=\"int\" value=\"99999999999\"/></Settings>",
                                    "<Settings><Value name=\"f\" type=\"float\" value=\"nan\"/></Settings>"};
    for (const char* text : contents)
    {
        store.file().getParentDirectory().createDirectory();
        ASSERT_TRUE(store.file().replaceWithText(text));
        EXPECT_EQ(store.readInt("n", 7), 7) << text;
        EXPECT_EQ(store.readFloat("f", 1.5f), 1.5f) << text;
    }
    store.writeInt("n", 3);
    EXPECT_EQ(store.readInt("n", 7), 3);
}

TEST_F(SettingsStoreTest, ChangedFiresOnlyForRealChangesAndAnUnwritablePlaceDropsWritesQuietly)
{
    SettingsStore store(key, root);
    std::vector<std::string> names;
    store.changed.connect(&names, [&names](const String& name) { names.push_back(name.str()); });
    store.writeBool("ui.reel", true);
    store.writeBool("ui.reel", true);
    store.writeFloat("ui.reelTime", 2.0f);
    store.writeBool("ui.reel", false);
    EXPECT_EQ(names, (std::vector<std::string> {"ui.reel", "ui.reelTime", "ui.reel"}));

    // A plain file where the key's first folder should be: nothing can be created below it.
    root.deleteRecursively();
    ASSERT_TRUE(root.replaceWithText("in the way"));
    SettingsStore blocked(key, root);
    blocked.changed.connect(&names, [&names](const String& name) { names.push_back(name.str()); });
    blocked.writeBool("ui.expanded", true);
    EXPECT_FALSE(blocked.readBool("ui.expanded", false));
    EXPECT_EQ(names.size(), 3u);
}

TEST_F(SettingsStoreTest, ConcurrentWritersKeepEveryValue)
{
    constexpr int writers = 4, rounds = 25;
    std::vector<std::thread> threads;
    for (int w = 0; w < writers; ++w)
        threads.emplace_back([this, w] {
            SettingsStore store(key, root); // one store a thread, as separate instances would have
            const auto name = "writer" + std::to_string(w);
            for (int i = 1; i <= rounds; ++i)
                store.writeInt(name.c_str(), i);
        });
    for (auto& t : threads)
        t.join();

    SettingsStore reader(key, root);
    for (int w = 0; w < writers; ++w)
        EXPECT_EQ(reader.readInt(("writer" + std::to_string(w)).c_str(), 0), rounds);
}

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
