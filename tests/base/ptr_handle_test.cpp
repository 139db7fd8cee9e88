#include <gk/base/ptr_handle.h>
#include <gk/base/rep_base.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

/// A counted object that reports its destruction to a counter owned by the test.
class Tracked : public gkRepBase {
 public:
  explicit Tracked(int* deletions, int value = 0) : deletions_(deletions), value_(value) {}
  Tracked(const Tracked& o) : gkRepBase(o), deletions_(o.deletions_), value_(o.value_) {}
  /// Copies the value; the deletion counter stays the target's own.
  Tracked& operator=(const Tracked& o) {
    gkRepBase::operator=(o);
    value_ = o.value_;
    return *this;
  }
  ~Tracked() override { ++*deletions_; }

  int value() const { return value_; }
  void setValue(int v) { value_ = v; }

 private:
  int* deletions_;
  int value_;
};

class DerivedTracked : public Tracked {
 public:
  DerivedTracked(int* deletions, int value, int extra) : Tracked(deletions, value), extra_(extra) {}
  int extra() const { return extra_; }

 private:
  int extra_;
};

/// Reaches the count through a virtual base, so the handle must convert pointers properly.
class VirtualTracked : public virtual gkRepBase {
 public:
  explicit VirtualTracked(int* deletions) : deletions_(deletions) {}
  ~VirtualTracked() override { ++*deletions_; }

 private:
  int* deletions_;
};

/// A second path to the same virtual base: the gkRepBase subobject sits at a run-time offset.
class DiamondTracked : public VirtualTracked, public virtual gkRepBase {
 public:
  explicit DiamondTracked(int* deletions) : VirtualTracked(deletions) {}
  long padding[3] = {1, 2, 3};
};

/// A node that owns the next node through a handle.
class Node : public gkRepBase {
 public:
  explicit Node(int* deletions, int value) : deletions_(deletions), value_(value) {}
  ~Node() override { ++*deletions_; }

  int value() const { return value_; }
  gkPtrHandle<Node> next;

 private:
  int* deletions_;
  int value_;
};

/// A counted object whose deletions are counted atomically, for the threaded tests.
class SharedTracked : public gkRepBase {
 public:
  explicit SharedTracked(std::atomic<int>* deletions) : deletions_(deletions) {}
  ~SharedTracked() override { deletions_->fetch_add(1); }

 private:
  std::atomic<int>* deletions_;
};

}  // namespace

static_assert(!std::is_convertible_v<Tracked*, gkPtrHandle<Tracked>>,
              "taking ownership of a raw pointer must be explicit");
static_assert(!std::is_convertible_v<gkPtrHandle<Tracked>, bool>,
              "the bool conversion must be explicit");
static_assert(std::is_constructible_v<bool, gkPtrHandle<Tracked>>,
              "a handle must be testable in a condition");
static_assert(std::is_convertible_v<gkPtrHandle<Tracked>, gkPtrHandle_const<Tracked>>,
              "a mutable handle converts to a const one");
static_assert(!std::is_constructible_v<gkPtrHandle<Tracked>, gkPtrHandle_const<Tracked>>,
              "a const handle must not convert back to a mutable one");
static_assert(std::is_convertible_v<gkPtrHandle<DerivedTracked>, gkPtrHandle<Tracked>>,
              "a handle to a derived class converts to a handle to its base");
static_assert(!std::is_constructible_v<gkPtrHandle<DerivedTracked>, gkPtrHandle<Tracked>>,
              "a handle to a base class must not convert to a handle to a derived class");
static_assert(
    std::is_same_v<decltype(std::declval<gkPtrHandle_const<Tracked>>().get()), const Tracked*>,
    "a const handle gives only const access");
static_assert(std::is_nothrow_move_constructible_v<gkPtrHandle<Tracked>>);
static_assert(std::is_nothrow_copy_constructible_v<gkPtrHandle<Tracked>>);

TEST(InterlockedCount, IncrementReturnsTheNewValue) {
  std::atomic<long> count{5};
  EXPECT_EQ(gwInterlockedIncrement(count), 6);
  EXPECT_EQ(count.load(), 6);
  EXPECT_EQ(gwInterlockedIncrement(count), 7);
  EXPECT_EQ(count.load(), 7);
}

