#pragma once
// A named node of the engine's tree: typed parameters bound to member functions,
// string properties, children found by path, and two run-time states.

#include "element/AsyncSignal.h"
#include "element/ElementState.h"
#include "element/NameSymbol.h"
#include "element/NonCopyable.h"
#include "element/ParameterInfo.h"
#include "element/Signal.h"
#include "element/String.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <initializer_list>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace tinyxml2
{
class XMLElement;
}

namespace oxa
{
class ControlSignalMapper;
class ElementParamEnvelope;
class Engine;
class RenderContext;
struct SaveOptions;
struct ConnectionSpec;

/** A problem raised somewhere in the tree, climbing towards the root's listener. */
struct Error
{
    String sourcePath;
    String message;
    String context; // "Loading" for load errors
    int code = 0;
    String detail;
};

struct ElementProperty
{
    ElementProperty() = default;
    ElementProperty(const String& value, bool isPersistent = true)
        : value(value), hasValue(true), isPersistent(isPersistent ? 1 : 0)
    {
    }

    String valueOr(const String& fallback) const { return hasValue ? value : fallback; }
    /** False when absent; otherwise true from 1 upward. */
    bool asBool() const { return hasValue && value.toInt().valueOr(0) >= 1; }

    String value;
    bool hasValue = false;
    uint8_t isPersistent = 0;
};

struct ElementSignals
{
    ElementSignals() { ParameterChangedAsyncSignal::ensureChannel(); }

    Signal<Element*> modifiedChanged;
    Signal<Element*> destroyed;
    Signal<Element*, Element*> childAdded; // (parent, child)
    Signal<Element*, Element*> childRemoved;
    Signal<Element*, const String&> aliasAdded;
    Signal<Element*, const String&> aliasChanged;
    Signal<const String&, const ElementProperty&> propertyChanged;
    AsyncSignal<const Element&, unsigned> parameterChangedAsync;
    Signal<const Element&, unsigned> parameterChanged;
};

struct ElementExtras
{
    struct MapperEntry
    {
        std::shared_ptr<ControlSignalMapper> mapper;
        Element* element; // the same object seen as an element
    };

    std::map<String, String> aliases;
    std::vector<MapperEntry> mappers;
    std::deque<std::unique_ptr<Error>> errors;
    std::map<String, ElementProperty> properties;
    Signal<Element*, ControlSignalMapper*> mapperAdded;
    Signal<Element*, ControlSignalMapper*> mapperRemoved;
};

class StatePool;

class Element : public NonCopyable, public std::enable_shared_from_this<Element>
{
public:
    enum Flags : uint8_t
    {
        IsPolyphonic = 1,
        HasAnnouncedDeath = 2,
        IsSaved = 4,
        IsModified = 8,
        IsPrepared = 16
    };

    /** Ids of the parameters every element has. */
    struct CommonIds
    {
        uint32_t displayType;
        uint32_t memorySize;
        uint32_t bypass;
        uint32_t alias[128]; // "Param0".."Param127"
    };
    static const CommonIds& commonIds();
    /** 0..127 for an alias id, -1 otherwise. */
    static int aliasIndex(uint32_t id);

    Element(const String& typeName, const String& name, bool isPolyphonic = false);

    // ---- virtual operations -------------------------------------------------------
    virtual ~Element();

    // persistence (bodies live with the XML code)
    virtual tinyxml2::XMLElement* saveXml(tinyxml2::XMLElement* parent, SaveOptions& options);
    virtual bool loadXml(const tinyxml2::XMLElement* node, SaveOptions& options, int version);
    virtual void prepareChildren();
    virtual void finishLoading();
    /** Called after a whole set of values was replaced at once (a preset), so that a
        processor can start from them rather than glide into them. */
    virtual void valuesReplaced() {}

