#pragma once

#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

#include "system/RefCntObject.h"

namespace qve {

/// Intrusive shared pointer to a RefCntObject. Copying counts, moving does not.
template <class T>
class RefCntPtr {
public:
    using element_type = T;

    constexpr RefCntPtr() noexcept = default;
    constexpr RefCntPtr(std::nullptr_t) noexcept {}
    /// Shares `object`; it may be null. Implicit, as an object carries its own count.
    RefCntPtr(T* object) noexcept : m_object(object) {
        if (m_object) m_object->AddRef();
    }
    RefCntPtr(const RefCntPtr& other) noexcept : RefCntPtr(other.m_object) {}
    RefCntPtr(RefCntPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    RefCntPtr(const RefCntPtr<U>& other) noexcept : RefCntPtr(other.get()) {}
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    RefCntPtr(RefCntPtr<U>&& other) noexcept : m_object(other.detach()) {}
    ~RefCntPtr() {
        if (m_object) m_object->Release();
    }
    RefCntPtr& operator=(RefCntPtr other) noexcept {
        swap(other);
        return *this;
    }

    void swap(RefCntPtr& other) noexcept { std::swap(m_object, other.m_object); }
    void reset() noexcept { RefCntPtr().swap(*this); }
    /// Gives up the reference without releasing it.
    [[nodiscard]] T* detach() noexcept { return std::exchange(m_object, nullptr); }

    T* get() const noexcept { return m_object; }
    T* operator->() const noexcept { return m_object; }
    T& operator*() const noexcept { return *m_object; }
    explicit operator bool() const noexcept { return m_object != nullptr; }

private:
    T* m_object = nullptr;
};

template <class T, class U>
bool operator==(const RefCntPtr<T>& a, const RefCntPtr<U>& b) noexcept {
    return a.get() == b.get();
}
template <class T>
bool operator==(const RefCntPtr<T>& a, std::nullptr_t) noexcept {
    return a.get() == nullptr;
}
template <class T>
bool operator<(const RefCntPtr<T>& a, const RefCntPtr<T>& b) noexcept {
    return std::less<T*>()(a.get(), b.get());
}

/// Makes a shared object: `MakeRef<Scan>(table, names)`.
template <class T, class... Args>
RefCntPtr<T> MakeRef(Args&&... args) {
    return RefCntPtr<T>(new T(std::forward<Args>(args)...));
}
template <class T, class U>
RefCntPtr<T> StaticPtrCast(const RefCntPtr<U>& p) noexcept {
    return RefCntPtr<T>(static_cast<T*>(p.get()));
}
/// Null when the object is not a T.
template <class T, class U>
RefCntPtr<T> DynamicPtrCast(const RefCntPtr<U>& p) noexcept {
    return RefCntPtr<T>(dynamic_cast<T*>(p.get()));
}

}  // namespace qve

template <class T>
struct std::hash<qve::RefCntPtr<T>> {
    std::size_t operator()(const qve::RefCntPtr<T>& p) const noexcept { return std::hash<T*>()(p.get()); }
};
