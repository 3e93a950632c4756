#pragma once
// Typed signals whose slots may disconnect themselves or others while a firing is
// under way. A slot owned by a Trackable object is removed when that object dies.

#include <atomic>
#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <type_traits>

namespace oxa
{
/** Lock type of every signal: signals are not made thread-safe by a lock. */
struct dummy_mutex
{
    void lock() {}
    void unlock() {}
    bool try_lock() { return true; }
};

/** Identifies a connection for disconnection. */
struct SlotKey
{
    enum Kind : uint32_t
    {
        FunctionPointer = 0,
        MemberFunction = 1,
        Handle = 2
    };

    uint32_t kind = Handle;
    uint64_t words[3] = {0, 0, 0};

    static SlotKey forHandle(const void* handle)
    {
        SlotKey key;
        key.kind = Handle;
        key.words[0] = reinterpret_cast<uintptr_t>(handle);
        return key;
    }

    template <typename F>
    static SlotKey forFunction(F* function)
    {
        SlotKey key;
        key.kind = FunctionPointer;
        key.words[0] = reinterpret_cast<uintptr_t>(reinterpret_cast<void*>(function));
        return key;
    }

    template <typename Member>
    static SlotKey forMember(const void* object, Member member)
    {
        static_assert(sizeof(Member) <= 2 * sizeof(uint64_t), "member function pointer too large");
        SlotKey key;
        key.kind = MemberFunction;
        key.words[0] = reinterpret_cast<uintptr_t>(object);
        std::memcpy(&key.words[1], &member, sizeof(Member));
        return key;
    }

    bool operator==(const SlotKey& other) const
    {
        if (kind != other.kind)
            return false;
        if (kind == MemberFunction)
            return words[0] == other.words[0] && words[1] == other.words[1] && words[2] == other.words[2];
        return words[0] == other.words[0];
    }
    bool operator!=(const SlotKey& other) const { return !(*this == other); }
};

class SignalBodyBase : public std::enable_shared_from_this<SignalBodyBase>
{
public:
    virtual ~SignalBodyBase() = default;
    virtual void disconnect(const SlotKey& key) = 0;
};

class Trackable;

/** The Trackable side of connections: which bodies hold slots of its object. */
class TrackableTable
{
public:
    void remember(const std::weak_ptr<SignalBodyBase>& body, const SlotKey& key) { entries_.emplace(body, key); }
    void forget(const std::weak_ptr<SignalBodyBase>& body, const SlotKey& key);
    void disconnectAll();
    std::size_t size() const { return entries_.size(); }

private:
    std::multimap<std::weak_ptr<SignalBodyBase>, SlotKey, std::owner_less<std::weak_ptr<SignalBodyBase>>> entries_;
};

/** Base of objects whose member functions are connected: their slots go when they go. */
class Trackable
{
public:
    Trackable() = default;
    Trackable(const Trackable&) {}
    Trackable& operator=(const Trackable&) { return *this; }
    virtual ~Trackable() { table_.disconnectAll(); }

    TrackableTable& trackableTable() { return table_; }

private:
    TrackableTable table_;
};

/** One connection, shared by the body and anyone firing through it. */
template <typename Function>
struct SlotDefinition
{
    SlotKey key;
    Function function;
    TrackableTable* trackable = nullptr;
    std::atomic<uint8_t> isDisconnected{0};
};

/** The slots of one signal, in a ring read live so that slots appended while firing are reached. */
template <typename Function, typename Mutex = dummy_mutex>
class AsyncSlotsMap : public SignalBodyBase
{
public:
    using Definition = SlotDefinition<Function>;

    AsyncSlotsMap() { sentinel_.next = &sentinel_; }
    ~AsyncSlotsMap() override { clear(); }

