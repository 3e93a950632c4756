#pragma once
// The module's archive as a read-only volume, "$Resource/resource/...".
// Listings and queries walk an index tree built once from the archive's names;
// reads go straight to the archive. With `zipped` false a folder on disk
// stands in for the archive, for development builds.
#include "resources/NativeFS.h"
#include "resources/NativeResourceManager.h"

#include <tinyxml2.h>

namespace oxa
{

class ResourceFS : public Volume
{
public:
    ResourceFS(const std::string& volumeName, bool readZipped, const Path& folderOnDisk,
               NativeResourceManager& archive = NativeResourceManager::instance());

    void list(const Path& folder, std::vector<Path>& entries) const override;
    FileInfo info(const Path& path) const override;
    std::unique_ptr<DefaultInputStream> openInput(const Path& path) const override;
    std::unique_ptr<juce::OutputStream> openOutput(const Path& path, bool append) const override;
    bool createFolder(const Path& path) const override;
    bool remove(const Path& path, bool recursive) const override;

    const bool zipped;
    const Path basePath;

private:
    void buildIndex();
    // The index element reached by the path's segments, or null.
    const tinyxml2::XMLElement* find(const Path& path) const;

    NativeResourceManager& archive_;
    tinyxml2::XMLDocument index;
    std::unique_ptr<NativeFS> folder_;
};

} // namespace oxa
