#include <gk/base/thread_local.h>

#include <atomic>
#include <unordered_map>
#include <utility>

namespace {

/// Every slot's value for one thread. Slot ids are never reused, so a value left behind by a
/// destroyed slot can never be read through a new one.
struct ThreadValues {
  std::unordered_map<unsigned long long, std::pair<void*, gk_ThreadLocal::Destroy>> values;

  ThreadValues() = default;
  ThreadValues(const ThreadValues&) = delete;
  ThreadValues& operator=(const ThreadValues&) = delete;
  ~ThreadValues() {
    for (auto& entry : values) {
      if (entry.second.first != nullptr && entry.second.second != nullptr) {
        entry.second.second(entry.second.first);
      }
    }
  }
};

ThreadValues& threadValues() {
  thread_local ThreadValues values;
  return values;
}

std::atomic<unsigned long long> gNextSlotId{1};

}  // namespace

gk_ThreadLocal::gk_ThreadLocal(Destroy destroy)
    : id_(gNextSlotId.fetch_add(1)), destroy_(destroy) {}

gk_ThreadLocal::~gk_ThreadLocal() = default;

void* gk_ThreadLocal::get() const {
  const auto& values = threadValues().values;
  const auto it = values.find(id_);
  return it == values.end() ? nullptr : it->second.first;
}

void gk_ThreadLocal::set(void* value) {
  threadValues().values[id_] = {value, destroy_};
}
