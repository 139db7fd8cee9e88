#include <gk/base/xform.h>

const gkXform<2> gkXform<2>::I;

gkXform<2> gkXform<2>::operator*(const gkXform& o) const {
  return gkXform(matrix_ * o.matrix_, matrix_ * o.trans_ + trans_);
}

gkXform<2> gkXform<2>::inverse() const {
  const gkMatrix<2> inv = matrix_.inverse();
  return gkXform(inv, -(inv * trans_));
}
