#pragma once
// A folder of the machine's file system (or a whole root such as "/") as a volume.
#include "resources/Volume.h"

namespace oxa
{

class NativeFS : public Volume
{
public:
    // `volumeName` is both the table key and the label; paths inside the
    // volume are taken relative to `rootFolder`.
    NativeFS(const std::string& volumeName, const Path& rootFolder, std::uint32_t creatorTag = 0);

    void list(const Path& folder, std::vector<Path>& entries) const override;
    FileInfo info(const Path& path) const override;
    std::unique_ptr<DefaultInputStream> openInput(const Path& path) const override;
    std::unique_ptr<juce::OutputStream> openOutput(const Path& path, bool append) const override;
    bool createFolder(const Path& path) const override;
    bool remove(const Path& path, bool recursive) const override;

    // The file for a path inside the volume; an invalid File when the joined
    // text is not absolute (juce::File only handles absolute paths).
    juce::File fileFor(const Path& path) const;

private:
    static constexpr int outputBufferBytes = 32768;
};

} // namespace oxa
