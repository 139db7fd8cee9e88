#include <gk/base/numeric.h>
#include <gk/cntr/errors/contour_errors.h>
#include <gk/cntr/moments/polygon_moments.h>
#include <gk/cntr/region.h>

namespace {

/// A remaining area within this of 0 has no centre; the region's centre is then (0, 0).
constexpr double kZeroArea = 1e-15;

}  // namespace

double gkRegion::area(bool considerHoles) const {
  checkEmptyContour();
  const int k = considerHoles ? 1 : 0;
  if (!moments_.areaValid[k]) {
    double a = gw_Area(points());
    if (considerHoles) {
      for (const gkPtrHandle_const<gkRegion>& hole : holes_) {
        a -= hole->area(false);
      }
    }
    moments_.area[k] = a;
    moments_.areaValid[k] = true;
  }
  return moments_.area[k];
}

gkVector<2> gkRegion::centerOfMass(bool considerHoles) const {
  checkEmptyContour();
  if (considerHoles && holes_.empty()) {
    return centerOfMass(false);
  }
  const int k = considerHoles ? 1 : 0;
  if (!moments_.centerOfMassValid[k]) {
    if (!considerHoles) {
      moments_.centerOfMass[k] = gw_CenterOfMass(points());
    } else {
      // Take each hole's area, at its own centre, away from the boundary's.
      double a = area(false);
      gkVector<2> s = centerOfMass(false) * a;
      for (const gkPtrHandle_const<gkRegion>& hole : holes_) {
        const double holeArea = hole->area(false);
        s = s - hole->centerOfMass(false) * holeArea;
        a -= holeArea;
      }
      moments_.centerOfMass[k] = gwRealEq(a, 0.0, kZeroArea) ? gkVector<2>() : s / a;
    }
    moments_.centerOfMassValid[k] = true;
  }
  return moments_.centerOfMass[k];
}

gkMatrix<2> gkRegion::inertiaMatrix(bool considerHoles) const {
  checkEmptyContour();
  if (considerHoles && !holes_.empty()) {
    throw gkContourDefs::BadParams(L"inertiaMatrix(considerHoles) is not implemented");
  }
  const int k = considerHoles ? 1 : 0;
  if (!moments_.inertiaValid[k]) {
    moments_.inertia[k] = gw_InertiaDataPolygon(points()).inertiaMatrix();
    moments_.inertiaValid[k] = true;
  }
  return moments_.inertia[k];
}
