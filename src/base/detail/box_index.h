#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <gk/base/rect.h>

namespace gk::detail {

/// A uniform grid over a fixed list of boxes that answers "which boxes may overlap this box"
/// without looking at every box. It only narrows a search: callers still apply their own exact
/// test to each candidate, in increasing number, so a query through the index returns exactly
/// what a scan of every box in order would.
///
/// The promise that makes that true: candidates(query) contains every box b with
/// b.overlaps(query) (closed boxes, touching counts). A box with a NaN corner overlaps nothing,
/// so it is never a candidate; infinite corners are clamped to the grid's edge cells, which
/// keeps the cell mapping monotone and so keeps the promise.
class BoxIndex {
 public:
  /// Indexes boxes[k] for every k with include[k] (include may be empty: every box).
  BoxIndex(const std::vector<gkRect>& boxes, const std::vector<bool>& include);

  /// Replaces out by the numbers of the boxes that may overlap query, in increasing order,
  /// without repeats.
  void candidates(const gkRect& query, std::vector<std::size_t>& out) const;

  /// Calls f(a, b), a < b, for the pairs of indexed boxes that may overlap: the pairs listed in
  /// a common cell whose x ranges meet, and every pair with a wide box. Every overlapping pair
  /// comes at least once (the cell of the low corner of their overlap lists both); some come
  /// more than once, and some do not overlap. Stops at the first call that returns true, and
  /// returns whether one did. boxes are the boxes the index was built on.
  template <typename F>
  bool anyPair(const std::vector<gkRect>& boxes, F&& f) const {
    const std::size_t cells = cellStart_.empty() ? 0 : cellStart_.size() - 1;
    std::vector<Span> spans;
    for (std::size_t cell = 0; cell < cells; ++cell) {
      const std::size_t begin = cellStart_[cell];
      const std::size_t end = cellStart_[cell + 1];
      if (end - begin <= kPlainCell) {
        // A cell lists its boxes in increasing number.
        for (std::size_t e = begin; e < end; ++e) {
          for (std::size_t g = e + 1; g < end; ++g) {
            if (f(std::size_t{entries_[e]}, std::size_t{entries_[g]})) {
              return true;
            }
          }
        }
        continue;
      }
      // A crowded cell (many boxes along a fine outline): sorted by the left of each box, a
      // box need only be paired with the ones that start before its right side.
      sortedSpans(boxes, begin, end, spans);
      for (std::size_t i = 0; i < spans.size(); ++i) {
        for (std::size_t j = i + 1; j < spans.size() && !(spans[j].left > spans[i].right); ++j) {
          const std::size_t a = spans[i].box;
          const std::size_t b = spans[j].box;
          if (f(std::min(a, b), std::max(a, b))) {
            return true;
          }
        }
      }
    }
    for (const std::uint32_t w : wide_) {
      for (const std::uint32_t k : indexed_) {
        if (k != w && f(std::size_t{std::min(k, w)}, std::size_t{std::max(k, w)})) {
          return true;
        }
      }
    }
    return false;
  }

  /// How many calls anyPair makes at most.
  std::size_t pairCount() const {
    std::size_t pairs = wide_.size() * indexed_.size();
    for (std::size_t cell = 0; cell + 1 < cellStart_.size(); ++cell) {
      const std::size_t m = cellStart_[cell + 1] - cellStart_[cell];
      pairs += m * (m - (m > 0 ? 1 : 0)) / 2;
    }
    return pairs;
  }

  /// Bytes held, for the memory accounting of the shapes that own an index.
  std::size_t bytes() const;

 private:
  /// A cell with at most this many boxes pairs them all; a larger one sorts them first.
  static constexpr std::size_t kPlainCell = 16;

  /// A box's extent along x, for pairing the boxes of a crowded cell.
  struct Span {
    double left;
    double right;
    std::uint32_t box;
  };

  /// Replaces spans by the x extents of the boxes entries_[begin .. end), ordered by left side.
  void sortedSpans(const std::vector<gkRect>& boxes, std::size_t begin, std::size_t end,
                   std::vector<Span>& spans) const;

  /// The column (or row) of coordinate c: monotone non-decreasing in c, clamped to [0, count).
  static std::size_t cellOf(double c, double origin, double inverseSize, std::size_t count);

  double originX_ = 0;
  double originY_ = 0;
  double inverseCell_ = 0;
  std::size_t columns_ = 1;
  std::size_t rows_ = 1;
  // Cell c holds entries_[cellStart_[c] .. cellStart_[c + 1]), box numbers in increasing order.
  std::vector<std::uint32_t> cellStart_;
  std::vector<std::uint32_t> entries_;
  // Boxes spanning too many cells to list in each; every query considers them.
  std::vector<std::uint32_t> wide_;
  // Every indexed box, for queries that cover most of the grid anyway.
  std::vector<std::uint32_t> indexed_;
  // The first column and row of each box listed in cells, so that a query reports a box only
  // from the first cell it shares with it, and never twice.
  std::vector<std::uint32_t> firstColumn_;
  std::vector<std::uint32_t> firstRow_;
  std::size_t boxCount_ = 0;
};

}  // namespace gk::detail
