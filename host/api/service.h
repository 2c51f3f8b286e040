// Service objects: everything that the host and a component hand each other by reference.
//
// An interface is an abstract class whose virtual operations stand in a fixed order, the three operations of
// ServiceBase first. It names its class GUID; an interface that extends another one also names that as
// `Inherits`, and its objects answer for both:
//
//     class HostConsole : public ServiceBase {
//     public:
//         static constexpr Guid class_guid = guid("{90DF5270-65BB-4DBA-BAF5-86BE9E59DC20}");
//         virtual void print(const char* text, std::size_t length) = 0;
//     };
//     class TerminalConsole final : public HeapService<HostConsole> { ... };
//     Ref<HostConsole> console = make_service<TerminalConsole>();
//
// A pointer to a service object that is passed to an operation is borrowed for the call: who keeps it takes a
// reference (Ref). A pointer that an operation returns carries one reference for the caller (Ref::adopt).
// Counts may be changed from any thread.
#pragma once

#include "host/api/guid.h"

#include <atomic>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace vantaro {

class ServiceBase {
public:
    /// Drops one reference. Returns how many are left; at 0 the object has deleted itself.
    virtual std::uint32_t release() noexcept = 0;
    /// Adds one reference. Returns how many there are now.
    virtual std::uint32_t add_ref() noexcept = 0;
    /// When the object is of class `wanted`: stores it in `out` with one more reference, releases what
    /// `out` held, and returns true. Otherwise returns false and leaves `out` alone.
    /// The pointer stored is the object as the interface of that class: static_cast to it.
    virtual bool query(ServiceBase*& out, const Guid& wanted) = 0;

protected:
    ~ServiceBase() = default;
};

/// Holds one reference to a service object, or nothing.
template <class T>
class Ref {
public:
    Ref() noexcept = default;
    Ref(std::nullptr_t) noexcept {}
    /// Shares `object`: takes a reference of its own.
    explicit Ref(T* object) noexcept : object_(object) {
        if (object_)
            object_->add_ref();
    }
    /// Takes over the reference that the caller holds.
    static Ref adopt(T* object) noexcept {
        Ref result;
        result.object_ = object;
        return result;
    }
    Ref(const Ref& other) noexcept : Ref(other.object_) {}
    Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    template <class U>
    requires std::is_convertible_v<U*, T*> Ref(const Ref<U>& other)
    noexcept : Ref(other.get()) {}
    template <class U>
    requires std::is_convertible_v<U*, T*> Ref(Ref<U>&& other)
    noexcept : object_(other.detach()) {}
    ~Ref() {
        if (object_)
            object_->release();
    }
    Ref& operator=(Ref other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    T* get() const noexcept { return object_; }
    T* operator->() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }
    /// Gives the reference away: the caller releases it.
    [[nodiscard]] T* detach() noexcept { return std::exchange(object_, nullptr); }

    friend bool operator==(const Ref& a, const Ref& b) noexcept { return a.object_ == b.object_; }

private:
    T* object_ = nullptr;
};

/// Whether objects of interface I answer for the class `wanted`.
template <class I>
constexpr bool answers_class(const Guid& wanted) {
    if (wanted == I::class_guid)
        return true;
    if constexpr (requires { typename I::Inherits; }) {
        if constexpr (!std::is_same_v<I, typename I::Inherits>)
            return answers_class<typename I::Inherits>(wanted);
    }
    return false;
}

/// Puts `object` into `out` as `query` promises.
inline void store_queried(ServiceBase*& out, ServiceBase* object) {
    object->add_ref();
    if (out)
        out->release();
    out = object;
}

/// Asks any service object for the interface I; empty when it is not of that class.
template <class I>
Ref<I> query_interface(ServiceBase& object) {
    ServiceBase* out = nullptr;
    return object.query(out, I::class_guid) ? Ref<I>::adopt(static_cast<I*>(out)) : Ref<I>();
}

/// The three operations of an object on the heap: counted, deleted by the last release. It starts with one
/// reference, which make_service hands to the caller.
template <class I>
class HeapService : public I {
public:
    HeapService(const HeapService&) = delete;
    HeapService& operator=(const HeapService&) = delete;

    std::uint32_t release() noexcept override {
        const std::uint32_t left = references_.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0)
            delete this;
        return left;
    }
    std::uint32_t add_ref() noexcept override {
        return references_.fetch_add(1, std::memory_order_relaxed) + 1;
    }
    bool query(ServiceBase*& out, const Guid& wanted) override {
        if (!answers_class<I>(wanted))
            return false;
        store_queried(out, this);
        return true;
    }

protected:
    HeapService() = default;
    virtual ~HeapService() = default;

private:
    std::atomic<std::uint32_t> references_{1};
};

/// The three operations of an object that lives as long as its library: nothing is counted, both count
/// operations return 1.
template <class I>
class StaticService : public I {
public:
    StaticService(const StaticService&) = delete;
    StaticService& operator=(const StaticService&) = delete;

    std::uint32_t release() noexcept override { return 1; }
    std::uint32_t add_ref() noexcept override { return 1; }
    bool query(ServiceBase*& out, const Guid& wanted) override {
        if (!answers_class<I>(wanted))
            return false;
        store_queried(out, this);
        return true;
    }

protected:
    StaticService() = default;
    ~StaticService() = default;
};

template <class T, class... Arguments>
Ref<T> make_service(Arguments&&... arguments) {
    return Ref<T>::adopt(new T(std::forward<Arguments>(arguments)...));
}

} // namespace vantaro
