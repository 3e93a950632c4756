#pragma once
// The engine's text type: a cheap handle sharing an immutable UTF-8 body.
// A null handle is the empty text, so default construction never allocates.

#include "element/CheckedValue.h"

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>

namespace oxa
{
class String
{
public:
    String() = default;
    String(const char* text);
    String(const char* text, std::size_t length);
    String(const std::string& text);
    String(std::string&& text);

    /** The body; a shared empty string when null. */
    const std::string& str() const;
    const char* c_str() const { return str().c_str(); }
    std::size_t length() const { return body_ ? body_->size() : 0; }
    bool isEmpty() const { return length() == 0; }
    bool isNull() const { return body_ == nullptr; }
    char operator[](std::size_t index) const { return str()[index]; }

    /** True when both handles share one body (or both are null). */
    bool sharesBodyWith(const String& other) const { return body_ == other.body_; }

    // Positional formatting: each call replaces every occurrence of the lowest-numbered
    // marker "%1".."%99" still present. Without a marker the text is returned unchanged.
    String arg(const String& value) const;
    String arg(const char* value) const { return arg(String(value)); }
    String arg(int value, int radix = 10) const { return arg(static_cast<long long>(value), radix); }
    String arg(unsigned value, int radix = 10) const { return arg(static_cast<unsigned long long>(value), radix); }
    String arg(long value, int radix = 10) const { return arg(static_cast<long long>(value), radix); }
    String arg(unsigned long value, int radix = 10) const
    {
        return arg(static_cast<unsigned long long>(value), radix);
    }
    String arg(long long value, int radix = 10) const;
    String arg(unsigned long long value, int radix = 10) const;
    /** decimals < 0: shortest text that reads back to the same float. Else printf "%.Nf". */
    String arg(float value, int decimals = -1) const;
    String arg(double value, int decimals = -1) const;

    static String fromInt(long long value, int radix = 10);
    static String fromFloat(double value, int decimals = -1);
    static String fromFloat(float value, int decimals = -1);

    CheckedValue<unsigned> find(char c, std::size_t start = 0) const;
    CheckedValue<unsigned> find(const String& text, std::size_t start = 0) const;
    CheckedValue<unsigned> findLast(char c) const;
    bool contains(const String& text) const { return find(text).isValid(); }
    bool containsAnyOf(const char* characters) const;
    bool startsWith(const String& prefix) const;
    bool endsWith(const String& suffix) const;
    String substring(std::size_t start, std::size_t count = std::string::npos) const;
    String trimmed() const;
    String toLower() const;

    /** Whole-text decimal parse (leading/trailing spaces allowed). */
    CheckedValue<int> toInt() const;
    CheckedValue<float> toFloat() const;
    CheckedValue<double> toDouble() const;

    int compare(const String& other) const;
    bool operator==(const String& other) const;
    bool operator!=(const String& other) const { return !(*this == other); }
    bool operator<(const String& other) const { return compare(other) < 0; }
    bool operator==(const char* other) const;
    bool operator!=(const char* other) const { return !(*this == other); }

    String operator+(const String& other) const;
    String& operator+=(const String& other) { return *this = *this + other; }

private:
    String replaceLowestMarker(const std::string& value) const;

    std::shared_ptr<const std::string> body_;
};

inline String operator+(const char* a, const String& b) { return String(a) + b; }
std::ostream& operator<<(std::ostream& out, const String& text);

/** Shell-style wildcard match: '*', '?', '[set]' / '[!set]', '{a,b}'. */
bool wildcardMatch(const String& pattern, const String& text);

struct StringHash
{
    std::size_t operator()(const String& s) const { return std::hash<std::string>()(s.str()); }
};
} // namespace oxa
