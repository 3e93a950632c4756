#include "element/ElementFactory.h"

#include <map>
#include <mutex>

namespace oxa
{
struct ElementFactory::Table
{
    mutable std::mutex mutex;
    std::map<String, Entry> entries;
};

ElementFactory& ElementFactory::instance()
{
    static ElementFactory* factory = new ElementFactory;
    return *factory;
}

ElementFactory::Table& ElementFactory::table() const
{
    static Table* t = new Table;
    return *t;
}

void ElementFactory::registerType(const String& displayName, const String& typeName, Create create,
                                  const String& category, uint32_t flags)
{
    auto& t = table();
    std::lock_guard<std::mutex> guard(t.mutex);
    t.entries[typeName] = Entry{displayName, typeName, std::move(create), category, flags};
}

bool ElementFactory::isRegistered(const String& typeName) const
{
    auto& t = table();
    std::lock_guard<std::mutex> guard(t.mutex);
    return t.entries.count(typeName) != 0;
}

std::shared_ptr<Element> ElementFactory::create(const String& typeName) const
{
    Create create;
    {
        auto& t = table();
        std::lock_guard<std::mutex> guard(t.mutex);
        auto found = t.entries.find(typeName);
        if (found == t.entries.end() || !found->second.create)
            return nullptr;
        create = found->second.create;
    }
    // outside the lock: a constructor may itself ask the factory
    return create();
}

std::unique_ptr<ElementFactory::Entry> ElementFactory::entry(const String& typeName) const
{
    auto& t = table();
    std::lock_guard<std::mutex> guard(t.mutex);
    auto found = t.entries.find(typeName);
    if (found == t.entries.end())
        return nullptr;
    return std::make_unique<Entry>(found->second);
}

std::vector<String> ElementFactory::typeNames() const
{
    auto& t = table();
    std::lock_guard<std::mutex> guard(t.mutex);
    std::vector<String> names;
    for (auto& [name, e] : t.entries)
        names.push_back(name);
    return names;
}

void ElementFactory::unregisterType(const String& typeName)
{
    auto& t = table();
    std::lock_guard<std::mutex> guard(t.mutex);
    t.entries.erase(typeName);
}
} // namespace oxa
