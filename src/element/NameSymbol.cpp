#include "element/NameSymbol.h"

#include <map>
#include <mutex>

namespace oxa
{
namespace
{
struct SymbolTable
{
    std::mutex mutex;
    std::map<String, NameSymbol::Node*> nodes;
};

// Never destroyed: symbols held by other static objects may be released after exit begins.
SymbolTable& table()
{
    static SymbolTable* instance = new SymbolTable;
    return *instance;
}
} // namespace

NameSymbol::NameSymbol(const String& text)
{
    auto& t = table();
    std::lock_guard<std::mutex> guard(t.mutex);
    auto found = t.nodes.find(text);
    if (found == t.nodes.end())
    {
        auto* node = new Node;
        node->text = text;
        found = t.nodes.emplace(text, node).first;
    }
    node_ = found->second;
    node_->references.fetch_add(1, std::memory_order_relaxed);
}

NameSymbol::NameSymbol(const NameSymbol& other) : node_(other.node_)
{
    if (node_ != nullptr)
        node_->references.fetch_add(1, std::memory_order_relaxed);
}

NameSymbol& NameSymbol::operator=(const NameSymbol& other)
{
    if (node_ != other.node_)
    {
        if (other.node_ != nullptr)
            other.node_->references.fetch_add(1, std::memory_order_relaxed);
        release();
        node_ = other.node_;
    }
    return *this;
}

NameSymbol& NameSymbol::operator=(NameSymbol&& other) noexcept
{
    if (this != &other)
    {
        release();
        node_ = other.node_;
        other.node_ = nullptr;
    }
    return *this;
}

NameSymbol::~NameSymbol() { release(); }

// The count drops under the table's mutex so that a lookup can never revive a node
// that is about to be deleted.
void NameSymbol::release()
{
    if (node_ == nullptr)
        return;
    auto& t = table();
    std::lock_guard<std::mutex> guard(t.mutex);
    if (node_->references.fetch_sub(1, std::memory_order_acq_rel) == 1)
    {
        t.nodes.erase(node_->text);
        delete node_;
    }
    node_ = nullptr;
}

const String& NameSymbol::text() const
{
    static const String empty;
    return node_ != nullptr ? node_->text : empty;
}

std::size_t NameSymbol::internedCount()
{
    auto& t = table();
    std::lock_guard<std::mutex> guard(t.mutex);
    return t.nodes.size();
}
} // namespace oxa
