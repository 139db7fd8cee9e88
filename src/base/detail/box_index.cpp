#include "base/detail/box_index.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace gk::detail {

namespace {

/// A box listed in more cells than this goes to the list every query considers instead: a few
/// long segments must not blow the grid up.
constexpr std::size_t kWideSpan = 64;

bool hasNaN(const gkRect& b) {
  return std::isnan(b.ul().x()) || std::isnan(b.ul().y()) || std::isnan(b.lr().x()) ||
         std::isnan(b.lr().y());
}

}  // namespace

std::size_t BoxIndex::cellOf(double c, double origin, double inverseSize, std::size_t count) {
  // Every step is monotone in c (a rounded subtraction, a product with a positive number, the
  // floor, the clamp), so boxes that share a coordinate share a cell.
  const double q = (c - origin) * inverseSize;
  if (!(q > 0)) {
    return 0;
  }
  if (q >= static_cast<double>(count - 1)) {
    return count - 1;
  }
  return static_cast<std::size_t>(q);
}

BoxIndex::BoxIndex(const std::vector<gkRect>& boxes, const std::vector<bool>& include)
    : boxCount_(boxes.size()) {
  std::vector<std::uint32_t>& indexed = indexed_;
  indexed.reserve(boxes.size());
  double minX = std::numeric_limits<double>::infinity();
  double minY = minX;
  double maxX = -minX;
  double maxY = -minX;
  double extentSum = 0;
  std::size_t extentCount = 0;
  for (std::size_t k = 0; k < boxes.size(); ++k) {
    if ((!include.empty() && !include[k]) || hasNaN(boxes[k])) {
      continue;
    }
    indexed.push_back(static_cast<std::uint32_t>(k));
    const gkRect& b = boxes[k];
    for (double x : {b.ul().x(), b.lr().x()}) {
      if (std::isfinite(x)) {
        minX = std::min(minX, x);
        maxX = std::max(maxX, x);
      }
    }
    for (double y : {b.ul().y(), b.lr().y()}) {
      if (std::isfinite(y)) {
        minY = std::min(minY, y);
        maxY = std::max(maxY, y);
      }
    }
    const double extent = b.width() * 0.5 + b.height() * 0.5;
    if (std::isfinite(extent)) {
      extentSum += extent;
      ++extentCount;
    }
  }

  // One cell per typical box, and no more cells than about twice the boxes.
  const double spanX = maxX - minX;
  const double spanY = maxY - minY;
  double cell = extentCount > 0 ? extentSum / static_cast<double>(extentCount) : 0;
  const double maxCells = 2.0 * static_cast<double>(indexed.size()) + 16.0;
  if (std::isfinite(spanX) && std::isfinite(spanY) && std::isfinite(cell) && cell > 0) {
    double columns = std::floor(spanX / cell) + 1;
    double rows = std::floor(spanY / cell) + 1;
    if (columns * rows > maxCells) {
      cell *= std::sqrt(columns * rows / maxCells);
      columns = std::floor(spanX / cell) + 1;
      rows = std::floor(spanY / cell) + 1;
    }
    // Rounding may leave a few cells too many; halve until within budget.
    while (columns * rows > 2 * maxCells) {
      cell *= 2;
      columns = std::floor(spanX / cell) + 1;
      rows = std::floor(spanY / cell) + 1;
    }
    if (std::isfinite(1.0 / cell)) {
      columns_ = static_cast<std::size_t>(columns);
      rows_ = static_cast<std::size_t>(rows);
      originX_ = minX;
      originY_ = minY;
      inverseCell_ = 1.0 / cell;
    }
  }
  // Otherwise (nothing finite, an extent that overflows, all boxes points): one cell, which
  // degrades to a scan of every indexed box and is still exact.

  const auto range = [this](const gkRect& b, std::size_t& c0, std::size_t& c1, std::size_t& r0,
                            std::size_t& r1) {
    c0 = cellOf(b.ul().x(), originX_, inverseCell_, columns_);
    c1 = cellOf(b.lr().x(), originX_, inverseCell_, columns_);
    r0 = cellOf(b.ul().y(), originY_, inverseCell_, rows_);
    r1 = cellOf(b.lr().y(), originY_, inverseCell_, rows_);
  };
  const std::size_t cells = columns_ * rows_;
  cellStart_.assign(cells + 1, 0);
  // Two passes: count per cell, then fill in increasing box number, so each cell is sorted.
  for (int pass = 0; pass < 2; ++pass) {
    std::vector<std::uint32_t> fill;
    if (pass == 1) {
      for (std::size_t c = 0; c < cells; ++c) {
        cellStart_[c + 1] += cellStart_[c];
      }
      entries_.resize(cellStart_[cells]);
      firstColumn_.assign(boxes.size(), 0);
      firstRow_.assign(boxes.size(), 0);
      fill.assign(cellStart_.begin(), cellStart_.end() - 1);
    }
    for (const std::uint32_t k : indexed) {
      std::size_t c0, c1, r0, r1;
      range(boxes[k], c0, c1, r0, r1);
      // Corners out of order (a hand-built box) would give an empty range; list such a box as
      // wide so that it is still considered.
      if (c1 < c0 || r1 < r0 || (c1 - c0 + 1) * (r1 - r0 + 1) > kWideSpan) {
        if (pass == 1) {
          wide_.push_back(k);
        }
        continue;
      }
      if (pass == 1) {
        firstColumn_[k] = static_cast<std::uint32_t>(c0);
        firstRow_[k] = static_cast<std::uint32_t>(r0);
      }
      for (std::size_t r = r0; r <= r1; ++r) {
        for (std::size_t c = c0; c <= c1; ++c) {
          const std::size_t cellIndex = r * columns_ + c;
          if (pass == 0) {
            ++cellStart_[cellIndex + 1];
          } else {
            entries_[fill[cellIndex]++] = k;
          }
        }
      }
    }
  }
}

