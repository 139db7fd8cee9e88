#include <gk/base/bounded_cache.h>
#include <gk/base/numeric.h>
#include <gk/base/random_uniform.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using gk::detail::boundedCacheVictim;
using gk::detail::BoundedKeyedCache;

namespace {

using IntCache = BoundedKeyedCache<int, int>;

std::set<int> keysOf(const IntCache& cache) {
  std::set<int> keys;
  if (cache.map() != nullptr) {
    for (const auto& entry : *cache.map()) {
      keys.insert(entry.first);
    }
  }
  return keys;
}

/// Runs f on a new thread, whose eviction generator is fresh, and returns its result.
template <typename F>
auto onFreshThread(F f) {
  decltype(f()) result{};
  std::thread([&result, &f] { result = f(); }).join();
  return result;
}

/// Inserts keys 0, 1, 2, ... in a scrambled order under the given bound and returns the keys
/// that survive.
std::set<int> survivorsOfScrambledInsertions(int count, long bound) {
  IntCache cache;
  for (int i = 0; i < count; ++i) {
    const int key = (i * 37) % 101;
    cache.insert(key, key * 10, bound);
  }
  return keysOf(cache);
}

/// Orders strings without regard to ASCII letter case.
struct CaseInsensitiveLess {
  bool operator()(const std::string& a, const std::string& b) const {
    return std::lexicographical_compare(
        a.begin(), a.end(), b.begin(), b.end(),
        [](unsigned char x, unsigned char y) { return std::tolower(x) < std::tolower(y); });
  }
};

}  // namespace

TEST(BoundedCache, UnusedCacheAllocatesNothing) {
  const IntCache cache;
  EXPECT_FALSE(cache.allocated());
  EXPECT_EQ(cache.map(), nullptr);
  EXPECT_EQ(cache.size(), 0U);
  EXPECT_EQ(cache.find(1), nullptr);
  EXPECT_FALSE(cache.allocated());  // a miss does not allocate either
}

TEST(BoundedCache, FirstInsertionAllocatesTheMap) {
  IntCache cache;
  cache.insert(1, 10, 3);
  EXPECT_TRUE(cache.allocated());
  ASSERT_NE(cache.map(), nullptr);
  EXPECT_EQ(cache.size(), 1U);
  ASSERT_NE(cache.find(1), nullptr);
  EXPECT_EQ(*cache.find(1), 10);
  EXPECT_EQ(cache.find(2), nullptr);
}

TEST(BoundedCache, HoldsUpToBoundPlusOneEntries) {
  IntCache cache;
  for (int key = 1; key <= 4; ++key) {
    cache.insert(key, key * 10, 3);
    EXPECT_EQ(cache.size(), static_cast<std::size_t>(key));
  }
  EXPECT_EQ(keysOf(cache), (std::set<int>{1, 2, 3, 4}));
  for (int key = 1; key <= 4; ++key) {
    ASSERT_NE(cache.find(key), nullptr) << "key " << key;
    EXPECT_EQ(*cache.find(key), key * 10);
  }
}

TEST(BoundedCache, FifthKeyUnderBoundThreeReplacesExactlyOneOldKey) {
  IntCache cache;
  for (int key = 1; key <= 4; ++key) {
    cache.insert(key, key * 10, 3);
  }
  cache.insert(5, 50, 3);
  EXPECT_EQ(cache.size(), 4U);
  ASSERT_NE(cache.find(5), nullptr);
  EXPECT_EQ(*cache.find(5), 50);

  int oldKeysGone = 0;
  for (int key = 1; key <= 4; ++key) {
    const int* value = cache.find(key);
    if (value == nullptr) {
      ++oldKeysGone;
    } else {
      EXPECT_EQ(*value, key * 10) << "a surviving entry keeps its value";
    }
  }
  EXPECT_EQ(oldKeysGone, 1);
}

TEST(BoundedCache, SizeStaysAtBoundPlusOneOverManyInsertions) {
  IntCache cache;
  for (int key = 0; key < 200; ++key) {
    cache.insert(key, key, 3);
    ASSERT_EQ(cache.size(), static_cast<std::size_t>(std::min(key + 1, 4))) << "key " << key;
    ASSERT_NE(cache.find(key), nullptr) << "the newest key is always present";
  }
}

TEST(BoundedCache, BoundZeroAllowsOneEntry) {
  IntCache cache;
  cache.insert(1, 10, 0);
  EXPECT_EQ(cache.size(), 1U);
  cache.insert(2, 20, 0);
  EXPECT_EQ(cache.size(), 1U);
  EXPECT_EQ(cache.find(1), nullptr);
  ASSERT_NE(cache.find(2), nullptr);
  EXPECT_EQ(*cache.find(2), 20);
}

TEST(BoundedCache, NegativeBoundStillKeepsTheNewestEntry) {
  IntCache cache;
  cache.insert(1, 10, -5);
  EXPECT_EQ(cache.size(), 1U);
  cache.insert(2, 20, -5);
  EXPECT_EQ(cache.size(), 1U);
  EXPECT_NE(cache.find(2), nullptr);
}

