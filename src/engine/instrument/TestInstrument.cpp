#include "engine/instrument/TestInstrument.h"

#include "element/ConnectionSpec.h"
#include "engine/Engine.h"
#include "engine/SignalConnection.h"
#include "engine/instrument/DahdsrEnvelope.h"
#include "engine/instrument/Keygroup.h"
#include "engine/instrument/MinBlepGenerator.h"

namespace oxa::TestInstrument
{
void registerTypes()
{
    static const bool registered = [] {
        SignalConnection::registerType();
        Program::registerType();
        Layer::registerType();
        Keygroup::registerType();
        MinBlepGenerator::registerType();
        DahdsrEnvelope::registerType();
        return true;
    }();
    (void) registered;
}

std::shared_ptr<Program> addTo(Engine& engine)
{
    registerTypes();
    auto program = std::make_shared<Program>();
    engine.addElement(program);

    auto layer = std::make_shared<Layer>(String());
    program->addLayer(layer);

    auto keygroup = std::make_shared<Keygroup>(String());
    auto generator = std::make_shared<MinBlepGenerator>();
    generator->setIntParameter(MinBlepGenerator::waveformId(), BandLimitedOscillator::sawtooth);
    keygroup->setOscillator(generator);

    // the source first: the connection looks it up by name when it is made
    keygroup->addControlSource(std::make_shared<DahdsrEnvelope>(String("Amp. Env")), false);
    ConnectionSpec ampEnvMod;
    ampEnvMod.source = String("Amp. Env");
    ampEnvMod.parameter = Keygroup::volumeId();
    ampEnvMod.name = String("AmpEnvMod");
    ampEnvMod.ratio = 1.0f;
    ampEnvMod.enabled = true;
    keygroup->addConnection(ampEnvMod, false);

    layer->addKeygroup(keygroup);
    keygroup->finishLoading();
    return program;
}
} // namespace oxa::TestInstrument
