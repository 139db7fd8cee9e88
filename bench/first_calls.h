#pragma once

#include <deque>

#include <benchmark/benchmark.h>

namespace gk::bench {

/// The vertices, over all the objects of one batch, that timeFirstCalls aims for: few enough that
/// a batch's input stays in the cache between its building and its asking.
constexpr int kFirstCallVertices = 8192;

/// Times ask(object) on objects that have never been asked anything: each round builds a
/// batch of them with the timer paused (enough for about 8192 vertices, so that they stay in
/// the cache the call would find its input in; at least one), then asks each once, in the
/// order built. Building and destroying the objects are outside the timed section: the
/// previous round's batch is destroyed while paused, the last one after the loop has stopped
/// the timer. n is the vertex count of one object; each object is T(args...), constructed in
/// place (the gkgeom shapes have no move constructor, so they are never moved or copied), and
/// counts as one iteration. The timer is paused once per batch, not once per call. A call that
/// throws ends the loop (add() in registry.h reports it as the benchmark's error).
template <typename T, typename Ask, typename... Args>
void timeFirstCalls(benchmark::State& state, int n, Ask ask, const Args&... args) {
  const int batch = n > 0 && n < kFirstCallVertices ? kFirstCallVertices / n : 1;
  std::deque<T> objects;
  while (state.KeepRunningBatch(batch)) {
    state.PauseTiming();
    objects.clear();
    for (int k = 0; k < batch; ++k) {
      objects.emplace_back(args...);
    }
    state.ResumeTiming();
    for (T& object : objects) {
      ask(object);
    }
  }
}

}  // namespace gk::bench
