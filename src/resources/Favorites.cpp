#include "resources/Favorites.h"

namespace oxa
{
namespace
{
std::vector<Favorite> copyOf(const std::vector<std::unique_ptr<Favorite>>& list)
{
    std::vector<Favorite> copies;
    copies.reserve(list.size());
    for (const auto& entry : list)
        copies.emplace_back(entry->name, entry->path, entry->kind);
    return copies;
}
} // namespace

std::vector<std::unique_ptr<Favorite>>& FavoriteTable::listFor(std::uint32_t kind)
{
    return kind == Favorite::diskImageKind ? diskImages_ : folders_;
}

bool FavoriteTable::add(std::unique_ptr<Favorite> favorite)
{
    if (favorite == nullptr || !favorite->hasPlace())
        return false;
    const juce::ScopedLock scope(lock_);
    auto& list = listFor(favorite->kind);
    for (const auto& entry : list)
        if (entry->path == favorite->path)
            return false;
    list.push_back(std::move(favorite));
    return true;
}

bool FavoriteTable::setFolder(const String& name, const Path& path)
{
    if (path.isEmpty())
        return false;
    const juce::ScopedLock scope(lock_);
    for (auto& entry : folders_)
        if (entry->name == name)
        {
            entry->path = path;
            return true;
        }
    return add(std::make_unique<Favorite>(name, path, Favorite::folderKind));
}

void FavoriteTable::clear()
{
    const juce::ScopedLock scope(lock_);
    folders_.clear();
    diskImages_.clear();
    loaded_ = false;
}

std::vector<Favorite> FavoriteTable::folders() const
{
    const juce::ScopedLock scope(lock_);
    return copyOf(folders_);
}

std::vector<Favorite> FavoriteTable::diskImages() const
{
    const juce::ScopedLock scope(lock_);
    return copyOf(diskImages_);
}

bool FavoriteTable::isLoaded() const
{
    const juce::ScopedLock scope(lock_);
    return loaded_;
}

void FavoriteTable::setLoaded()
{
    const juce::ScopedLock scope(lock_);
    loaded_ = true;
}

} // namespace oxa
