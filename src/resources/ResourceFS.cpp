#include "resources/ResourceFS.h"

namespace oxa
{
namespace
{
// Calls `visit` for each non-empty "/"-separated segment until it returns false.
template <typename Visit>
void forEachSegment(const std::string& text, Visit&& visit)
{
    std::size_t start = 0;
    while (start <= text.size())
    {
        auto end = text.find('/', start);
        if (end == std::string::npos)
            end = text.size();
        if (end > start && !visit(text.substr(start, end - start)))
            return;
        start = end + 1;
    }
}
} // namespace

ResourceFS::ResourceFS(const std::string& volumeName, bool readZipped, const Path& folderOnDisk,
                       NativeResourceManager& archive)
    : Volume(volumeName, volumeName, Path("Resource"), resourceKind, 1),
      zipped(readZipped),
      basePath(folderOnDisk),
      archive_(archive)
{
    if (!zipped)
    {
        folder_ = std::make_unique<NativeFS>(volumeName, basePath);
        isValid = folder_->isValid;
        errorMessage = folder_->errorMessage;
        return;
    }

    index.InsertEndChild(index.NewElement("Resource"));
    archive_.load();
    isValid = true;
    buildIndex();
}

void ResourceFS::buildIndex()
{
    auto* zip = archive_.zipFile();
    if (zip == nullptr)
        return;

    for (int i = 0; i < zip->getNumEntries(); ++i)
    {
        const auto* entry = zip->getEntry(i);
        if (entry == nullptr)
            continue;

        auto* node = index.RootElement();
        forEachSegment(entry->filename.toStdString(), [&](const std::string& segment) {
            auto* child = node->FirstChildElement(segment.c_str());
            if (child == nullptr)
                child = node->InsertNewChildElement(segment.c_str());
            node = child;
            return true;
        });
    }
}

const tinyxml2::XMLElement* ResourceFS::find(const Path& path) const
{
    const auto* node = index.RootElement();
    if (node == nullptr)
        return nullptr;

    forEachSegment(path.str(), [&](const std::string& segment) {
        node = node->FirstChildElement(segment.c_str());
        return node != nullptr;
    });
    return node;
}

void ResourceFS::list(const Path& folder, std::vector<Path>& entries) const
{
    const auto cleanFolder = folder.normaliseDots();
    const auto base = Path(prefixPath()).joined(cleanFolder);

    if (!zipped)
    {
        std::vector<Path> onDisk;
        folder_->list(cleanFolder, onDisk);
        for (const auto& item : onDisk)
            entries.push_back(base.joined(Path(item.fileName())));
        return;
    }

    const auto* node = find(cleanFolder);
    if (node == nullptr)
        return;

    for (auto* child = node->FirstChildElement(); child != nullptr; child = child->NextSiblingElement())
    {
        const std::string childName = child->Name();
        if (childName != "." && childName != "..")
            entries.push_back(base.joined(Path(childName)));
    }
}

FileInfo ResourceFS::info(const Path& path) const
{
    const auto cleanPath = path.normaliseDots();
    if (!zipped)
    {
        auto onDisk = folder_->info(cleanPath);
        onDisk.canWrite = false;
        return onDisk;
    }

    FileInfo result;
    if (const auto* node = find(cleanPath))
    {
        result.exists = true;
        result.isFolder = node->FirstChildElement() != nullptr;
        result.canRead = true;
    }
    return result;
}

std::unique_ptr<DefaultInputStream> ResourceFS::openInput(const Path& path) const
{
    // Names go to the archive untouched: no dot handling, no case folding.
    if (!zipped)
        return folder_->openInput(path);
    return archive_.openEntry(path.str());
}

std::unique_ptr<juce::OutputStream> ResourceFS::openOutput(const Path&, bool) const
{
    return nullptr;
}

bool ResourceFS::createFolder(const Path&) const
{
    return false;
}

bool ResourceFS::remove(const Path&, bool) const
{
    return false;
}

} // namespace oxa
