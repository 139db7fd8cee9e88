#include <gk/ch_core/region_set_t.h>

#include "ch_core/detail/not_implemented.h"

namespace {

template <typename T>
typename gkRegionSetT<T>::RegionsT asConst(const std::vector<gkPtrHandle<gkRegionT<T>>>& regions) {
  return typename gkRegionSetT<T>::RegionsT(regions.begin(), regions.end());
}

}  // namespace

template <typename T>
gkRegionSetT<T>::gkRegionSetT() : gkPersistent(), gkRepBase(), gkRegionSet() {}

template <typename T>
gkRegionSetT<T>::gkRegionSetT(const RegionsT& regions)
    : gkPersistent(), gkRepBase(), gkRegionSet() {
  regionsT(regions);
}

template <typename T>
gkRegionSetT<T>::gkRegionSetT(const std::vector<gkPtrHandle<gkRegionT<T>>>& regions)
    : gkRegionSetT(asConst<T>(regions)) {}

template <typename T>
gkRegionSetT<T>::gkRegionSetT(const gkRegionSetT& other)
    : gkPersistent(), gkRepBase(), gkRegionSet(other), regionsT_(other.regionsT_) {}

template <typename T>
gkRegionSetT<T>& gkRegionSetT<T>::operator=(const gkRegionSetT& other) {
  if (this != &other) {
    gkRegionSet::operator=(other);
    regionsT_ = other.regionsT_;
  }
  return *this;
}

template <typename T>
gkRegionSetT<T>::~gkRegionSetT() = default;

template <typename T>
gkPersistent* gkRegionSetT<T>::make() {
  return new gkRegionSetT();
}

template <typename T>
void gkRegionSetT<T>::regionsT(const RegionsT& regions) {
  cleanCacheInfo();
  regionsT_ = regions;
  makePointsConsistentWithData();
}

template <typename T>
void gkRegionSetT<T>::makeDataConsistentWithPoints() {
  RegionsT rebuilt;
  for (const gkPtrHandle_const<gkRegion>& member : regions()) {
    if (const auto* datumRegion = dynamic_cast<const gkRegionT<T>*>(member.get())) {
      rebuilt.push_back(gkPtrHandle_const<gkRegionT<T>>(datumRegion));
    } else {
      // A plain region becomes a datum region whose data are made from its vertices.
      gkPtrHandle<gkRegionT<T>> converted(new gkRegionT<T>());
      converted->points(member->points());
      converted->label(member->label());
      rebuilt.push_back(converted);
    }
  }
  regionsT_.swap(rebuilt);
  setRegions(Regions(regionsT_.begin(), regionsT_.end()));
  cleanCacheInfo();
}

template <typename T>
void gkRegionSetT<T>::makePointsConsistentWithData() {
  setRegions(Regions(regionsT_.begin(), regionsT_.end()));
  cleanCacheInfo();
}

template <typename T>
void gkRegionSetT<T>::regularizeT(gkRegionSetT& /*result*/) const {
  gk::detail::notImplementedForDatumShapes();
}

template <typename T>
void gkRegionSetT<T>::mapT(const gkXform<2>& /*xform*/, gkRegionSetT& /*result*/) const {
  gk::detail::notImplementedForDatumShapes();
}

template class gkRegionSetT<gkEdgelet>;