    void connect(const SlotKey& key, Function function, TrackableTable* trackable)
    {
        for (Entry* e = sentinel_.next; e != &sentinel_; e = e->next)
        {
            if (e->definition->key == key && e->definition->isDisconnected.load())
            {
                // reconnected within the same firing: revive in place
                e->definition->isDisconnected.store(0);
                --pendingRemovals_;
                if (trackable != nullptr)
                {
                    e->definition->trackable = trackable;
                    trackable->remember(weak_from_this(), key);
                }
                return;
            }
        }
        auto* entry = new Entry;
        entry->definition = std::make_shared<Definition>();
        entry->definition->key = key;
        entry->definition->function = std::move(function);
        entry->definition->trackable = trackable;
        entry->next = &sentinel_;
        last_->next = entry;
        last_ = entry;
        ++count_;
        if (trackable != nullptr)
            trackable->remember(weak_from_this(), key);
    }

    void disconnect(const SlotKey& key) override
    {
        if (isFiring())
        {
            for (Entry* e = sentinel_.next; e != &sentinel_; e = e->next)
                if (e->definition->key == key)
                    markDisconnected(*e);
            return;
        }
        sweep();
        Entry* previous = &sentinel_;
        while (previous->next != &sentinel_)
        {
            Entry* e = previous->next;
            if (e->definition->key == key)
            {
                forgetTrackable(*e);
                unlink(previous, e);
            }
            else
                previous = e;
        }
    }

    /** Disconnects every slot; used when the owning signal dies. */
    void disconnectAll()
    {
        if (isFiring())
        {
            for (Entry* e = sentinel_.next; e != &sentinel_; e = e->next)
                markDisconnected(*e);
            return;
        }
        clear();
    }

    template <typename... Args>
    void fire(Args&&... args)
    {
        firingDepth_.fetch_add(1);
        for (Entry* e = sentinel_.next; e != &sentinel_; e = e->next)
        {
            std::shared_ptr<Definition> definition = e->definition;
            if (!definition->isDisconnected.load())
                definition->function(args...);
        }
        // a nested firing of the same body must not unlink entries the outer walk still uses
        if (firingDepth_.fetch_sub(1) == 1)
            sweep();
    }

    bool isFiring() const { return firingDepth_.load() != 0; }
    std::size_t slotCount() const { return count_; }
    uint32_t pendingRemovals() const { return pendingRemovals_; }

    /** Slots that would be called by a firing now. */
    std::size_t liveSlotCount() const { return count_ - pendingRemovals_; }

private:
    struct Entry
    {
        Entry* next = nullptr;
        std::shared_ptr<Definition> definition;
    };

    void markDisconnected(Entry& e)
    {
        if (e.definition->isDisconnected.load())
            return;
        e.definition->isDisconnected.store(1);
        ++pendingRemovals_;
        forgetTrackable(e);
    }

    void forgetTrackable(Entry& e)
    {
        if (e.definition->trackable != nullptr)
        {
            e.definition->trackable->forget(weak_from_this(), e.definition->key);
            e.definition->trackable = nullptr;
        }
    }

    void unlink(Entry* previous, Entry* e)
    {
        previous->next = e->next;
        if (last_ == e)
            last_ = previous;
        delete e;
        --count_;
    }

    void sweep()
    {
        if (pendingRemovals_ == 0)
            return;
        pendingRemovals_ = 0;
        Entry* previous = &sentinel_;
        while (previous->next != &sentinel_)
        {
            Entry* e = previous->next;
            if (e->definition->isDisconnected.load())
                unlink(previous, e);
            else
                previous = e;
        }
    }

    void clear()
    {
        while (sentinel_.next != &sentinel_)
        {
            Entry* e = sentinel_.next;
            if (!e->definition->isDisconnected.load())
                forgetTrackable(*e);
            unlink(&sentinel_, e);
        }
        pendingRemovals_ = 0;
    }

    Entry sentinel_;
    Entry* last_ = &sentinel_;
    std::size_t count_ = 0;
    std::atomic<int> firingDepth_{0};
    uint32_t pendingRemovals_ = 0;
};

/** Abstract root of all signals. */
class SignalBase
{
public:
    SignalBase() = default;
    SignalBase(const SignalBase&) = delete;
    SignalBase& operator=(const SignalBase&) = delete;
    virtual ~SignalBase() = default;
    virtual std::weak_ptr<SignalBodyBase> body() const = 0;
};

template <typename Mutex, typename... Args>
class SignalN : public SignalBase
{
public:
    using Function = std::function<void(Args...)>;
    using Body = AsyncSlotsMap<Function, Mutex>;

