#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <vector>

#include <gk/base/assert.h>
#include <gk/base/tolerances.h>
#include <gk/cntr/errors/contour_errors.h>
#include <gk/cntr/region.h>

#include "base/detail/box_index.h"
#include "base/detail/grid_cell.h"
#include "base/detail/near_vertices.h"
#include "base/detail/sequence_forest.h"
#include "base/detail/vertex_box.h"

namespace {

using Points = std::vector<gkVector<2>>;

/// The probe that tests a candidate start edge reaches this fraction of the median segment
/// length to either side of the edge.
constexpr double kProbeDivisor = 100.0;

/// Vertices of the walked boundary closer than this are one vertex when loops are split and
/// merged.
constexpr double kVertexCoincidence = 1e-6;

/// Index arithmetic modulo n, for indices at most one turn out of range.
std::size_t wrapIndex(long k, std::size_t n) {
  const long m = static_cast<long>(n);
  return static_cast<std::size_t>(k < 0 ? k + m : (k >= m ? k - m : k));
}

/// The vertices wrap(from), ..., wrap(to) of a loop of n, in order (to >= from - 1).
Points loopRun(const Points& v, long from, long to) {
  Points run;
  for (long i = from; i <= to; ++i) {
    run.push_back(v[wrapIndex(i, v.size())]);
  }
  return run;
}

/// The plain split: scan each loop's vertices in order for the first one with another vertex of
/// the same loop within kVertexCoincidence (the first such in the loop's vertexIndex order),
/// cut the loop there into two, the loop keeping the part from that vertex, the new loop at the
/// end of the list taking the rest, and start over. Loops before the one cut were scanned
/// whole without a repeat and are unchanged, so the scan resumes at it.
std::vector<Points> splitAtRepeatsPlain(const Points& walked) {
  std::vector<gkRegion> loops;
  loops.emplace_back(walked, gkContourDefs::eIgnore);
  std::size_t resume = 0;
  for (bool split = true; split;) {
    split = false;
    for (std::size_t r = resume; r < loops.size() && !split; ++r) {
      resume = r;
      const Points lv = loops[r].points();
      const long m = static_cast<long>(lv.size());
      for (long j = 0; j < m && !split; ++j) {
        for (const int found :
             loops[r].vertexIndex(lv[static_cast<std::size_t>(j)], kVertexCoincidence)) {
          long q = found;
          if (q == j) {
            continue;
          }
          if (q < j) {
            q += m;
          }
          loops[r] = gkRegion(loopRun(lv, j, q - 1), gkContourDefs::eIgnore);
          loops.emplace_back(loopRun(lv, q, j + m - 1), gkContourDefs::eIgnore);
          split = true;
          break;
        }
      }
    }
  }
  std::vector<Points> out;
  for (const gkRegion& loop : loops) {
    out.push_back(loop.points());
  }
  return out;
}

/// The same split without building a region (and its vertex grid) per cut. Loops are kept as
/// lists of numbers of walked vertices; they always partition the walked vertices, so each
/// vertex knows its loop and its place there. Which vertices lie within kVertexCoincidence of
/// which is found once over the whole walk; a vertex's first repeat in its loop is then the
/// one that comes first in the order vertexIndex reports (grid column, grid row, then the
/// number in the loop), among the near vertices that are in the same loop.
std::vector<Points> splitAtRepeats(const Points& walked) {
  const std::size_t n = walked.size();
  if (n < 2) {
    return splitAtRepeatsPlain(walked);  // throws as scanning a loop of fewer than 2 does
  }
  struct Near {
    long column;
    long row;
    std::uint32_t vertex;
  };
  std::vector<std::vector<Near>> near(n);
  {
    const gk::detail::NearVertices everything(walked, kVertexCoincidence);
    std::vector<int> nearby;
    std::size_t total = 0;
    for (std::size_t w = 0; w < n; ++w) {
      everything.findNear(w, nearby);
      for (const int found : nearby) {
        const std::size_t k = static_cast<std::size_t>(found);
        if (k != w) {
          near[w].push_back({gk::detail::gridCell(walked[k].x(), kVertexCoincidence),
                             gk::detail::gridCell(walked[k].y(), kVertexCoincidence),
                             static_cast<std::uint32_t>(k)});
        }
      }
      total += near[w].size();
      // Crowds of coincident vertices would make these lists quadratic: cut that short.
      if (total > 16 * n + 64) {
        return splitAtRepeatsPlain(walked);
      }
    }
  }

  // Loops are sequences of walked vertex numbers in a forest that cuts in O(log n); a loop's
  // number is the tag of its root, a vertex's place in its loop is its place in the sequence.
  using Forest = gk::detail::SequenceForest;
  Forest forest(n);
  std::vector<Forest::Node> order(n);
  for (std::size_t w = 0; w < n; ++w) {
    order[w] = static_cast<Forest::Node>(w);
  }
  std::vector<Forest::Node> loops{forest.build(order)};
  forest.tag(loops[0]) = 0;
  const auto loopOf = [&forest](std::size_t w) {
    return forest.tag(forest.root(static_cast<Forest::Node>(w)));
  };

  std::size_t resume = 0;
  for (bool split = true; split;) {
    split = false;
    for (std::size_t r = resume; r < loops.size() && !split; ++r) {
      resume = r;
      const std::size_t m = forest.size(loops[r]);
      if (m < 2) {
        throw gkContourDefs::EmptyContour();  // what asking a one-vertex loop throws
      }
      for (std::size_t j = 0; j < m && !split; ++j) {
        const Near* first = nullptr;
        std::size_t firstPlace = 0;
        for (const Near& candidate : near[forest.at(loops[r], j)]) {
          if (loopOf(candidate.vertex) != r) {
            continue;
          }
          const std::size_t place = forest.place(candidate.vertex);
          if (!first || candidate.column < first->column ||
              (candidate.column == first->column &&
               (candidate.row < first->row ||
                (candidate.row == first->row && place < firstPlace)))) {
            first = &candidate;
            firstPlace = place;
          }
        }
        if (!first) {
          continue;
        }
        // The loop keeps places j .. q - 1 and the new last loop takes q .. j + m - 1, both
        // counted round the loop.
        std::size_t q = firstPlace < j ? firstPlace + m : firstPlace;
        Forest::Node kept = Forest::kNone;
        Forest::Node rest = Forest::kNone;
        if (q <= m) {
          const auto [before, from] = forest.split(loops[r], j);
          const auto [inside, after] = forest.split(from, q - j);
          kept = inside;
          rest = forest.join(after, before);
        } else {
          q -= m;
          const auto [before, from] = forest.split(loops[r], q);
          const auto [inside, after] = forest.split(from, j - q);
          kept = forest.join(after, before);
          rest = inside;
        }
        loops[r] = kept;
        forest.tag(kept) = r;
        loops.push_back(rest);
        forest.tag(rest) = loops.size() - 1;
        split = true;
      }
    }
  }

  std::vector<Points> out;
  out.reserve(loops.size());
  std::vector<Forest::Node> loop;
  for (const Forest::Node root : loops) {
    loop.clear();
    forest.collect(root, loop);
    Points points;
    points.reserve(loop.size());
    for (const Forest::Node w : loop) {
      points.push_back(walked[w]);
    }
    out.push_back(std::move(points));
  }
  return out;
}

}  // namespace

