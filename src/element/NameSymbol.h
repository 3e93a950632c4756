#pragma once
// Interned names: one shared node per distinct text, process-wide. Equal symbols
// are usually the same node, so comparing names is a pointer test.

#include "element/String.h"

#include <atomic>

namespace oxa
{
class NameSymbol
{
public:
    NameSymbol() = default;
    NameSymbol(const String& text);
    NameSymbol(const char* text) : NameSymbol(String(text)) {}
    NameSymbol(const NameSymbol& other);
    NameSymbol(NameSymbol&& other) noexcept : node_(other.node_) { other.node_ = nullptr; }
    NameSymbol& operator=(const NameSymbol& other);
    NameSymbol& operator=(NameSymbol&& other) noexcept;
    ~NameSymbol();

    const String& text() const;
    const char* c_str() const { return text().c_str(); }
    bool isEmpty() const { return text().isEmpty(); }

    bool operator==(const NameSymbol& other) const { return node_ == other.node_ || text() == other.text(); }
    bool operator!=(const NameSymbol& other) const { return !(*this == other); }
    bool operator<(const NameSymbol& other) const { return node_ != other.node_ && text() < other.text(); }
    bool operator==(const String& other) const { return text() == other; }
    bool operator==(const char* other) const { return text() == other; }

    /** How many distinct names are interned now (for tests and diagnostics). */
    static std::size_t internedCount();

    struct Node
    {
        String text;
        std::atomic<int> references{0};
    };

private:
    void release();

    Node* node_ = nullptr;
};
} // namespace oxa
