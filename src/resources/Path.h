#pragma once
// A "/"-separated path that resolves through the process-wide volume table.
// The text is shared and never changed after construction, so copies are cheap
// and a Path may be handed between threads freely.
#include <memory>
#include <string>
#include <vector>

namespace juce
{
class String;
class OutputStream;
}

namespace oxa
{
class DefaultInputStream;
class Volume;
struct FileInfo;

class Path
{
public:
    Path() = default;
    explicit Path(const char* text);
    explicit Path(const std::string& text);
    explicit Path(const juce::String& text);

    const std::string& str() const;
    juce::String text() const;
    bool isEmpty() const { return str().empty(); }

    // Joins with exactly one "/" between the two parts.
    Path& append(const Path& other);
    Path joined(const Path& other) const;
    Path joined(const char* other) const { return joined(Path(other)); }

    // The folder that holds this path; empty for a single segment.
    Path parent() const;
    // The last segment, without a trailing "/".
    std::string fileName() const;

    // Drops each ".." together with the segment before it. The volume's
    // prefix ("$Resource", a drive root) is never eaten.
    Path normaliseDots() const;
    // Older documents wrote "$" in front of native volume names.
    Path stripNativeDollar() const;

    // File operations through the volume that owns the path. A path that no
    // volume takes fails softly: null stream, false, empty list.
    std::unique_ptr<DefaultInputStream> openInput() const;
    std::unique_ptr<juce::OutputStream> openOutput(bool append) const;
    bool createFolders() const;
    bool remove(bool recursive) const;
    FileInfo info() const;
    bool exists() const;
    void list(std::vector<Path>& entries) const;

    // Asks the registered volume creators to mount the image at this path.
    // On failure `error` receives the message shown to the user.
    Volume* mount(std::string& error) const;

    bool operator==(const Path& other) const { return str() == other.str(); }
    bool operator!=(const Path& other) const { return !(*this == other); }
    bool operator<(const Path& other) const { return str() < other.str(); }

private:
    std::shared_ptr<const std::string> text_;
};

} // namespace oxa
