#pragma once

#include <cstddef>
#include <iterator>
#include <map>
#include <memory>

#include <gk/gk_export.h>

namespace gk::detail {

/// The position, in key order, of the entry a full bounded cache of `size` entries gives up:
/// gwIFloor of the next value of the calling thread's generator over [0, size). The generator is
/// one per thread, created on first use with seed 1 and shared by every cache the thread uses,
/// so eviction is deterministic for a given sequence of queries on one thread.
GK_EXPORT std::size_t boundedCacheVictim(std::size_t size);

/// A keyed cache of query results with a caller-supplied bound: the one mechanism behind every
/// keyed cache of the shapes.
///
/// Storage is an ordered map behind an owning pointer that stays null until the first insertion,
/// so an unused cache costs one pointer. Copies are deep: a copied shape gets its own map.
///
/// The bound rule is kept exactly as the shapes have always had it: the fullness test is made
/// before inserting and asks whether the size exceeds the bound, so a cache holds up to
/// bound + 1 entries; beyond that a new entry takes the place of a randomly chosen old one and
/// the size stays the same. A bound lowered later does not trim the entries already held.
template <typename Key, typename Value, typename Compare = std::less<Key>>
class BoundedKeyedCache {
 public:
  using Map = std::map<Key, Value, Compare>;

  BoundedKeyedCache() = default;
  BoundedKeyedCache(const BoundedKeyedCache& o) : map_(o.map_ ? new Map(*o.map_) : nullptr) {}
  BoundedKeyedCache(BoundedKeyedCache&&) noexcept = default;
  BoundedKeyedCache& operator=(const BoundedKeyedCache& o) {
    if (this != &o) {
      if (!o.map_) {
        map_.reset();
      } else if (map_) {
        *map_ = *o.map_;
      } else {
        map_.reset(new Map(*o.map_));
      }
    }
    return *this;
  }
  BoundedKeyedCache& operator=(BoundedKeyedCache&&) noexcept = default;
  ~BoundedKeyedCache() = default;

  /// The stored value for key (under Compare's equivalence), or null.
  const Value* find(const Key& key) const {
    if (!map_) {
      return nullptr;
    }
    const auto it = map_->find(key);
    return it == map_->end() ? nullptr : &it->second;
  }

  /// Stores key -> value by the bound rule. key must not be present (callers insert on a miss).
  void insert(const Key& key, const Value& value, long bound) {
    if (!map_) {
      map_.reset(new Map);
    }
    if (!map_->empty() && static_cast<long>(map_->size()) > bound) {
      auto victim = map_->begin();
      std::advance(victim, static_cast<std::ptrdiff_t>(boundedCacheVictim(map_->size())));
      map_->erase(victim);
    }
    map_->emplace(key, value);
  }

  /// Drops every entry and the map itself.
  void clear() noexcept { map_.reset(); }

  std::size_t size() const noexcept { return map_ ? map_->size() : 0; }
  /// True while the map exists (it is created by the first insertion).
  bool allocated() const noexcept { return map_ != nullptr; }
  /// The entries, for inspection; null while nothing was inserted.
  const Map* map() const noexcept { return map_.get(); }

 private:
  std::unique_ptr<Map> map_;
};

}  // namespace gk::detail
