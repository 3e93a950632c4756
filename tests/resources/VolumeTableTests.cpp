// The volume table: lookup by prefix, admission, mounting, and the native
// folder volume's file operations.
#include "resources/NativeFS.h"
#include "resources/VolumeTable.h"

#include <gtest/gtest.h>
#include <juce_core/juce_core.h>

namespace oxa
{
namespace
{

// A volume that stores nothing; only its name and kind matter for lookup.
class NamedVolume : public Volume
{
public:
    NamedVolume(const std::string& volumeName, std::uint32_t volumeKind, bool valid = true)
        : Volume(volumeName, volumeName, Path(volumeName), volumeKind, 0)
    {
        isValid = valid;
    }
    void list(const Path&, std::vector<Path>&) const override {}
    FileInfo info(const Path&) const override { return {}; }
    std::unique_ptr<DefaultInputStream> openInput(const Path&) const override { return nullptr; }
    std::unique_ptr<juce::OutputStream> openOutput(const Path&, bool) const override { return nullptr; }
    bool createFolder(const Path&) const override { return false; }
    bool remove(const Path&, bool) const override { return false; }
};

Volume* add(VolumeTable& table, const std::string& name, std::uint32_t kind)
{
    return table.addVolume(std::make_unique<NamedVolume>(name, kind));
}

TEST(VolumeLookup, LongestPrefixWinsCaseRulesAndThePathInside)
{
    VolumeTable table;
    auto* drive = add(table, "c:", Volume::nativeKind);
    auto* sounds = add(table, "c:/Sounds", Volume::nativeKind);
    ASSERT_TRUE(drive != nullptr && sounds != nullptr);

    EXPECT_EQ(table.volumeFor(Path("c:/Sounds/x")), sounds);
    EXPECT_EQ(table.volumeFor(Path("c:/Other/x")), drive);
    EXPECT_EQ(table.volumeFor(Path("c:\\Sounds\\x")), sounds);
    EXPECT_EQ(table.volumeFor(Path("d:/x")), nullptr);
    EXPECT_EQ(table.volumeFor(Path()), nullptr);

    // Native names ignore case, others compare exactly.
    auto* archive = add(table, "Resource", Volume::resourceKind);
    EXPECT_EQ(table.volumeFor(Path("C:/SOUNDS/kick.wav")), sounds);
    EXPECT_EQ(table.volumeFor(Path("$Resource/x")), archive);
    EXPECT_EQ(table.volumeFor(Path("$resource/x")), nullptr);
    EXPECT_EQ(table.volumeFor(Path("$RESOURCE/x")), nullptr);
    // A native volume still answers when an older document wrote "$" before it.
    EXPECT_EQ(table.volumeFor(Path("$c:/Sounds/kick.wav")), sounds);

    EXPECT_EQ(drive->prefixPath(), "c:");
    EXPECT_EQ(archive->prefixPath(), "$Resource");
    EXPECT_EQ(drive->pathInside(Path("c:/a/b")).str(), "a/b");
    EXPECT_EQ(drive->pathInside(Path("$c:/a/b")).str(), "a/b");
    EXPECT_EQ(archive->pathInside(Path("$Resource/resource/fonts")).str(), "resource/fonts");
    EXPECT_EQ(archive->pathInside(Path("$Resource")).str(), "");
}

TEST(VolumeAdmission, RefusesInvalidAndDuplicateNamesAndAnnouncesTheRest)
{
    struct Counter : VolumeTable::Listener
    {
        int added = 0;
        void volumeAdded(Volume&) override { ++added; }
    } counter;

    VolumeTable table;
    table.addListener(&counter);

    EXPECT_EQ(table.addVolume(std::make_unique<NamedVolume>("Bank", 5, false)), nullptr);
    EXPECT_FALSE(table.isMounted("Bank"));
    EXPECT_EQ(table.addVolume(nullptr), nullptr);

    auto* first = add(table, "Bank", 5);
    ASSERT_NE(first, nullptr);
    EXPECT_TRUE(table.isMounted("Bank"));
    EXPECT_EQ(add(table, "Bank", 5), nullptr);
    EXPECT_EQ(table.volumeFor(Path("$Bank/x")), first);
    EXPECT_EQ(counter.added, 1);

    table.removeListener(&counter);
    add(table, "Other", 5);
    EXPECT_EQ(counter.added, 1);
}

// Recognises files whose name ends in ".img" and makes a volume named after
// the file; `valid` decides whether the table will take it.
class ImageCreator : public VolumeCreator
{
public:
    explicit ImageCreator(bool makesValidVolumes) : valid(makesValidVolumes) {}
    std::unique_ptr<Volume> mount(const Path& path) override
    {
        ++calls;
        if (path.str().size() < 4 || path.str().substr(path.str().size() - 4) != ".img")
            return nullptr;
        return std::make_unique<NamedVolume>(path.fileName(), 7, valid);
    }
    bool valid;
    int calls = 0;
};

class VolumeMounting : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_NE(table.addVolume(std::make_unique<NativeFS>("/", Path("/"))), nullptr);
        ASSERT_TRUE(image.replaceWithText("not an image"));
        existing = Path(image.getFullPathName());
    }
    void TearDown() override { image.deleteFile(); }

