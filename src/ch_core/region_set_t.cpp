#include <gk/ch_core/region_set_t.h>

#include "ch_core/detail/not_implemented.h"
#include "ch_core/detail/type_name.h"

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

template <typename T>
gkRegionSetT<T>::Instantiator::Instantiator()
    : registration_(typeid(gkRegionSetT<T>), &gkRegionSetT<T>::make,
                    gk::detail::datumTypeName("gkRegionSetT", gkDatumTraits<T>::kName).c_str()) {}

template <typename T>
const typename gkRegionSetT<T>::Instantiator gkRegionSetT<T>::sExemplar;

template <typename T>
void gkRegionSetT<T>::dispatchSerialize(gkArchive& ar) {
  if (haveVisited(static_cast<const gkRegionSetT*>(this), sizeof(gkRegionSetT))) {
    return;
  }
  unsigned char version = 0;
  ar || version;
  gkRegionSetT::serialize_(ar, version);
  setVisited(static_cast<const gkRegionSetT*>(this), sizeof(gkRegionSetT));
}

template <typename T>
void gkRegionSetT<T>::serialize_(gkArchive& ar, unsigned char version) {
  if (version != 0) {
    throw gkArchive::UnknownVersion("ch_core/cntrtmpl", 283);
  }
  gkRegionSet::dispatchSerialize(ar);
  RegionsT loaded = regionsT_;
  ar.container(loaded, 1);
  if (ar.isLoading()) {
    for (const gkPtrHandle_const<gkRegionT<T>>& member : loaded) {
      if (!member) {
        throw gkArchive::BadFormat("a region set member handle is empty", ar.offset());
      }
    }
    regionsT_.swap(loaded);
    makePointsConsistentWithData();
  }
}

template class gkRegionSetT<gkEdgelet>;
