#pragma once
// Process-wide table of declared parameters. Ids count from 1 in declaration order;
// they are stable within one build and never stored in files.
//
// Lookups take no lock: setters on the audio thread ask for descriptions. The table is
// a fixed row of pages of atomic pointers; registration (static set-up, message thread)
// fills them under a mutex, and an entry once published is never freed, so a reader
// that found it may keep using it.

#include "element/ParameterDescription.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

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

    // Null for an unknown id or one of another kind. The pointers stay valid for the
    // life of the process, unregistered ids included.
    const ParameterDescription<float>* floatDescription(uint32_t id) const;
    const ParameterDescription<int>* intDescription(uint32_t id) const;
    const ParameterDescription<bool>* boolDescription(uint32_t id) const;
    const ParameterDescription<String>* stringDescription(uint32_t id) const;
    /** Any kind but Alias. */
    const ParameterDescriptionBase* description(uint32_t id) const;

    void unregister(uint32_t id);

    /** Room for ids; registration past it fails with id 0. */
    static constexpr uint32_t pageSize = 1024;
    static constexpr uint32_t pageCount = 256;

private:
    ParameterRegistry() = default;

    struct Entry
    {
        ParameterKind kind;
        String name;
        std::unique_ptr<ParameterDescriptionBase> description; // null for aliases
    };
    using Page = std::array<std::atomic<const Entry*>, pageSize>;

    uint32_t add(ParameterKind kind, const String& name, std::unique_ptr<ParameterDescriptionBase> description);
    const Entry* find(uint32_t id) const;
    template <typename T>
    const ParameterDescription<T>* typed(uint32_t id) const;

    std::mutex writers_; // registration and unregistration only
    uint32_t counter_ = 0;
    std::array<std::atomic<Page*>, pageCount> pages_ {};
    std::vector<std::unique_ptr<Page>> ownedPages_;
    std::vector<std::unique_ptr<Entry>> entries_; // every entry ever published
};
} // namespace oxa
