#include "engine/instrument/MinBlepGenerator.h"

#include "element/ElementFactory.h"
#include "element/ParameterRegistry.h"

namespace oxa
{
uint32_t MinBlepGenerator::waveformId()
{
    static const uint32_t id = [] {
        (void) Element::commonIds();
        ParameterDescription<int> description("Waveform", BandLimitedOscillator::sawtooth, 0, 2);
        description.formatter = [](int v, const Element*) {
            static const char* const names[] = {"Sine", "Sawtooth", "Square"};
            return v >= 0 && v <= 2 ? String(names[v]) : String::fromInt(v);
        };
        return ParameterRegistry::instance().registerInt(description);
    }();
    return id;
}

void MinBlepGenerator::registerType()
{
    ElementFactory::instance().registerType("MinBlep Generator", "MinBlepGenerator",
                                            [] { return std::make_shared<MinBlepGenerator>(); });
}

MinBlepGenerator::MinBlepGenerator(const String& name) : Element(String("MinBlepGenerator"), name)
{
    addParameters({}, {new ParameterInfo<int>(waveformId(), this, &MinBlepGenerator::waveformValue,
                                              &MinBlepGenerator::setWaveform)});
}
} // namespace oxa