    /** A prepared clone of mainState with pending parameters applied. */
    virtual std::unique_ptr<ElementState> createState(StatePool* pool);
    virtual void updateSecondState(int a, int b, int c);
    virtual void* typeExtension() { return nullptr; }
    /** The tree's structure lock: the parent's, and a process-wide one at the root. */
    virtual std::recursive_mutex& lock();
    /** The tree lock, taken only when asked: callers that already hold it pass false. */
    std::unique_lock<std::recursive_mutex> lockIf(bool take);
    virtual void setParent(Element* parent);
    virtual String path() const;
    virtual String uniqueChildName(const String& base, int start);
    /** Maps a generic "ParamN" id to a real id; the base returns the id unchanged. */
    virtual uint32_t mapParameterId(uint32_t id) const { return id; }
    /** The id of one of this element's parameters by name; 0 when it has none. */
    virtual uint32_t parameterId(const char* name) const;
    virtual Element* findElement(const String& path);
    /** Both forward to the parent and give null at a root that does not override them. */
    virtual Engine* engine();
    virtual RenderContext* renderContext();
    virtual void findElements(const String& pattern, std::vector<Element*>& out);

    virtual void setStringParameter(uint32_t id, const String& value);
    virtual void setIntParameter(uint32_t id, int value);
    virtual void setBoolParameter(uint32_t id, bool value);
    virtual void setFloatParameter(uint32_t id, float value);
    virtual void setStringParameter(uint32_t id, const String& value, bool deferred);
    virtual void setIntParameter(uint32_t id, int value, bool deferred);
    virtual void setBoolParameter(uint32_t id, bool value, bool deferred);
    virtual void setFloatParameter(uint32_t id, float value, bool deferred);

    /** Getters clear *error when given. Reading an id the element lacks gives the default 0. */
    virtual float floatParameter(uint32_t id, bool* error = nullptr) const;
    virtual ParameterInfo<float>* findFloatInfo(uint32_t id) const;
    virtual bool boolParameter(uint32_t id, bool* error = nullptr) const;
    virtual ParameterInfo<bool>* findBoolInfo(uint32_t id) const;
    virtual int intParameter(uint32_t id, bool* error = nullptr) const;
    virtual ParameterInfo<int>* findIntInfo(uint32_t id) const;
    virtual String stringParameter(uint32_t id, bool* error = nullptr) const;
    virtual ParameterInfo<String>* findStringInfo(uint32_t id) const;

    virtual void syncState(RenderContext* context, ElementState* state);
    virtual void envelopesBeginBlock(RenderContext* context);
    virtual void envelopesEndBlock(RenderContext* context);
    virtual String uniqueConnectionName(uint32_t parameter);
    virtual bool addConnection(const ConnectionSpec& spec, bool takeLock);
    virtual bool removeConnection(uint32_t parameter, const String& name, bool takeLock);
    virtual void connectionNames(uint32_t parameter, std::vector<String>& out);
    virtual void reportError(std::unique_ptr<Error> error);
    virtual void flushErrors();
    virtual void setPolyphonic(bool polyphonic);
    virtual void saveXmlAttributes(tinyxml2::XMLElement* node, int& version);
    virtual bool loadXmlAttributes(const tinyxml2::XMLElement* node, int version);
    /** Bools first, then the rest; a value missing from `node` (or a null node) takes its default. */
    void loadParameterValues(const tinyxml2::XMLElement* node, uint32_t fromId = 0);
    virtual void prepareSecondState(double sampleRate);
    /** This element's own share of "MemorySize", in MB. */
    virtual double ownMemorySize() const;
    virtual std::unique_ptr<ElementState> cloneMainState(StatePool* pool);
    /** Called at the end of prepare(); the base prepares both states. */
    virtual void prepareToRender();

    // ---- identity and tree --------------------------------------------------------
    const NameSymbol& typeName() const { return typeName_; }
    const NameSymbol& name() const { return name_; }
    void setName(const String& name) { name_ = NameSymbol(name); }
    Element* parent() const { return parent_; }
    Element* root();
    uint16_t serial() const { return serial_; }

