#include <gk/base/rep_base.h>

long gwInterlockedIncrement(std::atomic<long>& count) {
  return count.fetch_add(1, std::memory_order_relaxed) + 1;
}

long gwInterlockedDecrement(std::atomic<long>& count) {
  // Release on every drop and acquire for the last one, so that the thread that deletes the
  // object sees every write made through the other handles. Both on the operation itself rather
  // than a separate acquire fence after the last drop: ThreadSanitizer does not model fences and
  // would report the deletion as a race; on x86 the instruction is the same.
  return count.fetch_sub(1, std::memory_order_acq_rel) - 1;
}

gkRepBase::~gkRepBase() = default;

void gkRepBase::addReference() const noexcept {
  gwInterlockedIncrement(count_);
}

void gkRepBase::releaseReference() const noexcept {
  if (gwInterlockedDecrement(count_) == 0) {
    delete this;
  }
}
