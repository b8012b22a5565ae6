#ifndef PLATFORM_ZEBSHAREDPOINTER_H
#define PLATFORM_ZEBSHAREDPOINTER_H

#include <atomic>
#include <cstddef>
#include <type_traits>
#include <utility>

/// A field that points at an object which it does not own, and which several threads read while
/// another one sets it. To its users it is a pointer; what was written before it was set is seen
/// by those who read it. Where the language insists on a pointer, as dynamic_cast does, get() is
/// one.
template <typename T>
class ZEBSharedPointer {
 public:
  constexpr ZEBSharedPointer(std::nullptr_t = nullptr) noexcept {}  // NOLINT: implicit
  constexpr explicit ZEBSharedPointer(T* pointer) noexcept : m_pointer(pointer) {}
  ZEBSharedPointer(const ZEBSharedPointer& other) noexcept : m_pointer(other.get()) {}
  ZEBSharedPointer& operator=(const ZEBSharedPointer& other) noexcept {
    return *this = other.get();
  }
  ZEBSharedPointer& operator=(T* pointer) noexcept {
    store(pointer);
    return *this;
  }
  ~ZEBSharedPointer() = default;

  T* get() const noexcept { return load(); }
  operator T*() const noexcept { return get(); }  // NOLINT: implicit
  /// For casts to a class derived from T, and for those that take const away.
  template <
      typename Derived,
      typename = std::enable_if_t<!std::is_same_v<Derived, T> && std::is_base_of_v<T, Derived>>,
      typename = decltype(static_cast<const Derived*>(std::declval<T*>()))>
  explicit operator Derived*() const noexcept {
    return const_cast<Derived*>(static_cast<const Derived*>(get()));
  }
  T* operator->() const noexcept { return get(); }
  T& operator*() const noexcept { return *get(); }

  T* load(std::memory_order order = std::memory_order_acquire) const noexcept {
    return m_pointer.load(order);
  }
  void store(T* pointer, std::memory_order order = std::memory_order_release) noexcept {
    m_pointer.store(pointer, order);
  }

 private:
  std::atomic<T*> m_pointer{nullptr};
};

#endif