    const std::vector<std::shared_ptr<Element>>& children() const { return children_; }
    void addChild(const std::shared_ptr<Element>& child);
    void replaceChild(const std::shared_ptr<Element>& child);
    void removeChild(Element* child);

    void setAlias(const String& name, const String& target);
    bool hasAlias(const String& name) const;

    template <typename Mapper>
    void addMapper(const std::shared_ptr<Mapper>& mapper)
    {
        addMapperEntry(mapper, static_cast<Element*>(mapper.get()));
    }
    void removeMapper(ControlSignalMapper* mapper);
    void clearMappers();
    /** Searches this element, then its ancestors. */
    ControlSignalMapper* findMapper(const String& name) const;
    std::size_t mapperCount() const { return extras_ ? extras_->mappers.size() : 0; }

    bool hasProperty(const String& key) const;
    ElementProperty property(const String& key) const;
    void setProperty(const String& key, const ElementProperty& value);
    void setProperty(const String& key, const String& value, bool isPersistent = true);
    bool removeProperty(const String& key);
    const std::map<String, ElementProperty>* properties() const { return extras_ ? &extras_->properties : nullptr; }
    /** Whether preset recall must leave the parameter alone ("<Name>Locked"). */
    bool isParameterLocked(uint32_t id) const;
    void setParameterLocked(uint32_t id, bool locked);

    /** Writes the default of every persistent parameter from id `fromId` on through its
        setter, in load order, so that a fresh element holds exactly what loading a document
        without those values would give. */
    void applyParameterDefaults(uint32_t fromId = 0);

    bool isModified() const { return (flags_ & IsModified) != 0; }
    void setModified();
    void clearModified();

    bool isSaved() const { return (flags_ & IsSaved) != 0; }
    void setSaved(bool saved);
    bool isPolyphonic() const { return (flags_ & IsPolyphonic) != 0; }
    bool isPrepared() const { return (flags_ & IsPrepared) != 0; }

    /** Created on first use; an element nobody listens to never has them. */
    ElementSignals& signals();
    /** Makes the parameter signals before other threads can reach the element, so that
        their notifications never race the making. */
    void prepareParameterSignals();
    bool hasSignals() const { return signals_.load() != nullptr; }
    ElementExtras& extras();

    // ---- parameters -------------------------------------------------------------
    /** Takes ownership of every record; a null record throws boost::bad_pointer. */
    void addParameters(const std::vector<ParameterInfo<float>*>& floats,
                       const std::vector<ParameterInfo<int>*>& ints = {},
                       const std::vector<ParameterInfo<bool>*>& bools = {},
                       const std::vector<ParameterInfo<String>*>& strings = {});

    struct ParameterSummary
    {
        String name;
        ParameterKind kind;
        uint32_t id;
    };
    std::size_t parameterCount() const { return parameters_.size(); }
    ParameterSummary parameterAt(std::size_t index) const;
    ParameterInfoBase* findInfo(uint32_t id) const;
    const std::vector<std::unique_ptr<ParameterInfoBase>>& parameters() const { return parameters_; }

    /** Runs deferred values into `state` once per pending update. Any thread, audio included.
        Parameters marked as moving others apply first, the rest after them. */
    void applyPendingParameters(ElementState* state);
    /** Marks parameters whose setters move other parameters (see ParameterInfoBase). */
    void setMovesOthers(std::initializer_list<uint32_t> ids);

    // The value a parameter will hold once the deferred writes now pending have applied:
    // its own pending value, or what a pending write of another parameter makes of it,
    // or else its current value. Host writes compare against this, so that a write in a
    // batch is not dropped as "unchanged" when an earlier write of the batch moves it.
    float pendingFloatParameter(uint32_t id) const;
    int pendingIntParameter(uint32_t id) const;
    bool pendingBoolParameter(uint32_t id) const;
    uint16_t updateCounter() const { return updateCounter_; }
    bool hasPendingUpdate() const { return hasPendingUpdate_.load() != 0; }

