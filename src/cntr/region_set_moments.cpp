#include <gk/base/numeric.h>
#include <gk/cntr/moments/inertia_data.h>
#include <gk/cntr/region_set.h>

namespace {

/// A total area within this of 0 has no centre; the set's centre is then (0, 0).
constexpr double kZeroArea = 1e-15;

}  // namespace

double gkRegionSet::area(bool considerHoles) const {
  const int k = considerHoles ? 1 : 0;
  if (!areaValid_[k]) {
    double a = 0.0;
    for (const gkPtrHandle_const<gkRegion>& region : regions_) {
      a += region->area(considerHoles);
    }
    area_[k] = a;
    areaValid_[k] = true;
  }
  return area_[k];
}

gkVector<2> gkRegionSet::centerOfMass(bool considerHoles) const {
  checkEmptyRegionSet();
  const int k = considerHoles ? 1 : 0;
  if (!centerOfMassValid_[k]) {
    gkVector<2> s;
    double a = 0.0;
    for (const gkPtrHandle_const<gkRegion>& region : regions_) {
      const double ra = region->area(considerHoles);
      s = s + region->centerOfMass(considerHoles) * ra;
      a += ra;
    }
    centerOfMass_[k] = gwRealEq(a, 0.0, kZeroArea) ? gkVector<2>() : s / a;
    centerOfMassValid_[k] = true;
  }
  return centerOfMass_[k];
}

gkMatrix<2> gkRegionSet::inertiaMatrix(bool considerHoles) const {
  checkEmptyRegionSet();
  const int k = considerHoles ? 1 : 0;
  if (!inertiaValid_[k]) {
    gk_InertiaData total;
    for (const gkPtrHandle_const<gkRegion>& region : regions_) {
      total =
          total + gk_InertiaData(region->area(considerHoles), region->centerOfMass(considerHoles),
                                 region->inertiaMatrix(considerHoles));
    }
    inertia_[k] = total.inertiaMatrix();
    inertiaValid_[k] = true;
  }
  return inertia_[k];
}
