#include "element/String.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ostream>

namespace oxa
{
namespace
{
const std::string& emptyText()
{
    static const std::string empty;
    return empty;
}

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

std::string integerText(long long value, int radix)
{
    char buffer[72];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::clamp(radix, 2, 36));
    return std::string(buffer, result.ptr);
}

std::string unsignedText(unsigned long long value, int radix)
{
    char buffer[72];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value, std::clamp(radix, 2, 36));
    return std::string(buffer, result.ptr);
}

template <typename F>
std::string floatText(F value, int decimals)
{
    if (decimals < 0)
    {
        char buffer[64];
        auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
        return std::string(buffer, result.ptr);
    }
    const int wanted = std::snprintf(nullptr, 0, "%.*f", decimals, static_cast<double>(value));
    std::string text(static_cast<std::size_t>(std::max(wanted, 0)), '\0');
    std::snprintf(text.data(), text.size() + 1, "%.*f", decimals, static_cast<double>(value));
    return text;
}

bool matchFrom(const char* p, const char* t);

// Matches one alternative of a "{a,b}" group followed by the rest of the pattern.
bool matchBraces(const char* p, const char* t)
{
    const char* close = std::strchr(p, '}');
    if (close == nullptr)
        return *t == '{' && matchFrom(p + 1, t + 1);
    const std::string rest(close + 1);
    const char* start = p + 1;
    for (;;)
    {
        const char* end = start;
        while (end < close && *end != ',')
            ++end;
        const std::string candidate = std::string(start, end) + rest;
        if (matchFrom(candidate.c_str(), t))
            return true;
        if (end >= close)
            return false;
        start = end + 1;
    }
}

bool matchSet(const char*& p, char c)
{
    // p points just past '['
    bool negate = false;
    if (*p == '!' || *p == '^')
    {
        negate = true;
        ++p;
    }
    bool found = false;
    bool first = true;
    while (*p != '\0' && (*p != ']' || first))
    {
        first = false;
        if (p[1] == '-' && p[2] != '\0' && p[2] != ']')
        {
            if (c >= p[0] && c <= p[2])
                found = true;
            p += 3;
        }
        else
        {
            if (c == *p)
                found = true;
            ++p;
        }
    }
    if (*p == ']')
        ++p;
    return found != negate;
}

bool matchFrom(const char* p, const char* t)
{
    while (*p != '\0')
    {
        switch (*p)
        {
        case '*':
            while (*p == '*')
                ++p;
            if (*p == '\0')
                return true;
            for (const char* s = t;; ++s)
            {
                if (matchFrom(p, s))
                    return true;
                if (*s == '\0')
                    return false;
            }
        case '?':
            if (*t == '\0')
                return false;
            ++p;
            ++t;
            break;
        case '[':
            if (*t == '\0')
                return false;
            ++p;
            if (!matchSet(p, *t))
                return false;
            ++t;
            break;
        case '{':
            return matchBraces(p, t);
        default:
            if (*p != *t)
                return false;
            ++p;
            ++t;
        }
    }
    return *t == '\0';
}
} // namespace

String::String(const char* text)
{
    if (text != nullptr && *text != '\0')
        body_ = std::make_shared<const std::string>(text);
}

String::String(const char* text, std::size_t length)
{
    if (text != nullptr && length > 0)
        body_ = std::make_shared<const std::string>(text, length);
}

String::String(const std::string& text)
{
    if (!text.empty())
        body_ = std::make_shared<const std::string>(text);
}

String::String(std::string&& text)
{
    if (!text.empty())
        body_ = std::make_shared<const std::string>(std::move(text));
}

const std::string& String::str() const { return body_ ? *body_ : emptyText(); }

String String::replaceLowestMarker(const std::string& value) const
{
    const std::string& text = str();
    int lowest = 1000;
    for (std::size_t i = 0; i + 1 < text.size(); ++i)
    {
        if (text[i] != '%' || !std::isdigit(static_cast<unsigned char>(text[i + 1])))
            continue;
        int number = text[i + 1] - '0';
        if (i + 2 < text.size() && std::isdigit(static_cast<unsigned char>(text[i + 2])))
            number = number * 10 + (text[i + 2] - '0');
        if (number > 0 && number < lowest)
            lowest = number;
    }
    if (lowest == 1000)
        return *this;

    const std::string marker = "%" + std::to_string(lowest);
    std::string result;
    result.reserve(text.size() + value.size());
    std::size_t i = 0;
    while (i < text.size())
    {
        // "%1" must not swallow the first digit of "%12"
        if (text.compare(i, marker.size(), marker) == 0
            && !(lowest < 10 && i + 2 < text.size() && std::isdigit(static_cast<unsigned char>(text[i + 2]))))
        {
            result += value;
            i += marker.size();
        }
        else
            result += text[i++];
    }
    return String(std::move(result));
}

