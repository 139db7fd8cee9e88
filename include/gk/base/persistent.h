#pragma once

#include <cstddef>

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

  /// True when the layer of object spanning extent bytes was already stored or loaded in the
  /// current archive pass (the innermost live gkArchive of this thread). A class's
  /// dispatchSerialize asks this first, so a layer reached twice (through a shared base) is
  /// handled once. False when no archive is live.
  static bool haveVisited(const void* object, std::size_t extent);
  /// Marks the layer of object spanning extent bytes as handled in the current pass.
  static void setVisited(const void* object, std::size_t extent);
  /// Stores or loads a polymorphic pointer through ar (null, a new object, or a back-reference).
  /// A loaded object stays alive at least as long as ar.
  static void serializePointer(gkArchive& ar, gkPersistent*& pointer);

 protected:
  friend class gkArchive;

  gkPersistent() noexcept = default;
  gkPersistent(const gkPersistent&) noexcept {}
  gkPersistent& operator=(const gkPersistent&) noexcept { return *this; }

  /// Stores or loads this object's layers through ar. The persistent base layer is one version
  /// byte, 0, and no field; each persistent class overrides this with its own versioned layer
  /// (which begins with its base's).
  virtual void dispatchSerialize(gkArchive& ar);

 private:
  mutable unsigned long changeCount_ = 0;
};
