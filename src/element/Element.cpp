#include "element/Element.h"

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

// Guards against alias cycles, which would otherwise never end.
constexpr int maxAliasSteps = 256;

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

String joinPath(const String& head, const String& tail)
{
    if (tail.isEmpty())
        return head;
    if (head.isEmpty())
        return tail;
    if (head.endsWith("/") || tail.startsWith("/"))
        return head + tail;
    return head + "/" + tail;
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
    flags_ = static_cast<uint8_t>(IsSaved | (isPolyphonic ? IsPolyphonic : 0));
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
        case ParameterKind::Float:
        {
            auto& info = static_cast<ParameterInfo<float>&>(*record);
            info.set(second, readParameter<float>(info.id(), nullptr));
            break;
        }
        case ParameterKind::Int:
        {
            auto& info = static_cast<ParameterInfo<int>&>(*record);
            info.set(second, readParameter<int>(info.id(), nullptr));
            break;
        }
        case ParameterKind::Bool:
        {
            auto& info = static_cast<ParameterInfo<bool>&>(*record);
            info.set(second, readParameter<bool>(info.id(), nullptr));
            break;
        }
        case ParameterKind::String:
        {
            auto& info = static_cast<ParameterInfo<String>&>(*record);
            info.set(second, readParameter<String>(info.id(), nullptr));
            break;
        }
        default:
            break;
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
    flags_ = static_cast<uint8_t>(polyphonic ? (flags_ | IsPolyphonic) : (flags_ & ~IsPolyphonic));
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

// ---- tree ------------------------------------------------------------------------

std::recursive_mutex& Element::lock()
{
    if (parent_ != nullptr)
        return parent_->lock();
    static std::recursive_mutex* rootLock = new std::recursive_mutex;
    return *rootLock;
}

void Element::setParent(Element* parent) { parent_ = parent; }

Element* Element::root()
{
    Element* e = this;
    while (e->parent_ != nullptr)
        e = e->parent_;
    return e;
}

Engine* Element::engine() { return parent_ != nullptr ? parent_->engine() : nullptr; }

RenderContext* Element::renderContext() { return parent_ != nullptr ? parent_->renderContext() : nullptr; }

String Element::path() const
{
    // The root contributes no name, so a child of the root reads "/Name".
    if (parent_ == nullptr)
        return {};
    String built = name_.text();
    for (const Element* ancestor = parent_; ancestor != nullptr; ancestor = ancestor->parent_)
        built = (ancestor->parent_ == nullptr ? String() : ancestor->name_.text()) + "/" + built;
    return built;
}

String Element::uniqueChildName(const String& base, int start)
{
    for (int n = start;; ++n)
    {
        String candidate = base + String::fromInt(n);
        if (findElement(candidate) == nullptr)
            return candidate;
    }
}

std::vector<std::shared_ptr<Element>>::iterator Element::lowerBoundByName(const String& name)
{
    return std::lower_bound(children_.begin(), children_.end(), name,
                            [](const std::shared_ptr<Element>& child, const String& n) {
                                return child->name_.text().compare(n) < 0;
                            });
}

Element* Element::findElementInternal(const String& name)
{
    auto it = lowerBoundByName(name);
    if (it != children_.end() && (*it)->name_.text() == name)
        return it->get();
    return nullptr;
}

Element* Element::findElement(const String& pathText)
{
    String path = pathText;
    if (extras_)
    {
        for (int step = 0; step < maxAliasSteps; ++step)
        {
            auto alias = extras_->aliases.find(path);
            if (alias == extras_->aliases.end())
                break;
            path = alias->second;
        }
    }

    if (Element* child = findElementInternal(path))
        return child;
    if (!path.contains("/") && !path.startsWith("$"))
        return nullptr;

    Element* current = this;
    if (path.startsWith("/"))
    {
        current = root();
        path = path.substring(1);
    }
    if (path.startsWith("$"))
    {
        const auto slash = path.find('/');
        const String typeName = path.substring(1, slash ? *slash - 1 : std::string::npos);
        Element* match = current;
        while (match != nullptr && match->typeName_.text() != typeName)
            match = match->parent_;
        if (match == nullptr)
            return nullptr;
        if (!slash || *slash + 1 >= path.length())
            return match;
        current = match;
        path = path.substring(*slash + 1);
    }

    std::size_t start = 0;
    const std::string& text = path.str();
    while (current != nullptr && start <= text.size())
    {
        std::size_t end = text.find('/', start);
        if (end == std::string::npos)
            end = text.size();
        const String segment(text.data() + start, end - start);
        start = end + 1;
        if (segment.isEmpty() || segment == ".")
            continue;
        if (segment == "..")
            current = current->parent_;
        else
            current = current->findElement(segment);
    }
    return current;
}

void Element::findElements(const String& pattern, std::vector<Element*>& out)
{
    if (!pattern.contains("/"))
    {
        String resolved = pattern;
        if (extras_)
        {
            for (int step = 0; step < maxAliasSteps; ++step)
            {
                auto alias = extras_->aliases.find(resolved);
                if (alias == extras_->aliases.end())
                    break;
                resolved = alias->second;
            }
        }
        for (auto& child : children_)
            if (wildcardMatch(resolved, child->name_.text()))
                out.push_back(child.get());
        return;
    }

    Element* start = this;
    String rest = pattern;
    if (rest.startsWith("/"))
    {
        start = root();
        rest = rest.substring(1);
        if (rest.isEmpty())
        {
            out.push_back(start);
            return;
        }
        if (!rest.contains("/"))
        {
            start->findElements(rest, out);
            return;
        }
    }

    const auto slash = rest.find('/');
    const String head = rest.substring(0, *slash);
    const String tail = rest.substring(*slash + 1);

    auto descend = [&](Element* next) {
        if (next == nullptr)
            return;
        if (tail.isEmpty())
            out.push_back(next);
        else
            next->findElements(tail, out);
    };

    if (head == "..")
        descend(start->parent_);
    else if (head == "." || head.isEmpty())
        descend(start);
    else if (head.containsAnyOf("*?[]{}"))
    {
        for (auto& child : start->children_)
            if (wildcardMatch(head, child->name_.text()))
                descend(child.get());
    }
    else
        descend(start->findElement(head));
}

void Element::addChild(const std::shared_ptr<Element>& child)
{
    if (!child)
        return;
    // after any equal names, so equal names keep insertion order
    auto at = std::upper_bound(children_.begin(), children_.end(), child->name_.text(),
                               [](const String& n, const std::shared_ptr<Element>& c) {
                                   return n.compare(c->name_.text()) < 0;
                               });
    children_.insert(at, child);
    child->setParent(this);
    child->flushErrors();
    if (ElementSignals* s = signals_.load())
        s->childAdded(this, child.get());
    setModified();
}

void Element::replaceChild(const std::shared_ptr<Element>& child)
{
    if (!child)
        return;
    auto it = lowerBoundByName(child->name_.text());
    if (it == children_.end() || (*it)->name_.text() != child->name_.text())
    {
        addChild(child);
        return;
    }
    std::shared_ptr<Element> old = *it;
    *it = child;
    if (old.use_count() > 1 && old != child)
        old->setParent(nullptr);
    child->setParent(this);
    child->flushErrors();
    if (ElementSignals* s = signals_.load())
    {
        s->childRemoved(this, old.get());
        s->childAdded(this, child.get());
    }
    setModified();
}

void Element::removeChild(Element* child)
{
    if (child == nullptr)
        return;
    auto it = lowerBoundByName(child->name_.text());
    while (it != children_.end() && it->get() != child && (*it)->name_.text() == child->name_.text())
        ++it;
    if (it == children_.end() || it->get() != child)
        return;
    std::shared_ptr<Element> keep = *it; // alive until the signal has been told
    if (keep.use_count() > 2)
        keep->setParent(nullptr);
    children_.erase(it);
    if (ElementSignals* s = signals_.load())
        s->childRemoved(this, keep.get());
    setModified();
}

void Element::setAlias(const String& name, const String& target)
{
    auto& aliases = extras().aliases;
    const bool existed = aliases.count(name) != 0;
    aliases[name] = target;
    if (ElementSignals* s = signals_.load())
    {
        if (existed)
            s->aliasChanged(this, name);
        else
            s->aliasAdded(this, name);
    }
}

bool Element::hasAlias(const String& name) const { return extras_ && extras_->aliases.count(name) != 0; }

// ---- mappers ---------------------------------------------------------------------

void Element::addMapperEntry(const std::shared_ptr<ControlSignalMapper>& mapper, Element* element)
{
    if (!mapper)
        return;
    if (element != nullptr && element->name().isEmpty())
        element->setName(uniqueChildName("Mapper ", 0));
    auto& e = extras();
    e.mappers.push_back({mapper, element});
    e.mapperAdded(this, mapper.get());
}

void Element::removeMapper(ControlSignalMapper* mapper)
{
    if (!extras_)
        return;
    auto& list = extras_->mappers;
    auto it = std::find_if(list.begin(), list.end(), [&](const auto& entry) { return entry.mapper.get() == mapper; });
    if (it == list.end())
        return;
    auto keep = it->mapper;
    list.erase(it);
    extras_->mapperRemoved(this, keep.get());
}

void Element::clearMappers()
{
    if (!extras_)
        return;
    auto list = std::move(extras_->mappers);
    extras_->mappers.clear();
    for (auto& entry : list)
        extras_->mapperRemoved(this, entry.mapper.get());
}

ControlSignalMapper* Element::findMapper(const String& name) const
{
    for (const Element* e = this; e != nullptr; e = e->parent_)
        if (e->extras_)
            for (auto& entry : e->extras_->mappers)
                if (entry.element != nullptr && entry.element->name().text() == name)
                    return entry.mapper.get();
    return nullptr;
}

// ---- properties ------------------------------------------------------------------

bool Element::hasProperty(const String& key) const { return extras_ && extras_->properties.count(key) != 0; }

ElementProperty Element::property(const String& key) const
{
    if (!extras_)
        return {};
    auto found = extras_->properties.find(key);
    return found == extras_->properties.end() ? ElementProperty() : found->second;
}

void Element::setProperty(const String& key, const ElementProperty& value)
{
    extras().properties[key] = value;
    if (ElementSignals* s = signals_.load())
        s->propertyChanged(key, value);
}

void Element::setProperty(const String& key, const String& value, bool isPersistent)
{
    setProperty(key, ElementProperty(value, isPersistent));
}

bool Element::removeProperty(const String& key)
{
    if (!extras_ || extras_->properties.erase(key) == 0)
        return false;
    if (ElementSignals* s = signals_.load())
        s->propertyChanged(key, ElementProperty());
    return true;
}

bool Element::isParameterLocked(uint32_t id) const
{
    ParameterInfoBase* info = findInfo(id);
    return info != nullptr && property(info->name() + "Locked").asBool();
}

void Element::setParameterLocked(uint32_t id, bool locked)
{
    if (ParameterInfoBase* info = findInfo(id))
        setProperty(info->name() + "Locked", locked ? "1" : "0");
}

// ---- modified flags --------------------------------------------------------------

void Element::setModified()
{
    for (Element* e = this; e != nullptr; e = e->parent_)
    {
        if ((e->flags_ & IsModified) != 0)
            continue;
        e->flags_ |= IsModified;
        if (ElementSignals* s = e->signals_.load())
            s->modifiedChanged(e);
    }
}

void Element::clearModified()
{
    if ((flags_ & IsModified) == 0)
        return;
    flags_ = static_cast<uint8_t>(flags_ & ~IsModified);
    if (ElementSignals* s = signals_.load())
        s->modifiedChanged(this);
}

void Element::setSaved(bool saved)
{
    flags_ = static_cast<uint8_t>(saved ? (flags_ | IsSaved) : (flags_ & ~IsSaved));
}

// ---- errors ----------------------------------------------------------------------

void Element::reportError(std::unique_ptr<Error> error)
{
    if (!error)
        return;
    if (parent_ != nullptr)
    {
        error->sourcePath = joinPath(name_.text(), error->sourcePath);
        parent_->reportError(std::move(error));
        return;
    }
    extras().errors.push_back(std::move(error));
}

void Element::reportError(const String& message, const String& context)
{
    auto error = std::make_unique<Error>();
    error->message = message;
    error->context = context;
    reportError(std::move(error));
}

void Element::flushErrors()
{
    if (parent_ == nullptr || !extras_ || extras_->errors.empty())
        return;
    auto queued = std::move(extras_->errors);
    extras_->errors.clear();
    for (auto& error : queued)
    {
        error->sourcePath = joinPath(name_.text(), error->sourcePath);
        parent_->reportError(std::move(error));
    }
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

bool Element::addConnection(const ConnectionSpec&, bool)
{
    // Connections are built by the modulation layer, which overrides this.
    return false;
}

bool Element::removeConnection(uint32_t parameter, const String& name, bool takeLock)
{
    ParameterInfoBase* info = findInfo(parameter);
    ElementParamEnvelope* envelope = info != nullptr ? info->envelope() : nullptr;
    if (envelope == nullptr)
        return false;
    std::unique_lock<std::recursive_mutex> guard(lock(), std::defer_lock);
    if (takeLock)
        guard.lock();
    Element* connection = envelope->findElement(name);
    if (connection == nullptr)
        return false;
    envelope->removeChild(connection);
    if (!envelope->isConnected())
        connectedEnvelopes_.erase(std::remove(connectedEnvelopes_.begin(), connectedEnvelopes_.end(), envelope),
                                  connectedEnvelopes_.end());
    return true;
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
        setImmediate<float>(id, value);
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
        setMaybeDeferred<float>(id, value, deferred);
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
    for (auto& record : parameters_)
        if (record->hasDeferredValue())
            record->applyDeferredValue(*this, state);
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
