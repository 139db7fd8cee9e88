#include "base/detail/sequence_forest.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace gk::detail {

SequenceForest::SequenceForest(std::size_t count) : nodes_(count), tags_(count, 0) {
  // xorshift32 from a fixed seed: the same trees on every run.
  std::uint32_t state = 2463534242u;
  for (Item& item : nodes_) {
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    item.priority = state;
  }
}

void SequenceForest::update(Node x) {
  Item& item = nodes_[x];
  item.size = 1;
  for (const Node child : {item.left, item.right}) {
    if (child != kNone) {
      item.size += nodes_[child].size;
      nodes_[child].parent = x;
    }
  }
}

SequenceForest::Node SequenceForest::build(const std::vector<Node>& order) {
  // Left to right with a stack of the rightmost path: linear, and the same tree joining one
  // number at a time would give.
  std::vector<Node> path;
  for (const Node x : order) {
    nodes_[x] = Item{kNone, kNone, kNone, nodes_[x].priority, 1};
    Node last = kNone;
    while (!path.empty() && nodes_[path.back()].priority < nodes_[x].priority) {
      last = path.back();
      path.pop_back();
      update(last);
    }
    nodes_[x].left = last;
    if (!path.empty()) {
      nodes_[path.back()].right = x;
    }
    path.push_back(x);
  }
  while (!path.empty()) {
    update(path.back());
    path.pop_back();
  }
  if (order.empty()) {
    return kNone;
  }
  Node r = order.front();
  while (nodes_[r].parent != kNone) {
    r = nodes_[r].parent;
  }
  return r;
}

SequenceForest::Node SequenceForest::root(Node x) const {
  while (nodes_[x].parent != kNone) {
    x = nodes_[x].parent;
  }
  return x;
}

std::size_t SequenceForest::place(Node x) const {
  const Node left = nodes_[x].left;
  std::size_t k = left == kNone ? 0 : nodes_[left].size;
  for (Node child = x, p = nodes_[x].parent; p != kNone; child = p, p = nodes_[p].parent) {
    if (nodes_[p].right == child) {
      k += 1 + (nodes_[p].left == kNone ? 0 : nodes_[nodes_[p].left].size);
    }
  }
  return k;
}

SequenceForest::Node SequenceForest::at(Node r, std::size_t k) const {
  Node x = r;
  for (;;) {
    const Node left = nodes_[x].left;
    const std::size_t leftSize = left == kNone ? 0 : nodes_[left].size;
    if (k < leftSize) {
      x = left;
    } else if (k == leftSize) {
      return x;
    } else {
      k -= leftSize + 1;
      x = nodes_[x].right;
    }
  }
}

std::pair<SequenceForest::Node, SequenceForest::Node> SequenceForest::split(Node r, std::size_t k) {
  if (r == kNone) {
    return {kNone, kNone};
  }
  nodes_[r].parent = kNone;
  const Node left = nodes_[r].left;
  const std::size_t leftSize = left == kNone ? 0 : nodes_[left].size;
  if (k <= leftSize) {
    const auto [a, b] = split(left, k);
    nodes_[r].left = b;
    update(r);
    if (a != kNone) {
      nodes_[a].parent = kNone;
    }
    return {a, r};
  }
  const auto [a, b] = split(nodes_[r].right, k - leftSize - 1);
  nodes_[r].right = a;
  update(r);
  if (b != kNone) {
    nodes_[b].parent = kNone;
  }
  return {r, b};
}

SequenceForest::Node SequenceForest::join(Node a, Node b) {
  if (a == kNone) {
    return b;
  }
  if (b == kNone) {
    return a;
  }
  if (nodes_[a].priority > nodes_[b].priority) {
    nodes_[a].right = join(nodes_[a].right, b);
    update(a);
    nodes_[a].parent = kNone;
    return a;
  }
  nodes_[b].left = join(a, nodes_[b].left);
  update(b);
  nodes_[b].parent = kNone;
  return b;
}

void SequenceForest::collect(Node r, std::vector<Node>& out) const {
  // In order without recursion: the tree's depth is only logarithmic in expectation.
  std::vector<Node> stack;
  Node x = r;
  while (x != kNone || !stack.empty()) {
    while (x != kNone) {
      stack.push_back(x);
      x = nodes_[x].left;
    }
    x = stack.back();
    stack.pop_back();
    out.push_back(x);
    x = nodes_[x].right;
  }
}

}  // namespace gk::detail
