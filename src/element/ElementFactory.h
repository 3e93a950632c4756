#pragma once
// Process-wide table from an element type name to a way of making one.

#include "element/String.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace oxa
{
class Element;

class ElementFactory
{
public:
    using Create = std::function<std::shared_ptr<Element>()>;

    struct Entry
    {
        String displayName;
        String typeName;
        Create create;
        String category;
        uint32_t flags = 0;
    };

    static ElementFactory& instance();

    /** Registers or replaces the entry of `typeName`. */
    void registerType(const String& displayName, const String& typeName, Create create,
                      const String& category = {}, uint32_t flags = 0);
    bool isRegistered(const String& typeName) const;
    /** A new element of that type, or null for an unknown type. */
    std::shared_ptr<Element> create(const String& typeName) const;
    /** A copy of the entry, or null. */
    std::unique_ptr<Entry> entry(const String& typeName) const;
    std::vector<String> typeNames() const;
    void unregisterType(const String& typeName);

private:
    ElementFactory() = default;
    struct Table;
    Table& table() const;
};
} // namespace oxa
