#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <utility>
#include <vector>

#include "base/detail/sequence_forest.h"

using gk::detail::SequenceForest;
using Node = SequenceForest::Node;

namespace {

/// The forest's sequence with root r, read out in order.
std::vector<Node> read(const SequenceForest& f, Node r) {
  std::vector<Node> out;
  f.collect(r, out);
  return out;
}

}  // namespace

TEST(SequenceForest, BuildsASequenceInTheGivenOrder) {
  SequenceForest f(10);
  const std::vector<Node> order{7, 2, 9, 0, 4};
  const Node r = f.build(order);
  EXPECT_EQ(read(f, r), order);
  EXPECT_EQ(f.size(r), 5u);
  for (std::size_t k = 0; k < order.size(); ++k) {
    EXPECT_EQ(f.at(r, k), order[k]);
    EXPECT_EQ(f.place(order[k]), k);
    EXPECT_EQ(f.root(order[k]), r);
  }
  EXPECT_EQ(f.size(f.root(5)), 1u);  // never linked: alone
}

TEST(SequenceForest, AnEmptyOrderHasNoRoot) {
  SequenceForest f(3);
  EXPECT_EQ(f.build({}), SequenceForest::kNone);
  EXPECT_EQ(f.size(SequenceForest::kNone), 0u);
  const auto [a, b] = f.split(SequenceForest::kNone, 0);
  EXPECT_EQ(a, SequenceForest::kNone);
  EXPECT_EQ(b, SequenceForest::kNone);
  EXPECT_EQ(f.join(SequenceForest::kNone, SequenceForest::kNone), SequenceForest::kNone);
}

TEST(SequenceForest, CutsAndJoinsExactlyAsVectorsDo) {
  // Random cuts, rotations and joins of several sequences, checked after every step against
  // plain vectors: contents, places, roots and the element at every place.
  std::mt19937 rng(7);
  const std::size_t count = 3000;
  SequenceForest f(count);
  std::vector<std::vector<Node>> plain;
  std::vector<Node> roots;
  std::vector<Node> all(count);
  for (Node i = 0; i < count; ++i) {
    all[i] = i;
  }
  std::shuffle(all.begin(), all.end(), rng);
  for (std::size_t start = 0; start < count; start += 500) {
    plain.emplace_back(all.begin() + static_cast<std::ptrdiff_t>(start),
                       all.begin() + static_cast<std::ptrdiff_t>(start + 500));
    roots.push_back(f.build(plain.back()));
  }
  for (int step = 0; step < 2000; ++step) {
    const std::size_t s = rng() % plain.size();
    if (rng() % 3 == 0 && plain.size() > 1) {
      // Join s and another, in a random order.
      std::size_t t = rng() % plain.size();
      if (t == s) {
        t = (s + 1) % plain.size();
      }
      plain[s].insert(plain[s].end(), plain[t].begin(), plain[t].end());
      roots[s] = f.join(roots[s], roots[t]);
      plain.erase(plain.begin() + static_cast<std::ptrdiff_t>(t));
      roots.erase(roots.begin() + static_cast<std::ptrdiff_t>(t));
    } else if (!plain[s].empty()) {
      // Cut s at k, and either keep both parts or rotate (join them swapped).
      const std::size_t k = rng() % (plain[s].size() + 1);
      const auto [a, b] = f.split(roots[s], k);
      std::vector<Node> head(plain[s].begin(), plain[s].begin() + static_cast<std::ptrdiff_t>(k));
      std::vector<Node> tail(plain[s].begin() + static_cast<std::ptrdiff_t>(k), plain[s].end());
      if (rng() % 2 == 0) {
        roots[s] = f.join(b, a);
        tail.insert(tail.end(), head.begin(), head.end());
        plain[s] = tail;
      } else {
        roots[s] = a;
        plain[s] = head;
        roots.push_back(b);
        plain.push_back(tail);
      }
    }
    for (std::size_t q = 0; q < plain.size(); ++q) {
      ASSERT_EQ(f.size(roots[q]), plain[q].size());
      if (step % 50 == 0) {
        ASSERT_EQ(read(f, roots[q]), plain[q]) << "step " << step;
      }
      for (int probe = 0; probe < 3 && !plain[q].empty(); ++probe) {
        const std::size_t k = rng() % plain[q].size();
        ASSERT_EQ(f.at(roots[q], k), plain[q][k]);
        ASSERT_EQ(f.place(plain[q][k]), k);
        ASSERT_EQ(f.root(plain[q][k]), roots[q]);
      }
    }
  }
}

TEST(SequenceForest, KeepsATagPerRoot) {
  SequenceForest f(4);
  const Node r = f.build({3, 1});
  f.tag(r) = 42;
  EXPECT_EQ(f.tag(f.root(1)), 42u);
}