TEST(BoundedCache, LaterLowerBoundDoesNotTrimHeldEntries) {
  IntCache cache;
  for (int key = 1; key <= 4; ++key) {
    cache.insert(key, key, 3);
  }
  cache.insert(5, 5, 1);
  EXPECT_EQ(cache.size(), 4U);
  EXPECT_NE(cache.find(5), nullptr);
  cache.insert(6, 6, 0);
  EXPECT_EQ(cache.size(), 4U);
  EXPECT_NE(cache.find(6), nullptr);
}

TEST(BoundedCache, LaterHigherBoundLetsTheCacheGrow) {
  IntCache cache;
  for (int key = 1; key <= 3; ++key) {
    cache.insert(key, key, 1);
  }
  ASSERT_EQ(cache.size(), 2U);
  cache.insert(4, 4, 5);
  cache.insert(5, 5, 5);
  EXPECT_EQ(cache.size(), 4U);
}

TEST(BoundedCache, CopyConstructionIsDeep) {
  IntCache original;
  original.insert(1, 10, 10);
  original.insert(2, 20, 10);
  IntCache copy(original);
  ASSERT_TRUE(copy.allocated());
  EXPECT_NE(copy.map(), original.map());
  EXPECT_EQ(keysOf(copy), (std::set<int>{1, 2}));

  copy.insert(3, 30, 10);
  EXPECT_EQ(original.size(), 2U);
  EXPECT_EQ(original.find(3), nullptr);

  original.insert(4, 40, 10);
  EXPECT_EQ(copy.find(4), nullptr);
  EXPECT_EQ(keysOf(copy), (std::set<int>{1, 2, 3}));

  copy.clear();
  EXPECT_EQ(keysOf(original), (std::set<int>{1, 2, 4}));
}

TEST(BoundedCache, CopyOfAnUnusedCacheIsUnused) {
  const IntCache original;
  const IntCache copy(original);
  EXPECT_FALSE(copy.allocated());
}

TEST(BoundedCache, CopyAssignmentIntoAnUnusedCacheIsDeep) {
  IntCache original;
  original.insert(1, 10, 10);
  IntCache target;
  target = original;
  ASSERT_TRUE(target.allocated());
  EXPECT_NE(target.map(), original.map());
  EXPECT_EQ(keysOf(target), (std::set<int>{1}));
  target.insert(2, 20, 10);
  EXPECT_EQ(original.find(2), nullptr);
}

TEST(BoundedCache, CopyAssignmentIntoAUsedCacheReplacesItsEntries) {
  IntCache original;
  original.insert(1, 10, 10);
  IntCache target;
  target.insert(7, 70, 10);
  target.insert(8, 80, 10);
  target = original;
  EXPECT_NE(target.map(), original.map());
  EXPECT_EQ(keysOf(target), (std::set<int>{1}));
  original.insert(2, 20, 10);
  EXPECT_EQ(target.find(2), nullptr);
}

TEST(BoundedCache, CopyAssignmentFromAnUnusedCacheEmptiesTheTarget) {
  const IntCache unused;
  IntCache target;
  target.insert(7, 70, 10);
  target = unused;
  EXPECT_FALSE(target.allocated());
  EXPECT_EQ(target.size(), 0U);
  EXPECT_EQ(target.find(7), nullptr);
}

TEST(BoundedCache, SelfCopyAssignmentKeepsTheEntries) {
  IntCache cache;
  cache.insert(1, 10, 10);
  const IntCache& alias = cache;
  cache = alias;
  EXPECT_EQ(keysOf(cache), (std::set<int>{1}));
}

TEST(BoundedCache, MoveTakesTheMapAndLeavesTheSourceUnused) {
  IntCache source;
  source.insert(1, 10, 10);
  const auto* map = source.map();
  IntCache target(std::move(source));
  EXPECT_EQ(target.map(), map);
  EXPECT_FALSE(source.allocated());  // NOLINT(bugprone-use-after-move): moved-from unique_ptr
}

TEST(BoundedCache, ClearDropsEveryEntryAndTheMap) {
  IntCache cache;
  cache.insert(1, 10, 10);
  cache.insert(2, 20, 10);
  cache.clear();
  EXPECT_FALSE(cache.allocated());
  EXPECT_EQ(cache.map(), nullptr);
  EXPECT_EQ(cache.size(), 0U);
  EXPECT_EQ(cache.find(1), nullptr);
  cache.insert(3, 30, 10);
  EXPECT_EQ(keysOf(cache), (std::set<int>{3}));
}

