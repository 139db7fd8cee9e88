#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <random>
#include <vector>

#include <gk/base/rect.h>
#include <gk/base/vector.h>

#include "base/detail/box_index.h"

using gk::detail::BoxIndex;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

/// Boxes as segments make them, from two corners, with a share of awkward coordinates.
class BoxSource {
 public:
  explicit BoxSource(unsigned seed) : rng_(seed) {}

  double coordinate() {
    switch (rng_() % 16) {
      case 0:
        return kNaN;
      case 1:
        return kInf;
      case 2:
        return -kInf;
      case 3:
        return 1e300;
      case 4:
        return static_cast<double>(rng_() % 8);  // shared values: touching boxes
      default:
        return std::uniform_real_distribution<double>(-50, 50)(rng_);
    }
  }

  gkRect box() {
    const gkVector<2> p(coordinate(), coordinate());
    const gkVector<2> q(coordinate(), coordinate());
    return gkRect(q, gkVector<2>()).enclose(gkRect(p, gkVector<2>()));
  }

  std::mt19937 rng_;
};

/// The plain answer: every included box that overlaps, in order.
std::vector<std::size_t> overlapping(const std::vector<gkRect>& boxes,
                                     const std::vector<bool>& include, const gkRect& query) {
  std::vector<std::size_t> out;
  for (std::size_t k = 0; k < boxes.size(); ++k) {
    if ((include.empty() || include[k]) && boxes[k].overlaps(query)) {
      out.push_back(k);
    }
  }
  return out;
}

}  // namespace

TEST(BoxIndex, CandidatesHoldEveryOverlappingBoxSortedWithoutRepeats) {
  BoxSource source(3);
  for (int trial = 0; trial < 300; ++trial) {
    std::vector<gkRect> boxes(1 + source.rng_() % 200);
    std::vector<bool> include(boxes.size());
    for (std::size_t k = 0; k < boxes.size(); ++k) {
      boxes[k] = source.box();
      include[k] = source.rng_() % 5 != 0;
    }
    const BoxIndex index(boxes, include);
    std::vector<std::size_t> candidates;
    for (int q = 0; q < 40; ++q) {
      const gkRect query = source.box();
      index.candidates(query, candidates);
      ASSERT_TRUE(std::is_sorted(candidates.begin(), candidates.end()));
      ASSERT_TRUE(std::adjacent_find(candidates.begin(), candidates.end()) == candidates.end());
      for (const std::size_t k : candidates) {
        ASSERT_TRUE(include[k]) << "an excluded box came back";
      }
      for (const std::size_t k : overlapping(boxes, include, query)) {
        ASSERT_TRUE(std::binary_search(candidates.begin(), candidates.end(), k))
            << "trial " << trial << " query " << q << " missed box " << k;
      }
    }
  }
}

TEST(BoxIndex, BoxesThatOnlyTouchAreCandidatesOfEachOther) {
  const std::vector<gkRect> boxes{gkRect({0, 0}, {1, 1}), gkRect({5, 5}, {1, 1}),
                                  gkRect({1, 1}, {1, 1})};
  const BoxIndex index(boxes, {});
  std::vector<std::size_t> candidates;
  index.candidates(gkRect({2, 2}, {0, 0}), candidates);  // the corner of box 2
  EXPECT_TRUE(std::find(candidates.begin(), candidates.end(), 2u) != candidates.end());
  index.candidates(gkRect({1, 1}, {0, 0}), candidates);  // where boxes 0 and 2 touch
  EXPECT_TRUE(std::find(candidates.begin(), candidates.end(), 0u) != candidates.end());
  EXPECT_TRUE(std::find(candidates.begin(), candidates.end(), 2u) != candidates.end());
}

TEST(BoxIndex, AQueryWithANaNCornerHasNoCandidates) {
  const std::vector<gkRect> boxes{gkRect({0, 0}, {1, 1})};
  const BoxIndex index(boxes, {});
  std::vector<std::size_t> candidates{42};
  index.candidates(gkRect({kNaN, 0}, {0, 0}), candidates);
  EXPECT_TRUE(candidates.empty());
}