void gkRegion::regularize(gkRegion& result) const {
  cachedWalk(result, false, regularizedValid_, regularized_);
}

void gkRegion::outerHull(gkRegion& result) const {
  cachedWalk(result, true, outerHullValid_, outerHull_);
}

void gkRegion::cachedWalk(gkRegion& result, bool hullOnly, bool& valid,
                          gkPtrHandle<gkRegion>& slot) const {
  if (!isSelfIntersecting()) {
    result = *this;
    return;
  }
  if (!valid) {
    slot = gkPtrHandle<gkRegion>(new gkRegion());
    outerHullRegularize(*slot, hullOnly);
    valid = true;
  }
  // A second handle keeps the cached region alive while it is assigned: when result is this
  // region, the assignment overwrites the very handle that owns it.
  const gkPtrHandle<gkRegion> keep = slot;
  result = *keep;
}

void gkRegion::outerHullRegularize(gkRegion& result, bool hullOnly) const {
  using Forest = gk::detail::SequenceForest;
  checkEmptyContour();
  const Points& v = points();
  const std::size_t n = v.size();
  const double eps = medianFeatureSize() / kProbeDivisor;

  // Start edge: the first edge v[i] -> v[i+1] (the closing edge is never a candidate) that a
  // short probe across its midpoint crosses alone, that meets the rest of the boundary only at
  // its two ends, and that has the outside on one side.
  long start = -1;
  for (std::size_t i = 0; i + 1 < n && start < 0; ++i) {
    const gkVector<2> mid = (v[i] + v[i + 1]) / 2.0;
    const gkVector<2> u = (v[i] - v[i + 1]).unit();
    const gkVector<2> w = gkVector<2>(-u.y(), u.x()) * eps;
    const gkVector<2> a = mid + w;
    const gkVector<2> b = mid - w;
    // The three tests have no effect but their answers, so the costly containment is asked
    // only of an edge that passed the other two.
    if (intersections(gkLineSeg(a, b), true, false).size() == 1 &&
        intersections(gkLineSeg(v[i], v[i + 1]), true, false).size() == 2 &&
        (insideCount(a, true) == 0 || insideCount(b, true) == 0)) {
      start = static_cast<long>(i);
    }
  }
  if (start < 0) {
    throw gkContourDefs::BadParams(L"invalid contour");
  }

  // A walk that has not come back after this many steps never will: every step ends on a
  // vertex or on a crossing, and a walk that returns visits each of those at most a few times
  // (a crossing twice, once per branch). Counting the crossings with ends included over every
  // segment over-counts them, which only makes the bound safer. The count costs a query per
  // segment, and most walks return long before the bound without it (4 n + 4) comes into
  // question, so it is counted only when a walk gets that far: the walk itself is the same.
  std::size_t maxSteps = 4 * n + 4;
  bool crossingsCounted = false;
  const auto countCrossings = [&] {
    std::size_t crossings = 0;
    for (std::size_t k = 0; k < lineSegs().size(); ++k) {
      if (validLine()[k]) {
        crossings += gkContour::intersections(gkLineSeg(lineSegs()[k]), true).size();
      }
    }
    maxSteps = 4 * (n + crossings) + 4;
    crossingsCounted = true;
  };

  // A step from a vertex along a segment that keeps clear of every segment but its neighbours
  // finds no crossing: the query is skipped. Worked out once for every segment, it is worth
  // it when the walk takes most segments.
  const std::vector<bool> clear = segmentsClearOfOthers();
  const gkRect box = encloseRect(gkXform<2>());
  Points crossed;
  std::vector<std::size_t> candidates;
  Points walked;
  walked.reserve(n + n / 4);  // a step a vertex, and one more at each side of a crossing
  const gkVector<2> home = v[static_cast<std::size_t>(start)];
  gkVector<2> p = home;
  long cursor = start + 1;
  bool forward = true;
  std::vector<int> segIndices;
  for (std::size_t step = 0;; ++step) {
    if (step > 0 && p == home) {
      break;
    }
    if (step >= maxSteps && !crossingsCounted) {
      countCrossings();
    }
    if (step >= maxSteps) {
      throw gkContourDefs::BadParams(L"invalid contour");
    }
    const gkVector<2> target = forward ? v[wrapIndex(cursor, n)] : v[wrapIndex(cursor - 1, n)];
    // Segment k runs from v[k - 1] to v[k]; the step runs along segment cursor, forward from
    // v[cursor - 1] or backward from v[cursor].
    const std::size_t along = wrapIndex(cursor, n);
    const bool fromItsEnd = p == (forward ? v[wrapIndex(cursor - 1, n)] : v[along]);
    if (fromItsEnd && clear[along]) {
      crossed.clear();
    } else {
      intersectionsInto(gkLineSeg(p, target), false, box, crossed, segIndices, candidates);
    }
    if (!crossed.empty()) {
      // Turn onto the crossed segment k (from v[k-1] to v[k]) and reverse: forward now heads
      // for v[k], backward for v[k-1].
      p = crossed.front();
      cursor = segIndices.front();
      forward = !forward;
    } else {
      p = target;
      cursor = static_cast<long>(wrapIndex(forward ? cursor + 1 : cursor - 1, n));
    }
    walked.push_back(p);
  }

  if (!hullOnly) {
    result = gkRegion(walked, gkContourDefs::eIgnore);
    return;
  }

  // Split the walked boundary into simple loops at every repeated vertex. The drop and merge
  // steps reorder a list of the loops' numbers; a loop becomes a region (with the caches its
  // containment test fills) only when another loop's midpoint asks it, as most small loops
  // never are.
  const std::vector<Points> loops = splitAtRepeats(walked);
  std::vector<std::unique_ptr<gkRegion>> regions(loops.size());
  const auto region = [&](std::size_t id) -> const gkRegion& {
    if (!regions[id]) {
      regions[id] = std::make_unique<gkRegion>(loops[id], gkContourDefs::eIgnore);
    }
    return *regions[id];
  };

  // Drop every loop that lies inside another (tested at the midpoint of its first edge). The
  // scan never goes back: a loop before a was inside none of the loops, so it is inside none of
  // fewer, and after a removal the scan resumes at a, which now holds the former last loop. So
  // no pair of loops is asked twice and no answer needs keeping.
  std::vector<std::size_t> keptId(loops.size());
  for (std::size_t k = 0; k < keptId.size(); ++k) {
    keptId[k] = k;
  }
  // A loop whose box does not hold the midpoint answers "outside" before anything else, so
  // only the loops an index over the boxes names need asking, still in list order. A loop of
  // fewer than 2 vertices has no box (asking it throws), and then every loop is asked.
  const bool boxed =
      std::all_of(loops.begin(), loops.end(), [](const Points& loop) { return loop.size() >= 2; });
  std::vector<gkRect> loopBoxes;
  if (boxed) {
    loopBoxes.reserve(loops.size());
    for (const Points& loop : loops) {
      loopBoxes.push_back(gk::detail::vertexBox(loop));
    }
  }
  const gk::detail::BoxIndex boxIndex(loopBoxes, {});
  constexpr std::size_t kGone = static_cast<std::size_t>(-1);
  std::vector<std::size_t> slotOfId(loops.size());
  for (std::size_t k = 0; k < slotOfId.size(); ++k) {
    slotOfId[k] = k;
  }
  std::vector<std::size_t> asked;
  std::vector<std::size_t> ids;
  std::size_t resumeDrop = 0;
  for (bool removed = true; removed;) {
    removed = false;
    for (std::size_t a = resumeDrop; a < keptId.size() && !removed; ++a) {
      resumeDrop = a;
      const Points& av = loops[keptId[a]];
      GK_ASSERT(av.size() >= 2);
      const gkVector<2> mid = (av[1] + av[0]) / 2.0;
      asked.clear();
      if (boxed) {
        boxIndex.candidates(gkRect(mid, gkVector<2>()), ids);
        for (const std::size_t id : ids) {
          if (slotOfId[id] != kGone) {
            asked.push_back(slotOfId[id]);
          }
        }
        std::sort(asked.begin(), asked.end());
      } else {
        for (std::size_t b = 0; b < keptId.size(); ++b) {
          asked.push_back(b);
        }
      }
      for (const std::size_t b : asked) {
        if (b != a && region(keptId[b]).inside(mid, true)) {
          slotOfId[keptId[a]] = kGone;
          keptId[a] = keptId.back();
          keptId.pop_back();
          if (a < keptId.size()) {
            slotOfId[keptId[a]] = a;
          }
          removed = true;
          break;
        }
      }
    }
  }

  // Merge loops that share a vertex into one boundary through that vertex: the first loop a
  // (in list order) that shares a vertex with a later loop is joined with the first such loop
  // b, the last loop takes b's place, and the scan starts over. Loops before a share nothing
  // with the loops after them, and neither the joined loop nor the moved one brings a vertex
  // they were not checked against, so the scan can go on at a. Which loops share a vertex is
  // found once, through one index over every vertex, and kept up to date as loops join.
  //
  // Every vertex of every loop gets a number; each number knows its loop's token and the
  // numbers near it in other loops. A loop (by slot) is a sequence of numbers in a forest that
  // cuts and joins in O(log n), so that a large loop taking in many small ones is not copied
  // each time.
  const std::size_t loopCount = keptId.size();
  if (loopCount == 1) {
    result = region(keptId.front());
    return;
  }
  std::vector<std::set<std::size_t>> partners(loopCount);  // by token: a loop's first slot
  Points all;
  std::vector<std::size_t> owner;
  std::vector<std::vector<Forest::Node>> numbers(loopCount);
  for (std::size_t t = 0; t < loopCount; ++t) {
    for (const gkVector<2>& vertex : loops[keptId[t]]) {
      numbers[t].push_back(static_cast<Forest::Node>(all.size()));
      all.push_back(vertex);
      owner.push_back(t);
    }
  }
  std::vector<std::vector<std::uint32_t>> nearOthers(all.size());
  {
    const gk::detail::NearVertices everything(all, kVertexCoincidence);
    std::vector<int> nearby;
    for (std::size_t k = 0; k < all.size(); ++k) {
      everything.findNear(k, nearby);
      for (const int found : nearby) {
        const std::size_t other = owner[static_cast<std::size_t>(found)];
        if (other != owner[k]) {
          partners[owner[k]].insert(other);
          nearOthers[k].push_back(static_cast<std::uint32_t>(found));
        }
      }
    }
  }
  Forest forest(all.size());
  std::vector<Forest::Node> rootAt(loopCount);
  for (std::size_t t = 0; t < loopCount; ++t) {
    rootAt[t] = forest.build(numbers[t]);
  }
  numbers.clear();
  numbers.shrink_to_fit();
  std::vector<std::size_t> tokenAt(loopCount);
  std::vector<std::size_t> slotOf(loopCount);
  for (std::size_t t = 0; t < loopCount; ++t) {
    tokenAt[t] = t;
    slotOf[t] = t;
  }
  std::vector<Forest::Node> bNumbers;
  for (std::size_t a = 0; a + 1 < rootAt.size();) {
    const std::size_t ta = tokenAt[a];
    std::size_t b = rootAt.size();
    for (const std::size_t t : partners[ta]) {
      if (slotOf[t] > a) {
        b = std::min(b, slotOf[t]);
      }
    }
    if (b == rootAt.size()) {
      ++a;
      continue;
    }
    const std::size_t tb = tokenAt[b];
    bNumbers.clear();
    forest.collect(rootAt[b], bNumbers);
    // The first vertex of a (in its order) with a vertex of b near it: nearness goes both ways,
    // so it is the a-vertex of least place among those near some vertex of b.
    std::size_t j = forest.size(rootAt[a]);
    for (const Forest::Node k : bNumbers) {
      for (const std::uint32_t other : nearOthers[k]) {
        if (owner[other] == ta) {
          j = std::min(j, forest.place(other));
        }
      }
    }
    GK_ASSERT(j < forest.size(rootAt[a]));
    // Where b joins: the vertex b's vertexIndex would list first for a's vertex j, that is the
    // vertex of b within reach of it in the first grid cell (by column, then row), and of
    // those the first in b.
    const Forest::Node aj = forest.at(rootAt[a], j);
    bool foundQ = false;
    long qColumn = 0;
    long qRow = 0;
    std::size_t q = 0;
    for (const std::uint32_t other : nearOthers[aj]) {
      if (owner[other] != tb) {
        continue;
      }
      const long column = gk::detail::gridCell(all[other].x(), kVertexCoincidence);
      const long row = gk::detail::gridCell(all[other].y(), kVertexCoincidence);
      const std::size_t place = forest.place(other);
      if (!foundQ || column < qColumn ||
          (column == qColumn && (row < qRow || (row == qRow && place < q)))) {
        foundQ = true;
        qColumn = column;
        qRow = row;
        q = place;
      }
    }
    GK_ASSERT(foundQ);
    // a from its vertex j round to j - 1, then b from its vertex q round to q - 1.
    const auto [aHead, aTail] = forest.split(rootAt[a], j);
    const auto [bHead, bTail] = forest.split(rootAt[b], q);
    rootAt[a] = forest.join(forest.join(aTail, aHead), forest.join(bTail, bHead));
    for (const Forest::Node k : bNumbers) {
      owner[k] = ta;
    }
    rootAt[b] = rootAt.back();
    rootAt.pop_back();
    // b's token folds into a's.
    for (const std::size_t t : partners[tb]) {
      partners[t].erase(tb);
      if (t != ta) {
        partners[t].insert(ta);
        partners[ta].insert(t);
      }
    }
    partners[ta].erase(tb);
    partners[tb].clear();
    tokenAt[b] = tokenAt.back();
    slotOf[tokenAt[b]] = b;
    tokenAt.pop_back();
  }

  if (rootAt.size() != 1) {
    gwAssertFailed("cntr/region", 618, "exactly one loop remains after merging");
  }
  std::vector<Forest::Node> merged;
  forest.collect(rootAt.front(), merged);
  Points mergedPoints;
  mergedPoints.reserve(merged.size());
  for (const Forest::Node k : merged) {
    mergedPoints.push_back(all[k]);
  }
  result = gkRegion(mergedPoints, gkContourDefs::eIgnore);
}