TEST(BoundedCache, FindUsesTheComparatorsEquivalence) {
  BoundedKeyedCache<std::string, int, CaseInsensitiveLess> cache;
  cache.insert("Alpha", 1, 10);
  cache.insert("beta", 2, 10);
  ASSERT_NE(cache.find("ALPHA"), nullptr);
  EXPECT_EQ(*cache.find("ALPHA"), 1);
  ASSERT_NE(cache.find("alpha"), nullptr);
  EXPECT_EQ(*cache.find("alpha"), 1);
  ASSERT_NE(cache.find("BeTa"), nullptr);
  EXPECT_EQ(*cache.find("BeTa"), 2);
  EXPECT_EQ(cache.find("gamma"), nullptr);
  EXPECT_EQ(cache.find("alph"), nullptr);
}

TEST(BoundedCache, VictimIsAlwaysBelowTheSize) {
  const bool allBelow = onFreshThread([] {
    for (int round = 0; round < 20; ++round) {
      for (std::size_t size = 1; size <= 300; ++size) {
        if (boundedCacheVictim(size) >= size) {
          return false;
        }
      }
    }
    return true;
  });
  EXPECT_TRUE(allBelow);
}

TEST(BoundedCache, VictimOfASingleEntryCacheIsThatEntry) {
  EXPECT_EQ(onFreshThread([] { return boundedCacheVictim(1); }), 0U);
  EXPECT_EQ(boundedCacheVictim(1), 0U);
}

TEST(BoundedCache, VictimsOnAFreshThreadFollowTheSeedOneGenerator) {
  const std::vector<std::size_t> sizes = {4, 4, 17, 1, 2, 100, 3, 1000, 4, 65536, 5, 9, 2, 4};
  const auto victims = onFreshThread([&sizes] {
    std::vector<std::size_t> out;
    for (const std::size_t size : sizes) {
      out.push_back(boundedCacheVictim(size));
    }
    return out;
  });

  gkRandomUniform reference(1);
  std::vector<std::size_t> expected;
  for (const std::size_t size : sizes) {
    expected.push_back(
        static_cast<std::size_t>(gwIFloor(reference.next(0.0, static_cast<double>(size)))));
  }
  EXPECT_EQ(victims, expected);
}

TEST(BoundedCache, VictimSequenceDoesNotDependOnTheMainThreadsDraws) {
  const auto draw = [] {
    std::vector<std::size_t> out;
    for (std::size_t size = 2; size < 40; ++size) {
      out.push_back(boundedCacheVictim(size));
    }
    return out;
  };
  const auto first = onFreshThread(draw);
  for (int i = 0; i < 5; ++i) {
    boundedCacheVictim(1000);  // advances only this thread's generator
  }
  const auto second = onFreshThread(draw);
  EXPECT_EQ(first, second);
}

TEST(BoundedCache, SameInsertionsOnTwoFreshThreadsKeepTheSameKeys) {
  const auto run = [] { return survivorsOfScrambledInsertions(300, 7); };
  const std::set<int> first = onFreshThread(run);
  const std::set<int> second = onFreshThread(run);
  EXPECT_EQ(first.size(), 8U);
  EXPECT_EQ(first, second);
}

TEST(BoundedCache, EvictionRemovesTheEntryAtTheVictimPositionInKeyOrder) {
  // A plain re-computation of the whole cache: an ordered map, the bound rule, and the seed-one
  // generator picking the position of the entry to drop.
  constexpr int kCount = 200;
  constexpr long kBound = 5;
  const std::set<int> actual =
      onFreshThread([] { return survivorsOfScrambledInsertions(kCount, kBound); });

  gkRandomUniform reference(1);
  std::map<int, int> model;
  for (int i = 0; i < kCount; ++i) {
    const int key = (i * 37) % 101;
    if (!model.empty() && static_cast<long>(model.size()) > kBound) {
      const long position = gwIFloor(reference.next(0.0, static_cast<double>(model.size())));
      model.erase(std::next(model.begin(), position));
    }
    model.emplace(key, key * 10);
  }
  std::set<int> expected;
  for (const auto& entry : model) {
    expected.insert(entry.first);
  }
  EXPECT_EQ(actual, expected);
}

TEST(BoundedCache, CachesOnOneThreadShareOneGenerator) {
  // Two caches filled in turn on one thread draw their victims from one sequence.
  const auto survivors = onFreshThread([] {
    IntCache a;
    IntCache b;
    for (int key = 0; key < 30; ++key) {
      a.insert(key, key, 2);
      b.insert(key, key, 2);
    }
    return std::make_pair(keysOf(a), keysOf(b));
  });

  gkRandomUniform reference(1);
  std::set<int> modelA;
  std::set<int> modelB;
  for (int key = 0; key < 30; ++key) {
    for (std::set<int>* model : {&modelA, &modelB}) {
      if (model->size() > 2) {
        const long position = gwIFloor(reference.next(0.0, static_cast<double>(model->size())));
        model->erase(std::next(model->begin(), position));
      }
      model->insert(key);
    }
  }
  EXPECT_EQ(survivors.first, modelA);
  EXPECT_EQ(survivors.second, modelB);
  EXPECT_NE(survivors.first, survivors.second);
}
