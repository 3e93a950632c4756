#include "engine/EventProcessor.h"

namespace oxa
{
EventProcessor::EventProcessor(const String& typeName, const String& name) : Element(typeName, name) {}

EventProcessor::~EventProcessor() = default;
} // namespace oxa