TEST(InterlockedCount, DecrementReturnsTheNewValue) {
  std::atomic<long> count{2};
  EXPECT_EQ(gwInterlockedDecrement(count), 1);
  EXPECT_EQ(gwInterlockedDecrement(count), 0);
  EXPECT_EQ(gwInterlockedDecrement(count), -1);
  EXPECT_EQ(count.load(), -1);
}

TEST(RepBase, NewObjectHasNoHolders) {
  int deletions = 0;
  const Tracked t(&deletions);
  EXPECT_EQ(t.refCount(), 0);
}

TEST(RepBase, AddAndReleaseReferenceCountHoldersAndDeleteAtZero) {
  int deletions = 0;
  const Tracked* t = new Tracked(&deletions);
  t->addReference();
  t->addReference();
  EXPECT_EQ(t->refCount(), 2);
  t->releaseReference();
  EXPECT_EQ(t->refCount(), 1);
  EXPECT_EQ(deletions, 0);
  t->releaseReference();
  EXPECT_EQ(deletions, 1);
}

TEST(RepBase, CopyingAnObjectDoesNotCopyItsCount) {
  int deletions = 0;
  gkPtrHandle<Tracked> a(new Tracked(&deletions, 7));
  gkPtrHandle<Tracked> b = a;
  ASSERT_EQ(a->refCount(), 2);

  {
    const Tracked copy(*a);
    EXPECT_EQ(copy.value(), 7);
    EXPECT_EQ(copy.refCount(), 0);
    EXPECT_EQ(a->refCount(), 2);
  }
  EXPECT_EQ(a->refCount(), 2);
}

TEST(RepBase, AssigningAnObjectLeavesTheTargetCountAsItWas) {
  int deletions = 0;
  gkPtrHandle<Tracked> target(new Tracked(&deletions, 1));
  gkPtrHandle<Tracked> secondHolder = target;
  ASSERT_EQ(target->refCount(), 2);

  int sourceDeletions = 0;
  const Tracked source(&sourceDeletions, 42);
  *target = source;
  EXPECT_EQ(target->value(), 42);
  EXPECT_EQ(target->refCount(), 2);
  EXPECT_EQ(source.refCount(), 0);
  EXPECT_EQ(deletions, 0);

  // And the other way round: an object assigned from a shared one keeps a zero count.
  Tracked plain(&sourceDeletions, 0);
  plain = *target;
  EXPECT_EQ(plain.value(), 42);
  EXPECT_EQ(plain.refCount(), 0);
  EXPECT_EQ(target->refCount(), 2);
}

TEST(PtrHandle, ConstructionFromNewObjectTakesOwnershipWithCountOne) {
  int deletions = 0;
  {
    auto* raw = new Tracked(&deletions, 3);
    gkPtrHandle<Tracked> h(raw);
    EXPECT_EQ(h.get(), raw);
    EXPECT_EQ(&*h, raw);
    EXPECT_EQ(h->value(), 3);
    EXPECT_EQ(h->refCount(), 1);
    EXPECT_EQ(deletions, 0);
  }
  EXPECT_EQ(deletions, 1);
}

TEST(PtrHandle, DefaultAndNullHandlesAreEmpty) {
  const gkPtrHandle<Tracked> byDefault;
  const gkPtrHandle<Tracked> fromNull(nullptr);
  const gkPtrHandle<Tracked> fromNullPointer(static_cast<Tracked*>(nullptr));
  const gkPtrHandle_const<Tracked> constByDefault;
  EXPECT_EQ(byDefault.get(), nullptr);
  EXPECT_EQ(fromNull.get(), nullptr);
  EXPECT_EQ(fromNullPointer.get(), nullptr);
  EXPECT_EQ(constByDefault.get(), nullptr);
  EXPECT_FALSE(byDefault);
  EXPECT_FALSE(fromNull);
  EXPECT_FALSE(fromNullPointer);
  EXPECT_FALSE(constByDefault);
  EXPECT_TRUE(byDefault == fromNull);
  EXPECT_TRUE(byDefault == constByDefault);
}

