#include <gk/base/thread_local.h>
#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace {

/// What the destroy functions saw. Destroy functions are plain function pointers, so they
/// report through globals; each test resets them first.
std::mutex gDestroyedMutex;
std::vector<void*> gDestroyedA;
std::vector<void*> gDestroyedB;

void recordDestroyA(void* p) {
  const std::lock_guard<std::mutex> lock(gDestroyedMutex);
  gDestroyedA.push_back(p);
}

void recordDestroyB(void* p) {
  const std::lock_guard<std::mutex> lock(gDestroyedMutex);
  gDestroyedB.push_back(p);
}

void resetDestroyed() {
  const std::lock_guard<std::mutex> lock(gDestroyedMutex);
  gDestroyedA.clear();
  gDestroyedB.clear();
}

std::vector<void*> destroyedA() {
  const std::lock_guard<std::mutex> lock(gDestroyedMutex);
  return gDestroyedA;
}

std::vector<void*> destroyedB() {
  const std::lock_guard<std::mutex> lock(gDestroyedMutex);
  return gDestroyedB;
}

}  // namespace

TEST(ThreadLocal, UnsetSlotReadsNull) {
  const gk_ThreadLocal slot;
  EXPECT_EQ(slot.get(), nullptr);
}

TEST(ThreadLocal, GetReturnsWhatThisThreadSet) {
  gk_ThreadLocal slot;
  int a = 0;
  int b = 0;
  slot.set(&a);
  EXPECT_EQ(slot.get(), &a);
  slot.set(&b);
  EXPECT_EQ(slot.get(), &b);
  slot.set(nullptr);
  EXPECT_EQ(slot.get(), nullptr);
}

TEST(ThreadLocal, AnotherThreadSeesNullWhereThisThreadSetAValue) {
  gk_ThreadLocal slot;
  int mine = 0;
  slot.set(&mine);
  void* seenByOther = &mine;
  std::thread([&slot, &seenByOther] { seenByOther = slot.get(); }).join();
  EXPECT_EQ(seenByOther, nullptr);
  EXPECT_EQ(slot.get(), &mine);
  slot.set(nullptr);
}

TEST(ThreadLocal, EachThreadSeesItsOwnValue) {
  gk_ThreadLocal slot;
  int mine = 0;
  slot.set(&mine);

  constexpr int kThreads = 4;
  std::vector<int> values(kThreads);
  std::vector<void*> seen(kThreads, nullptr);
  std::atomic<int> ready{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      auto* own = &values[static_cast<std::size_t>(t)];
      slot.set(own);
      // Every thread has set its value before any reads back, so a shared slot would show.
      ready.fetch_add(1);
      while (ready.load() < kThreads) {
        std::this_thread::yield();
      }
      seen[static_cast<std::size_t>(t)] = slot.get();
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  for (int t = 0; t < kThreads; ++t) {
    EXPECT_EQ(seen[static_cast<std::size_t>(t)], &values[static_cast<std::size_t>(t)])
        << "thread " << t;
  }
  EXPECT_EQ(slot.get(), &mine);
  slot.set(nullptr);
}

TEST(ThreadLocal, DestroyIsCalledOnTheThreadsValueAtThreadExit) {
  resetDestroyed();
  gk_ThreadLocal slot(&recordDestroyA);
  int value = 0;
  std::thread([&slot, &value] {
    slot.set(&value);
    EXPECT_TRUE(destroyedA().empty());  // not while the thread runs
  }).join();
  EXPECT_EQ(destroyedA(), std::vector<void*>{&value});
}

TEST(ThreadLocal, DestroyIsCalledOnlyOnTheLastValueNotOnReplacedOnes) {
  resetDestroyed();
  gk_ThreadLocal slot(&recordDestroyA);
  int first = 0;
  int last = 0;
  std::thread([&] {
    slot.set(&first);
    slot.set(&last);
    EXPECT_TRUE(destroyedA().empty());  // set() does not destroy the value it replaces
  }).join();
  EXPECT_EQ(destroyedA(), std::vector<void*>{&last});
}

TEST(ThreadLocal, DestroyIsNotCalledForANullValue) {
  resetDestroyed();
  gk_ThreadLocal slot(&recordDestroyA);
  int value = 0;
  std::thread([&slot, &value] {
    slot.set(&value);
    slot.set(nullptr);
  }).join();
  std::thread([&slot] { EXPECT_EQ(slot.get(), nullptr); }).join();  // never set
  EXPECT_TRUE(destroyedA().empty());
}

TEST(ThreadLocal, DestroyIsCalledOncePerThreadWithThatThreadsValue) {
  resetDestroyed();
  gk_ThreadLocal slot(&recordDestroyA);
  constexpr int kThreads = 3;
  std::vector<int> values(kThreads);
  for (int t = 0; t < kThreads; ++t) {
    std::thread([&slot, &values, t] { slot.set(&values[static_cast<std::size_t>(t)]); }).join();
    ASSERT_EQ(destroyedA().size(), static_cast<std::size_t>(t + 1));
    EXPECT_EQ(destroyedA().back(), &values[static_cast<std::size_t>(t)]);
  }
}

TEST(ThreadLocal, SlotWithoutDestroyFunctionLeavesTheValueAlone) {
  resetDestroyed();
  gk_ThreadLocal plain;
  gk_ThreadLocal withDestroy(&recordDestroyA);
  int a = 0;
  int b = 0;
  std::thread([&] {
    plain.set(&a);
    withDestroy.set(&b);
  }).join();
  EXPECT_EQ(destroyedA(), std::vector<void*>{&b});
}

TEST(ThreadLocal, TwoSlotsAreIndependent) {
  gk_ThreadLocal first;
  gk_ThreadLocal second;
  int a = 0;
  int b = 0;
  first.set(&a);
  EXPECT_EQ(first.get(), &a);
  EXPECT_EQ(second.get(), nullptr);
  second.set(&b);
  EXPECT_EQ(first.get(), &a);
  EXPECT_EQ(second.get(), &b);
  first.set(nullptr);
  EXPECT_EQ(first.get(), nullptr);
  EXPECT_EQ(second.get(), &b);
  second.set(nullptr);
}

TEST(ThreadLocal, TwoSlotsCallTheirOwnDestroyFunctionsAtThreadExit) {
  resetDestroyed();
  gk_ThreadLocal first(&recordDestroyA);
  gk_ThreadLocal second(&recordDestroyB);
  int a = 0;
  int b = 0;
  std::thread([&] {
    first.set(&a);
    second.set(&b);
  }).join();
  EXPECT_EQ(destroyedA(), std::vector<void*>{&a});
  EXPECT_EQ(destroyedB(), std::vector<void*>{&b});
}

TEST(ThreadLocal, NewSlotReadsNullEvenWhereAnEarlierSlotHadAValue) {
  int value = 0;
  std::optional<gk_ThreadLocal> slot;
  slot.emplace();
  slot->set(&value);
  slot.reset();
  slot.emplace();  // very likely at the same address as the one it replaces
  EXPECT_EQ(slot->get(), nullptr);
}
