#pragma once
// Places a user reaches quickly: folders and disk images, kept in the order the
// user made them. The table lives in the process-wide volume table; every
// instance of the plug-in shares it, so it has a lock of its own.
#include "element/String.h"
#include "resources/Path.h"

#include <juce_core/juce_core.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace oxa
{

class Favorite
{
public:
    enum Kind : std::uint32_t
    {
        folderKind = 1,
        diskImageKind = 2
    };

    Favorite(const String& placeName, const Path& placePath, std::uint32_t placeKind = folderKind)
        : name(placeName), path(placePath), kind(placeKind)
    {
    }
    virtual ~Favorite() = default;

    // False for a row that only fills a gap in a list.
    virtual bool hasPlace() const { return !path.isEmpty(); }

    String name;
    Path path;
    std::uint32_t kind;
};

// An empty row: a favourite with nothing behind it.
class DummyFavorite : public Favorite
{
public:
    explicit DummyFavorite(const String& label = String()) : Favorite(label, Path(), folderKind) {}
    bool hasPlace() const override { return false; }
};

class FavoriteTable
{
public:
    // Takes a favourite into the folder or the image list, by its kind. Refused
    // (and deleted) when it has no place or its path is already listed there.
    bool add(std::unique_ptr<Favorite> favorite);
    // Points the favourite of this name at a new path, or adds it: a module that
    // moved keeps one entry under its identifier.
    bool setFolder(const String& name, const Path& path);
    void clear();

    // Copies, so that callers never hold an entry another thread may remove.
    std::vector<Favorite> folders() const;
    std::vector<Favorite> diskImages() const;

    // Whether the user's saved list has been read in this process.
    bool isLoaded() const;
    void setLoaded();

private:
    std::vector<std::unique_ptr<Favorite>>& listFor(std::uint32_t kind);

    std::vector<std::unique_ptr<Favorite>> folders_;
    std::vector<std::unique_ptr<Favorite>> diskImages_;
    bool loaded_ = false;
    juce::CriticalSection lock_;
};

} // namespace oxa
