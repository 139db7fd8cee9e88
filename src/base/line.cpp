#include <gk/base/line.h>

#include <cmath>

#include <gk/base/tolerances.h>

bool gkLine::isParallel(const gkLine& other) const {
  if (isDegenerate() || other.isDegenerate()) {
    return true;
  }
  // |d1 x d2| = |d1| |d2| sin(angle): compare the sine, not the raw cross product, so that the
  // answer is the same at every scale. Written without division so huge lengths cannot overflow
  // to an inf/inf.
  const double cross = direction_.cross(other.direction_);
  return std::fabs(cross) <= gkTolParallelSine * direction_.len() * other.direction_.len();
}

gkVector<2> gkLine::intersect(const gkLine& other) const {
  if (isParallel(other)) {
    return point_;
  }
  // point_ + t * direction_ lies on the other line where (q - p) x e == t * (d x e).
  const double t =
      (other.point_ - point_).cross(other.direction_) / direction_.cross(other.direction_);
  return point_ + direction_ * t;
}

gkVector<2> gkLine::proj(const gkVector<2>& pt) const {
  if (isDegenerate()) {
    return point_;
  }
  const double t = (pt - point_).dot(direction_) / direction_.dot(direction_);
  return point_ + direction_ * t;
}

double gkLine::distToPoint(const gkVector<2>& pt) const {
  if (isDegenerate()) {
    return pt.distance(point_);
  }
  return std::fabs(direction_.cross(pt - point_)) / direction_.len();
}