    ~SignalN() override
    {
        if (auto detached = std::move(body_))
            detached->disconnectAll();
    }

    std::weak_ptr<SignalBodyBase> body() const override { return body_; }
    const std::shared_ptr<Body>& sharedBody() const { return body_; }

    /** A plain function; disconnect with the same pointer. */
    void connect(void (*function)(Args...)) { makeBody().connect(SlotKey::forFunction(function), function, nullptr); }

    /** A member function; a Trackable object loses the slot when it dies. */
    template <typename T>
    void connect(T* object, void (T::*member)(Args...))
    {
        makeBody().connect(SlotKey::forMember(object, member),
                           [object, member](Args... args) { (object->*member)(std::forward<Args>(args)...); },
                           tableOf(object));
    }

    template <typename T>
    void connect(T* object, void (T::*member)(Args...) const)
    {
        makeBody().connect(SlotKey::forMember(object, member),
                           [object, member](Args... args) { (object->*member)(std::forward<Args>(args)...); },
                           tableOf(object));
    }

    /** Any callable owned by `owner`: disconnect(owner) removes it, and a Trackable owner removes it by dying. */
    template <typename T>
    void connect(T* owner, Function function)
    {
        makeBody().connect(SlotKey::forHandle(owner), std::move(function), tableOf(owner));
    }

    /** A callable with an explicit key. */
    void connect(const SlotKey& key, Function function) { makeBody().connect(key, std::move(function), nullptr); }

    void disconnect(void (*function)(Args...)) { disconnect(SlotKey::forFunction(function)); }

    template <typename T>
    void disconnect(T* object, void (T::*member)(Args...))
    {
        disconnect(SlotKey::forMember(object, member));
    }

    template <typename T>
    void disconnect(T* object, void (T::*member)(Args...) const)
    {
        disconnect(SlotKey::forMember(object, member));
    }

    template <typename T>
    void disconnect(T* owner)
    {
        disconnect(SlotKey::forHandle(owner));
    }

    void disconnect(const SlotKey& key)
    {
        if (body_)
            body_->disconnect(key);
    }

    void operator()(Args... args) const
    {
        if (!body_)
            return;
        std::shared_ptr<Body> keep = body_;
        keep->fire(args...);
    }

    /** Makes the body now: threads that fire or post later then only ever read it. */
    void prepareBody() { makeBody(); }

    bool hasSlots() const { return body_ && body_->liveSlotCount() > 0; }
    std::size_t slotCount() const { return body_ ? body_->liveSlotCount() : 0; }

protected:
    Body& makeBody()
    {
        if (!body_)
            body_ = std::make_shared<Body>();
        return *body_;
    }

private:
    template <typename T>
    static TrackableTable* tableOf(T* object)
    {
        if constexpr (std::is_base_of_v<Trackable, T>)
            return object != nullptr ? &static_cast<Trackable*>(object)->trackableTable() : nullptr;
        else
            return nullptr;
    }

    std::shared_ptr<Body> body_;
};

/** The usual form: a signal without a lock. */
template <typename... Args>
using Signal = SignalN<dummy_mutex, Args...>;

inline void TrackableTable::forget(const std::weak_ptr<SignalBodyBase>& body, const SlotKey& key)
{
    auto range = entries_.equal_range(body);
    for (auto it = range.first; it != range.second; ++it)
    {
        if (it->second == key)
        {
            entries_.erase(it);
            return;
        }
    }
}

inline void TrackableTable::disconnectAll()
{
    // Taken out first: each disconnect calls back into forget().
    auto entries = std::move(entries_);
    entries_.clear();
    for (auto& [weakBody, key] : entries)
        if (auto body = weakBody.lock())
            body->disconnect(key);
}
} // namespace oxa
