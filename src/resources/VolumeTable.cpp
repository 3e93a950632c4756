#include "resources/VolumeTable.h"

#include "resources/NativeFS.h"
#include "resources/ResourceFS.h"

#include <mutex>

namespace oxa
{

VolumeTable::VolumeTable() = default;
VolumeTable::~VolumeTable() = default;

Volume* VolumeTable::volumeFor(const Path& path) const
{
    const auto& text = path.str();
    const std::string working = !text.empty() && text.front() == '$' ? text.substr(1) : text;

    const juce::ScopedLock scope(lock_);
    Volume* best = nullptr;
    std::size_t bestLength = 0;
    // Strictly longer only: of two equally long matches the first in key order stays.
    for (const auto& [name, volume] : volumes_)
    {
        if (name.size() > bestLength && volume->nameMatches(working))
        {
            best = volume.get();
            bestLength = name.size();
        }
    }
    return best;
}

bool VolumeTable::isMounted(const std::string& name) const
{
    const juce::ScopedLock scope(lock_);
    return volumes_.count(name) != 0;
}

Volume* VolumeTable::addVolume(std::unique_ptr<Volume> volume)
{
    if (volume == nullptr || !volume->isValid)
        return nullptr;

    Volume* added = nullptr;
    {
        const juce::ScopedLock scope(lock_);
        auto& slot = volumes_[volume->name];
        if (slot != nullptr)
            return nullptr;
        slot = std::move(volume);
        added = slot.get();
    }
    listeners_.call([added](Listener& l) { l.volumeAdded(*added); });
    return added;
}

Volume* VolumeTable::mountResources(const std::string& name, bool zipped, const Path& basePath)
{
    return addVolume(std::make_unique<ResourceFS>(name, zipped, basePath));
}

void VolumeTable::addCreator(std::unique_ptr<VolumeCreator> creator)
{
    if (creator == nullptr)
        return;
    const juce::ScopedLock scope(lock_);
    creators_.push_back(std::move(creator));
}

Volume* VolumeTable::mount(const Path& path, std::string& error)
{
    std::unique_ptr<Volume> volume;
    {
        const juce::ScopedLock scope(lock_);
        for (auto& creator : creators_)
            if ((volume = creator->mount(path)) != nullptr)
                break;
    }

    const auto prefix = "Unable to mount the Volume from '" + path.str() + "'";
    if (volume == nullptr)
    {
        const auto* holder = volumeFor(path);
        const bool exists = holder != nullptr && holder->info(holder->pathInside(path)).exists;
        error = prefix + (exists ? " (Invalid file)" : " (File not found)");
        return nullptr;
    }

    if (auto* added = addVolume(std::move(volume)))
        return added;

    error = prefix + " (Invalid file)";
    return nullptr;
}

void VolumeTable::addListener(Listener* listener)
{
    listeners_.add(listener);
}

void VolumeTable::removeListener(Listener* listener)
{
    listeners_.remove(listener);
}

JUCE_IMPLEMENT_SINGLETON(VFSHolder)

VFSHolder::~VFSHolder()
{
    clearSingletonInstance();
}

void ensureDefaultVolumes()
{
    static std::mutex once;
    const std::lock_guard<std::mutex> guard(once);

    auto* table = VFSHolder::getInstance();
    if (!table->isMounted("/"))
        table->addVolume(std::make_unique<NativeFS>("/", Path("/")));
    if (!table->isMounted("Resource"))
        table->mountResources("Resource", true, Path());
}

} // namespace oxa
