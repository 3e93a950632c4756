// Path text rules: separators, joining, parents and dot segments.
#include "resources/Path.h"
#include "resources/Volume.h"
#include "resources/VolumeTable.h"

#include <gtest/gtest.h>
#include <juce_core/juce_core.h>

namespace oxa
{
namespace
{

TEST(PathText, SlashesEmptyTextAndUtf8)
{
    EXPECT_EQ(Path("c:\\a\\b"), Path("c:/a/b"));
    EXPECT_EQ(Path(std::string("x\\y")).str(), "x/y");
    EXPECT_EQ(Path(juce::String("p\\q\\")).str(), "p/q/");
    EXPECT_EQ(Path(std::string("a\\b")).joined(Path("c\\d")).str(), "a/b/c/d");

    EXPECT_TRUE(Path(static_cast<const char*>(nullptr)).isEmpty());
    EXPECT_TRUE(Path("").isEmpty());
    EXPECT_TRUE(Path().text().isEmpty());
    const Path path(std::string("/tmp/Caf\xc3\xa9 Presets"));
    EXPECT_EQ(path.text(), juce::String(juce::CharPointer_UTF8("/tmp/Caf\xc3\xa9 Presets")));
}

TEST(PathJoin, ExactlyOneSlashEmptySidesAndSharing)
{
    EXPECT_EQ(Path("a/").joined(Path("/b")).str(), "a/b");
    EXPECT_EQ(Path("a").joined(Path("b")).str(), "a/b");
    EXPECT_EQ(Path("a/").joined(Path("b")).str(), "a/b");
    EXPECT_EQ(Path("a").joined(Path("/b")).str(), "a/b");
    EXPECT_EQ(Path("/").joined(Path("/home")).str(), "/home");
    EXPECT_EQ(Path().joined(Path("/b")).str(), "/b");
    EXPECT_EQ(Path("a").joined(Path()).str(), "a");

    // Copies share text; appending to one must not change the other.
    Path original("base");
    Path copy = original;
    copy.append(Path("child"));
    EXPECT_EQ(original.str(), "base");
    EXPECT_EQ(copy.str(), "base/child");
    EXPECT_EQ(original.joined("x/").joined("y").str(), "base/x/y");
}

TEST(PathParts, ParentAndFileName)
{
    EXPECT_EQ(Path("a/b/c").parent().str(), "a/b");
    EXPECT_EQ(Path("a/b/c/").parent().str(), "a/b");
    EXPECT_EQ(Path("/a").parent().str(), "/");
    EXPECT_TRUE(Path("a").parent().isEmpty());
    EXPECT_EQ(Path("$Resource/resource").parent().str(), "$Resource");

    EXPECT_EQ(Path("a/b/Classic Drive.fxps").fileName(), "Classic Drive.fxps");
    EXPECT_EQ(Path("a/b/").fileName(), "b");
    EXPECT_EQ(Path("single").fileName(), "single");
}

class PathWithVolumes : public ::testing::Test
{
protected:
    void SetUp() override { ensureDefaultVolumes(); }
};

TEST_F(PathWithVolumes, DotDotRemovesThePreviousSegmentButNotThePrefix)
{
    EXPECT_EQ(Path("/a/b/../c").normaliseDots().str(), "/a/c");
    EXPECT_EQ(Path("/a/b/../../c").normaliseDots().str(), "/c");
    EXPECT_EQ(Path("resource/presets/../fonts/").normaliseDots().str(), "resource/fonts/");
    EXPECT_EQ(Path("/a/b/c").normaliseDots().str(), "/a/b/c");
    // Names that merely contain dots are not dot segments.
    EXPECT_EQ(Path("/a/..b/c..").normaliseDots().str(), "/a/..b/c..");
    // Nor does ".." ever eat the volume prefix.
    EXPECT_EQ(Path("$Resource/resource/presets/../fonts").normaliseDots().str(), "$Resource/resource/fonts");
    EXPECT_EQ(Path("$Resource/../../resource").normaliseDots().str(), "$Resource/resource");
    EXPECT_EQ(Path("/../../etc").normaliseDots().str(), "/etc");
}

TEST_F(PathWithVolumes, StrayDollarBeforeANativeVolume)
{
    // "$/tmp" is an older spelling of "/tmp"; the archive's own "$" stays.
    const Path old("$/tmp");
    ASSERT_NE(VFSHolder::getInstance()->volumeFor(old), nullptr);
    EXPECT_EQ(VFSHolder::getInstance()->volumeFor(old)->kind, static_cast<std::uint32_t>(Volume::nativeKind));
    EXPECT_TRUE(old.info().isFolder);
    EXPECT_EQ(old.stripNativeDollar().str(), "/tmp");
    EXPECT_EQ(Path("$Resource/resource").stripNativeDollar().str(), "$Resource/resource");
    EXPECT_EQ(Path("/tmp").stripNativeDollar().str(), "/tmp");
}

TEST_F(PathWithVolumes, PathsOutsideEveryVolumeFailSoftly)
{
    const Path nowhere("relative/file.txt");
    EXPECT_EQ(nowhere.openInput(), nullptr);
    EXPECT_EQ(nowhere.openOutput(false), nullptr);
    EXPECT_FALSE(nowhere.exists());
    EXPECT_FALSE(nowhere.createFolders());
    std::vector<Path> entries;
    nowhere.list(entries);
    EXPECT_TRUE(entries.empty());
}

} // namespace
} // namespace oxa