TEST(PtrHandle, ExplicitBoolIsTrueExactlyWhenTheHandleHoldsAnObject) {
  int deletions = 0;
  gkPtrHandle<Tracked> h(new Tracked(&deletions));
  EXPECT_TRUE(static_cast<bool>(h));
  bool tested = false;
  if (h) {
    tested = true;
  }
  EXPECT_TRUE(tested);
  h.reset();
  EXPECT_FALSE(static_cast<bool>(h));
}

TEST(PtrHandle, CopySharesTheObjectAndCountsHolders) {
  int deletions = 0;
  gkPtrHandle<Tracked> a(new Tracked(&deletions));
  {
    gkPtrHandle<Tracked> b = a;
    gkPtrHandle<Tracked> c(b);
    EXPECT_EQ(b.get(), a.get());
    EXPECT_EQ(c.get(), a.get());
    EXPECT_EQ(a->refCount(), 3);
    c->setValue(9);
    EXPECT_EQ(a->value(), 9);
  }
  EXPECT_EQ(a->refCount(), 1);
  EXPECT_EQ(deletions, 0);
  a.reset();
  EXPECT_EQ(deletions, 1);
}

TEST(PtrHandle, CopyOfNullHandleIsNull) {
  const gkPtrHandle<Tracked> empty;
  const gkPtrHandle<Tracked> copy = empty;
  EXPECT_EQ(copy.get(), nullptr);
}

TEST(PtrHandle, AssignmentReleasesTheOldObjectAndDeletesItAtZero) {
  int oldDeletions = 0;
  int newDeletions = 0;
  gkPtrHandle<Tracked> h(new Tracked(&oldDeletions, 1));
  const gkPtrHandle<Tracked> other(new Tracked(&newDeletions, 2));
  h = other;
  EXPECT_EQ(oldDeletions, 1);
  EXPECT_EQ(newDeletions, 0);
  EXPECT_EQ(h.get(), other.get());
  EXPECT_EQ(h->value(), 2);
  EXPECT_EQ(other->refCount(), 2);
}

TEST(PtrHandle, AssignmentKeepsTheOldObjectWhileAnotherHandleHoldsIt) {
  int oldDeletions = 0;
  int newDeletions = 0;
  gkPtrHandle<Tracked> h(new Tracked(&oldDeletions, 1));
  const gkPtrHandle<Tracked> keep = h;
  const gkPtrHandle<Tracked> other(new Tracked(&newDeletions, 2));
  h = other;
  EXPECT_EQ(oldDeletions, 0);
  EXPECT_EQ(keep->refCount(), 1);
  EXPECT_EQ(keep->value(), 1);
}

TEST(PtrHandle, AssigningNullReleasesTheObject) {
  int deletions = 0;
  gkPtrHandle<Tracked> h(new Tracked(&deletions));
  h = nullptr;
  EXPECT_EQ(deletions, 1);
  EXPECT_FALSE(h);
}

TEST(PtrHandle, SelfAssignmentKeepsTheObjectAndItsCount) {
  int deletions = 0;
  gkPtrHandle<Tracked> h(new Tracked(&deletions, 5));
  const gkPtrHandle<Tracked>& alias = h;
  h = alias;
  EXPECT_EQ(deletions, 0);
  ASSERT_TRUE(h);
  EXPECT_EQ(h->refCount(), 1);
  EXPECT_EQ(h->value(), 5);
}

TEST(PtrHandle, SelfMoveAssignmentKeepsTheObjectAndItsCount) {
  int deletions = 0;
  gkPtrHandle<Tracked> h(new Tracked(&deletions, 5));
  gkPtrHandle<Tracked>& alias = h;
  h = std::move(alias);
  EXPECT_EQ(deletions, 0);
  ASSERT_TRUE(h);
  EXPECT_EQ(h->refCount(), 1);
}

TEST(PtrHandle, AssigningAnEqualHandleKeepsTheObjectAndItsCount) {
  int deletions = 0;
  gkPtrHandle<Tracked> a(new Tracked(&deletions));
  const gkPtrHandle<Tracked> b = a;
  a = b;
  EXPECT_EQ(deletions, 0);
  EXPECT_EQ(a->refCount(), 2);
}

