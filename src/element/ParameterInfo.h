#pragma once
// The per-element record of one parameter: the registered description, the getter
// and setter (an object and two of its member functions), and a deferred value that
// any thread may leave for the next render to apply.
//
// Getter and setter shapes, with up to three 16-bit index arguments I...:
//   per state:        R get(const S& state, I...) const;   void set(S& state, I..., V value);
//   global or output: R get(I...) const;                   void set(I..., V value);
// where S derives from ElementState. The setter may be nullptr (output parameters).
// Example:
//   new ParameterInfo<float>(ids.mix, this, &Fx::mix, &Fx::setMix);          // (State&, float)
//   new ParameterInfo<float>(ids.gain, this, &Fx::gain, &Fx::setGain, 1);    // (State&, int deck, float)

#include "element/ElementState.h"
#include "element/NonCopyable.h"
#include "element/ParameterRegistry.h"

#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <tuple>
#include <type_traits>
#include <utility>

namespace oxa
{
class Element;
class ElementParamEnvelope;

class ParameterInfoBase : public NonCopyable
{
public:
    virtual ~ParameterInfoBase() = default;
    virtual ElementParamEnvelope* envelope() const = 0;
    virtual const ParameterDescriptionBase* description() const = 0;
    virtual ParameterKind kind() const = 0;
    virtual bool hasDeferredValue() const = 0;
    /** Writes the deferred value into `state`; the value stays pending for readers until
        finishDeferredApply, so that they never fall back to the value before the write. */
    virtual void applyDeferredValue(Element& element, ElementState* state) = 0;
    /** Once the applied value is published: no longer pending, unless a newer write came. */
    virtual void finishDeferredApply() = 0;
    virtual uint32_t id() const = 0;
    /** Takes a copy of the current value from `state` for readers on other threads. */
    virtual void publish(const ElementState* state) = 0;

    const ParameterFlags& flags() const { return description()->flags; }
    const String& name() const { return description()->name; }

    /** A parameter whose setter moves other parameters. A batch of deferred writes applies
        these first, so that a write of a moved parameter in the same batch is not undone. */
    bool movesOthers() const { return movesOthers_; }
    void setMovesOthers(bool moves) { movesOthers_ = moves; }

private:
    bool movesOthers_ = false;
};

namespace detail
{
template <typename F>
struct MemberFunctionTraits;

template <typename R, typename C, typename... A>
struct MemberFunctionTraits<R (C::*)(A...)>
{
    using Return = R;
    using Arguments = std::tuple<A...>;
    static constexpr std::size_t arity = sizeof...(A);
};

template <typename R, typename C, typename... A>
struct MemberFunctionTraits<R (C::*)(A...) const> : MemberFunctionTraits<R (C::*)(A...)>
{
};

template <typename Tuple, bool NonEmpty = (std::tuple_size_v<Tuple> > 0)>
struct FirstIsState : std::false_type
{
};

template <typename Tuple>
struct FirstIsState<Tuple, true>
    : std::bool_constant<std::is_reference_v<std::tuple_element_t<0, Tuple>>
                         && std::is_base_of_v<ElementState, std::decay_t<std::tuple_element_t<0, Tuple>>>>
{
};

/** The deferred value: an atomic exchange slot for numbers, a plain slot for texts. */
template <typename T>
struct DeferredSlot
{
    void store(const T& v) { value.store(v); }
    T load() const { return value.load(); }
    std::atomic<T> value{};
};

template <>
struct DeferredSlot<String>
{
    void store(const String& v) { value = v; }
    String load() const { return value; }
    String value;
};
} // namespace detail

template <typename T>
class ParameterInfo : public ParameterInfoBase
{
public:
    using Description = ParameterDescription<T>;

    template <typename Object, typename Getter, typename Setter, typename... Indices>
    ParameterInfo(const Description* description, Object* object, Getter getter, Setter setter,
                  Indices... indices)
        : description_(description), object_(object), indexCount_(static_cast<uint8_t>(sizeof...(Indices)))
    {
        static_assert(sizeof...(Indices) <= 3, "at most three index arguments");
        static_assert(sizeof(Getter) <= sizeof(getterBytes_), "member function pointer too large");
        const uint16_t list[] = {static_cast<uint16_t>(indices)..., 0};
        for (std::size_t i = 0; i < sizeof...(Indices); ++i)
            indices_[i] = list[i];
        std::memcpy(getterBytes_, &getter, sizeof(Getter));
        callGetter_ = &invokeGetter<Object, Getter, sizeof...(Indices)>;
        if constexpr (!std::is_same_v<Setter, std::nullptr_t>)
        {
            static_assert(sizeof(Setter) <= sizeof(setterBytes_), "member function pointer too large");
            std::memcpy(setterBytes_, &setter, sizeof(Setter));
            callSetter_ = &invokeSetter<Object, Setter, sizeof...(Indices)>;
        }
    }

