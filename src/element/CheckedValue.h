#pragma once
// A value together with a flag saying whether it was actually found or set.

namespace oxa
{
template <typename T>
class CheckedValue
{
public:
    CheckedValue() : value_(), valid_(false) {}
    CheckedValue(const T& value) : value_(value), valid_(true) {}
    CheckedValue(const T& value, bool valid) : value_(value), valid_(valid) {}

    bool isValid() const { return valid_; }
    explicit operator bool() const { return valid_; }

    /** The value; zero (default) when invalid. */
    const T& value() const { return value_; }
    const T& operator*() const { return value_; }
    T valueOr(const T& fallback) const { return valid_ ? value_ : fallback; }

    void set(const T& value)
    {
        value_ = value;
        valid_ = true;
    }
    void clear()
    {
        value_ = T();
        valid_ = false;
    }

private:
    T value_;
    bool valid_;
};
} // namespace oxa