TEST(PtrHandle, MoveConstructionTransfersOwnershipWithoutCounting) {
  int deletions = 0;
  gkPtrHandle<Tracked> source(new Tracked(&deletions));
  Tracked* raw = source.get();
  gkPtrHandle<Tracked> target(std::move(source));
  EXPECT_EQ(source.get(), nullptr);  // NOLINT(bugprone-use-after-move): moved-from is empty
  EXPECT_EQ(target.get(), raw);
  EXPECT_EQ(target->refCount(), 1);
  EXPECT_EQ(deletions, 0);
}

TEST(PtrHandle, MoveAssignmentReleasesTheOldObjectAndTransfersTheNewOne) {
  int oldDeletions = 0;
  int newDeletions = 0;
  gkPtrHandle<Tracked> target(new Tracked(&oldDeletions));
  gkPtrHandle<Tracked> source(new Tracked(&newDeletions));
  Tracked* raw = source.get();
  target = std::move(source);
  EXPECT_EQ(oldDeletions, 1);
  EXPECT_EQ(newDeletions, 0);
  EXPECT_EQ(source.get(), nullptr);  // NOLINT(bugprone-use-after-move): moved-from is empty
  EXPECT_EQ(target.get(), raw);
  EXPECT_EQ(target->refCount(), 1);
}

TEST(PtrHandle, ResetReleasesTheObjectAndLeavesTheHandleEmpty) {
  int deletions = 0;
  gkPtrHandle<Tracked> h(new Tracked(&deletions));
  const gkPtrHandle<Tracked> keep = h;
  h.reset();
  EXPECT_EQ(h.get(), nullptr);
  EXPECT_EQ(deletions, 0);
  EXPECT_EQ(keep->refCount(), 1);
  gkPtrHandle<Tracked> last = keep;
  last.reset();
  EXPECT_EQ(keep->refCount(), 1);
  EXPECT_EQ(deletions, 0);
}

TEST(PtrHandle, ResetOfTheLastHolderDeletesTheObject) {
  int deletions = 0;
  gkPtrHandle<Tracked> h(new Tracked(&deletions));
  h.reset();
  EXPECT_EQ(deletions, 1);
  h.reset();  // an empty handle resets to empty
  EXPECT_EQ(deletions, 1);
  EXPECT_FALSE(h);
}

TEST(PtrHandle, MutableHandleConvertsToConstHandleSharingTheObject) {
  int deletions = 0;
  gkPtrHandle<Tracked> h(new Tracked(&deletions, 4));
  {
    gkPtrHandle_const<Tracked> c = h;
    EXPECT_EQ(c.get(), h.get());
    EXPECT_EQ(c->value(), 4);
    EXPECT_EQ(h->refCount(), 2);
    h.reset();
    EXPECT_EQ(deletions, 0);
    EXPECT_EQ(c->refCount(), 1);
  }
  EXPECT_EQ(deletions, 1);
}

TEST(PtrHandle, ConstHandleCanOwnANewObject) {
  int deletions = 0;
  {
    const gkPtrHandle_const<Tracked> c(new Tracked(&deletions, 8));
    EXPECT_EQ(c->value(), 8);
    EXPECT_EQ(c->refCount(), 1);
  }
  EXPECT_EQ(deletions, 1);
}

TEST(PtrHandle, DerivedHandleConvertsToBaseHandleSharingTheObject) {
  int deletions = 0;
  gkPtrHandle<DerivedTracked> derived(new DerivedTracked(&deletions, 1, 2));
  gkPtrHandle<Tracked> base = derived;
  gkPtrHandle_const<Tracked> constBase = derived;
  EXPECT_EQ(base.get(), static_cast<Tracked*>(derived.get()));
  EXPECT_EQ(derived->refCount(), 3);
  EXPECT_EQ(derived->extra(), 2);
  derived.reset();
  constBase.reset();
  EXPECT_EQ(deletions, 0);
  EXPECT_EQ(base->value(), 1);
  base.reset();  // the last holder deletes through the virtual destructor
  EXPECT_EQ(deletions, 1);
}

