#include "element/ParameterMapper.h"

#include "element/Element.h"
#include "element/NoteLengths.h"

#include <algorithm>
#include <cmath>

namespace oxa
{
bool syncsToHost(const Element* owner)
{
    if (owner == nullptr)
        return false;
    const uint32_t id = owner->parameterId("SyncToHost");
    return id != 0 && owner->boolParameter(id, nullptr);
}

// --- base -----------------------------------------------------------------------------

ParameterMapper::ParameterMapper(float min_, float max_) : min(min_), max(max_) {}

ParameterMapper::~ParameterMapper() = default;

void ParameterMapper::mapBlock(const Element* owner, float* values, int count) const
{
    for (int i = 0; i < count; ++i)
        map(owner, values[i]);
}

// --- linear ---------------------------------------------------------------------------

namespace
{
void mapLinearBlock(float* values, int count, float range, float min)
{
    int i = 0;
    for (; i + 4 <= count; i += 4)
    {
        values[i] = values[i] * range + min;
        values[i + 1] = values[i + 1] * range + min;
        values[i + 2] = values[i + 2] * range + min;
        values[i + 3] = values[i + 3] * range + min;
    }
    for (; i < count; ++i)
        values[i] = values[i] * range + min;
}

void mapNoteBlock(float* values, int count)
{
    for (int i = 0; i < count; ++i)
        values[i] = noteLength(noteIndexOfNormalised(values[i]));
}

float unmapNote(float beats)
{
    return noteNormalisedOfIndex(noteIndexOfLength(beats));
}
} // namespace

LinearParameterMapper::LinearParameterMapper(float min_, float max_)
    : ParameterMapper(min_, max_), range(max_ - min_)
{
}

void LinearParameterMapper::mapBlock(const Element*, float* values, int count) const
{
    mapLinearBlock(values, count, range, min);
}

void LinearParameterMapper::map(const Element*, float& value) const
{
    value = value * range + min;
}

void LinearParameterMapper::unmap(const Element*, float& value) const
{
    value = (value - min) / (max - min);
}

SyncLinearParameterMapper::SyncLinearParameterMapper(float min_, float max_)
    : LinearParameterMapper(min_, max_)
{
}

void SyncLinearParameterMapper::mapBlock(const Element* owner, float* values, int count) const
{
    if (syncsToHost(owner))
        mapNoteBlock(values, count);
    else
        mapLinearBlock(values, count, range, min);
}

void SyncLinearParameterMapper::map(const Element* owner, float& value) const
{
    if (syncsToHost(owner))
        value = noteLength(noteIndexOfNormalised(value));
    else
        LinearParameterMapper::map(owner, value);
}

void SyncLinearParameterMapper::unmap(const Element* owner, float& value) const
{
    if (syncsToHost(owner))
        value = unmapNote(value);
    else
        LinearParameterMapper::unmap(owner, value);
}

// --- logarithmic ----------------------------------------------------------------------

LogMapper::LogMapper(float min_, float max_, float offset_) : ParameterMapper(min_, max_)
{
    offset = (double) offset_;
    logMax = std::log((double) max_ + offset);
    logMin = std::log((double) min_ + offset);
    logRange = logMax - logMin;
}

void LogMapper::mapBlock(const Element*, float* values, int count) const
{
    const float shift = (float) offset;
    int i = 0;
    for (; i + 2 <= count; i += 2)
    {
        const double a = std::exp((double) values[i] * logRange + logMin);
        const double b = std::exp((double) values[i + 1] * logRange + logMin);
        values[i] = (float) a - shift;
        values[i + 1] = (float) b - shift;
    }
    if (i < count)
        values[i] = (float) std::exp((double) values[i] * logRange + logMin) - shift;
}

void LogMapper::map(const Element*, float& value) const
{
    value = (float) std::exp((double) value * logRange + logMin) - (float) offset;
}

void LogMapper::unmap(const Element*, float& value) const
{
    value = (float) ((std::log((double) value + offset) - logMin) / logRange);
}

SyncLogMapper::SyncLogMapper(float min_, float max_, float offset_) : LogMapper(min_, max_, offset_) {}

void SyncLogMapper::mapBlock(const Element* owner, float* values, int count) const
{
    if (syncsToHost(owner))
        mapNoteBlock(values, count);
    else
        LogMapper::mapBlock(owner, values, count);
}

void SyncLogMapper::map(const Element* owner, float& value) const
{
    if (syncsToHost(owner))
        value = noteLength(noteIndexOfNormalised(value));
    else
        LogMapper::map(owner, value);
}

void SyncLogMapper::unmap(const Element* owner, float& value) const
{
    if (syncsToHost(owner))
        value = unmapNote(value);
    else
        LogMapper::unmap(owner, value);
}

// --- power curve ----------------------------------------------------------------------

CurveMapper::CurveMapper(float shape, float min_, float max_) : ParameterMapper(min_, max_)
{
    // Base-2 logarithm of 2 / (1 - shape): shape 0 is a straight line.
    exponent = std::log((1.0f - shape) * 0.5f) * -1.442695f;
    inverseExponent = 1.0f / exponent;
    bipolar = min_ == -max_;
}

CurveMapper::CurveMapper(float x, float y, float min_, float max_) : ParameterMapper(min_, max_)
{
    // The curve passes through normalised x at plain y.
    exponent = std::log((y - min_) / (max_ - min_)) / std::log(x);
    inverseExponent = 1.0f / exponent;
    bipolar = min_ == -max_;
}

void CurveMapper::map(const Element*, float& value) const
{
    if (!bipolar)
    {
        value = std::pow(value, exponent) * (max - min) + min;
        return;
    }
    const float b = 2.0f * value - 1.0f;
    value = b >= 0.0f ? std::pow(b, exponent) * max : std::pow(-b, exponent) * min;
}

void CurveMapper::unmap(const Element*, float& value) const
{
    if (!bipolar)
    {
        value = std::pow((value - min) / (max - min), inverseExponent);
        return;
    }
    const float c = value >= 0.0f ? std::pow(value / max, inverseExponent)
                                  : -std::pow(value / min, inverseExponent);
    value = (c + 1.0f) * 0.5f;
}

// --- symmetric logarithmic ------------------------------------------------------------

BipolarLogMapper::BipolarLogMapper(float m, float offset_) : ParameterMapper(-m, m), half(0.0f, m, offset_) {}

void BipolarLogMapper::map(const Element* owner, float& value) const
{
    float b = ((value - 0.5f) + value) - 0.5f;
    if (b >= 0.0f)
    {
        half.map(owner, b);
        value = b;
    }
    else
    {
        b = -b;
        half.map(owner, b);
        value = -b;
    }
}

void BipolarLogMapper::unmap(const Element* owner, float& value) const
{
    float c = value;
    if (c >= 0.0f)
        half.unmap(owner, c);
    else
    {
        c = -c;
        half.unmap(owner, c);
        c = -c;
    }
    value = (c + 1.0f) * 0.5f;
}

// --- filter frequency on a pitch scale -------------------------------------------------

namespace
{
float noteOfFrequency(float hz)
{
    return 12.0f * (std::log(hz / 440.0f) * 1.442695f) + 69.0f;
}

float frequencyOfNote(float note)
{
    return 440.0f * std::exp((note - 69.0f) / 12.0f * 0.6931472f);
}
} // namespace

Oxa3FilterFreqMapper::Oxa3FilterFreqMapper(float min_, float max_) : ParameterMapper(min_, max_)
{
    scale = noteOfFrequency(max_);
    inverseScale = 1.0f / scale;
}

void Oxa3FilterFreqMapper::map(const Element*, float& value) const
{
    value = frequencyOfNote(scale * value);
}

void Oxa3FilterFreqMapper::unmap(const Element*, float& value) const
{
    value = noteOfFrequency(value) * inverseScale;
}

// --- hyperbola through three points ----------------------------------------------------

ConformalMapper::ConformalMapper(float min_, float max_, float middle) : ParameterMapper(min_, max_)
{
    const float d = 1.0f / (max_ + min_ - 2.0f * middle);
    a = (double) ((max_ - middle) * d);
    b = (double) ((max_ - min_) * (middle - min_) * d);
}

void ConformalMapper::map(const Element*, float& value) const
{
    const double u = (double) (float) ((double) value / a);
    const double x = u * b / (1.0 - u) + (double) min;
    const double lo = std::min(min, max), hi = std::max(min, max);
    value = (float) std::min(std::max(x, lo), hi);
}

void ConformalMapper::unmap(const Element*, float& value) const
{
    const double y = (double) value - (double) min;
    const float n = (float) (y * a / (y + b));
    value = std::min(std::max(n, 0.0f), 1.0f);
}

// --- placeholder for parameters that have no scale -----------------------------------

DummyMapper::DummyMapper() : ParameterMapper(1.0f, 0.0f) {}

void DummyMapper::map(const Element*, float&) const {}

void DummyMapper::unmap(const Element*, float&) const {}
} // namespace oxa
