#pragma once

namespace oxa
{
/** Base for objects with identity: no copies, no assignment. */
class NonCopyable
{
protected:
    NonCopyable() = default;
    ~NonCopyable() = default;

public:
    NonCopyable(const NonCopyable&) = delete;
    NonCopyable& operator=(const NonCopyable&) = delete;
};
} // namespace oxa
