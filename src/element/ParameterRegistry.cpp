#include "element/ParameterRegistry.h"

namespace oxa
{
ParameterRegistry& ParameterRegistry::instance()
{
    // Never destroyed: descriptions are referenced by elements that may outlive static teardown.
    static ParameterRegistry* registry = new ParameterRegistry;
    return *registry;
}

uint32_t ParameterRegistry::add(ParameterKind kind, const String& name,
                                std::unique_ptr<ParameterDescriptionBase> description)
{
    const std::lock_guard<std::mutex> guard(writers_);
    const uint32_t id = counter_ + 1;
    const uint32_t page = id / pageSize;
    if (page >= pageCount)
        return 0;
    if (pages_[page].load(std::memory_order_acquire) == nullptr)
    {
        ownedPages_.push_back(std::make_unique<Page>());
        for (auto& slot : *ownedPages_.back())
            slot.store(nullptr, std::memory_order_relaxed);
        pages_[page].store(ownedPages_.back().get(), std::memory_order_release);
    }
    counter_ = id;
    if (description != nullptr)
        description->id = id;
    entries_.push_back(std::make_unique<Entry>(Entry {kind, name, std::move(description)}));
    (*pages_[page].load(std::memory_order_relaxed))[id % pageSize].store(entries_.back().get(),
                                                                          std::memory_order_release);
    return id;
}

uint32_t ParameterRegistry::registerFloat(const ParameterDescription<float>& d)
{
    return add(ParameterKind::Float, d.name, std::make_unique<ParameterDescription<float>>(d));
}
uint32_t ParameterRegistry::registerInt(const ParameterDescription<int>& d)
{
    return add(ParameterKind::Int, d.name, std::make_unique<ParameterDescription<int>>(d));
}
uint32_t ParameterRegistry::registerBool(const ParameterDescription<bool>& d)
{
    return add(ParameterKind::Bool, d.name, std::make_unique<ParameterDescription<bool>>(d));
}
uint32_t ParameterRegistry::registerString(const ParameterDescription<String>& d)
{
    return add(ParameterKind::String, d.name, std::make_unique<ParameterDescription<String>>(d));
}
uint32_t ParameterRegistry::registerAlias(const String& name) { return add(ParameterKind::Alias, name, nullptr); }

const ParameterRegistry::Entry* ParameterRegistry::find(uint32_t id) const
{
    if (id == 0 || id / pageSize >= pageCount)
        return nullptr;
    const Page* page = pages_[id / pageSize].load(std::memory_order_acquire);
    return page != nullptr ? (*page)[id % pageSize].load(std::memory_order_acquire) : nullptr;
}

ParameterKind ParameterRegistry::kindOf(uint32_t id) const
{
    const Entry* entry = find(id);
    return entry == nullptr ? ParameterKind::Invalid : entry->kind;
}

String ParameterRegistry::nameOf(uint32_t id) const
{
    const Entry* entry = find(id);
    return entry == nullptr ? String() : entry->name;
}

template <typename T>
const ParameterDescription<T>* ParameterRegistry::typed(uint32_t id) const
{
    const Entry* entry = find(id);
    if (entry == nullptr || entry->kind != ParameterKindOf<T>::value)
        return nullptr;
    return static_cast<const ParameterDescription<T>*>(entry->description.get());
}

const ParameterDescription<float>* ParameterRegistry::floatDescription(uint32_t id) const { return typed<float>(id); }
const ParameterDescription<int>* ParameterRegistry::intDescription(uint32_t id) const { return typed<int>(id); }
const ParameterDescription<bool>* ParameterRegistry::boolDescription(uint32_t id) const { return typed<bool>(id); }
const ParameterDescription<String>* ParameterRegistry::stringDescription(uint32_t id) const
{
    return typed<String>(id);
}

const ParameterDescriptionBase* ParameterRegistry::description(uint32_t id) const
{
    const Entry* entry = find(id);
    return entry == nullptr ? nullptr : entry->description.get();
}

void ParameterRegistry::unregister(uint32_t id)
{
    const std::lock_guard<std::mutex> guard(writers_);
    if (id == 0 || id / pageSize >= pageCount)
        return;
    // The entry itself stays owned: a reader may still hold its description.
    if (Page* page = pages_[id / pageSize].load(std::memory_order_acquire))
        (*page)[id % pageSize].store(nullptr, std::memory_order_release);
}
} // namespace oxa
