#include "resources/NativeResourceManager.h"

// Bounds of the archive that the build places in the module's read-only data.
extern "C" {
__attribute__((visibility("hidden"))) extern const unsigned char fluxdeck_resource_archive[];
__attribute__((visibility("hidden"))) extern const unsigned char fluxdeck_resource_archive_end[];
}

namespace oxa
{

JUCE_IMPLEMENT_SINGLETON(NativeResourceManagerHolder)

NativeResourceManagerHolder::~NativeResourceManagerHolder()
{
    clearSingletonInstance();
}

NativeResourceManager& NativeResourceManager::instance()
{
    return NativeResourceManagerHolder::getInstance()->manager;
}

NativeResourceManager::NativeResourceManager() : readsModule(true)
{
}

NativeResourceManager::NativeResourceManager(const void* archiveData, std::size_t archiveSize)
    : size(archiveSize), data(archiveData), readsModule(false)
{
}

NativeResourceManager::~NativeResourceManager() = default;

void NativeResourceManager::load()
{
    const juce::ScopedLock scope(lock);
    if (loaded)
        return;

    if (readsModule)
    {
        data = fluxdeck_resource_archive;
        size = static_cast<std::size_t>(fluxdeck_resource_archive_end - fluxdeck_resource_archive);
    }

    // An empty archive counts as a missing one: nothing to read, no message.
    loaded = data != nullptr && size > 0;
}

juce::ZipFile* NativeResourceManager::zipFile()
{
    if (!loaded)
        return nullptr;

    const juce::ScopedLock scope(lock);
    auto& reader = zipFiles[std::this_thread::get_id()];
    if (reader == nullptr)
        reader = std::make_shared<juce::ZipFile>(new juce::MemoryInputStream(data, size, false), true);
    return reader.get();
}

std::unique_ptr<DefaultInputStream> NativeResourceManager::openEntry(const std::string& entryName)
{
    auto* zip = zipFile();
    if (zip == nullptr)
        return nullptr;

    const int index = zip->getIndexOfFileName(juce::String::fromUTF8(entryName.c_str()), false);
    if (index < 0)
        return nullptr;

    auto* entryStream = zip->createStreamForEntry(index);
    if (entryStream == nullptr)
        return nullptr;
    return std::make_unique<DefaultInputStream>(entryStream, true);
}

bool NativeResourceManager::hasEntry(const std::string& entryName)
{
    auto* zip = zipFile();
    return zip != nullptr && zip->getIndexOfFileName(juce::String::fromUTF8(entryName.c_str()), false) >= 0;
}

std::size_t NativeResourceManager::readerCount() const
{
    const juce::ScopedLock scope(lock);
    return zipFiles.size();
}

} // namespace oxa