    /** The same, with the description looked up by its registered id. */
    template <typename Object, typename Getter, typename Setter, typename... Indices>
    ParameterInfo(uint32_t id, Object* object, Getter getter, Setter setter, Indices... indices)
        : ParameterInfo(lookupDescription(id), object, getter, setter, indices...)
    {
    }

    ElementParamEnvelope* envelope() const override { return envelope_; }
    const ParameterDescriptionBase* description() const override { return description_; }
    const Description& typedDescription() const { return *description_; }
    ParameterKind kind() const override { return ParameterKindOf<T>::value; }
    uint32_t id() const override { return description_->id; }

    bool hasDeferredValue() const override { return pending_.load() != 0; }

    void publish(const ElementState* state) override
    {
        published_.store(get(description_->flags.isGlobal() ? nullptr : state));
        hasPublished_.store(1);
    }
    bool hasPublished() const { return hasPublished_.load() != 0; }
    T publishedValue() const { return published_.load(); }
    void applyDeferredValue(Element& element, ElementState* state) override
    {
        applying_ = pending_.load();
        set(state, deferred_.load());
    }
    void finishDeferredApply() override
    {
        if (applying_ == 0)
            return;
        uint64_t applied = applying_;
        pending_.compare_exchange_strong(applied, 0);
        applying_ = 0;
    }

    /** Reads through the getter; `state` is ignored for global and output parameters. */
    T get(const ElementState* state) const
    {
        if (callGetter_ == nullptr)
            return description_->defaultValue;
        const T computed = callGetter_(*this, const_cast<ElementState*>(state));
        if constexpr (std::is_same_v<T, float>)
            return writtenValueFor(computed);
        else
            return computed;
    }

    /** Writes through the setter; `state` is ignored for global parameters. */
    void set(ElementState* state, const T& value) const
    {
        if (callSetter_ == nullptr)
            return;
        callSetter_(*this, state, value);
        if constexpr (std::is_same_v<T, float>)
            if (callGetter_ != nullptr)
                rememberWrite(value, callGetter_(*this, state));
    }

    bool hasSetter() const { return callSetter_ != nullptr; }

    void defer(const T& value)
    {
        deferred_.store(value);
        pending_.store(writes_.fetch_add(1) + 1);
    }
    T deferredValue() const { return deferred_.load(); }
    bool isPending() const { return pending_.load() != 0; }
    void clearPending() { pending_.store(0); }

    void setEnvelope(ElementParamEnvelope* envelope) { envelope_ = envelope; }
    uint16_t indexArgument(int i) const { return indices_[i]; }
    int indexCount() const { return indexCount_; }

private:
    static const Description* lookupDescription(uint32_t id);

    template <typename Object, typename Getter, std::size_t N>
    static T invokeGetter(const ParameterInfo& info, ElementState* state)
    {
        using Traits = detail::MemberFunctionTraits<Getter>;
        constexpr bool takesState = detail::FirstIsState<typename Traits::Arguments>::value;
        static_assert(Traits::arity == N + (takesState ? 1 : 0), "getter arguments: [state,] indices");
        Getter getter;
        std::memcpy(&getter, info.getterBytes_, sizeof(Getter));
        auto* object = static_cast<Object*>(info.object_);
        if constexpr (takesState)
        {
            using StateRef = std::tuple_element_t<0, typename Traits::Arguments>;
            using StateType = std::remove_reference_t<StateRef>;
            if (state == nullptr)
                return info.description_->defaultValue;
            return static_cast<T>(callWithIndices(info, std::make_index_sequence<N>(), [&](auto... i) {
                return (object->*getter)(static_cast<StateType&>(*state), i...);
            }));
        }
        else
            return static_cast<T>(callWithIndices(info, std::make_index_sequence<N>(),
                                                  [&](auto... i) { return (object->*getter)(i...); }));
    }