    /** Replaces both states; null keeps nothing. */
    void setStates(std::unique_ptr<ElementState> main, std::unique_ptr<ElementState> second);
    ElementState* mainState() const { return mainState_.get(); }
    ElementState* secondState() const { return secondState_.get(); }

    const std::vector<ElementParamEnvelope*>& envelopes() const { return envelopes_; }
    std::vector<ElementParamEnvelope*>& connectedEnvelopes() { return connectedEnvelopes_; }

    /** Sets sample rate and block size, prepares children, then prepareToRender(). */
    void prepare(double sampleRate, int blockSize);
    /** Resets both states (when prepared), then every child. */
    void reset();
    float sampleRate() const { return sampleRate_; }
    uint16_t maxBlockSize() const { return maxBlockSize_; }

    /** Reports an error with this element as its source. */
    void reportError(const String& message, const String& context);
    std::size_t queuedErrorCount() const { return extras_ ? extras_->errors.size() : 0; }

    /** Sum of ownMemorySize over this element and its descendants. */
    double memorySize() const;

    /** Writes every parameter with its value to standard output. */
    void DumpParameters() const;

    /** Copies every parameter's current value for readers on other threads. Call it on the
        thread that writes the state; reads never touch the state itself. */
    void publishParameters();
    void publishParameter(uint32_t id);

protected:
    /** Notifies listeners of a parameter change, synchronously and via the message thread. */
    void notifyParameterChanged(uint32_t id);

    /** What pending writes of other parameters make of parameter `id`; false when they
        leave it alone. Elements whose setters move other parameters override these. */
    virtual bool movedByPendingWrites(uint32_t, float&) const { return false; }
    virtual bool movedByPendingWrites(uint32_t, int&) const { return false; }
    virtual bool movedByPendingWrites(uint32_t, bool&) const { return false; }

private:
    template <typename T>
    ParameterInfo<T>* findTyped(uint32_t id) const;
    template <typename T>
    T readParameter(uint32_t id, bool* error) const;
    template <typename T>
    T readPendingParameter(uint32_t id) const;
    /** Writes the parameter's current value into `state` (the mirror). */
    template <typename T>
    void mirrorInto(ParameterInfoBase& record, ElementState* state) const;
    template <typename T>
    void setImmediate(uint32_t id, const T& value);
    template <typename T>
    void setMaybeDeferred(uint32_t id, const T& value, bool deferred);
    void afterChange(const ParameterInfoBase& info);
    void insertParameter(ParameterInfoBase* info);
    void addMapperEntry(const std::shared_ptr<ControlSignalMapper>& mapper, Element* element);
    Element* findElementInternal(const String& path);
    std::vector<std::shared_ptr<Element>>::iterator lowerBoundByName(const String& name);

    // the element's own parameters
    String displayTypeText() const { return typeName_.text(); }
    float memorySizeValue() const { return static_cast<float>(memorySize()); }
    std::atomic<ElementSignals*> signals_{nullptr}; // owned; read without a lock by notifiers
    Element* parent_ = nullptr;
    NameSymbol typeName_;
    NameSymbol name_;
    float sampleRate_ = 0.0f;
    std::atomic<uint8_t> hasPendingUpdate_{0};
    std::atomic<uint8_t> hasDeferredValues_{0};
    std::vector<std::unique_ptr<ParameterInfoBase>> parameters_;
    std::unique_ptr<ElementExtras> extras_;
    std::vector<ElementParamEnvelope*> envelopes_;
    std::vector<ElementParamEnvelope*> connectedEnvelopes_;
    std::vector<std::shared_ptr<Element>> children_;
    std::unique_ptr<ElementState> mainState_;
    std::unique_ptr<ElementState> secondState_;
    uint16_t maxBlockSize_ = 0;
    uint16_t updateCounter_ = 0;
    uint16_t serial_;
    std::atomic<uint8_t> flags_ {0}; // host threads mark modified while the message thread clears
};
} // namespace oxa