TEST(BoxIndex, ASmallQueryAmongManySpreadBoxesSeesOnlyItsNeighbourhood) {
  std::vector<gkRect> boxes;
  for (int i = 0; i < 100; ++i) {
    for (int j = 0; j < 100; ++j) {
      boxes.push_back(gkRect({static_cast<double>(i), static_cast<double>(j)}, {0.5, 0.5}));
    }
  }
  const BoxIndex index(boxes, {});
  std::vector<std::size_t> candidates;
  index.candidates(gkRect({50.1, 50.1}, {0.2, 0.2}), candidates);
  EXPECT_LE(candidates.size(), 16u);
  EXPECT_TRUE(std::find(candidates.begin(), candidates.end(), 5050u) != candidates.end());
  // The grid stays in proportion to the boxes: about two cells per box at most.
  EXPECT_LT(index.bytes(), boxes.size() * 40);
}

TEST(BoxIndex, InfiniteBoxesAreCandidatesOfEveryQueryTheyOverlap) {
  const std::vector<gkRect> boxes{gkRect({-kInf, 0}, {0, 0}).enclose(gkRect({kInf, 0}, {0, 0})),
                                  gkRect({3, 3}, {1, 1})};
  const BoxIndex index(boxes, {});
  std::vector<std::size_t> candidates;
  index.candidates(gkRect({1e200, -1}, {1, 2}), candidates);
  EXPECT_TRUE(std::find(candidates.begin(), candidates.end(), 0u) != candidates.end());
}

TEST(BoxIndex, AnEmptyListGivesNoCandidates) {
  const BoxIndex index({}, {});
  std::vector<std::size_t> candidates{1};
  index.candidates(gkRect({0, 0}, {1, 1}), candidates);
  EXPECT_TRUE(candidates.empty());
}

TEST(BoxIndex, PairsOfferEveryOverlappingPairOnceOrMoreInOrder) {
  // Random boxes with awkward coordinates, and crowded ones: many small boxes along a line in a
  // large area, so that cells hold far more boxes than they pair plainly.
  BoxSource source(5);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  for (int trial = 0; trial < 200; ++trial) {
    std::vector<gkRect> boxes(trial % 2 == 0 ? 2 + source.rng_() % 300 : 300 + source.rng_() % 300);
    std::vector<bool> include(boxes.size());
    for (std::size_t k = 0; k < boxes.size(); ++k) {
      if (trial % 2 == 0) {
        boxes[k] = source.box();
      } else {
        const double x = 100.0 * static_cast<double>(k) / static_cast<double>(boxes.size());
        boxes[k] = gkRect({x + u(source.rng_), 50.0 + 3.0 * u(source.rng_)},
                          {0.5 * u(source.rng_), 0.5 * u(source.rng_)});
      }
      include[k] = source.rng_() % 7 != 0;
    }
    if (trial % 2 == 1) {
      boxes.push_back(gkRect({0, 0}, {0, 0}));  // a far corner: the area is large
      boxes.push_back(gkRect({100, 100}, {0, 0}));
      include.resize(boxes.size(), true);
    }
    const BoxIndex index(boxes, include);
    std::vector<std::pair<std::size_t, std::size_t>> offered;
    std::size_t calls = 0;
    EXPECT_FALSE(index.anyPair(boxes, [&](std::size_t a, std::size_t b) {
      EXPECT_LT(a, b);
      EXPECT_TRUE(include[a] && include[b]);
      offered.emplace_back(a, b);
      ++calls;
      return false;
    }));
    EXPECT_LE(calls, index.pairCount());
    std::sort(offered.begin(), offered.end());
    for (std::size_t a = 0; a < boxes.size(); ++a) {
      for (std::size_t b = a + 1; b < boxes.size(); ++b) {
        if (include[a] && include[b] && boxes[a].overlaps(boxes[b])) {
          ASSERT_TRUE(std::binary_search(offered.begin(), offered.end(), std::make_pair(a, b)))
              << "trial " << trial << " missed " << a << ", " << b;
        }
      }
    }
  }
}

TEST(BoxIndex, PairsStopAtTheFirstCallThatSaysSo) {
  const std::vector<gkRect> boxes{gkRect({0, 0}, {1, 1}), gkRect({0.5, 0.5}, {1, 1}),
                                  gkRect({0.7, 0.7}, {1, 1})};
  const BoxIndex index(boxes, {});
  int calls = 0;
  EXPECT_TRUE(index.anyPair(boxes, [&calls](std::size_t, std::size_t) { return ++calls == 1; }));
  EXPECT_EQ(calls, 1);
}
