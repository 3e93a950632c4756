#pragma once
// Declarations of parameters: what a parameter is called, its kind, default, range
// and text form. Declared once per process and registered in ParameterRegistry.

#include "element/ParameterMapper.h"
#include "element/String.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace oxa
{
class Element;

enum class ParameterKind : uint8_t
{
    Float = 0,
    Int = 1,
    Bool = 2,
    String = 3,
    Alias = 4,
    Invalid = 5
};

template <typename T>
struct ParameterKindOf;
template <>
struct ParameterKindOf<float>
{
    static constexpr ParameterKind value = ParameterKind::Float;
};
template <>
struct ParameterKindOf<int>
{
    static constexpr ParameterKind value = ParameterKind::Int;
};
template <>
struct ParameterKindOf<bool>
{
    static constexpr ParameterKind value = ParameterKind::Bool;
};
template <>
struct ParameterKindOf<String>
{
    static constexpr ParameterKind value = ParameterKind::String;
};

struct ParameterFlags
{
    enum : uint8_t
    {
        IsOutput = 1,
        IsGlobal = 2,
        IsPersistent = 8,
        IsListed = 16,
        IsModulatable = 32
    };

    ParameterFlags(bool isOutput = false, bool isGlobal = false)
        : bits(static_cast<uint8_t>((isOutput ? IsOutput : 0) | (isGlobal ? IsGlobal : 0) | IsPersistent | IsListed
                                    | (isGlobal ? 0 : IsModulatable)))
    {
    }

    bool has(uint8_t bit) const { return (bits & bit) != 0; }
    void set(uint8_t bit, bool on) { bits = static_cast<uint8_t>(on ? (bits | bit) : (bits & ~bit)); }

    bool isOutput() const { return has(IsOutput); }
    bool isGlobal() const { return has(IsGlobal); }
    bool isPersistent() const { return has(IsPersistent); }
    bool isModulatable() const { return has(IsModulatable); }

    uint8_t bits;
};

class ParameterDescriptionBase
{
public:
    ParameterDescriptionBase(const String& name, ParameterKind kind, bool isOutput, bool isGlobal)
        : name(name), displayName(name), kind(kind), flags(isOutput, isGlobal)
    {
    }
    virtual ~ParameterDescriptionBase() = default;

    String name;
    String displayName;
    String auxiliaryText;
    uint32_t id = 0;
    uint32_t reserved = 0;
    ParameterKind kind;
    ParameterFlags flags;
};

/** Display types whose value turns into a note length while "SyncToHost" is on. */
inline bool isSyncDisplayType(int displayType) { return displayType == 4 || displayType == 6 || displayType == 8; }

/** How a modulation offset combines with the base value. */
class ParameterModulationType
{
public:
    virtual ~ParameterModulationType() = default;
    virtual bool isAdditive() const = 0;
    virtual float combine(float base, float offset) const = 0;
};

class AdditiveParameterModulation : public ParameterModulationType
{
public:
    bool isAdditive() const override { return true; }
    float combine(float base, float offset) const override { return base + offset; }
    static const std::shared_ptr<ParameterModulationType>& shared();
};

class MultiplicativeParameterModulation : public ParameterModulationType
{
public:
    bool isAdditive() const override { return false; }
    float combine(float base, float offset) const override { return base * offset; }
    static const std::shared_ptr<ParameterModulationType>& shared();
};

template <typename T>
class ParameterDescriptionCommon : public ParameterDescriptionBase
{
public:
    using Formatter = std::function<String(T value, const Element* owner)>;
    using Parser = std::function<bool(const String& text, const Element* owner, T& value)>;

    ParameterDescriptionCommon(const String& name, const T& defaultValue, bool isOutput, bool isGlobal)
        : ParameterDescriptionBase(name, ParameterKindOf<T>::value, isOutput, isGlobal), defaultValue(defaultValue)
    {
    }

    /** The formatter when set, else the kind's own rule. */
    virtual String valueToText(const Element* owner, const T& value) const
    {
        return formatter ? formatter(value, owner) : defaultText(owner, value);
    }

    /** The parser when set, else the kind's own rule. */
    virtual bool textToValue(const Element* owner, const String& text, T& value) const
    {
        return parser ? parser(text, owner, value) : defaultParse(owner, text, value);
    }

    T defaultValue;
    Formatter formatter;
    Parser parser;
    std::shared_ptr<ParameterModulationType> modulation = AdditiveParameterModulation::shared();
    uint32_t modulationFlags = 0;

protected:
    virtual String defaultText(const Element* owner, const T& value) const = 0;
    virtual bool defaultParse(const Element* owner, const String& text, T& value) const = 0;
};

template <typename T>
class ParameterDescription;

template <>
class ParameterDescription<float> : public ParameterDescriptionCommon<float>
{
public:
    /** min > max means no range. A null mapper gets the default one: sync-linear for
        display types 4, 6 and 8, linear otherwise. The mapper is owned from then on. */
    ParameterDescription(const String& name, float defaultValue, float min, float max, int displayType = 0,
                         uint32_t mapperFlags = 0, ParameterMapper* mapper = nullptr, bool isOutput = false,
                         bool isGlobal = false, uint32_t controlRate = 32);

    bool hasRange() const { return min <= max; }
    float clamp(float value) const;

    /** Normalised to plain, through the conversion mapper. */
    float map(const Element* owner, float normalised) const;
    /** Plain to normalised, through the conversion mapper. */
    float unmap(const Element* owner, float plain) const;

    const ParameterMapper& conversionMapper() const { return *mappers[1]; }

    float min;
    float max;
    float lowerBound = -1.0f;
    float upperBound = 1.0f;
    float steps[3] = {0.01f, 0.01f, 0.01f};
    int displayType;
    uint32_t mapperFlags;
    /** Three roles sharing one mapper unless a declaration replaces one; conversions use [1]. */
    std::shared_ptr<ParameterMapper> mappers[3];
    uint32_t controlRate;
    uint8_t enabled = 1;

protected:
    String defaultText(const Element* owner, const float& value) const override;
    bool defaultParse(const Element* owner, const String& text, float& value) const override;
};

template <>
class ParameterDescription<int> : public ParameterDescriptionCommon<int>
{
public:
    /** min > max (the default 1, 0) means no range. */
    ParameterDescription(const String& name, int defaultValue, int min = 1, int max = 0, int displayType = 0,
                         bool isOutput = false, bool isGlobal = false);

    bool hasRange() const { return min <= max; }
    int clamp(int value) const;

    int step = 1;
    int reservedWords[3] = {1, 1, 1};
    int min;
    int max;
    int displayType;

protected:
    String defaultText(const Element* owner, const int& value) const override;
    bool defaultParse(const Element* owner, const String& text, int& value) const override;
};

template <>
class ParameterDescription<bool> : public ParameterDescriptionCommon<bool>
{
public:
    ParameterDescription(const String& name, bool defaultValue, bool isOutput = false, bool isGlobal = false);

protected:
    String defaultText(const Element* owner, const bool& value) const override;
    bool defaultParse(const Element* owner, const String& text, bool& value) const override;
};

template <>
class ParameterDescription<String> : public ParameterDescriptionCommon<String>
{
public:
    ParameterDescription(const String& name, const String& defaultValue, bool isOutput = false,
                         bool isGlobal = false);

protected:
    String defaultText(const Element* owner, const String& value) const override;
    bool defaultParse(const Element* owner, const String& text, String& value) const override;
};

using FloatParameterDescription = ParameterDescription<float>;
using IntParameterDescription = ParameterDescription<int>;
using BoolParameterDescription = ParameterDescription<bool>;
using StringParameterDescription = ParameterDescription<String>;
} // namespace oxa
