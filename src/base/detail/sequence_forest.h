#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace gk::detail {

/// Sequences of the numbers 0 .. count - 1, each number in at most one sequence, that can be
/// cut and joined in O(log n) and asked the place of a number in its sequence in O(log n):
/// what the loop splitting and merging of a boundary walk does thousands of times to loops of
/// a hundred thousand vertices, where copying a loop per cut would be quadratic.
///
/// Each sequence is a treap ordered by place (an implicit treap): a binary tree whose in-order
/// walk is the sequence, balanced in expectation by heap-ordered priorities drawn from a fixed
/// seed, so that every run builds the same trees. Each node knows its parent, so that a number
/// finds its place and its sequence from below.
class SequenceForest {
 public:
  using Node = std::uint32_t;
  static constexpr Node kNone = 0xFFFFFFFFu;

  /// count numbers, each alone.
  explicit SequenceForest(std::size_t count);

  /// Links the numbers of order, each alone before, into one sequence in that order; returns
  /// its root (kNone for an empty order).
  Node build(const std::vector<Node>& order);

  /// The root of the sequence holding x.
  Node root(Node x) const;
  /// The length of the sequence whose root is r (0 for kNone).
  std::size_t size(Node r) const { return r == kNone ? 0 : nodes_[r].size; }
  /// The place of x in its sequence, from 0.
  std::size_t place(Node x) const;
  /// The number at place k of the sequence whose root is r (k < size(r)).
  Node at(Node r, std::size_t k) const;

  /// Cuts the sequence whose root is r after its first k numbers; returns the two roots.
  std::pair<Node, Node> split(Node r, std::size_t k);
  /// Joins the sequence whose root is a and then the one whose root is b; returns the root.
  Node join(Node a, Node b);

  /// Appends the numbers of the sequence whose root is r to out, in order.
  void collect(Node r, std::vector<Node>& out) const;

  /// A value kept for the sequence whose root is r (the loop it stands for); meaningful only
  /// while r stays the root: cutting and joining make new roots.
  std::size_t& tag(Node r) { return tags_[r]; }
  std::size_t tag(Node r) const { return tags_[r]; }

 private:
  struct Item {
    Node left = kNone;
    Node right = kNone;
    Node parent = kNone;
    std::uint32_t priority = 0;
    std::uint32_t size = 1;
  };

  void update(Node x);

  std::vector<Item> nodes_;
  std::vector<std::size_t> tags_;
};

}  // namespace gk::detail
