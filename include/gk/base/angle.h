#pragma once

#include <gk/gk_export.h>

class gkDegree;
class gkAngle8;

/// An angle in radians. Arithmetic keeps the value as given; only norm() wraps.
class GK_EXPORT gkRadian {
 public:
  gkRadian() = default;
  explicit gkRadian(double radians) : value_(radians) {}
  gkRadian(const gkDegree& degrees);  // NOLINT(google-explicit-constructor): angles convert freely
  gkRadian(const gkAngle8& angle);    // NOLINT(google-explicit-constructor)

  double toDouble() const { return value_; }

  /// The same direction brought into [0, 2*pi). A NaN or infinite angle gives NaN.
  gkRadian norm() const;

  gkRadian operator-() const { return gkRadian(-value_); }
  gkRadian operator+(const gkRadian& o) const { return gkRadian(value_ + o.value_); }
  gkRadian operator-(const gkRadian& o) const { return gkRadian(value_ - o.value_); }
  gkRadian operator/(double d) const { return gkRadian(value_ / d); }
  gkRadian operator*(double d) const { return gkRadian(value_ * d); }

  /// A strict weak order on the raw value (so an angle and the same angle plus a turn differ).
  /// NaN angles are ordered after every number and equivalent to one another, so a NaN key
  /// cannot break an ordered map.
  bool operator<(const gkRadian& o) const;
  bool operator==(const gkRadian& o) const { return value_ == o.value_; }
  bool operator!=(const gkRadian& o) const { return !(*this == o); }

 private:
  double value_ = 0.0;
};

/// An angle in degrees.
class GK_EXPORT gkDegree {
 public:
  gkDegree() = default;
  explicit gkDegree(double degrees) : value_(degrees) {}
  gkDegree(const gkRadian& radians);  // NOLINT(google-explicit-constructor)
  gkDegree(const gkAngle8& angle);    // NOLINT(google-explicit-constructor)

  double toDouble() const { return value_; }
  gkDegree operator+(const gkDegree& o) const { return gkDegree(value_ + o.value_); }
  bool operator==(const gkDegree& o) const { return value_ == o.value_; }
  bool operator!=(const gkDegree& o) const { return !(*this == o); }

 private:
  double value_ = 0.0;
};

/// An angle in 256ths of a full turn, as edge detectors report it. Arithmetic wraps modulo 256.
class GK_EXPORT gkAngle8 {
 public:
  gkAngle8() = default;
  explicit gkAngle8(unsigned char steps) : value_(steps) {}
  /// Rounds to the nearest 256th of a turn (halves away from zero) and wraps into [0, 256).
  /// A NaN or infinite angle gives 0.
  gkAngle8(const gkDegree& degrees);  // NOLINT(google-explicit-constructor)
  gkAngle8(const gkRadian& radians);  // NOLINT(google-explicit-constructor)

  /// The stored byte.
  unsigned char value() const { return value_; }
  explicit operator unsigned char() const { return value_; }

  gkAngle8 operator-(const gkAngle8& o) const {
    return gkAngle8(static_cast<unsigned char>(value_ - o.value_));
  }
  gkAngle8 operator-() const { return gkAngle8(static_cast<unsigned char>(-value_)); }
  bool operator==(const gkAngle8& o) const { return value_ == o.value_; }
  bool operator!=(const gkAngle8& o) const { return !(*this == o); }

 private:
  unsigned char value_ = 0;
};
