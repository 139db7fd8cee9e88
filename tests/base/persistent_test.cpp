#include <gk/base/persistent.h>
#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

static_assert(!std::is_constructible_v<gkPersistent>, "only a derived class makes one");
static_assert(std::has_virtual_destructor_v<gkPersistent>);

namespace {

/// A small persistent value: a setter that marks the object changed, as the shapes' setters do.
class Counter : public gkPersistent {
 public:
  Counter() = default;
  explicit Counter(int value) : value_(value) {}

  int value() const { return value_; }
  void setValue(int value) {
    value_ = value;
    mutating();
  }

 private:
  int value_ = 0;
};

}  // namespace

TEST(Persistent, NewObjectHasChangeCountZero) {
  const Counter c;
  EXPECT_EQ(c.changeCount(), 0U);
}

TEST(Persistent, MutatingIncrementsTheChangeCountByOne) {
  Counter c;
  c.mutating();
  EXPECT_EQ(c.changeCount(), 1U);
  c.mutating();
  c.mutating();
  EXPECT_EQ(c.changeCount(), 3U);
}

TEST(Persistent, SettersCountEachChange) {
  Counter c;
  c.setValue(4);
  c.setValue(4);  // setting the same value is still a call to mutating()
  EXPECT_EQ(c.changeCount(), 2U);
  EXPECT_EQ(c.value(), 4);
}

TEST(Persistent, CopyStartsAtItsOwnCountOfZero) {
  Counter original(7);
  original.setValue(8);
  original.setValue(9);
  const Counter copy(original);
  EXPECT_EQ(copy.value(), 9);
  EXPECT_EQ(copy.changeCount(), 0U);
  EXPECT_EQ(original.changeCount(), 2U);
}

TEST(Persistent, AssignmentLeavesTheTargetsCountAsItWas) {
  Counter source;
  for (int i = 0; i < 5; ++i) {
    source.setValue(i);
  }
  Counter target;
  target.setValue(100);
  target = source;
  EXPECT_EQ(target.value(), 4);
  EXPECT_EQ(target.changeCount(), 1U);
  EXPECT_EQ(source.changeCount(), 5U);
}

TEST(Persistent, MovedObjectStartsAtItsOwnCountOfZero) {
  Counter source;
  source.setValue(3);
  source.setValue(6);
  const Counter moved(std::move(source));
  EXPECT_EQ(moved.value(), 6);
  EXPECT_EQ(moved.changeCount(), 0U);
}

TEST(Persistent, CopyCountsItsOwnChangesOnly) {
  Counter original;
  original.setValue(1);
  Counter copy(original);
  copy.setValue(2);
  copy.setValue(3);
  EXPECT_EQ(copy.changeCount(), 2U);
  EXPECT_EQ(original.changeCount(), 1U);
  EXPECT_EQ(original.value(), 1);
}
