#include "element/ParameterRegistry.h"

namespace oxa
{
ParameterRegistry& ParameterRegistry::instance()
{
    // Never destroyed: descriptions are referenced by elements that may outlive static teardown.
    static ParameterRegistry* registry = new ParameterRegistry;
    return *registry;
}

template <typename T>
uint32_t ParameterRegistry::add(const ParameterDescription<T>& description,
                                std::unordered_map<uint32_t, std::unique_ptr<ParameterDescription<T>>>& map)
{
    std::lock_guard<std::mutex> guard(mutex_);
    const uint32_t id = ++counter_;
    auto copy = std::make_unique<ParameterDescription<T>>(description);
    copy->id = id;
    entries_[id] = Entry{ParameterKindOf<T>::value, description.name};
    map[id] = std::move(copy);
    return id;
}

uint32_t ParameterRegistry::registerFloat(const ParameterDescription<float>& d) { return add(d, floats_); }
uint32_t ParameterRegistry::registerInt(const ParameterDescription<int>& d) { return add(d, ints_); }
uint32_t ParameterRegistry::registerBool(const ParameterDescription<bool>& d) { return add(d, bools_); }
uint32_t ParameterRegistry::registerString(const ParameterDescription<String>& d) { return add(d, strings_); }

uint32_t ParameterRegistry::registerAlias(const String& name)
{
    std::lock_guard<std::mutex> guard(mutex_);
    const uint32_t id = ++counter_;
    entries_[id] = Entry{ParameterKind::Alias, name};
    return id;
}

ParameterKind ParameterRegistry::kindOf(uint32_t id) const
{
    std::lock_guard<std::mutex> guard(mutex_);
    auto found = entries_.find(id);
    return found == entries_.end() ? ParameterKind::Invalid : found->second.kind;
}

String ParameterRegistry::nameOf(uint32_t id) const
{
    std::lock_guard<std::mutex> guard(mutex_);
    auto found = entries_.find(id);
    return found == entries_.end() ? String() : found->second.name;
}

template <typename T>
const ParameterDescription<T>* ParameterRegistry::lookup(
    uint32_t id, const std::unordered_map<uint32_t, std::unique_ptr<ParameterDescription<T>>>& map) const
{
    std::lock_guard<std::mutex> guard(mutex_);
    auto found = map.find(id);
    return found == map.end() ? nullptr : found->second.get();
}

const ParameterDescription<float>* ParameterRegistry::floatDescription(uint32_t id) const { return lookup(id, floats_); }
const ParameterDescription<int>* ParameterRegistry::intDescription(uint32_t id) const { return lookup(id, ints_); }
const ParameterDescription<bool>* ParameterRegistry::boolDescription(uint32_t id) const { return lookup(id, bools_); }
const ParameterDescription<String>* ParameterRegistry::stringDescription(uint32_t id) const
{
    return lookup(id, strings_);
}

const ParameterDescriptionBase* ParameterRegistry::description(uint32_t id) const
{
    switch (kindOf(id))
    {
    case ParameterKind::Float:
        return floatDescription(id);
    case ParameterKind::Int:
        return intDescription(id);
    case ParameterKind::Bool:
        return boolDescription(id);
    case ParameterKind::String:
        return stringDescription(id);
    default:
        return nullptr;
    }
}

void ParameterRegistry::unregister(uint32_t id)
{
    std::lock_guard<std::mutex> guard(mutex_);
    entries_.erase(id);
    floats_.erase(id);
    ints_.erase(id);
    bools_.erase(id);
    strings_.erase(id);
}
} // namespace oxa
