#pragma once
// Noise reduction: encoder, decoder and their link. While linked the encoder's choice
// drives the decoder too, so the decoder's box goes.

#include "editor/BoundPanel.h"

#include <memory>

namespace oxa
{
class CompanderSection : public BoundPanel
{
public:
    explicit CompanderSection(EngineProxy* proxy);
    ~CompanderSection() override;

private:
    std::unique_ptr<ElementParameterValue<bool>> linkView;
};
} // namespace oxa
