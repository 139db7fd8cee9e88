#pragma once

#include <cstddef>
#include <type_traits>

#include <gk/base/rep_base.h>

namespace gk::detail {

/// The one counted-handle mechanism behind gkPtrHandle and gkPtrHandle_const. T derives from
/// gkRepBase (possibly virtually) and may be const-qualified.
template <typename T>
class CountedHandle {
 public:
  using element_type = T;

  CountedHandle() noexcept = default;
  CountedHandle(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor)
  /// Takes a share of p, normally a freshly allocated object.
  explicit CountedHandle(T* p) noexcept : p_(p) { acquire(p_); }
  CountedHandle(const CountedHandle& o) noexcept : p_(o.p_) { acquire(p_); }
  CountedHandle(CountedHandle&& o) noexcept : p_(o.p_) { o.p_ = nullptr; }
  template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
  CountedHandle(const CountedHandle<U>& o) noexcept  // NOLINT(google-explicit-constructor)
      : p_(o.get()) {
    acquire(p_);
  }
  ~CountedHandle() { release(p_); }

  /// The new object is shared before the old one is released, so assigning a handle from
  /// something the old object owns (or from itself) is safe.
  CountedHandle& operator=(const CountedHandle& o) noexcept {
    T* old = p_;
    p_ = o.p_;
    acquire(p_);
    release(old);
    return *this;
  }
  CountedHandle& operator=(CountedHandle&& o) noexcept {
    if (this != &o) {
      T* old = p_;
      p_ = o.p_;
      o.p_ = nullptr;
      release(old);
    }
    return *this;
  }

  T* get() const noexcept { return p_; }
  T& operator*() const noexcept { return *p_; }
  T* operator->() const noexcept { return p_; }
  explicit operator bool() const noexcept { return p_ != nullptr; }

  /// Releases the object (if any) and leaves the handle empty.
  void reset() noexcept {
    T* old = p_;
    p_ = nullptr;
    release(old);
  }

 private:
  static void acquire(T* p) noexcept {
    if (p != nullptr) {
      static_cast<const gkRepBase*>(p)->addReference();
    }
  }
  static void release(T* p) noexcept {
    if (p != nullptr) {
      static_cast<const gkRepBase*>(p)->releaseReference();
    }
  }

  T* p_ = nullptr;
};

/// Handles compare by the identity of their targets.
template <typename T, typename U>
bool operator==(const CountedHandle<T>& a, const CountedHandle<U>& b) noexcept {
  return a.get() == b.get();
}
template <typename T, typename U>
bool operator!=(const CountedHandle<T>& a, const CountedHandle<U>& b) noexcept {
  return a.get() != b.get();
}

}  // namespace gk::detail

/// A counted, shared reference to a mutable T. An empty handle is null.
template <typename T>
class gkPtrHandle : public gk::detail::CountedHandle<T> {
 public:
  using gk::detail::CountedHandle<T>::CountedHandle;
};

/// A counted, shared reference to a const T. Any gkPtrHandle<U> with U* convertible to T*
/// converts to it.
template <typename T>
class gkPtrHandle_const : public gk::detail::CountedHandle<const T> {
 public:
  using gk::detail::CountedHandle<const T>::CountedHandle;
};
