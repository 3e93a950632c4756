#pragma once
// Reader of the ZIP archive linked into the module. The bytes are used in
// place; each thread that reads gets its own juce::ZipFile, because a ZipFile
// has one stream position that concurrent readers would fight over.
#include "resources/Volume.h"

#include <juce_core/juce_core.h>
#include <juce_events/juce_events.h>

#include <atomic>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <thread>

namespace oxa
{

class NativeResourceManager
{
public:
    // The process-wide reader of the module's own archive.
    static NativeResourceManager& instance();

    // Reads the archive linked into the module once load() is called.
    NativeResourceManager();
    // Reads any archive held in memory by the caller, who keeps the bytes alive.
    NativeResourceManager(const void* archiveData, std::size_t archiveSize);
    ~NativeResourceManager();

    NativeResourceManager(const NativeResourceManager&) = delete;
    NativeResourceManager& operator=(const NativeResourceManager&) = delete;

    void load();
    bool isLoaded() const { return loaded.load(); }

    // This thread's reader, made on first use; null when nothing is loaded.
    juce::ZipFile* zipFile();

    // The entry with exactly this name (case counts), or null.
    std::unique_ptr<DefaultInputStream> openEntry(const std::string& entryName);
    bool hasEntry(const std::string& entryName);

    // How many threads have made a reader so far.
    std::size_t readerCount() const;

    const void* archiveData() const { return data; }
    std::size_t archiveSize() const { return size; }

private:
    std::size_t size = 0;
    const void* data = nullptr;
    std::atomic<bool> loaded { false };
    std::map<std::thread::id, std::shared_ptr<juce::ZipFile>> zipFiles;
    juce::CriticalSection lock;
    const bool readsModule;
};

// Owner of the process-wide manager; deleted with the other shutdown objects.
class NativeResourceManagerHolder : private juce::DeletedAtShutdown
{
public:
    NativeResourceManagerHolder() = default;
    ~NativeResourceManagerHolder() override;

    NativeResourceManager manager;

    JUCE_DECLARE_SINGLETON(NativeResourceManagerHolder, false)
};

} // namespace oxa
