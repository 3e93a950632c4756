// Path text rules: separators, joining, parents and dot segments, and paths on volumes.
#include "resources/Path.h"
#include "resources/Volume.h"
#include "resources/VolumeTable.h"

#include <gtest/gtest.h>
#include <juce_core/juce_core.h>

namespace oxa
{
namespace
{

class PathWithVolumes : public ::testing::Test
{
protected:
    void SetUp() override { ensureDefaultVolumes(); }
};

TEST_F(PathWithVolumes, SlashesJoinsParentsAndDotSegments)
{
    const std::pair<Path, const char*> cases[] = {
        {Path("c:\\a\\b"), "c:/a/b"},
        {Path(std::string("x\\y")), "x/y"},
        {Path(juce::String("p\\q\\")), "p/q/"},
        {Path(std::string("a\\b")).joined(Path("c\\d")), "a/b/c/d"},
        // exactly one slash between the sides, and an empty side adds none
        {Path("a/").joined(Path("/b")), "a/b"},
        {Path("a").joined(Path("b")), "a/b"},
        {Path("a/").joined(Path("b")), "a/b"},
        {Path("a").joined(Path("/b")), "a/b"},
        {Path("/").joined(Path("/home")), "/home"},
        {Path().joined(Path("/b")), "/b"},
        {Path("a").joined(Path()), "a"},
        {Path("a/b/c").parent(), "a/b"},
        {Path("a/b/c/").parent(), "a/b"},
        {Path("/a").parent(), "/"},
        {Path("a").parent(), ""},
        {Path("$Resource/resource").parent(), "$Resource"},
        {Path("/a/b/../c").normaliseDots(), "/a/c"},
        {Path("/a/b/../../c").normaliseDots(), "/c"},
        {Path("resource/presets/../fonts/").normaliseDots(), "resource/fonts/"},
        {Path("/a/b/c").normaliseDots(), "/a/b/c"},
        {Path("/a/..b/c..").normaliseDots(), "/a/..b/c.."}, // names that merely contain dots
        // ".." never eats the volume prefix
        {Path("$Resource/resource/presets/../fonts").normaliseDots(), "$Resource/resource/fonts"},
        {Path("$Resource/../../resource").normaliseDots(), "$Resource/resource"},
        {Path("/../../etc").normaliseDots(), "/etc"},
    };
    for (const auto& [path, expected] : cases)
        EXPECT_EQ(path.str(), expected);

    EXPECT_TRUE(Path(static_cast<const char*>(nullptr)).isEmpty());
    EXPECT_TRUE(Path("").isEmpty());
    EXPECT_TRUE(Path().text().isEmpty());
    const Path path(std::string("/tmp/Caf\xc3\xa9 Presets"));
    EXPECT_EQ(path.text(), juce::String(juce::CharPointer_UTF8("/tmp/Caf\xc3\xa9 Presets")));
    EXPECT_EQ(Path("a/b/Classic Drive.fxps").fileName(), "Classic Drive.fxps");
    EXPECT_EQ(Path("a/b/").fileName(), "b");
    EXPECT_EQ(Path("single").fileName(), "single");

    // Copies share text; appending to one must not change the other.
    Path original("base");
    Path copy = original;
    copy.append(Path("child"));
    EXPECT_EQ(original.str(), "base");
    EXPECT_EQ(copy.str(), "base/child");
    EXPECT_EQ(original.joined("x/").joined("y").str(), "base/x/y");
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
