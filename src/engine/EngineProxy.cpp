#include "engine/EngineProxy.h"
#include "engine/Engine.h"

#include <algorithm>

namespace oxa
{
/** One watched path component: the element it resolves to now and who watches it. */
class EngineProxy::ElementNode : public Trackable
{
public:
    ElementNode(const String& name, ElementNode* parent) : name(name), parent(parent) {}
    ~ElementNode() override { detach(); }

    struct BoundListener
    {
        const void* owner;
        BoundSlot slot;
    };
    struct ParameterListener
    {
        const void* owner;
        unsigned id;
        ParameterSlot slot;
    };

    Element* current() const
    {
        if (element == nullptr || (wasShared && guard.expired()))
            return nullptr;
        return element;
    }

    ElementNode* child(const String& childName)
    {
        auto it = children.find(childName);
        if (it != children.end())
            return it->second.get();
        auto node = std::make_unique<ElementNode>(childName, this);
        ElementNode* raw = node.get();
        children.emplace(childName, std::move(node));
        Element* parentElement = current();
        raw->attach(parentElement != nullptr ? parentElement->findElement(childName) : nullptr);
        return raw;
    }

    /** Resolves this node (and below) afresh from `resolved`; tells listeners of every change. */
    void rebind(Element* resolved, bool notify)
    {
        const bool changed = resolved != current() || (resolved == nullptr && element != nullptr);
        if (changed)
            attach(resolved);
        for (auto& [childName, node] : children)
            node->rebind(resolved != nullptr ? resolved->findElement(childName) : nullptr, notify);
        if (changed && notify)
            fire();
    }

    void fire()
    {
        Element* e = current();
        // copies: a slot may add or remove listeners
        auto bound = boundListeners;
        for (auto& l : bound)
            if (stillBound(l.owner))
                l.slot(e);
        auto parameters = parameterListeners;
        for (auto& l : parameters)
            if (stillListening(l.owner, l.id))
                l.slot(e, l.id);
    }

    void connectParameterSignal()
    {
        Element* e = current();
        if (e == nullptr || parameterConnected || parameterListeners.empty())
            return;
        e->signals().parameterChangedAsync.connect(this, [this](const Element& from, unsigned id) {
            if (&from == current())
                parameterChanged(from, id);
        });
        parameterConnected = true;
    }

    String name;
    ElementNode* parent;
    std::map<String, std::unique_ptr<ElementNode>> children;
    std::vector<BoundListener> boundListeners;
    std::vector<ParameterListener> parameterListeners;

private:
    bool stillBound(const void* owner) const
    {
        return std::any_of(boundListeners.begin(), boundListeners.end(),
                           [owner](const BoundListener& l) { return l.owner == owner; });
    }
    bool stillListening(const void* owner, unsigned id) const
    {
        return std::any_of(parameterListeners.begin(), parameterListeners.end(),
                           [owner, id](const ParameterListener& l) { return l.owner == owner && l.id == id; });
    }

    void parameterChanged(const Element& from, unsigned id)
    {
        auto listeners = parameterListeners;
        for (auto& l : listeners)
            if (l.id == id && stillListening(l.owner, id))
                l.slot(const_cast<Element*>(&from), id);
    }

    void attach(Element* e)
    {
        detach();
        element = e;
        if (e == nullptr)
            return;
        guard = e->weak_from_this();
        wasShared = !guard.expired();
        auto& s = e->signals();
        s.childAdded.connect(this, [this](Element*, Element* added) { childArrived(added); });
        s.childRemoved.connect(this, [this](Element*, Element* removed) { childLeft(removed); });
        connectParameterSignal();
    }

    void detach()
    {
        if (Element* old = current(); old != nullptr && old->hasSignals())
        {
            auto& s = old->signals();
            s.childAdded.disconnect(this);
            s.childRemoved.disconnect(this);
            s.parameterChangedAsync.disconnect(this);
        }
        element = nullptr;
        guard.reset();
        wasShared = false;
        parameterConnected = false;
    }

    void childArrived(Element* added)
    {
        if (added == nullptr)
            return;
        auto it = children.find(added->name().text());
        if (it != children.end())
            it->second->rebind(added, true);
    }

    void childLeft(Element* removed)
    {
        if (removed == nullptr)
            return;
        auto it = children.find(removed->name().text());
        if (it != children.end() && it->second->current() == removed)
            it->second->rebind(nullptr, true);
    }

