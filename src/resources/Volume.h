#pragma once
// A volume maps paths below its prefix onto some storage: a folder on disk or
// the archive inside the module. The volume table owns every added volume.
#include "resources/Path.h"

#include <juce_core/juce_core.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace oxa
{

struct FileInfo
{
    bool exists = false;
    bool isFolder = false;
    bool canRead = false;
    bool canWrite = false;
};

// Input stream handed out by volumes. It forwards to the wrapped stream, which
// it deletes when it owns it.
class DefaultInputStream : public juce::InputStream
{
public:
    DefaultInputStream(juce::InputStream* source, bool ownsSource);
    ~DefaultInputStream() override;

    juce::int64 size() { return getTotalLength(); }
    int read(void* buffer, int count) override;

    juce::int64 getTotalLength() override;
    bool isExhausted() override;
    juce::int64 getPosition() override;
    bool setPosition(juce::int64 newPosition) override;

private:
    juce::InputStream* source_;
    bool ownsSource_;
};

class Volume
{
public:
    enum Kind : std::uint32_t
    {
        nativeKind = 0,
        resourceKind = 3
    };

    Volume(std::string volumeName, std::string volumeLabel, Path volumeRoot, std::uint32_t volumeKind,
           std::uint32_t volumeFlags);
    virtual ~Volume();

    Volume(const Volume&) = delete;
    Volume& operator=(const Volume&) = delete;

    // The operations below take the path inside the volume (see pathInside).
    virtual void list(const Path& folder, std::vector<Path>& entries) const = 0;
    virtual FileInfo info(const Path& path) const = 0;
    virtual Path nativePath(const Path& path) const;
    virtual Path translate(const Path& path) const;
    virtual std::unique_ptr<DefaultInputStream> openInput(const Path& path) const = 0;
    virtual std::unique_ptr<juce::OutputStream> openOutput(const Path& path, bool append) const = 0;
    virtual bool createFolder(const Path& path) const = 0;
    virtual bool remove(const Path& path, bool recursive) const = 0;

    // "$name" for mounted images and the archive, the bare name for native roots.
    std::string prefixPath() const;
    // Whether a path text (already stripped of a leading "$") starts with the
    // name: native roots ignore case, the others compare byte by byte.
    bool nameMatches(const std::string& text) const;
    // The path with the prefix (and a stray "$" before a native name) and one
    // following "/" cut off.
    Path pathInside(const Path& fullPath) const;

    std::string name;
    std::string label;
    Path root;
    std::uint32_t kind = nativeKind;
    std::uint32_t creatorValue = 0;
    std::uint32_t flags = 0;
    bool isValid = false;
    std::string errorMessage;
};

// Something that can recognise an image file and mount it as a volume.
class VolumeCreator
{
public:
    virtual ~VolumeCreator() = default;
    // A new volume for the file at `path`, or null when the file is not of
    // this creator's format.
    virtual std::unique_ptr<Volume> mount(const Path& path) = 0;
};

} // namespace oxa
