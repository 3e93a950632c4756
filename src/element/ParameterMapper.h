#pragma once
// Normalised (0..1) <-> plain value mappers of float parameters.
// The owner element is passed so that tempo-synced mappers can ask it whether
// "SyncToHost" is on; every other mapper ignores it.

namespace oxa
{
class Element;

/** True when the owner has a bool parameter "SyncToHost" that is set. Null owner: false. */
bool syncsToHost(const Element* owner);

class ParameterMapper
{
public:
    ParameterMapper(float min, float max);
    virtual ~ParameterMapper();
    ParameterMapper(const ParameterMapper&) = delete;
    ParameterMapper& operator=(const ParameterMapper&) = delete;

    /** Maps count normalised values to plain values in place. */
    virtual void mapBlock(const Element* owner, float* values, int count) const;
    /** Normalised to plain, in place. */
    virtual void map(const Element* owner, float& value) const = 0;
    /** Plain to normalised, in place. */
    virtual void unmap(const Element* owner, float& value) const = 0;

    float min;
    float max;
};

class LinearParameterMapper : public ParameterMapper
{
public:
    LinearParameterMapper(float min, float max);
    void mapBlock(const Element* owner, float* values, int count) const override;
    void map(const Element* owner, float& value) const override;
    void unmap(const Element* owner, float& value) const override;

    float range;
};

class SyncLinearParameterMapper : public LinearParameterMapper
{
public:
    SyncLinearParameterMapper(float min, float max);
    void mapBlock(const Element* owner, float* values, int count) const override;
    void map(const Element* owner, float& value) const override;
    void unmap(const Element* owner, float& value) const override;
};

class LogMapper : public ParameterMapper
{
public:
    LogMapper(float min, float max, float offset = 0.0f);
    void mapBlock(const Element* owner, float* values, int count) const override;
    void map(const Element* owner, float& value) const override;
    void unmap(const Element* owner, float& value) const override;

    double logMin = 0, logMax = 0, logRange = 0, offset = 0;
};

class SyncLogMapper : public LogMapper
{
public:
    SyncLogMapper(float min, float max, float offset = 0.0f);
    void mapBlock(const Element* owner, float* values, int count) const override;
    void map(const Element* owner, float& value) const override;
    void unmap(const Element* owner, float& value) const override;
};

class CurveMapper : public ParameterMapper
{
public:
    CurveMapper(float shape, float min, float max);
    CurveMapper(float x, float y, float min, float max);
    void map(const Element* owner, float& value) const override;
    void unmap(const Element* owner, float& value) const override;

    float exponent = 1, inverseExponent = 1;
    bool bipolar = false;
};

class BipolarLogMapper : public ParameterMapper
{
public:
    BipolarLogMapper(float m, float offset);
    void map(const Element* owner, float& value) const override;
    void unmap(const Element* owner, float& value) const override;

    LogMapper half;
};

class Oxa3FilterFreqMapper : public ParameterMapper
{
public:
    Oxa3FilterFreqMapper(float min, float max);
    void map(const Element* owner, float& value) const override;
    void unmap(const Element* owner, float& value) const override;

    float scale = 1, inverseScale = 1;
};

class ConformalMapper : public ParameterMapper
{
public:
    ConformalMapper(float min, float max, float middle);
    void map(const Element* owner, float& value) const override;
    void unmap(const Element* owner, float& value) const override;

    double a = 0, b = 0;
};

class DummyMapper : public ParameterMapper
{
public:
    DummyMapper();
    void map(const Element* owner, float& value) const override;
    void unmap(const Element* owner, float& value) const override;
};
} // namespace oxa
