#include "element/Element.h"
#include "element/StoredFloat.h"

#include "element/ConnectionSpec.h"
#include "element/ElementParamEnvelope.h"

#include <boost/ptr_container/exception.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iostream>

namespace oxa
{
namespace
{
std::atomic<uint16_t>& serialCounter()
{
    static std::atomic<uint16_t> counter{0};
    return counter;
}

const char* kindName(ParameterKind kind)
{
    switch (kind)
    {
    case ParameterKind::Float:
        return "Float";
    case ParameterKind::Int:
        return "Int";
    case ParameterKind::Bool:
        return "Bool";
    case ParameterKind::String:
        return "String";
    default:
        return "Invalid";
    }
}

} // namespace

// ---- static set-up ---------------------------------------------------------------

const Element::CommonIds& Element::commonIds()
{
    static const CommonIds ids = [] {
        CommonIds made{};
        auto& registry = ParameterRegistry::instance();

        ParameterDescription<String> displayType("DisplayType", "Element", true, true);
        displayType.flags.set(ParameterFlags::IsPersistent, false);
        made.displayType = registry.registerString(displayType);

        ParameterDescription<float> memorySize("MemorySize", 0.0f, 1.0f, 0.0f, 13, 0, nullptr, true, true);
        memorySize.flags.set(ParameterFlags::IsPersistent, false);
        memorySize.flags.set(ParameterFlags::IsModulatable, false);
        made.memorySize = registry.registerFloat(memorySize);

        made.bypass = registry.registerBool(ParameterDescription<bool>("Bypass", false));

        for (int i = 0; i < 128; ++i)
            made.alias[i] = registry.registerAlias(String("Param%1").arg(i));
        return made;
    }();
    return ids;
}

int Element::aliasIndex(uint32_t id)
{
    const auto& ids = commonIds();
    for (int i = 0; i < 128; ++i)
        if (ids.alias[i] == id)
            return i;
    return -1;
}

// ---- life ------------------------------------------------------------------------

Element::Element(const String& typeName, const String& name, bool isPolyphonic)
    : typeName_(typeName), name_(name), serial_(serialCounter().fetch_add(1))
{
    const auto& ids = commonIds();
    flags_.store(static_cast<uint8_t>(IsSaved | (isPolyphonic ? IsPolyphonic : 0)));
    mainState_ = std::make_unique<ElementState>(this);
    secondState_ = std::make_unique<ElementState>(this);
    // "Bypass" is declared here but bound by processing elements, whose state holds it.
    addParameters({new ParameterInfo<float>(ids.memorySize, this, &Element::memorySizeValue, nullptr)}, {}, {},
                  {new ParameterInfo<String>(ids.displayType, this, &Element::displayTypeText, nullptr)});
}

Element::~Element()
{
    ElementSignals* signals = signals_.load();
    if (signals != nullptr && (flags_ & HasAnnouncedDeath) == 0)
    {
        flags_ |= HasAnnouncedDeath;
        signals->destroyed(this);
    }
    for (auto& child : children_)
        if (child.use_count() > 1)
            child->setParent(nullptr);
    children_.clear();
    envelopes_.clear();
    connectedEnvelopes_.clear();
    delete signals_.exchange(nullptr);
}

ElementSignals& Element::signals()
{
    ElementSignals* existing = signals_.load();
    if (existing == nullptr)
    {
        existing = new ElementSignals;
        signals_.store(existing);
    }
    return *existing;
}

void Element::prepareParameterSignals()
{
    ElementSignals& s = signals();
    s.parameterChanged.prepareBody();
    s.parameterChangedAsync.prepareBody();
}

ElementExtras& Element::extras()
{
    if (!extras_)
        extras_ = std::make_unique<ElementExtras>();
    return *extras_;
}

// ---- states ----------------------------------------------------------------------

std::unique_ptr<ElementState> Element::createState(StatePool* pool)
{
    applyPendingParameters(mainState_.get());
    auto state = cloneMainState(pool);
    if (state)
        state->prepare(sampleRate_, maxBlockSize_);
    return state;
}

std::unique_ptr<ElementState> Element::cloneMainState(StatePool* pool)
{
    return mainState_ ? mainState_->clone(pool) : nullptr;
}

void Element::updateSecondState(int a, int b, int c)
{
    if (isPrepared() && secondState_)
        secondState_->update(a, b, c);
}

void Element::prepareSecondState(double sampleRate)
{
    if (secondState_)
        secondState_->prepare(sampleRate, maxBlockSize_);
}

void Element::setStates(std::unique_ptr<ElementState> main, std::unique_ptr<ElementState> second)
{
    mainState_ = std::move(main);
    secondState_ = std::move(second);
    publishParameters();
}

void Element::publishParameters()
{
    for (auto& record : parameters_)
        if (!record->flags().isOutput())
            record->publish(mainState_.get());
}

void Element::publishParameter(uint32_t id)
{
    if (ParameterInfoBase* info = findInfo(id); info != nullptr && !info->flags().isOutput())
        info->publish(mainState_.get());
}

void Element::prepare(double sampleRate, int blockSize)
{
    flags_ |= IsPrepared;
    sampleRate_ = static_cast<float>(sampleRate);
    maxBlockSize_ = static_cast<uint16_t>(std::clamp(blockSize, 0, 65535));
    for (auto& child : children_)
        child->prepare(sampleRate, blockSize);
    prepareToRender();
}

void Element::prepareToRender()
{
    if (mainState_)
        mainState_->prepare(sampleRate_, maxBlockSize_);
    prepareSecondState(sampleRate_);
}

void Element::reset()
{
    if (isPrepared())
    {
        if (mainState_)
            mainState_->reset(sampleRate_, maxBlockSize_);
        if (secondState_)
            secondState_->reset(sampleRate_, maxBlockSize_);
    }
    for (auto& child : children_)
        child->reset();
}

template <typename T>
void Element::mirrorInto(ParameterInfoBase& record, ElementState* state) const
{
    auto& info = static_cast<ParameterInfo<T>&>(record);
    info.set(state, readParameter<T>(info.id(), nullptr));
}

void Element::syncState(RenderContext*, ElementState*)
{
    applyPendingParameters(mainState_.get());
    // Per-voice state tables belong to the engine, which overrides this for polyphonic elements.
    ElementState* second = secondState_.get();
    for (auto& record : parameters_)
    {
        const auto& flags = record->flags();
        if (flags.isOutput() || flags.isGlobal())
            continue;
        switch (record->kind())
        {
        case ParameterKind::Float: mirrorInto<float>(*record, second); break;
        case ParameterKind::Int: mirrorInto<int>(*record, second); break;
        case ParameterKind::Bool: mirrorInto<bool>(*record, second); break;
        case ParameterKind::String: mirrorInto<String>(*record, second); break;
        default: break;
        }
    }
    for (auto* envelope : envelopes_)
        envelope->sync(0);
}

void Element::setPolyphonic(bool polyphonic)
{
    for (auto* envelope : envelopes_)
        envelope->setEnvelopePolyphonic(polyphonic);
    if (isPolyphonic() && !polyphonic && mainState_ && secondState_)
    {
        // the main state was a template for voices; bring it back to the mirrored values
        auto refreshed = secondState_->clone(nullptr);
        if (refreshed)
        {
            refreshed->prepare(sampleRate_, maxBlockSize_);
            mainState_ = std::move(refreshed);
        }
    }
    if (polyphonic)
        flags_.fetch_or(IsPolyphonic);
    else
        flags_.fetch_and(static_cast<uint8_t>(~IsPolyphonic));
}

double Element::ownMemorySize() const
{
    return (static_cast<double>(parameters_.size()) * 72.0 + 240.0) / 1048576.0;
}

double Element::memorySize() const
{
    double total = ownMemorySize();
    for (auto& child : children_)
        total += child->memorySize();
    return total;
}

// ---- envelopes and connections ---------------------------------------------------

void Element::envelopesBeginBlock(RenderContext* context)
{
    for (auto* envelope : envelopes_)
        envelope->setContext(context);
}

void Element::envelopesEndBlock(RenderContext*)
{
    for (auto* envelope : envelopes_)
        envelope->setContext(nullptr);
}

String Element::uniqueConnectionName(uint32_t parameter)
{
    ParameterInfoBase* info = findInfo(parameter);
    ElementParamEnvelope* envelope = info != nullptr ? info->envelope() : nullptr;
    for (int n = 0;; ++n)
    {
        String candidate = String("SignalConnection %1").arg(n);
        if (envelope == nullptr || envelope->findElement(candidate) == nullptr)
            return candidate;
    }
}

std::unique_lock<std::recursive_mutex> Element::lockIf(bool take)
{
    std::unique_lock<std::recursive_mutex> guard(lock(), std::defer_lock);
    if (take)
        guard.lock();
    return guard;
}

bool Element::addConnection(const ConnectionSpec& spec, bool takeLock)
{
    ParameterInfoBase* info = findInfo(spec.parameter);
    ElementParamEnvelope* envelope = info != nullptr ? info->envelope() : nullptr;
    if (envelope == nullptr)
        return false;
    const auto guard = lockIf(takeLock);
    return envelope->addConnection(spec);
}

bool Element::removeConnection(uint32_t parameter, const String& name, bool takeLock)
{
    ParameterInfoBase* info = findInfo(parameter);
    ElementParamEnvelope* envelope = info != nullptr ? info->envelope() : nullptr;
    if (envelope == nullptr)
        return false;
    const auto guard = lockIf(takeLock);
    return envelope->removeConnection(name);
}

void Element::connectionNames(uint32_t parameter, std::vector<String>& out)
{
    ParameterInfoBase* info = findInfo(parameter);
    if (info == nullptr || info->envelope() == nullptr)
        return;
    for (auto& child : info->envelope()->children())
        out.push_back(child->name().text());
}

// ---- parameters ------------------------------------------------------------------

void Element::addParameters(const std::vector<ParameterInfo<float>*>& floats, const std::vector<ParameterInfo<int>*>& ints,
                            const std::vector<ParameterInfo<bool>*>& bools,
                            const std::vector<ParameterInfo<String>*>& strings)
{
    std::vector<ParameterInfoBase*> all;
    all.insert(all.end(), floats.begin(), floats.end());
    all.insert(all.end(), ints.begin(), ints.end());
    all.insert(all.end(), bools.begin(), bools.end());
    all.insert(all.end(), strings.begin(), strings.end());
    if (std::find(all.begin(), all.end(), nullptr) != all.end())
    {
        // nothing is taken when the list is bad
        for (auto* record : all)
            delete record;
        throw boost::bad_pointer("Null pointer in 'push_back()'");
    }
    for (auto* record : all)
        insertParameter(record);
}

void Element::insertParameter(ParameterInfoBase* record)
{
    std::unique_ptr<ParameterInfoBase> owned(record);
    if (record->description() == nullptr)
        return; // an id the registry does not know: nothing to bind
    auto at = std::lower_bound(parameters_.begin(), parameters_.end(), record->id(),
                               [](const std::unique_ptr<ParameterInfoBase>& p, uint32_t id) { return p->id() < id; });
    parameters_.insert(at, std::move(owned));

    switch (record->kind())
    {
    case ParameterKind::Float:
        static_cast<ParameterInfo<float>*>(record)->clearPending();
        break;
    case ParameterKind::Int:
        static_cast<ParameterInfo<int>*>(record)->clearPending();
        break;
    case ParameterKind::Bool:
        static_cast<ParameterInfo<bool>*>(record)->clearPending();
        break;
    case ParameterKind::String:
        static_cast<ParameterInfo<String>*>(record)->clearPending();
        break;
    default:
        break;
    }

    const auto& flags = record->flags();
    if (!flags.isOutput())
        record->publish(mainState_.get());
    if (!flags.isOutput() && flags.isModulatable())
    {
        auto envelope = std::make_shared<ElementParamEnvelope>(this, *record);
        switch (record->kind())
        {
        case ParameterKind::Float:
            static_cast<ParameterInfo<float>*>(record)->setEnvelope(envelope.get());
            break;
        case ParameterKind::Int:
            static_cast<ParameterInfo<int>*>(record)->setEnvelope(envelope.get());
            break;
        case ParameterKind::Bool:
            static_cast<ParameterInfo<bool>*>(record)->setEnvelope(envelope.get());
            break;
        case ParameterKind::String:
            static_cast<ParameterInfo<String>*>(record)->setEnvelope(envelope.get());
            break;
        default:
            break;
        }
        envelope->setParent(this);
        envelopes_.push_back(envelope.get());
        addChild(envelope);
    }
}

ParameterInfoBase* Element::findInfo(uint32_t id) const
{
    id = mapParameterId(id);
    auto at = std::lower_bound(parameters_.begin(), parameters_.end(), id,
                               [](const std::unique_ptr<ParameterInfoBase>& p, uint32_t i) { return p->id() < i; });
    if (at == parameters_.end() || (*at)->id() != id)
        return nullptr;
    return at->get();
}

Element::ParameterSummary Element::parameterAt(std::size_t index) const
{
    if (index >= parameters_.size())
        return {String(), ParameterKind::Invalid, 0};
    const auto& record = *parameters_[index];
    return {record.name(), record.kind(), record.id()};
}

uint32_t Element::parameterId(const char* name) const
{
    if (name == nullptr)
        return 0;
    for (auto& record : parameters_)
        if (std::strcmp(record->name().c_str(), name) == 0)
            return record->id();
    return 0;
}

template <typename T>
ParameterInfo<T>* Element::findTyped(uint32_t id) const
{
    ParameterInfoBase* info = findInfo(id);
    if (info == nullptr || info->kind() != ParameterKindOf<T>::value)
        return nullptr;
    return static_cast<ParameterInfo<T>*>(info);
}

template <typename T>
T Element::readParameter(uint32_t id, bool* error) const
{
    if (error != nullptr)
        *error = false;
    ParameterInfo<T>* info = findTyped<T>(id);
    if (info == nullptr)
        return T();
    const auto& flags = info->flags();
    if (flags.isOutput())
        return info->get(nullptr);
    if (info->isPending())
        return info->deferredValue();
    if (info->hasPublished())
        return info->publishedValue();
    return info->get(flags.isGlobal() ? nullptr : mainState_.get());
}

template <typename T>
void Element::setImmediate(uint32_t id, const T& value)
{
    ParameterInfo<T>* info = findTyped<T>(id);
    if (info == nullptr)
        return;
    info->clearPending();
    info->set(mainState_.get(), value);
    if (!info->flags().isGlobal())
        info->set(secondState_.get(), value);
    publishParameters(); // a setter may move other parameters too
    if (ElementParamEnvelope* envelope = info->envelope())
        envelope->baseValueChanged();
    afterChange(*info);
}

template <typename T>
void Element::setMaybeDeferred(uint32_t id, const T& value, bool deferred)
{
    ParameterInfo<T>* info = findTyped<T>(id);
    if (info == nullptr)
        return;
    if (deferred)
    {
        info->defer(value);
        hasPendingUpdate_.store(1);
        hasDeferredValues_.store(1);
    }
    else
    {
        info->clearPending();
        info->set(mainState_.get(), value);
        publishParameters();
        hasPendingUpdate_.store(1);
    }
    afterChange(*info);
}

void Element::afterChange(const ParameterInfoBase& info)
{
    if (info.flags().isPersistent())
        setModified();
    notifyParameterChanged(info.id());
}

void Element::notifyParameterChanged(uint32_t id)
{
    ElementSignals* s = signals_.load();
    if (s == nullptr)
        return;
    s->parameterChanged(*this, id);
    s->parameterChangedAsync.post(*this, id);
}

void Element::setStringParameter(uint32_t id, const String& value) { setImmediate<String>(id, value); }
void Element::setIntParameter(uint32_t id, int value) { setImmediate<int>(id, value); }
void Element::setBoolParameter(uint32_t id, bool value) { setImmediate<bool>(id, value); }
void Element::setFloatParameter(uint32_t id, float value)
{
    if (std::isfinite(value))
        setImmediate<float>(id, storedFloat(value));
}

void Element::setStringParameter(uint32_t id, const String& value, bool deferred)
{
    setMaybeDeferred<String>(id, value, deferred);
}
void Element::setIntParameter(uint32_t id, int value, bool deferred) { setMaybeDeferred<int>(id, value, deferred); }
void Element::setBoolParameter(uint32_t id, bool value, bool deferred) { setMaybeDeferred<bool>(id, value, deferred); }
void Element::setFloatParameter(uint32_t id, float value, bool deferred)
{
    if (std::isfinite(value))
        setMaybeDeferred<float>(id, storedFloat(value), deferred);
}

template <typename T>
T Element::readPendingParameter(uint32_t id) const
{
    ParameterInfo<T>* info = findTyped<T>(id);
    if (info == nullptr)
        return T();
    if (info->isPending())
        return info->deferredValue();
    T moved {};
    if (movedByPendingWrites(info->id(), moved))
        return moved;
    return readParameter<T>(id, nullptr);
}

float Element::pendingFloatParameter(uint32_t id) const { return readPendingParameter<float>(id); }
int Element::pendingIntParameter(uint32_t id) const { return readPendingParameter<int>(id); }
bool Element::pendingBoolParameter(uint32_t id) const { return readPendingParameter<bool>(id); }

void Element::setMovesOthers(std::initializer_list<uint32_t> ids)
{
    for (const uint32_t id : ids)
        if (ParameterInfoBase* info = findInfo(id))
            info->setMovesOthers(true);
}

float Element::floatParameter(uint32_t id, bool* error) const { return readParameter<float>(id, error); }
bool Element::boolParameter(uint32_t id, bool* error) const { return readParameter<bool>(id, error); }
int Element::intParameter(uint32_t id, bool* error) const { return readParameter<int>(id, error); }
String Element::stringParameter(uint32_t id, bool* error) const { return readParameter<String>(id, error); }

ParameterInfo<float>* Element::findFloatInfo(uint32_t id) const { return findTyped<float>(id); }
ParameterInfo<bool>* Element::findBoolInfo(uint32_t id) const { return findTyped<bool>(id); }
ParameterInfo<int>* Element::findIntInfo(uint32_t id) const { return findTyped<int>(id); }
ParameterInfo<String>* Element::findStringInfo(uint32_t id) const { return findTyped<String>(id); }

void Element::applyPendingParameters(ElementState* state)
{
    if (hasPendingUpdate_.exchange(0) == 0)
        return;
    ++updateCounter_;
    if (hasDeferredValues_.exchange(0) == 0)
        return;
    for (const bool leading : {true, false})
        for (auto& record : parameters_)
            if (record->movesOthers() == leading && record->hasDeferredValue())
                record->applyDeferredValue(*this, state);
    if (state == mainState_.get())
        publishParameters();
    for (auto& record : parameters_)
        record->finishDeferredApply();
}

void Element::DumpParameters() const
{
    std::ostream& out = std::cout;
    out << "****\n****\nElement::DumpParameters()\n" << parameters_.size() << " parameters\n";
    for (std::size_t i = 0; i < parameters_.size(); ++i)
    {
        const auto& record = *parameters_[i];
        const auto* description = record.description();
        out << "****\n";
        out << "Parameter " << i << ":\n";
        out << "Id: " << record.id() << "\n";
        out << "Name: " << description->name << "\n";
        out << "Type: " << kindName(record.kind()) << "\n";
        out << "DisplayName: " << description->displayName << "\n";
        switch (record.kind())
        {
        case ParameterKind::Float:
        {
            const auto& d = static_cast<const ParameterDescription<float>&>(*description);
            out << "Range: " << d.min << "/" << d.max << "\n";
            out << "Value: " << readParameter<float>(record.id(), nullptr) << "\n";
            break;
        }
        case ParameterKind::Int:
        {
            const auto& d = static_cast<const ParameterDescription<int>&>(*description);
            out << "Range: " << d.min << "/" << d.max << "\n";
            out << "Value: " << readParameter<int>(record.id(), nullptr) << "\n";
            break;
        }
        case ParameterKind::Bool:
            out << "Value: " << (readParameter<bool>(record.id(), nullptr) ? 1 : 0) << "\n";
            break;
        case ParameterKind::String:
            out << "Value: " << readParameter<String>(record.id(), nullptr) << "\n";
            break;
        default:
            break;
        }
    }
    out.flush();
}

void Element::prepareChildren()
{
    for (auto& child : children_)
        child->prepareChildren();
}
} // namespace oxa