TEST(PtrHandle, DerivedHandleAssignsToBaseHandle) {
  int oldDeletions = 0;
  int deletions = 0;
  gkPtrHandle<Tracked> base(new Tracked(&oldDeletions));
  const gkPtrHandle<DerivedTracked> derived(new DerivedTracked(&deletions, 1, 2));
  base = derived;
  EXPECT_EQ(oldDeletions, 1);
  EXPECT_EQ(base.get(), static_cast<Tracked*>(derived.get()));
  EXPECT_EQ(derived->refCount(), 2);
}

TEST(PtrHandle, HandlesCompareByTheIdentityOfTheirTargets) {
  int deletions = 0;
  const gkPtrHandle<Tracked> a(new Tracked(&deletions, 1));
  const gkPtrHandle<Tracked> sameAsA = a;
  const gkPtrHandle<Tracked> equalValue(new Tracked(&deletions, 1));
  const gkPtrHandle_const<Tracked> constA = a;
  const gkPtrHandle<Tracked> empty;
  EXPECT_TRUE(a == sameAsA);
  EXPECT_FALSE(a != sameAsA);
  EXPECT_FALSE(a == equalValue);
  EXPECT_TRUE(a != equalValue);
  EXPECT_TRUE(a == constA);
  EXPECT_TRUE(constA == a);
  EXPECT_FALSE(a == empty);
  EXPECT_TRUE(a != empty);
}

TEST(PtrHandle, BaseAndDerivedHandlesToOneObjectCompareEqual) {
  int deletions = 0;
  const gkPtrHandle<DerivedTracked> derived(new DerivedTracked(&deletions, 1, 2));
  const gkPtrHandle<Tracked> base = derived;
  EXPECT_TRUE(base == derived);
  EXPECT_FALSE(base != derived);
}

TEST(PtrHandle, VirtualBaseDerivedObjectIsCountedAndDeletedOnce) {
  int deletions = 0;
  {
    gkPtrHandle<VirtualTracked> a(new VirtualTracked(&deletions));
    EXPECT_EQ(a->refCount(), 1);
    gkPtrHandle<VirtualTracked> b = a;
    gkPtrHandle_const<VirtualTracked> c = a;
    EXPECT_EQ(a->refCount(), 3);
    a.reset();
    b.reset();
    EXPECT_EQ(deletions, 0);
    EXPECT_EQ(c->refCount(), 1);
  }
  EXPECT_EQ(deletions, 1);
}

TEST(PtrHandle, DiamondThroughAVirtualBaseIsCountedOnOneSharedCount) {
  int deletions = 0;
  {
    gkPtrHandle<DiamondTracked> d(new DiamondTracked(&deletions));
    gkPtrHandle<VirtualTracked> v = d;
    EXPECT_EQ(d->refCount(), 2);
    EXPECT_EQ(v->refCount(), 2);
    EXPECT_EQ(d->padding[2], 3);
    d.reset();
    EXPECT_EQ(deletions, 0);
    EXPECT_EQ(v->refCount(), 1);
  }
  EXPECT_EQ(deletions, 1);
}

TEST(PtrHandle, SecondHandleKeepsObjectAliveWhileOwningSlotIsOverwritten) {
  int firstDeletions = 0;
  int secondDeletions = 0;
  gkPtrHandle<Tracked> slot(new Tracked(&firstDeletions, 1));
  const gkPtrHandle<Tracked> keep = slot;
  slot = gkPtrHandle<Tracked>(new Tracked(&secondDeletions, 2));
  EXPECT_EQ(firstDeletions, 0);
  ASSERT_TRUE(keep);
  EXPECT_EQ(keep->value(), 1);
  EXPECT_EQ(keep->refCount(), 1);
  EXPECT_EQ(slot->value(), 2);
  EXPECT_EQ(slot->refCount(), 1);

  slot = keep;  // and back: the second object goes, the first is shared again
  EXPECT_EQ(secondDeletions, 1);
  EXPECT_EQ(keep->refCount(), 2);
  EXPECT_EQ(firstDeletions, 0);
}

