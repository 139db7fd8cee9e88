#pragma once

/// Two values of one type: a point in drawing calls (gkPair<double>) or a grid cell key
/// (gkPair<long>).
template <typename T>
class gkPair {
 public:
  gkPair() = default;
  gkPair(T x, T y) : x_(x), y_(y) {}

  T x() const { return x_; }
  T y() const { return y_; }

  bool operator==(const gkPair& o) const { return x_ == o.x_ && y_ == o.y_; }
  bool operator!=(const gkPair& o) const { return !(*this == o); }

 private:
  T x_{};
  T y_{};
};
