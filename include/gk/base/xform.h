#pragma once

#include <gk/base/matrix.h>
#include <gk/base/vector.h>
#include <gk/gk_export.h>

/// An affine transform of N-space. Only the planar case is used by this library.
template <int N>
class gkXform;

/// An affine planar transform p -> matrix * p + trans. Default is the identity.
template <>
class GK_EXPORT gkXform<2> {
 public:
  constexpr gkXform() : matrix_(gkMatrix<2>::identity()) {}
  constexpr gkXform(const gkMatrix<2>& matrix, const gkVector<2>& translation)
      : matrix_(matrix), trans_(translation) {}

  /// The identity transform.
  static const gkXform I;

  const gkMatrix<2>& matrix() const { return matrix_; }
  const gkVector<2>& trans() const { return trans_; }

  /// Maps a point.
  gkVector<2> operator*(const gkVector<2>& p) const { return matrix_ * p + trans_; }
  /// Composition: (a * b) maps p to a(b(p)).
  gkXform operator*(const gkXform& o) const;
  /// The inverse transform. Throws gkMathError::Singular when the matrix is not invertible.
  gkXform inverse() const;

  /// Exact comparison of all six numbers.
  bool operator==(const gkXform& o) const { return matrix_ == o.matrix_ && trans_ == o.trans_; }
  bool operator!=(const gkXform& o) const { return !(*this == o); }

 private:
  gkMatrix<2> matrix_;
  gkVector<2> trans_;
};