    juce::File image { juce::File::createTempFile(".img") };
    VolumeTable table;
    Path existing;
    Path missing { "/no/such/folder/bank.img" };
};

TEST_F(VolumeMounting, MissingUnknownOrRefusedFilesAreReported)
{
    std::string error;
    EXPECT_EQ(table.mount(missing, error), nullptr);
    EXPECT_EQ(error, "Unable to mount the Volume from '/no/such/folder/bank.img' (File not found)");

    EXPECT_EQ(table.mount(existing, error), nullptr);
    EXPECT_EQ(error, "Unable to mount the Volume from '" + existing.str() + "' (Invalid file)");

    // A creator whose volume the table refuses gives the same error.
    table.addCreator(std::make_unique<ImageCreator>(false));
    error.clear();
    EXPECT_EQ(table.mount(existing, error), nullptr);
    EXPECT_EQ(error, "Unable to mount the Volume from '" + existing.str() + "' (Invalid file)");
    EXPECT_FALSE(table.isMounted(existing.fileName()));
}

TEST_F(VolumeMounting, FirstCreatorThatTakesThePathWins)
{
    auto picky = std::make_unique<ImageCreator>(true);
    auto* pickyRaw = picky.get();
    table.addCreator(std::make_unique<ImageCreator>(true));
    table.addCreator(std::move(picky));
    std::string error;
    ASSERT_NE(table.mount(existing, error), nullptr);
    EXPECT_TRUE(error.empty());
    EXPECT_TRUE(table.isMounted(existing.fileName()));
    EXPECT_EQ(pickyRaw->calls, 0);
    // The same image again: the name is taken, so the table refuses it.
    EXPECT_EQ(table.mount(existing, error), nullptr);
    EXPECT_NE(error.find("(Invalid file)"), std::string::npos);
}

class NativeFolder : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ensureDefaultVolumes();
        ASSERT_TRUE(dir.createDirectory());
        base = Path(dir.getFullPathName());
    }
    void TearDown() override { dir.deleteRecursively(); }

    static std::string readAll(const Path& path)
    {
        auto in = path.openInput();
        return in == nullptr ? "<null>" : in->readEntireStreamAsString().toStdString();
    }

    static void write(const Path& path, const char* text, bool append)
    {
        auto out = path.openOutput(append);
        ASSERT_NE(out, nullptr);
        out->writeText(text, false, false, nullptr);
    }

    juce::File dir { juce::File::createTempFile("fluxdeck-native") };
    Path base;
};

TEST_F(NativeFolder, WriteReadAppendReplaceInfoListAndRemove)
{
    const auto file = base.joined("User Presets/Deep/one.fxps");
    EXPECT_TRUE(file.parent().createFolders());
    EXPECT_TRUE(file.parent().info().isFolder);

    write(file, "first", false);
    EXPECT_EQ(readAll(file), "first");
    write(file, "+more", true);
    EXPECT_EQ(readAll(file), "first+more");
    write(file, "new", false);
    EXPECT_EQ(readAll(file), "new");

    EXPECT_EQ(file.openInput()->size(), 3) << "replacing truncates";
    ASSERT_TRUE(file.parent().parent().remove(true));

    write(base.joined("b.fxps"), "b", false);
    write(base.joined("a.fxps"), "a", false);
    ASSERT_TRUE(base.joined("c").createFolders());

    const auto fileInfo = base.joined("a.fxps").info();
    EXPECT_TRUE(fileInfo.exists && !fileInfo.isFolder && fileInfo.canRead && fileInfo.canWrite);
    EXPECT_FALSE(base.joined("zzz").info().exists);

    std::vector<Path> entries;
    base.list(entries);
    EXPECT_EQ(entries, (std::vector<Path> {base.joined("a.fxps"), base.joined("b.fxps"), base.joined("c")}));

    EXPECT_FALSE(base.remove(false));
    EXPECT_TRUE(base.joined("a.fxps").remove(false));
    EXPECT_FALSE(base.joined("a.fxps").exists());
    EXPECT_TRUE(base.remove(true));
    EXPECT_FALSE(base.exists());
}

TEST(NativeVolume, RootMustBeAnExistingFolder)
{
    EXPECT_TRUE(NativeFS("/", Path("/")).isValid);
    NativeFS missing("x:", Path("/no/such/root"));
    EXPECT_FALSE(missing.isValid);
    EXPECT_FALSE(missing.errorMessage.empty());
    EXPECT_FALSE(NativeFS("rel", Path("relative/root")).isValid);

    // The volume's own root is never removed through it.
    EXPECT_FALSE(NativeFS("/", Path("/")).remove(Path(), true));
}

} // namespace
} // namespace oxa
