#pragma once

#include <gk/gk_export.h>

/// A per-thread pointer slot: each thread sees its own value, and an unset slot reads as null.
/// When a thread ends, the destroy function (if any) is called on its non-null value.
class GK_EXPORT gk_ThreadLocal {
 public:
  using Destroy = void (*)(void*);

  explicit gk_ThreadLocal(Destroy destroy = nullptr);
  gk_ThreadLocal(const gk_ThreadLocal&) = delete;
  gk_ThreadLocal& operator=(const gk_ThreadLocal&) = delete;
  ~gk_ThreadLocal();

  /// The calling thread's value; null when it has not set one.
  void* get() const;
  /// Replaces the calling thread's value. The old value is not destroyed: the caller owns it.
  void set(void* value);

 private:
  unsigned long long id_;
  Destroy destroy_;
};
