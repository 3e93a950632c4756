#pragma once
// The window with its pictures at work: each scene sets parameters, renders audio
// where a picture needs live data, and takes one or more pictures of the whole
// expanded window.

#include <functional>
#include <vector>

namespace oxa::snapshot
{
class WindowDriver;

struct Scene
{
    using Shoot = std::function<void(const char* suffix)>;
    const char* name;
    const char* shows;
    std::function<void(WindowDriver&, const Shoot&)> play;
};

const std::vector<Scene>& scenes();
} // namespace oxa::snapshot