String String::arg(const String& value) const { return replaceLowestMarker(value.str()); }
String String::arg(long long value, int radix) const { return replaceLowestMarker(integerText(value, radix)); }
String String::arg(unsigned long long value, int radix) const
{
    return replaceLowestMarker(unsignedText(value, radix));
}
String String::arg(float value, int decimals) const { return replaceLowestMarker(floatText(value, decimals)); }
String String::arg(double value, int decimals) const { return replaceLowestMarker(floatText(value, decimals)); }

String String::fromInt(long long value, int radix) { return String(integerText(value, radix)); }
String String::fromFloat(double value, int decimals) { return String(floatText(value, decimals)); }
String String::fromFloat(float value, int decimals) { return String(floatText(value, decimals)); }

CheckedValue<unsigned> String::find(char c, std::size_t start) const
{
    const auto at = str().find(c, start);
    if (at == std::string::npos)
        return {};
    return CheckedValue<unsigned>(static_cast<unsigned>(at));
}

CheckedValue<unsigned> String::find(const String& text, std::size_t start) const
{
    const auto at = str().find(text.str(), start);
    if (at == std::string::npos)
        return {};
    return CheckedValue<unsigned>(static_cast<unsigned>(at));
}

CheckedValue<unsigned> String::findLast(char c) const
{
    const auto at = str().rfind(c);
    if (at == std::string::npos)
        return {};
    return CheckedValue<unsigned>(static_cast<unsigned>(at));
}

bool String::containsAnyOf(const char* characters) const
{
    return str().find_first_of(characters) != std::string::npos;
}

bool String::startsWith(const String& prefix) const
{
    return str().compare(0, prefix.length(), prefix.str()) == 0 && length() >= prefix.length();
}

bool String::endsWith(const String& suffix) const
{
    return length() >= suffix.length()
           && str().compare(length() - suffix.length(), suffix.length(), suffix.str()) == 0;
}

String String::substring(std::size_t start, std::size_t count) const
{
    if (start >= length())
        return {};
    if (start == 0 && count >= length())
        return *this;
    return String(str().substr(start, count));
}

String String::trimmed() const
{
    const std::string& text = str();
    std::size_t begin = 0, end = text.size();
    while (begin < end && isSpace(text[begin]))
        ++begin;
    while (end > begin && isSpace(text[end - 1]))
        --end;
    return substring(begin, end - begin);
}

String String::toLower() const
{
    std::string text = str();
    for (auto& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return String(std::move(text));
}

CheckedValue<int> String::toInt() const
{
    const std::string text = trimmed().str();
    if (text.empty())
        return {};
    const char* begin = text.c_str();
    if (*begin == '+')
        ++begin;
    int value = 0;
    auto result = std::from_chars(begin, text.c_str() + text.size(), value);
    if (result.ec != std::errc() || result.ptr != text.c_str() + text.size())
        return {};
    return CheckedValue<int>(value);
}

CheckedValue<double> String::toDouble() const
{
    const std::string text = trimmed().str();
    if (text.empty())
        return {};
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (end != text.c_str() + text.size())
        return {};
    return CheckedValue<double>(value);
}

CheckedValue<float> String::toFloat() const
{
    const auto d = toDouble();
    if (!d)
        return {};
    return CheckedValue<float>(static_cast<float>(*d));
}

int String::compare(const String& other) const
{
    if (body_ == other.body_)
        return 0;
    return str().compare(other.str());
}

bool String::operator==(const String& other) const { return body_ == other.body_ || str() == other.str(); }

bool String::operator==(const char* other) const { return str() == (other != nullptr ? other : ""); }

String String::operator+(const String& other) const
{
    if (other.isEmpty())
        return *this;
    if (isEmpty())
        return other;
    return String(str() + other.str());
}

std::ostream& operator<<(std::ostream& out, const String& text) { return out << text.str(); }

bool wildcardMatch(const String& pattern, const String& text) { return matchFrom(pattern.c_str(), text.c_str()); }
} // namespace oxa
