#pragma once

#include <cmath>

#include <gk/base/angle.h>
#include <gk/base/pair.h>

/// A vector of N doubles. Only the planar case is used by this library.
template <int N>
class gkVector;

/// A planar point or displacement: two doubles, default (0, 0), a plain value type.
template <>
class gkVector<2> {
 public:
  constexpr gkVector() = default;
  constexpr gkVector(double x, double y) : x_(x), y_(y) {}
  explicit gkVector(const gkPair<long>& p)
      : x_(static_cast<double>(p.x())), y_(static_cast<double>(p.y())) {}
  /// Polar form: length along the direction of angle.
  gkVector(double length, const gkRadian& angle)
      : x_(length * std::cos(angle.toDouble())), y_(length * std::sin(angle.toDouble())) {}

  double x() const { return x_; }
  double y() const { return y_; }

  gkVector operator+(const gkVector& o) const { return gkVector(x_ + o.x_, y_ + o.y_); }
  gkVector operator-(const gkVector& o) const { return gkVector(x_ - o.x_, y_ - o.y_); }
  gkVector operator-() const { return gkVector(-x_, -y_); }
  gkVector operator*(double s) const { return gkVector(x_ * s, y_ * s); }
  gkVector operator/(double s) const { return gkVector(x_ / s, y_ / s); }
  gkVector& operator+=(const gkVector& o) { return *this = *this + o; }
  gkVector& operator-=(const gkVector& o) { return *this = *this - o; }

  /// Dot product.
  double dot(const gkVector& o) const { return x_ * o.x_ + y_ * o.y_; }
  /// Dot product.
  double operator*(const gkVector& o) const { return dot(o); }
  /// a.x*b.y - a.y*b.x: positive when o lies counter-clockwise of this in a y-up frame.
  double cross(const gkVector& o) const { return x_ * o.y_ - y_ * o.x_; }

  /// sqrt(x*x + y*y), evaluated in that order (not hypot) so that equal distances computed
  /// along different paths round identically and tie rules stay reproducible.
  double len() const { return std::sqrt(x_ * x_ + y_ * y_); }
  /// Euclidean distance, with the same evaluation order as len().
  double distance(const gkVector& o) const {
    const double dx = x_ - o.x_;
    const double dy = y_ - o.y_;
    return std::sqrt(dx * dx + dy * dy);
  }
  /// This vector scaled to length 1. The zero vector has no direction and stays (0, 0). A
  /// vector so short or long that len() underflows or overflows is first brought to unit order
  /// by a power of two (an exact scaling), so it still gets its direction.
  gkVector unit() const {
    const double l = len();
    if (l > 0.0 && l < HUGE_VAL) {
      return gkVector(x_ / l, y_ / l);
    }
    const double m = std::fmax(std::fabs(x_), std::fabs(y_));
    if (m == 0.0) {
      return gkVector();
    }
    if (std::isnan(x_) || std::isnan(y_) || !(m < HUGE_VAL)) {
      // NaN or infinite coordinates have no direction to give: the plain quotient says so.
      return gkVector(x_ / l, y_ / l);
    }
    int e = 0;
    std::frexp(m, &e);
    const gkVector scaled(std::ldexp(x_, -e), std::ldexp(y_, -e));
    const double ls = scaled.len();
    return gkVector(scaled.x_ / ls, scaled.y_ / ls);
  }

  /// Direction as atan2(y, x), in [-pi, pi] (-pi when y is -0.0 and x is negative).
  gkRadian angle() const { return gkRadian(std::atan2(y_, x_)); }

  /// Exact comparison, coordinate by coordinate.
  bool operator==(const gkVector& o) const { return x_ == o.x_ && y_ == o.y_; }
  bool operator!=(const gkVector& o) const { return !(*this == o); }

 private:
  double x_ = 0.0;
  double y_ = 0.0;
};

inline gkVector<2> operator*(double s, const gkVector<2>& v) {
  return v * s;
}
