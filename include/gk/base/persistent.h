#pragma once

#include <gk/gk_export.h>

class gkArchive;

/// Base of every persistent class: shapes, transforms and exceptions.
///
/// It counts changes: every setter and every cache invalidation calls mutating(), so a holder
/// can tell whether an object changed since it last looked. The count belongs to the object,
/// not its value: copying or assigning leaves the target's count as it was.
class GK_EXPORT gkPersistent {
 public:
  virtual ~gkPersistent();

  /// Marks the object changed. Const, because filling a cache from a const query also counts
  /// as a change for some shapes; the count is bookkeeping, not part of the object's value.
  void mutating() const noexcept { ++changeCount_; }
  /// How many times mutating() was called on this object since it was built.
  unsigned long changeCount() const noexcept { return changeCount_; }

 protected:
  gkPersistent() noexcept = default;
  gkPersistent(const gkPersistent&) noexcept {}
  gkPersistent& operator=(const gkPersistent&) noexcept { return *this; }

  /// Stores or loads this object's layers through ar. The persistent base layer itself carries
  /// no field; each persistent class overrides this with its own versioned layer.
  virtual void dispatchSerialize(gkArchive& ar);

 private:
  mutable unsigned long changeCount_ = 0;
};
