#include "engine/MidiLearn.h"

#include "element/ConnectionSpec.h"
#include "element/ElementParamEnvelope.h"
#include "engine/Engine.h"
#include "engine/EngineProxy.h"
#include "engine/MidiControllers.h"
#include "engine/SignalConnection.h"

#include <mutex>
#include <vector>

namespace oxa
{
namespace
{
String sourceOf(const Element& connection)
{
    return connection.stringParameter(SignalConnection::ids().source);
}

/** Holds the audio side off the tree while connections come and go; a block that
    meets the lock passes dry, it never waits. */
std::unique_lock<std::recursive_mutex> renderGuard(EngineProxy& proxy)
{
    if (Engine* engine = proxy.engine())
        return std::unique_lock<std::recursive_mutex>(engine->engineLock());
    return {};
}
} // namespace

MidiLearn::MidiLearn(EngineProxy& proxy, const String& elementPath, uint32_t parameterId)
    : proxy_(proxy), path_(elementPath), parameterId_(parameterId)
{
}

Element* MidiLearn::element() const { return proxy_.acquireProxy(path_); }

ElementParamEnvelope* MidiLearn::envelope() const
{
    Element* e = element();
    ParameterInfoBase* info = e != nullptr ? e->findInfo(parameterId_) : nullptr;
    return info != nullptr ? info->envelope() : nullptr;
}

bool MidiLearn::canBind() const { return envelope() != nullptr; }

int MidiLearn::boundController() const
{
    if (ElementParamEnvelope* e = envelope())
        for (const auto& connection : e->children())
        {
            const String source = sourceOf(*connection);
            if (MidiControllers::isMidiSource(source))
                return MidiControllers::controllerOfSource(source);
        }
    return -1;
}

bool MidiLearn::hasMidiConnection() const
{
    if (ElementParamEnvelope* e = envelope())
        for (const auto& connection : e->children())
            if (MidiControllers::isMidiSource(sourceOf(*connection)))
                return true;
    return false;
}

bool MidiLearn::bind(int number, bool asModulation)
{
    if (number < 0 || number >= MidiControllers::count || !canBind())
        return false;
    const auto guard = renderGuard(proxy_);
    unbind();
    ConnectionSpec spec;
    spec.source = MidiControllers::sourceFor(number);
    spec.parameter = parameterId_;
    spec.mode = asModulation ? 0 : 1;
    Element* e = element();
    return e != nullptr && e->addConnection(spec, true);
}

int MidiLearn::unbind()
{
    Element* e = element();
    ElementParamEnvelope* env = envelope();
    if (e == nullptr || env == nullptr)
        return 0;
    std::vector<String> names;
    for (const auto& connection : env->children())
        if (MidiControllers::isMidiSource(sourceOf(*connection)))
            names.push_back(connection->name().text());
    const auto guard = renderGuard(proxy_);
    int removed = 0;
    for (const String& name : names)
        removed += e->removeConnection(parameterId_, name, true) ? 1 : 0;
    return removed;
}

// ---- learning the next controller ---------------------------------------------------

NextControllerLearner::NextControllerLearner(EngineProxy& proxy, const String& elementPath, uint32_t parameterId,
                                             Learned learned)
    : proxy_(proxy), binding_(proxy, elementPath, parameterId), learned_(std::move(learned))
{
}

NextControllerLearner::~NextControllerLearner() { stopTimer(); }

void NextControllerLearner::start()
{
    Engine* engine = proxy_.engine();
    seenMessages_ = engine != nullptr ? engine->midiState().controllerMessageCount() : 0;
    startTimer(20);
}

void NextControllerLearner::cancel() { stopTimer(); }

void NextControllerLearner::poll()
{
    Engine* engine = proxy_.engine();
    if (engine == nullptr)
        return;
    const uint32_t count = engine->midiState().controllerMessageCount();
    if (count == seenMessages_)
        return;
    seenMessages_ = count;
    const int number = engine->midiState().lastController();
    if (!MidiControllers::isLearnable(number) || !binding_.bind(number))
        return;
    stopTimer();
    if (learned_)
        learned_(number);
}
} // namespace oxa