    template <typename Object, typename Setter, std::size_t N>
    static void invokeSetter(const ParameterInfo& info, ElementState* state, const T& value)
    {
        using Traits = detail::MemberFunctionTraits<Setter>;
        constexpr bool takesState = detail::FirstIsState<typename Traits::Arguments>::value;
        static_assert(Traits::arity == N + 1 + (takesState ? 1 : 0), "setter arguments: [state,] indices, value");
        Setter setter;
        std::memcpy(&setter, info.setterBytes_, sizeof(Setter));
        auto* object = static_cast<Object*>(info.object_);
        if constexpr (takesState)
        {
            using StateType = std::remove_reference_t<std::tuple_element_t<0, typename Traits::Arguments>>;
            if (state == nullptr)
                return;
            callWithIndices(info, std::make_index_sequence<N>(), [&](auto... i) {
                (object->*setter)(static_cast<StateType&>(*state), i..., value);
                return 0;
            });
        }
        else
            callWithIndices(info, std::make_index_sequence<N>(), [&](auto... i) {
                (object->*setter)(i..., value);
                return 0;
            });
    }

    // Floats: a getter computes the value back from the state, and single-precision
    // conversions may land it an ulp or two from what was written. While the state still
    // holds what the last write made of it, the written value itself is read back, so
    // that saving and reloading the state reproduces it exactly.
    static uint64_t packWrite(float written, float readBack)
    {
        uint32_t a = 0, b = 0;
        std::memcpy(&a, &written, 4);
        std::memcpy(&b, &readBack, 4);
        return (static_cast<uint64_t>(a) << 32) | b;
    }

    void rememberWrite(float written, float readBack) const
    {
        const bool inRange = !description_->hasRange()
                             || (written >= description_->min && written <= description_->max);
        const bool close = std::fabs(readBack - written) <= 1.0e-5f * std::fmax(1.0f, std::fabs(written));
        if (std::isfinite(written) && std::isfinite(readBack) && inRange && close)
            lastWrite_.store(packWrite(written, readBack));
        else
            lastWrite_.store(noWrite());
    }

    float writtenValueFor(float computed) const
    {
        const uint64_t packed = lastWrite_.load();
        if (packed == noWrite())
            return computed;
        const auto readBack = static_cast<uint32_t>(packed);
        uint32_t now = 0;
        std::memcpy(&now, &computed, 4);
        if (now != readBack)
            return computed; // something else has moved the state since
        const auto writtenBits = static_cast<uint32_t>(packed >> 32);
        float written = 0.0f;
        std::memcpy(&written, &writtenBits, 4);
        return written;
    }

    static constexpr uint64_t noWrite() { return ~uint64_t {0}; }

    template <std::size_t... I, typename Call>
    static decltype(auto) callWithIndices(const ParameterInfo& info, std::index_sequence<I...>, Call&& call)
    {
        return call(static_cast<int>(info.indices_[I])...);
    }

    const Description* description_;
    ElementParamEnvelope* envelope_ = nullptr;
    void* object_;
    alignas(8) unsigned char getterBytes_[16] = {};
    alignas(8) unsigned char setterBytes_[16] = {};
    T (*callGetter_)(const ParameterInfo&, ElementState*) = nullptr;
    void (*callSetter_)(const ParameterInfo&, ElementState*, const T&) = nullptr;
    detail::DeferredSlot<T> deferred_;
    // The value as last written, copied by the writing thread: other threads read this,
    // never the render state that the audio thread is changing.
    detail::DeferredSlot<T> published_;
    std::atomic<uint8_t> hasPublished_ { 0 };
    // The number of the newest deferred write still to apply, 0 when none: a write that
    // arrives while an older one is being applied keeps the parameter pending.
    std::atomic<uint64_t> pending_{0};
    std::atomic<uint64_t> writes_{0};
    uint64_t applying_ = 0; // audio thread only
    mutable std::atomic<uint64_t> lastWrite_ {noWrite()}; // floats: (written, read back)
    uint16_t indices_[3] = {0, 0, 0};
    uint8_t indexCount_;
};

template <>
inline const ParameterDescription<float>* ParameterInfo<float>::lookupDescription(uint32_t id)
{
    return ParameterRegistry::instance().floatDescription(id);
}
template <>
inline const ParameterDescription<int>* ParameterInfo<int>::lookupDescription(uint32_t id)
{
    return ParameterRegistry::instance().intDescription(id);
}
template <>
inline const ParameterDescription<bool>* ParameterInfo<bool>::lookupDescription(uint32_t id)
{
    return ParameterRegistry::instance().boolDescription(id);
}
template <>
inline const ParameterDescription<String>* ParameterInfo<String>::lookupDescription(uint32_t id)
{
    return ParameterRegistry::instance().stringDescription(id);
}
} // namespace oxa
