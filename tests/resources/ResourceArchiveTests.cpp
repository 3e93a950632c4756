// The archive volume: index walks, exact names, one reader per thread, the
// folder-on-disk form, and the archive that the build links into the module.
#include "resources/ResourceFS.h"
#include "resources/VolumeTable.h"

#include <gtest/gtest.h>
#include <juce_core/juce_core.h>

#include <atomic>
#include <thread>

namespace oxa
{
namespace
{

using Entries = std::vector<std::pair<std::string, std::string>>;

// Entries deliberately out of alphabetical order: listings must keep this order.
const Entries sampleEntries {
    { "resource/presets/02 Wide/Wide One.fxps", "<ModulePreset wide/>" },
    { "resource/presets/01 Classic/Classic Drive.fxps", "<ModulePreset drive/>" },
    { "resource/presets/01 Classic/Another.fxps", "<ModulePreset another/>" },
    { "resource/assets/b_power-on@2x.png", "big" },
    { "resource/assets/b_power-on.png", "small" },
    { "resource/fonts/Acumin-Light.ttf", "font bytes" },
};

juce::MemoryBlock makeArchive(const Entries& entries)
{
    juce::ZipFile::Builder builder;
    for (const auto& [name, body] : entries)
        builder.addEntry(new juce::MemoryInputStream(body.data(), body.size(), true), 9, juce::String(name),
                         juce::Time());
    juce::MemoryOutputStream out;
    builder.writeToStream(out, nullptr);
    return out.getMemoryBlock();
}

std::string readAll(std::unique_ptr<DefaultInputStream> in)
{
    return in == nullptr ? "<null>" : in->readEntireStreamAsString().toStdString();
}

std::vector<std::string> listed(const Volume& volume, const char* folder)
{
    std::vector<Path> entries;
    volume.list(Path(folder), entries);
    std::vector<std::string> texts;
    for (const auto& entry : entries)
        texts.push_back(entry.str());
    return texts;
}

class ZippedVolume : public ::testing::Test
{
protected:
    juce::MemoryBlock bytes { makeArchive(sampleEntries) };
    NativeResourceManager archive { bytes.getData(), bytes.getSize() };
    ResourceFS volume { "Resource", true, Path(), archive };
};

TEST_F(ZippedVolume, ListingsFollowArchiveOrderAndInfoTellsFoldersFromFiles)
{
    EXPECT_TRUE(volume.isValid);
    EXPECT_EQ(volume.kind, 3u);
    EXPECT_EQ(volume.flags, 1u);
    EXPECT_EQ(volume.prefixPath(), "$Resource");
    using Texts = std::vector<std::string>;
    EXPECT_EQ(listed(volume, ""), Texts {"$Resource/resource"});
    EXPECT_EQ(listed(volume, "resource"),
              (Texts {"$Resource/resource/presets", "$Resource/resource/assets", "$Resource/resource/fonts"}));
    EXPECT_EQ(listed(volume, "resource/presets"),
              (Texts {"$Resource/resource/presets/02 Wide", "$Resource/resource/presets/01 Classic"}));
    EXPECT_EQ(listed(volume, "resource/presets/01 Classic/"),
              (Texts {"$Resource/resource/presets/01 Classic/Classic Drive.fxps",
                      "$Resource/resource/presets/01 Classic/Another.fxps"}));
    EXPECT_EQ(listed(volume, "resource/assets"),
              (Texts {"$Resource/resource/assets/b_power-on@2x.png", "$Resource/resource/assets/b_power-on.png"}));
    EXPECT_TRUE(listed(volume, "resource/nothing").empty());

    const auto folder = volume.info(Path("resource/presets/01 Classic"));
    EXPECT_TRUE(folder.exists && folder.isFolder && folder.canRead);
    EXPECT_FALSE(folder.canWrite);
    const auto file = volume.info(Path("resource/fonts/Acumin-Light.ttf"));
    EXPECT_TRUE(file.exists && file.canRead);
    EXPECT_FALSE(file.isFolder || file.canWrite);
    const auto none = volume.info(Path("resource/fonts/Other.ttf"));
    EXPECT_FALSE(none.exists || none.isFolder || none.canRead || none.canWrite);
}

TEST_F(ZippedVolume, NamesAreExactDotDotOnlyForQueriesAndNothingIsWritable)
{
    EXPECT_TRUE(listed(volume, "resource/Presets").empty());
    EXPECT_FALSE(volume.info(Path("resource/Presets")).exists);
    EXPECT_FALSE(volume.info(Path("Resource/presets")).exists);
    EXPECT_EQ(volume.openInput(Path("resource/presets/01 classic/Another.fxps")), nullptr);
    EXPECT_FALSE(archive.hasEntry("resource/fonts/acumin-light.ttf"));
    EXPECT_TRUE(archive.hasEntry("resource/fonts/Acumin-Light.ttf"));
    EXPECT_EQ(readAll(volume.openInput(Path("resource/presets/01 Classic/Another.fxps"))),
              "<ModulePreset another/>");

    EXPECT_EQ(listed(volume, "resource/assets/../presets"), listed(volume, "resource/presets"));
    EXPECT_TRUE(volume.info(Path("resource/fonts/../presets/02 Wide")).isFolder);
    EXPECT_EQ(volume.openInput(Path("resource/fonts/../presets/02 Wide/Wide One.fxps")), nullptr);
    EXPECT_EQ(readAll(volume.openInput(Path("resource/presets/02 Wide/Wide One.fxps"))), "<ModulePreset wide/>");

    EXPECT_EQ(volume.openOutput(Path("resource/new.txt"), false), nullptr);
    EXPECT_FALSE(volume.createFolder(Path("resource/new")));
    EXPECT_FALSE(volume.remove(Path("resource/fonts"), true));
    EXPECT_TRUE(volume.info(Path("resource/fonts")).exists);
}

TEST_F(ZippedVolume, EachThreadGetsItsOwnReaderAndItsOwnBytes)
{
    auto* mine = archive.zipFile();
    ASSERT_NE(mine, nullptr);
    EXPECT_EQ(archive.zipFile(), mine);
    const auto before = archive.readerCount();

    juce::ZipFile* theirs = nullptr;
    std::string theirText;
    std::thread reader([&] {
        theirText = readAll(archive.openEntry("resource/assets/b_power-on.png"));
        theirs = archive.zipFile();
    });
    reader.join();

    EXPECT_EQ(theirText, "small");
    EXPECT_NE(theirs, nullptr);
    EXPECT_NE(theirs, mine);
    EXPECT_EQ(archive.readerCount(), before + 1);
    EXPECT_EQ(archive.zipFile(), mine);
    EXPECT_EQ(readAll(archive.openEntry("resource/assets/b_power-on@2x.png")), "big");

    // Small reads make the threads interleave inside entries.
    std::atomic<int> wrong { 0 };
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            const auto& [name, body] = sampleEntries[(size_t) t];
            for (int round = 0; round < 200; ++round)
            {
                auto in = archive.openEntry(name);
                std::string text;
                char piece[3];
                for (int got; in != nullptr && (got = in->read(piece, sizeof(piece))) > 0;)
                    text.append(piece, (size_t) got);
                if (text != body)
                    ++wrong;
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(wrong.load(), 0);
}

TEST(BrokenArchive, MissingOrCorruptBytesGiveAnEmptyVolume)
{
    NativeResourceManager missing(nullptr, 0);
    ResourceFS empty("Resource", true, Path(), missing);
    EXPECT_FALSE(missing.isLoaded());
    EXPECT_EQ(missing.zipFile(), nullptr);
    EXPECT_TRUE(listed(empty, "resource").empty());
    EXPECT_EQ(empty.openInput(Path("resource/fonts/Acumin-Light.ttf")), nullptr);

    std::string garbage(4096, '\0');
    for (size_t i = 0; i < garbage.size(); ++i)
        garbage[i] = (char) (i * 7919u >> 3);
    NativeResourceManager corrupt(garbage.data(), garbage.size());
    ResourceFS broken("Resource", true, Path(), corrupt);
    EXPECT_TRUE(listed(broken, "").empty());
    EXPECT_FALSE(broken.info(Path("resource")).exists);
    EXPECT_EQ(broken.openInput(Path("resource/x")), nullptr);

    // A truncated archive loses its central directory and with it every entry.
    const auto whole = makeArchive(sampleEntries);
    NativeResourceManager truncated(whole.getData(), whole.getSize() / 2);
    ResourceFS cut("Resource", true, Path(), truncated);
    EXPECT_TRUE(listed(cut, "resource").empty());
}

class FolderVolume : public ::testing::Test
{
protected:
    void SetUp() override
    {
        for (const auto& [name, body] : sampleEntries)
        {
            const auto file = dir.getChildFile(juce::String(name));
            ASSERT_TRUE(file.getParentDirectory().createDirectory().wasOk());
            ASSERT_TRUE(file.replaceWithText(juce::String(body)));
        }
    }
    void TearDown() override { dir.deleteRecursively(); }

    juce::File dir { juce::File::createTempFile("fluxdeck-resources") };
};

TEST_F(FolderVolume, DevelopmentFormReadsFromDisk)
{
    ResourceFS volume("Dev", false, Path(dir.getFullPathName()));
    ASSERT_TRUE(volume.isValid);
    EXPECT_FALSE(volume.zipped);

    EXPECT_EQ(listed(volume, "resource/presets"),
              (std::vector<std::string> { "$Dev/resource/presets/01 Classic", "$Dev/resource/presets/02 Wide" }));
    EXPECT_EQ(listed(volume, "resource/assets/../fonts"),
              std::vector<std::string> { "$Dev/resource/fonts/Acumin-Light.ttf" });

    const auto folder = volume.info(Path("resource/presets"));
    EXPECT_TRUE(folder.exists && folder.isFolder && folder.canRead && !folder.canWrite);
    EXPECT_EQ(readAll(volume.openInput(Path("resource/fonts/Acumin-Light.ttf"))), "font bytes");
    EXPECT_EQ(volume.openOutput(Path("resource/x"), false), nullptr);

    ResourceFS missing("Dev", false, Path("/no/such/resources"));
    EXPECT_FALSE(missing.isValid);
    EXPECT_FALSE(missing.errorMessage.empty());
    VolumeTable table;
    EXPECT_EQ(table.addVolume(std::make_unique<ResourceFS>("Dev", false, Path("/no/such/resources"))), nullptr);
}

std::uint32_t le32(const unsigned char* p)
{
    return p[0] | (p[1] << 8) | (p[2] << 16) | ((std::uint32_t) p[3] << 24);
}
std::uint16_t le16(const unsigned char* p)
{
    return (std::uint16_t) (p[0] | (p[1] << 8));
}

TEST(ModuleArchive, HoldsTheFontUnderItsArchiveName)
{
    ensureDefaultVolumes();
    ASSERT_TRUE(VFSHolder::getInstance()->isMounted("Resource"));
    ASSERT_TRUE(VFSHolder::getInstance()->isMounted("/"));

    const Path font("$Resource/resource/fonts/Acumin-Light.ttf");
    EXPECT_TRUE(font.info().exists && !font.info().isFolder);

    auto in = font.openInput();
    ASSERT_NE(in, nullptr);
    juce::MemoryBlock data;
    in->readIntoMemoryBlock(data);
    ASSERT_GT(data.getSize(), 100000u);
    const auto* head = static_cast<const unsigned char*>(data.getData());
    EXPECT_EQ(le32(head), 0x00000100u); // TrueType outline tag, big-endian 0x00010000

    std::vector<Path> fonts;
    Path("$Resource/resource/fonts").list(fonts);
    EXPECT_EQ(fonts, std::vector<Path> { font });

    EXPECT_EQ(Path("$resource/resource/fonts/Acumin-Light.ttf").openInput(), nullptr);
    // Calling again must not mount anything twice.
    ensureDefaultVolumes();
}

TEST(ModuleArchive, IsAPlainZipOfDeflatedFiles)
{
    auto& archive = NativeResourceManager::instance();
    archive.load();
    ASSERT_TRUE(archive.isLoaded());
    const auto* bytes = static_cast<const unsigned char*>(archive.archiveData());
    const auto size = archive.archiveSize();
    ASSERT_GT(size, 22u);

    // No archive comment: the end record is the last 22 bytes.
    const auto* end = bytes + size - 22;
    ASSERT_EQ(le32(end), 0x06054b50u);
    EXPECT_EQ(le16(end + 20), 0);
    const auto count = le16(end + 10);
    auto offset = le32(end + 16);
    ASSERT_GT(count, 0);

    for (int i = 0; i < count; ++i)
    {
        ASSERT_LT(offset + 46u, size);
        const auto* entry = bytes + offset;
        ASSERT_EQ(le32(entry), 0x02014b50u);
        const std::string name(reinterpret_cast<const char*>(entry + 46), le16(entry + 28));
        EXPECT_EQ(le16(entry + 10), 8) << name << " is not deflated";
        EXPECT_EQ(name.rfind("resource/", 0), 0u) << name;
        EXPECT_NE(name.back(), '/') << "folder entry " << name;
        EXPECT_EQ(name.find('\\'), std::string::npos) << name;
        offset += 46u + le16(entry + 28) + le16(entry + 30) + le16(entry + 32);
    }
}

} // namespace
} // namespace oxa
