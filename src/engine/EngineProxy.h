#pragma once
// The interface side's only road into the element tree. Watchers name a path, never
// hold an element: the proxy tells them when the element at that path comes, goes or
// is replaced (a whole new engine included), and when one of its parameters changes.
// Message thread only.

#include "element/Element.h"
#include "engine/ElementProxy.h"

#include <juce_events/juce_events.h>

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

namespace oxa
{
class Engine;
class Plugin;

class ErrorListener
{
public:
    virtual ~ErrorListener() = default;
    /** The record dies after the call: copy what is needed. */
    virtual void errorReported(Error* error) = 0;
};

class EngineProxy : public juce::Timer, public Trackable
{
public:
    using BoundSlot = std::function<void(Element*)>;
    using ParameterSlot = std::function<void(Element*, unsigned)>;

    EngineProxy(Plugin* plugin, Engine* engine, bool reportErrors);
    ~EngineProxy() override;

    void setEngine(Engine* engine);
    Engine* engine() const { return engine_; }
    Plugin* plugin() const { return plugin_; }

    /** The element at `path`, or for a pattern (or when forced) a counted ElementProxy over its matches. */
    Element* acquireProxy(const String& path, bool force = false);
    void releaseProxy(Element* element);

    /** The slot runs at once when the element exists, then on every change (null when it goes). */
    void addElementBoundListener(const void* owner, const String& path, BoundSlot slot);
    void removeElementBoundListener(const void* owner, const String& path);
    /** The slot gets (element, id) on the message thread, whatever thread changed the value. */
    void addParameterChangeListener(const void* owner, const String& path, unsigned id, ParameterSlot slot);
    void removeParameterChangeListener(const void* owner, const String& path, unsigned id);

    void addErrorListener(ErrorListener* listener);
    void removeErrorListener(ErrorListener* listener);
    void raiseError(const String& message, const String& subject);

    Signal<const Element&, unsigned int> elementSignal;
    Signal<Element&, unsigned int> elementSignal2;

    /** A widget starts or ends one edit of (element, id); the host parameter bound to it
        brackets the edit so the host records it as one automation gesture. */
    Signal<Element&, unsigned int> beginGesture;
    Signal<Element&, unsigned int> endGesture;

    /** The element a watched path resolves to now (tests and diagnostics). */
    Element* currentElement(const String& path);

private:
    class ElementNode;
    struct Proxy
    {
        String path;
        int count = 0;
        std::unique_ptr<ElementProxy> element;
    };

    void timerCallback() override {}
    ElementNode* nodeFor(const String& path);
    void dispatchError(Error* error);
    void connectErrors();
    void disconnectErrors();

    Engine* engine_ = nullptr;
    std::weak_ptr<Element> engineGuard_;
    Plugin* plugin_ = nullptr;
    std::unique_ptr<ElementNode> root_;
    std::map<String, std::unique_ptr<Proxy>> proxies_;
    bool reportErrors_;
    std::set<ErrorListener*> errorListeners_;
    bool errorsConnected_ = false;
};
} // namespace oxa
