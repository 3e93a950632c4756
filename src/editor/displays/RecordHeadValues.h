#pragma once

namespace oxa
{
// The three controls that both record head pictures draw from.
struct RecordHeadValues
{
    float magneticHardness = 1.0f;
    float hysteresis = 0.0f;
    bool applyRecordHead = true;

    bool operator==(const RecordHeadValues& o) const
    {
        return magneticHardness == o.magneticHardness && hysteresis == o.hysteresis
            && applyRecordHead == o.applyRecordHead;
    }
    bool operator!=(const RecordHeadValues& o) const { return !(*this == o); }
};
} // namespace oxa
