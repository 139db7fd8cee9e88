#include <gk/base/rep_base.h>

long gwInterlockedIncrement(std::atomic<long>& count) {
  return count.fetch_add(1, std::memory_order_relaxed) + 1;
}

long gwInterlockedDecrement(std::atomic<long>& count) {
  // Release on every drop and acquire on the last one, so that the thread that deletes the
  // object sees every write made through the other handles.
  const long left = count.fetch_sub(1, std::memory_order_release) - 1;
  if (left == 0) {
    std::atomic_thread_fence(std::memory_order_acquire);
  }
  return left;
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
