#pragma once
// The table of mounted volumes. One process-wide instance (VFSHolder) serves
// every Path; separate tables exist only for tests.
#include "resources/Favorites.h"
#include "resources/Volume.h"

#include <juce_core/juce_core.h>
#include <juce_events/juce_events.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace oxa
{

class VolumeTable
{
public:
    class Listener
    {
    public:
        virtual ~Listener() = default;
        virtual void volumeAdded(Volume& volume) = 0;
    };

    VolumeTable();
    virtual ~VolumeTable();

    // The volume with the longest name that prefixes the path, or null.
    Volume* volumeFor(const Path& path) const;
    bool isMounted(const std::string& name) const;

    // Takes ownership of a valid volume with a new name and announces it; a
    // refused volume is deleted here. Returns the added volume or null.
    Volume* addVolume(std::unique_ptr<Volume> volume);

    // Adds the archive volume, reading from the module (zipped) or from the
    // folder `basePath` (development form).
    Volume* mountResources(const std::string& name, bool zipped, const Path& basePath);

    void addCreator(std::unique_ptr<VolumeCreator> creator);
    // Mounts the image at `path` through the first creator that takes it.
    Volume* mount(const Path& path, std::string& error);

    void addListener(Listener* listener);
    void removeListener(Listener* listener);

    // The user's favourite places, kept beside the volumes they lie in.
    FavoriteTable& favorites() { return favorites_; }

private:
    FavoriteTable favorites_;
    std::map<std::string, std::unique_ptr<Volume>> volumes_;
    std::vector<std::unique_ptr<VolumeCreator>> creators_;
    juce::CriticalSection lock_;
    juce::ListenerList<Listener, juce::Array<Listener*, juce::CriticalSection>> listeners_;
};

// The process-wide table, made on first use and deleted at shutdown.
class VFSHolder : public VolumeTable, private juce::DeletedAtShutdown
{
public:
    VFSHolder() = default;
    ~VFSHolder() override;

    JUCE_DECLARE_SINGLETON(VFSHolder, false)
};

// Mounts what every instance needs: the native root "/" and the embedded
// archive as "$Resource". Safe to call more than once; the plug-in calls it in
// its constructor.
void ensureDefaultVolumes();

} // namespace oxa
