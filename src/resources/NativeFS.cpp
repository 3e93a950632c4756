#include "resources/NativeFS.h"

#include <algorithm>

namespace oxa
{

NativeFS::NativeFS(const std::string& volumeName, const Path& rootFolder, std::uint32_t creatorTag)
    : Volume(volumeName, volumeName, rootFolder, nativeKind, 0x101)
{
    creatorValue = creatorTag;
    const auto rootText = rootFolder.text();
    if (juce::File::isAbsolutePath(rootText) && juce::File(rootText).isDirectory())
        isValid = true;
    else
        errorMessage = "No folder at '" + rootFolder.str() + "'";
}

juce::File NativeFS::fileFor(const Path& path) const
{
    const auto text = nativePath(path).text();
    return juce::File::isAbsolutePath(text) ? juce::File(text) : juce::File();
}

void NativeFS::list(const Path& folder, std::vector<Path>& entries) const
{
    const auto dir = fileFor(folder);
    if (!dir.isDirectory())
        return;

    auto children = dir.findChildFiles(juce::File::findFilesAndDirectories, false, "*");
    // Directory order differs between file systems; sorted listings keep menus stable.
    std::sort(children.begin(), children.end(),
              [](const juce::File& a, const juce::File& b) { return a.getFileName() < b.getFileName(); });

    const auto base = Path(prefixPath()).joined(folder);
    for (const auto& child : children)
        entries.push_back(base.joined(Path(child.getFileName())));
}

FileInfo NativeFS::info(const Path& path) const
{
    const auto file = fileFor(path);
    FileInfo result;
    if (file == juce::File() || !file.exists())
        return result;
    result.exists = true;
    result.isFolder = file.isDirectory();
    result.canRead = file.hasReadAccess();
    result.canWrite = file.hasWriteAccess();
    return result;
}

std::unique_ptr<DefaultInputStream> NativeFS::openInput(const Path& path) const
{
    const auto file = fileFor(path);
    if (!file.existsAsFile())
        return nullptr;
    auto stream = std::make_unique<juce::FileInputStream>(file);
    if (!stream->openedOk())
        return nullptr;
    return std::make_unique<DefaultInputStream>(stream.release(), true);
}

std::unique_ptr<juce::OutputStream> NativeFS::openOutput(const Path& path, bool append) const
{
    const auto file = fileFor(path);
    if (file == juce::File() || file.isDirectory())
        return nullptr;
    if (!append && file.existsAsFile() && !file.deleteFile())
        return nullptr;
    auto stream = std::make_unique<juce::FileOutputStream>(file, outputBufferBytes);
    if (!stream->openedOk())
        return nullptr;
    return stream;
}

bool NativeFS::createFolder(const Path& path) const
{
    const auto file = fileFor(path);
    return file != juce::File() && file.createDirectory().wasOk();
}

bool NativeFS::remove(const Path& path, bool recursive) const
{
    // Never the volume's own root: a slip in a caller must not wipe a drive.
    if (path.isEmpty())
        return false;
    const auto file = fileFor(path);
    if (file == juce::File() || !file.exists())
        return false;
    return recursive ? file.deleteRecursively() : file.deleteFile();
}

} // namespace oxa
