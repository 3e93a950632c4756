#pragma once
// Process-wide table of declared parameters. Ids count from 1 in declaration order;
// they are stable within one build and never stored in files.

#include "element/ParameterDescription.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace oxa
{
class ParameterRegistry
{
public:
    /** Built on first use and never rebuilt. */
    static ParameterRegistry& instance();

    // Each stores a copy with its id filled in and returns the id. Names are not compared:
    // registering one name twice gives two ids.
    uint32_t registerFloat(const ParameterDescription<float>& description);
    uint32_t registerInt(const ParameterDescription<int>& description);
    uint32_t registerBool(const ParameterDescription<bool>& description);
    uint32_t registerString(const ParameterDescription<String>& description);
    uint32_t registerAlias(const String& name);

    ParameterKind kindOf(uint32_t id) const;
    bool isKnown(uint32_t id) const { return kindOf(id) != ParameterKind::Invalid; }
    /** Empty for an unknown id. */
    String nameOf(uint32_t id) const;

    // Null for an unknown id or one of another kind. The pointers stay valid until unregister.
    const ParameterDescription<float>* floatDescription(uint32_t id) const;
    const ParameterDescription<int>* intDescription(uint32_t id) const;
    const ParameterDescription<bool>* boolDescription(uint32_t id) const;
    const ParameterDescription<String>* stringDescription(uint32_t id) const;
    /** Any kind but Alias. */
    const ParameterDescriptionBase* description(uint32_t id) const;

    void unregister(uint32_t id);

private:
    ParameterRegistry() = default;

    struct Entry
    {
        ParameterKind kind;
        String name;
    };

    template <typename T>
    uint32_t add(const ParameterDescription<T>& description,
                 std::unordered_map<uint32_t, std::unique_ptr<ParameterDescription<T>>>& map);

    template <typename T>
    const ParameterDescription<T>* lookup(
        uint32_t id, const std::unordered_map<uint32_t, std::unique_ptr<ParameterDescription<T>>>& map) const;

    // Registration happens in static set-up on one thread; the lock keeps late lookups safe.
    mutable std::mutex mutex_;
    uint32_t counter_ = 0;
    std::unordered_map<uint32_t, Entry> entries_;
    std::unordered_map<uint32_t, std::unique_ptr<ParameterDescription<float>>> floats_;
    std::unordered_map<uint32_t, std::unique_ptr<ParameterDescription<int>>> ints_;
    std::unordered_map<uint32_t, std::unique_ptr<ParameterDescription<bool>>> bools_;
    std::unordered_map<uint32_t, std::unique_ptr<ParameterDescription<String>>> strings_;
};
} // namespace oxa
