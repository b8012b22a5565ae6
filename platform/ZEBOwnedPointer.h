#ifndef PLATFORM_ZEBOWNEDPOINTER_H
#define PLATFORM_ZEBOWNEDPOINTER_H

#include <memory>
#include <type_traits>
#include <utility>

/// A field that owns the object it points at, and that derived classes use as a plain pointer:
/// setting it to a pointer deletes nothing, so that the old object can be deleted before or kept.
/// What it points at in the end is deleted with it. reset() and a std::unique_ptr put in its place
/// delete what was there.
template <typename T>
class ZEBOwnedPointer : public std::unique_ptr<T> {
 public:
  using std::unique_ptr<T>::unique_ptr;
  ZEBOwnedPointer() = default;
  ZEBOwnedPointer(ZEBOwnedPointer&&) = default;
  ZEBOwnedPointer& operator=(ZEBOwnedPointer&&) = default;
  ZEBOwnedPointer(std::unique_ptr<T>&& owner) noexcept  // NOLINT: implicit
      : std::unique_ptr<T>(std::move(owner)) {}
  ZEBOwnedPointer& operator=(T* object) noexcept {
    static_cast<void>(this->release());
    this->reset(object);
    return *this;
  }
  template <typename U>
  ZEBOwnedPointer& operator=(std::unique_ptr<U>&& owner) noexcept {
    std::unique_ptr<T>::operator=(std::move(owner));
    return *this;
  }

  operator T*() const noexcept { return this->get(); }  // NOLINT: implicit
  /// For casts to a class derived from T.
  template <
      typename Derived,
      typename = std::enable_if_t<!std::is_same_v<Derived, T> && std::is_base_of_v<T, Derived>>,
      typename = decltype(static_cast<Derived*>(std::declval<T*>()))>
  explicit operator Derived*() const noexcept {
    return static_cast<Derived*>(this->get());
  }
};

#endif
