#include "resources/Path.h"

#include "resources/Volume.h"
#include "resources/VolumeTable.h"

#include <algorithm>

namespace oxa
{
namespace
{
const std::string& emptyText()
{
    static const std::string empty;
    return empty;
}

std::shared_ptr<const std::string> makeText(std::string text)
{
    if (text.empty())
        return nullptr;
    std::replace(text.begin(), text.end(), '\\', '/');
    return std::make_shared<const std::string>(std::move(text));
}

Volume* owningVolume(const Path& path)
{
    return VFSHolder::getInstance()->volumeFor(path);
}

} // namespace

Path::Path(const char* text) : text_(text != nullptr ? makeText(text) : nullptr)
{
}

Path::Path(const std::string& text) : text_(makeText(text))
{
}

Path::Path(const juce::String& text) : text_(makeText(text.toStdString()))
{
}

const std::string& Path::str() const
{
    return text_ != nullptr ? *text_ : emptyText();
}

juce::String Path::text() const
{
    return juce::String::fromUTF8(str().c_str(), (int) str().size());
}

Path& Path::append(const Path& other)
{
    if (isEmpty())
    {
        text_ = other.text_;
        return *this;
    }
    if (other.isEmpty())
        return *this;

    const auto& head = str();
    const auto& tail = other.str();
    const bool headSlash = head.back() == '/';
    const bool tailSlash = tail.front() == '/';

    std::string joinedText;
    if (headSlash && tailSlash)
        joinedText = head.substr(0, head.size() - 1) + tail;
    else if (headSlash || tailSlash)
        joinedText = head + tail;
    else
        joinedText = head + "/" + tail;

    text_ = std::make_shared<const std::string>(std::move(joinedText));
    return *this;
}

Path Path::joined(const Path& other) const
{
    Path copy(*this);
    copy.append(other);
    return copy;
}

Path Path::parent() const
{
    auto text = str();
    if (text.size() > 1 && text.back() == '/')
        text.pop_back();

    const auto slash = text.rfind('/');
    if (slash == std::string::npos)
        return Path();
    if (slash == 0)
        return Path("/");
    return Path(text.substr(0, slash));
}

std::string Path::fileName() const
{
    auto text = str();
    while (!text.empty() && text.back() == '/')
        text.pop_back();
    const auto slash = text.rfind('/');
    return slash == std::string::npos ? text : text.substr(slash + 1);
}

Path Path::normaliseDots() const
{
    const auto& text = str();
    if (text.find("..") == std::string::npos)
        return *this;

    std::size_t keep = 0;
    if (const auto* volume = owningVolume(*this))
    {
        const bool strayDollar = volume->kind == Volume::nativeKind && text.front() == '$';
        keep = std::min(text.size(), volume->prefixPath().size() + (strayDollar ? 1 : 0));
    }

    // Split the rest into segments, keeping empty ones so that leading,
    // doubled and trailing slashes survive.
    std::vector<std::string> segments;
    std::size_t start = keep;
    while (true)
    {
        const auto end = text.find('/', start);
        segments.push_back(text.substr(start, end == std::string::npos ? std::string::npos : end - start));
        if (end == std::string::npos)
            break;
        start = end + 1;
    }

    std::vector<std::string> kept;
    for (auto& segment : segments)
    {
        if (segment != "..")
            kept.push_back(std::move(segment));
        else if (!kept.empty() && !kept.back().empty())
            kept.pop_back();
    }

    std::string result = text.substr(0, keep);
    for (std::size_t i = 0; i < kept.size(); ++i)
    {
        if (i > 0)
            result += '/';
        result += kept[i];
    }
    return Path(result);
}

Path Path::stripNativeDollar() const
{
    const auto& text = str();
    if (text.empty() || text.front() != '$')
        return *this;
    const auto* volume = owningVolume(*this);
    if (volume == nullptr || volume->kind != Volume::nativeKind)
        return *this;
    return Path(text.substr(1));
}

std::unique_ptr<DefaultInputStream> Path::openInput() const
{
    const auto* volume = owningVolume(*this);
    return volume != nullptr ? volume->openInput(volume->pathInside(*this)) : nullptr;
}

std::unique_ptr<juce::OutputStream> Path::openOutput(bool append) const
{
    const auto* volume = owningVolume(*this);
    return volume != nullptr ? volume->openOutput(volume->pathInside(*this), append) : nullptr;
}

bool Path::createFolders() const
{
    const auto* volume = owningVolume(*this);
    return volume != nullptr && volume->createFolder(volume->pathInside(*this));
}

bool Path::remove(bool recursive) const
{
    const auto* volume = owningVolume(*this);
    return volume != nullptr && volume->remove(volume->pathInside(*this), recursive);
}

FileInfo Path::info() const
{
    const auto* volume = owningVolume(*this);
    return volume != nullptr ? volume->info(volume->pathInside(*this)) : FileInfo {};
}

bool Path::exists() const
{
    return info().exists;
}

void Path::list(std::vector<Path>& entries) const
{
    if (const auto* volume = owningVolume(*this))
        volume->list(volume->pathInside(*this), entries);
}

Volume* Path::mount(std::string& error) const
{
    return VFSHolder::getInstance()->mount(*this, error);
}

} // namespace oxa
