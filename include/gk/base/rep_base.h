#pragma once

#include <atomic>

#include <gk/gk_export.h>

/// Atomically adds one to count and returns the new value.
GK_EXPORT long gwInterlockedIncrement(std::atomic<long>& count);
/// Atomically subtracts one from count and returns the new value.
GK_EXPORT long gwInterlockedDecrement(std::atomic<long>& count);

/// Base of every object held by gkPtrHandle / gkPtrHandle_const: an intrusive reference count.
/// The count belongs to the object, not to its value: copying or assigning an object leaves the
/// count of the target as it was. Counts change atomically, so handles to one object may be
/// copied and released on several threads.
class GK_EXPORT gkRepBase {
 public:
  gkRepBase() noexcept = default;
  gkRepBase(const gkRepBase&) noexcept {}
  gkRepBase& operator=(const gkRepBase&) noexcept { return *this; }
  virtual ~gkRepBase();

  /// How many handles hold this object now.
  long refCount() const noexcept { return count_.load(std::memory_order_acquire); }

  /// Handle protocol: one more holder.
  void addReference() const noexcept;
  /// Handle protocol: one holder fewer; deletes the object when none is left.
  void releaseReference() const noexcept;

 private:
  mutable std::atomic<long> count_{0};
};
