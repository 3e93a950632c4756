#pragma once
// Interface-side watchers of one element, or one parameter, named by path. They talk
// only to the EngineProxy, so the element under them may come, go or be replaced.
// Message thread only.

#include "element/Element.h"
#include "element/ParameterDescription.h"

#include <functional>

namespace oxa
{
class EngineProxy;

class ElementView
{
public:
    ElementView(EngineProxy* proxy, const String& elementPath) : proxy(proxy), elementPath(elementPath) {}
    virtual ~ElementView() = default;

    /** The element came into being, vanished or was replaced. */
    virtual void elementChanged(const String& path) = 0;

    EngineProxy* getProxy() const { return proxy; }
    const String& getElementPath() const { return elementPath; }
    Element* getElement() const { return element; }

protected:
    EngineProxy* proxy;
    String elementPath;
    Element* element = nullptr;
};

/** Watches one element by path; subscribe with watch() once the object is fully built. */
class SimpleElementView : public ElementView
{
public:
    SimpleElementView(EngineProxy* proxy, const String& elementPath) : ElementView(proxy, elementPath) {}
    ~SimpleElementView() override { stopWatching(); }

    void elementChanged(const String&) override {}

    /** Subscribes (dropping an older subscription); the element, if there, is reported at once. */
    void watch(const String& path);
    void stopWatching();
    /** Drops the subscription and forgets the proxy, which is about to go. */
    void detachFromProxy();

private:
    bool watching = false;
};

/** Watches one parameter by path and id, and reports its value by type. */
class SimpleElementParameterView : public ElementView
{
public:
    SimpleElementParameterView(EngineProxy* proxy, const String& elementPath) : ElementView(proxy, elementPath) {}
    ~SimpleElementParameterView() override { dropSubscription(); }

    void elementChanged(const String&) override {}
    virtual void floatChanged(const String&, unsigned, float) {}
    virtual void intChanged(const String&, unsigned, int) {}
    virtual void boolChanged(const String&, unsigned, bool) {}
    virtual void stringChanged(const String&, unsigned, const String&) {}
    /** Reads the current value with the getter of its kind and calls the matching slot. */
    virtual void notifyAll(const String& path, Element* element, unsigned id);
    /** Drops the old subscription and makes a new one. */
    virtual void setParameter(const String& path, unsigned id);

    unsigned requestedId() const { return askedId; }
    unsigned resolvedId() const { return mappedId; }
    ParameterKind kind() const { return parameterKind; }

    void detachFromProxy();

private:
    void dropSubscription();
    void elementBound(Element* e);

    unsigned askedId = 0;
    unsigned mappedId = 0;
    ParameterKind parameterKind = ParameterKind::Invalid;
    bool subscribed = false;
};

/** A watched copy of one parameter: keeps the last value and calls back on each change. */
template <typename T>
class ElementParameterValue : public SimpleElementParameterView
{
public:
    using Callback = std::function<void(T)>;
    using BindingCallback = std::function<void(bool present)>;

    ElementParameterValue(EngineProxy* proxy, const String& path, unsigned id, Callback onChange,
                          BindingCallback onBinding = {})
        : SimpleElementParameterView(proxy, path), callback(std::move(onChange)), bindingCallback(std::move(onBinding))
    {
        setParameter(path, id);
    }

    T get() const { return value; }

    /** Writes through to the element without calling back our own function. */
    void set(T newValue);

    /** While set, changes are ignored. */
    bool bypass = false;

    void elementChanged(const String&) override
    {
        if (bindingCallback)
            bindingCallback(getElement() != nullptr);
    }
    void floatChanged(const String&, unsigned, float v) override { take(static_cast<T>(v)); }
    void intChanged(const String&, unsigned, int v) override { take(static_cast<T>(v)); }
    void boolChanged(const String&, unsigned, bool v) override { take(static_cast<T>(v)); }

private:
    void take(T v)
    {
        if (bypass)
            return;
        value = v;
        if (busy == 0 && callback)
            callback(v);
    }

    T value {};
    uint8_t busy = 0;
    Callback callback;
    BindingCallback bindingCallback;
};

template <>
inline void ElementParameterValue<bool>::floatChanged(const String&, unsigned, float v)
{
    take(v != 0.0f);
}
template <>
inline void ElementParameterValue<bool>::intChanged(const String&, unsigned, int v)
{
    take(v != 0);
}

template <typename T>
void ElementParameterValue<T>::set(T newValue)
{
    Element* e = getElement();
    if (e == nullptr)
        return;
    ++busy;
    switch (kind())
    {
        case ParameterKind::Float: e->setFloatParameter(resolvedId(), static_cast<float>(newValue), true); break;
        case ParameterKind::Int: e->setIntParameter(resolvedId(), static_cast<int>(newValue), true); break;
        case ParameterKind::Bool: e->setBoolParameter(resolvedId(), newValue != T(0), true); break;
        default: break;
    }
    value = newValue;
    --busy;
}
} // namespace oxa