void BoxIndex::candidates(const gkRect& query, std::vector<std::size_t>& out) const {
  out.clear();
  if (hasNaN(query)) {
    return;
  }
  std::size_t c0 = cellOf(query.ul().x(), originX_, inverseCell_, columns_);
  std::size_t c1 = cellOf(query.lr().x(), originX_, inverseCell_, columns_);
  std::size_t r0 = cellOf(query.ul().y(), originY_, inverseCell_, rows_);
  std::size_t r1 = cellOf(query.lr().y(), originY_, inverseCell_, rows_);
  if (c1 < c0) {
    std::swap(c0, c1);
  }
  if (r1 < r0) {
    std::swap(r0, r1);
  }
  if ((c1 - c0 + 1) * (r1 - r0 + 1) * 2 >= columns_ * rows_) {
    // Most of the grid: gathering and sorting would cost more than taking every box.
    out.assign(indexed_.begin(), indexed_.end());
    return;
  }
  // A box listed in several of the visited cells is reported from the first of them only: the
  // cell where its column and row ranges and the query's begin to overlap.
  for (std::size_t r = r0; r <= r1; ++r) {
    for (std::size_t c = c0; c <= c1; ++c) {
      const std::size_t cell = r * columns_ + c;
      for (std::size_t e = cellStart_[cell]; e < cellStart_[cell + 1]; ++e) {
        const std::uint32_t k = entries_[e];
        if (std::max<std::size_t>(firstColumn_[k], c0) == c &&
            std::max<std::size_t>(firstRow_[k], r0) == r) {
          out.push_back(k);
        }
      }
    }
  }
  out.insert(out.end(), wide_.begin(), wide_.end());
  std::sort(out.begin(), out.end());
}

void BoxIndex::sortedSpans(const std::vector<gkRect>& boxes, std::size_t begin, std::size_t end,
                           std::vector<Span>& spans) const {
  spans.clear();
  for (std::size_t e = begin; e < end; ++e) {
    const gkRect& b = boxes[entries_[e]];
    // Corners in either order, as the cell mapping takes them; indexed boxes have no NaN.
    spans.push_back(
        {std::min(b.ul().x(), b.lr().x()), std::max(b.ul().x(), b.lr().x()), entries_[e]});
  }
  std::sort(spans.begin(), spans.end(),
            [](const Span& a, const Span& b) { return a.left < b.left; });
}

std::size_t BoxIndex::bytes() const {
  return sizeof(*this) + cellStart_.capacity() * sizeof(std::uint32_t) +
         entries_.capacity() * sizeof(std::uint32_t) + wide_.capacity() * sizeof(std::uint32_t) +
         indexed_.capacity() * sizeof(std::uint32_t) +
         (firstColumn_.capacity() + firstRow_.capacity()) * sizeof(std::uint32_t);
}

}  // namespace gk::detail
