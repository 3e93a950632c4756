#pragma once
// Contract placeholder: the element framework replaces this with the engine's
// shared, immutable string. Kept minimal so that dependent headers compile.
#include <memory>
#include <string>

namespace oxa
{
class String;
}