TEST(PtrHandle, AssigningFromAHandleThatTheOldTargetOwnsIsSafe) {
  int deletions = 0;
  gkPtrHandle<Node> head(new Node(&deletions, 1));
  head->next = gkPtrHandle<Node>(new Node(&deletions, 2));
  head->next->next = gkPtrHandle<Node>(new Node(&deletions, 3));

  // head->next lives inside the object head releases: it must be shared before that release.
  head = head->next;
  EXPECT_EQ(deletions, 1);
  ASSERT_TRUE(head);
  EXPECT_EQ(head->value(), 2);
  EXPECT_EQ(head->refCount(), 1);
  ASSERT_TRUE(head->next);
  EXPECT_EQ(head->next->value(), 3);
  EXPECT_EQ(head->next->refCount(), 1);

  head = head->next;
  EXPECT_EQ(deletions, 2);
  EXPECT_EQ(head->value(), 3);
  EXPECT_EQ(head->refCount(), 1);

  head.reset();
  EXPECT_EQ(deletions, 3);
}

TEST(PtrHandle, MoveAssigningFromAHandleThatTheOldTargetOwnsIsSafe) {
  int deletions = 0;
  gkPtrHandle<Node> head(new Node(&deletions, 1));
  head->next = gkPtrHandle<Node>(new Node(&deletions, 2));
  head = std::move(head->next);
  EXPECT_EQ(deletions, 1);
  ASSERT_TRUE(head);
  EXPECT_EQ(head->value(), 2);
  EXPECT_EQ(head->refCount(), 1);
}

TEST(PtrHandle, ReleasingTheLastHandleDeletesAChainOnce) {
  int deletions = 0;
  {
    gkPtrHandle<Node> head(new Node(&deletions, 1));
    head->next = gkPtrHandle<Node>(new Node(&deletions, 2));
    head->next->next = gkPtrHandle<Node>(new Node(&deletions, 3));
  }
  EXPECT_EQ(deletions, 3);
}

TEST(PtrHandle, CopiesAndReleasesOnSeveralThreadsKeepExactCounts) {
  constexpr int kThreads = 4;
  constexpr int kCopies = 100000;
  constexpr std::size_t kObjects = 3;

  std::array<std::atomic<int>, kObjects> deletions{};
  std::array<gkPtrHandle<SharedTracked>, kObjects> shared;
  for (std::size_t i = 0; i < kObjects; ++i) {
    shared[i] = gkPtrHandle<SharedTracked>(new SharedTracked(&deletions[i]));
  }

  std::atomic<bool> go{false};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&shared, &go, t] {
      while (!go.load()) {
        std::this_thread::yield();
      }
      for (int i = 0; i < kCopies; ++i) {
        const std::size_t which = static_cast<std::size_t>(i + t) % kObjects;
        gkPtrHandle<SharedTracked> copy = shared[which];
        gkPtrHandle_const<SharedTracked> constCopy = copy;
        copy.reset();
      }
    });
  }
  go.store(true);
  for (auto& thread : threads) {
    thread.join();
  }

  for (std::size_t i = 0; i < kObjects; ++i) {
    EXPECT_EQ(shared[i]->refCount(), 1) << "object " << i;
    EXPECT_EQ(deletions[i].load(), 0) << "object " << i;
  }
  for (auto& h : shared) {
    h.reset();
  }
  for (std::size_t i = 0; i < kObjects; ++i) {
    EXPECT_EQ(deletions[i].load(), 1) << "object " << i;
  }
}

TEST(PtrHandle, LastHolderOnAnyThreadDeletesEachObjectExactlyOnce) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 200;
  constexpr int kCopiesPerRound = 20;

  std::atomic<int> deletions{0};
  for (int round = 0; round < kRounds; ++round) {
    gkPtrHandle<SharedTracked> original(new SharedTracked(&deletions));
    std::vector<gkPtrHandle<SharedTracked>> seeds(kThreads, original);
    original.reset();  // from here the threads hold the only shares
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([seed = std::move(seeds[static_cast<std::size_t>(t)])]() mutable {
        for (int i = 0; i < kCopiesPerRound; ++i) {
          gkPtrHandle<SharedTracked> copy = seed;
        }
        seed.reset();  // one of the threads releases the last share
      });
    }
    for (auto& thread : threads) {
      thread.join();
    }
    ASSERT_EQ(deletions.load(), round + 1) << "round " << round;
  }
}