    Element* element = nullptr;
    std::weak_ptr<Element> guard;
    bool wasShared = false;
    bool parameterConnected = false;
};

EngineProxy::EngineProxy(Plugin* plugin, Engine* engine, bool reportErrors)
    : engine_(engine), plugin_(plugin), reportErrors_(reportErrors)
{
    if (engine != nullptr)
        engineGuard_ = engine->weak_from_this();
    startTimer(10);
}

EngineProxy::~EngineProxy()
{
    stopTimer();
    disconnectErrors();
    proxies_.clear();
    root_.reset();
}

void EngineProxy::setEngine(Engine* engine)
{
    if (engine == engine_)
        return;
    disconnectErrors();
    engine_ = engine;
    engineGuard_ = engine != nullptr ? engine->weak_from_this() : std::weak_ptr<Element>();
    if (!errorListeners_.empty())
        connectErrors();
    if (root_ != nullptr)
        root_->rebind(engine_, true);
    for (auto& [path, proxy] : proxies_)
    {
        std::vector<Element*> matches;
        if (engine_ != nullptr)
            engine_->findElements(path, matches);
        proxy->element->setMatches(matches);
    }
    if (reportErrors_ && engine_ != nullptr)
        engine_->drainErrors();
}

EngineProxy::ElementNode* EngineProxy::nodeFor(const String& path)
{
    if (!path.startsWith("/"))
        return nullptr;
    if (root_ == nullptr)
    {
        root_ = std::make_unique<ElementNode>(String("/"), nullptr);
        root_->rebind(engine_, false);
    }
    ElementNode* node = root_.get();
    const std::string& text = path.str();
    std::size_t start = 1;
    while (start < text.size())
    {
        std::size_t end = text.find('/', start);
        if (end == std::string::npos)
            end = text.size();
        if (end > start)
            node = node->child(String(text.substr(start, end - start)));
        start = end + 1;
    }
    return node;
}

Element* EngineProxy::currentElement(const String& path)
{
    ElementNode* node = nodeFor(path);
    return node != nullptr ? node->current() : nullptr;
}

Element* EngineProxy::acquireProxy(const String& path, bool force)
{
    if (engine_ == nullptr)
        return nullptr;
    if (!force && !path.containsAnyOf("*?[{"))
        return engine_->findElement(path);

    std::vector<Element*> matches;
    engine_->findElements(path, matches);
    if (matches.empty())
        return nullptr;
    auto it = proxies_.find(path);
    if (it != proxies_.end())
    {
        ++it->second->count;
        it->second->element->setMatches(matches);
        return it->second->element.get();
    }
    auto proxy = std::make_unique<Proxy>();
    proxy->path = path;
    proxy->count = 1;
    proxy->element = std::make_unique<ElementProxy>(path);
    proxy->element->setMatches(matches);
    ElementProxy* made = proxy->element.get();
    proxies_.emplace(path, std::move(proxy));
    return made;
}

void EngineProxy::releaseProxy(Element* element)
{
    for (auto it = proxies_.begin(); it != proxies_.end(); ++it)
    {
        if (it->second->element.get() != element)
            continue;
        if (--it->second->count <= 0)
            proxies_.erase(it);
        return;
    }
}

void EngineProxy::addElementBoundListener(const void* owner, const String& path, BoundSlot slot)
{
    ElementNode* node = nodeFor(path);
    if (node == nullptr || !slot)
        return;
    node->boundListeners.push_back({owner, slot});
    if (Element* e = node->current())
        slot(e);
}

void EngineProxy::removeElementBoundListener(const void* owner, const String& path)
{
    ElementNode* node = nodeFor(path);
    if (node == nullptr)
        return;
    auto& list = node->boundListeners;
    list.erase(std::remove_if(list.begin(), list.end(), [owner](const auto& l) { return l.owner == owner; }),
               list.end());
}

void EngineProxy::addParameterChangeListener(const void* owner, const String& path, unsigned id,
                                             ParameterSlot slot)
{
    ElementNode* node = nodeFor(path);
    if (node == nullptr || !slot)
        return;
    node->parameterListeners.push_back({owner, id, slot});
    node->connectParameterSignal();
}

void EngineProxy::removeParameterChangeListener(const void* owner, const String& path, unsigned id)
{
    ElementNode* node = nodeFor(path);
    if (node == nullptr)
        return;
    auto& list = node->parameterListeners;
    list.erase(std::remove_if(list.begin(), list.end(),
                              [owner, id](const auto& l) { return l.owner == owner && l.id == id; }),
               list.end());
}

void EngineProxy::addErrorListener(ErrorListener* listener)
{
    if (listener == nullptr)
        return;
    errorListeners_.insert(listener);
    connectErrors();
}

void EngineProxy::removeErrorListener(ErrorListener* listener)
{
    errorListeners_.erase(listener);
    if (errorListeners_.empty())
        disconnectErrors();
}

void EngineProxy::raiseError(const String& message, const String& subject)
{
    auto error = std::make_unique<Error>();
    error->context = subject;
    error->message = message;
    dispatchError(error.get());
}

void EngineProxy::dispatchError(Error* error)
{
    auto listeners = errorListeners_;
    for (ErrorListener* l : listeners)
        if (errorListeners_.count(l) != 0)
            l->errorReported(error);
}

void EngineProxy::connectErrors()
{
    if (!reportErrors_ || errorsConnected_ || engine_ == nullptr || errorListeners_.empty())
        return;
    engine_->errorSignal.connect(this, &EngineProxy::dispatchError);
    errorsConnected_ = true;
    engine_->drainErrors();
}

void EngineProxy::disconnectErrors()
{
    if (!errorsConnected_)
        return;
    // an engine already gone took its signal, and our slot, with it
    if (engine_ != nullptr && !engineGuard_.expired())
        engine_->errorSignal.disconnect(this, &EngineProxy::dispatchError);
    errorsConnected_ = false;
}
} // namespace oxa
