#include <gk/base/matrix.h>

#include <cmath>

#include <gk/base/assert.h>
#include <gk/base/math_error.h>

gkMatrix<2>::gkMatrix(const gkRadian& rotation, const gkRadian& skew, double scaleX, double scaleY)
    : e_{{scaleX * std::cos(rotation.toDouble()), -scaleY * std::sin(skew.toDouble())},
         {scaleX * std::sin(rotation.toDouble()), scaleY * std::cos(skew.toDouble())}} {}

double gkMatrix<2>::element(int row, int column) const {
  GK_ASSERT(row >= 0 && row < 2 && column >= 0 && column < 2);
  return e_[row][column];
}

void gkMatrix<2>::element(int row, int column, double value) {
  GK_ASSERT(row >= 0 && row < 2 && column >= 0 && column < 2);
  e_[row][column] = value;
}

gkMatrix<2> gkMatrix<2>::inverse() const {
  const double det = determinant();
  if (det == 0.0 || !std::isfinite(det)) {
    throw gkMathError::Singular(L"matrix is singular");
  }
  return gkMatrix(e_[1][1] / det, -e_[0][1] / det, -e_[1][0] / det, e_[0][0] / det);
}

gkMatrix<2> gkMatrix<2>::operator*(const gkMatrix& o) const {
  return gkMatrix(
      e_[0][0] * o.e_[0][0] + e_[0][1] * o.e_[1][0], e_[0][0] * o.e_[0][1] + e_[0][1] * o.e_[1][1],
      e_[1][0] * o.e_[0][0] + e_[1][1] * o.e_[1][0], e_[1][0] * o.e_[0][1] + e_[1][1] * o.e_[1][1]);
}

gkMatrix<2> gkMatrix<2>::operator+(const gkMatrix& o) const {
  return gkMatrix(e_[0][0] + o.e_[0][0], e_[0][1] + o.e_[0][1], e_[1][0] + o.e_[1][0],
                  e_[1][1] + o.e_[1][1]);
}

gkMatrix<2> gkMatrix<2>::operator*(double s) const {
  return gkMatrix(e_[0][0] * s, e_[0][1] * s, e_[1][0] * s, e_[1][1] * s);
}

bool gkMatrix<2>::operator==(const gkMatrix& o) const {
  return e_[0][0] == o.e_[0][0] && e_[0][1] == o.e_[0][1] && e_[1][0] == o.e_[1][0] &&
         e_[1][1] == o.e_[1][1];
}
