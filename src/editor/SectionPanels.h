#pragma once
// The small panels of the tape settings in the expanded window. All following of
// values is in their widgets; the compander panel also hides its decoder while the
// two are linked.

#include "editor/BoundPanel.h"

#include <memory>

namespace oxa
{
class TapeSection : public BoundPanel
{
public:
    explicit TapeSection(EngineProxy* proxy);
};

class PlaybackSection : public BoundPanel
{
public:
    explicit PlaybackSection(EngineProxy* proxy);
};

class TransportSection : public BoundPanel
{
public:
    explicit TransportSection(EngineProxy* proxy);
};

class CompanderSection : public BoundPanel
{
public:
    explicit CompanderSection(EngineProxy* proxy);
    ~CompanderSection() override;

private:
    std::unique_ptr<ElementParameterValue<bool>> linkView;
};
} // namespace oxa