void gkRegion::splice(const gkRegion& other, gkRegion& result) const {
  const std::vector<gkLineSeg>& segs = lineSegs();
  const std::vector<bool>& valid = validLine();
  std::vector<int> segIndices;
  for (std::size_t k = 0; k < segs.size(); ++k) {
    if (!valid[k]) {
      continue;
    }
    const Points crossed = other.gkContour::intersections(segs[k], segIndices, true);
    if (crossed.empty()) {
      continue;
    }
    // X is the crossing nearest the start v[k-1] of segment k; q the segment of other it is on.
    const gkVector<2> x = crossed.front();
    const long q = segIndices.front();
    const Points& av = points();
    const Points& bv = other.points();
    Points joined;
    joined.reserve(av.size() + bv.size() + 2);
    joined.push_back(x);
    const Points aRun = loopRun(av, static_cast<long>(k), static_cast<long>(k + av.size()) - 1);
    joined.insert(joined.end(), aRun.begin(), aRun.end());
    joined.push_back(x);
    const Points bRun = loopRun(bv, q, q + static_cast<long>(bv.size()) - 1);
    joined.insert(joined.end(), bRun.begin(), bRun.end());
    result = gkRegion(joined, gkContourDefs::eIgnore);
    return;
  }
  throw gkContourDefs::BadParams(L"spliced regions do not intersect");
}
