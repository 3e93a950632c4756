#include "resources/Volume.h"

namespace oxa
{

DefaultInputStream::DefaultInputStream(juce::InputStream* source, bool ownsSource)
    : source_(source), ownsSource_(ownsSource)
{
}

DefaultInputStream::~DefaultInputStream()
{
    if (ownsSource_)
        delete source_;
}

int DefaultInputStream::read(void* buffer, int count)
{
    return source_ != nullptr ? source_->read(buffer, count) : 0;
}

juce::int64 DefaultInputStream::getTotalLength()
{
    return source_ != nullptr ? source_->getTotalLength() : 0;
}

bool DefaultInputStream::isExhausted()
{
    return source_ == nullptr || source_->isExhausted();
}

juce::int64 DefaultInputStream::getPosition()
{
    return source_ != nullptr ? source_->getPosition() : 0;
}

bool DefaultInputStream::setPosition(juce::int64 newPosition)
{
    return source_ != nullptr && source_->setPosition(newPosition);
}

Volume::Volume(std::string volumeName, std::string volumeLabel, Path volumeRoot, std::uint32_t volumeKind,
               std::uint32_t volumeFlags)
    : name(std::move(volumeName)),
      label(std::move(volumeLabel)),
      root(std::move(volumeRoot)),
      kind(volumeKind),
      flags(volumeFlags)
{
}

Volume::~Volume() = default;

Path Volume::nativePath(const Path& path) const
{
    return root.joined(path);
}

Path Volume::translate(const Path& path) const
{
    return path;
}

std::string Volume::prefixPath() const
{
    return kind == nativeKind ? name : "$" + name;
}

bool Volume::nameMatches(const std::string& text) const
{
    if (text.size() < name.size())
        return false;

    if (kind != nativeKind)
        return text.compare(0, name.size(), name) == 0;

    // Compare as text rather than bytes so that case folding covers more than ASCII.
    const auto head = juce::String::fromUTF8(text.data(), (int) name.size());
    return head.equalsIgnoreCase(juce::String::fromUTF8(name.data(), (int) name.size()));
}

Path Volume::pathInside(const Path& fullPath) const
{
    const auto& text = fullPath.str();
    // A native volume's path may still carry the "$" of an older document.
    const bool strayDollar = kind == nativeKind && !text.empty() && text.front() == '$';
    const auto cut = std::min(text.size(), prefixPath().size() + (strayDollar ? 1 : 0));
    auto inside = text.substr(cut);
    if (!inside.empty() && inside.front() == '/')
        inside.erase(0, 1);
    return Path(inside);
}

} // namespace oxa
