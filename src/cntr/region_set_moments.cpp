#include <gk/base/numeric.h>
#include <gk/cntr/moments/inertia_data.h>
#include <gk/cntr/region_set.h>

namespace {

/// A total area within this of 0 has no centre; the set's centre is then (0, 0).
constexpr double kZeroArea = 1e-15;

}  // namespace

double gkRegionSet::area(bool considerHoles) const {
  const int k = considerHoles ? 1 : 0;
  if (!moments_.areaValid[k]) {
    double a = 0.0;
    for (const gkPtrHandle_const<gkRegion>& region : regions_) {
      a += region->area(considerHoles);
    }
    moments_.area[k] = a;
    moments_.areaValid[k] = true;
  }
  return moments_.area[k];
}

gkVector<2> gkRegionSet::centerOfMass(bool considerHoles) const {
  checkEmptyRegionSet();
  const int k = considerHoles ? 1 : 0;
  if (!moments_.centerOfMassValid[k]) {
    gkVector<2> s;
    double a = 0.0;
    for (const gkPtrHandle_const<gkRegion>& region : regions_) {
      const double ra = region->area(considerHoles);
      s = s + region->centerOfMass(considerHoles) * ra;
      a += ra;
    }
    moments_.centerOfMass[k] = gwRealEq(a, 0.0, kZeroArea) ? gkVector<2>() : s / a;
    moments_.centerOfMassValid[k] = true;
  }
  return moments_.centerOfMass[k];
}

gkMatrix<2> gkRegionSet::inertiaMatrix(bool considerHoles) const {
  checkEmptyRegionSet();
  const int k = considerHoles ? 1 : 0;
  if (!moments_.inertiaValid[k]) {
    gk_InertiaData total;
    for (const gkPtrHandle_const<gkRegion>& region : regions_) {
      total =
          total + gk_InertiaData(region->area(considerHoles), region->centerOfMass(considerHoles),
                                 region->inertiaMatrix(considerHoles));
    }
    moments_.inertia[k] = total.inertiaMatrix();
    moments_.inertiaValid[k] = true;
  }
  return moments_.inertia[k];
}
