#pragma once

#include <gk/base/angle.h>
#include <gk/base/vector.h>
#include <gk/gk_export.h>

/// A square matrix of N x N doubles. Only the planar case is used by this library.
template <int N>
class gkMatrix;

/// A 2x2 matrix of doubles; default is the zero matrix.
template <>
class GK_EXPORT gkMatrix<2> {
 public:
  constexpr gkMatrix() = default;
  /// Elements in row order: (0,0), (0,1), (1,0), (1,1).
  constexpr gkMatrix(double a00, double a01, double a10, double a11) : e_{{a00, a01}, {a10, a11}} {}
  /// Column 0 is (scaleX cos rotation, scaleX sin rotation), column 1 is
  /// (-scaleY sin skew, scaleY cos skew). With rotation == skew == t and unit scales this is the
  /// rotation by t.
  gkMatrix(const gkRadian& rotation, const gkRadian& skew, double scaleX, double scaleY);

  /// The identity matrix.
  static constexpr gkMatrix identity() { return gkMatrix(1.0, 0.0, 0.0, 1.0); }

  /// row and column are 0 or 1; anything else is a precondition violation reported through the
  /// assertion hook.
  double element(int row, int column) const;
  void element(int row, int column, double value);

  double determinant() const { return e_[0][0] * e_[1][1] - e_[0][1] * e_[1][0]; }
  gkMatrix transpose() const { return gkMatrix(e_[0][0], e_[1][0], e_[0][1], e_[1][1]); }
  /// Throws gkMathError::Singular when the determinant is zero or not finite.
  gkMatrix inverse() const;

  gkMatrix operator*(const gkMatrix& o) const;
  gkVector<2> operator*(const gkVector<2>& v) const {
    return gkVector<2>(e_[0][0] * v.x() + e_[0][1] * v.y(), e_[1][0] * v.x() + e_[1][1] * v.y());
  }
  gkMatrix operator+(const gkMatrix& o) const;
  gkMatrix operator*(double s) const;

  /// Exact comparison, element by element.
  bool operator==(const gkMatrix& o) const;
  bool operator!=(const gkMatrix& o) const { return !(*this == o); }

 private:
  double e_[2][2] = {{0.0, 0.0}, {0.0, 0.0}};
};
