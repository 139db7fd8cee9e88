#include <gk/ch_core/region_t.h>

#include "ch_core/detail/not_implemented.h"
#include "ch_core/detail/type_name.h"

// The contour part is one virtual base shared by the datum contour and the region, built by
// the most derived class (empty, closed, label 0); each constructor installs what it was given.

template <typename T>
gkRegionT<T>::gkRegionT() : gkContour(), gkContourT<T>(), gkRegion() {}

template <typename T>
gkRegionT<T>::gkRegionT(const gkContourT<T>& c, unsigned long label)
    : gkContour(), gkContourT<T>(), gkRegion() {
  // c's data, transform and inverse, but not its vertices: kept as it is, the region has no
  // vertex until its points are next made consistent with its data.
  this->copyDataFrom(c);
  this->label(label);
}

template <typename T>
gkRegionT<T>::gkRegionT(const Data& data, unsigned long label)
    : gkRegionT(data, XformHandle(), label) {}

template <typename T>
gkRegionT<T>::gkRegionT(const Data& data, const XformHandle& dataFromPoints, unsigned long label)
    : gkContour(), gkContourT<T>(data, dataFromPoints), gkRegion() {
  this->label(label);
}

template <typename T>
gkRegionT<T>::gkRegionT(const gkRegionT& other)
    : gkPersistent(), gkRepBase(), gkContour(), gkContourT<T>(), gkRegion() {
  *this = other;
}

template <typename T>
gkRegionT<T>& gkRegionT<T>::operator=(const gkRegionT& other) {
  if (this != &other) {
    gkRegion::operator=(other);
    this->copyDataFrom(other);
  }
  return *this;
}

template <typename T>
gkRegionT<T>::~gkRegionT() = default;

template <typename T>
gkPersistent* gkRegionT<T>::make() {
  return new gkRegionT();
}

template <typename T>
typename gkRegionT<T>::HolesT gkRegionT<T>::holes() const {
  HolesT result;
  for (const gkPtrHandle_const<gkRegion>& hole : gkRegion::holes()) {
    if (const auto* datumHole = dynamic_cast<const gkRegionT*>(hole.get())) {
      // Take a share of the same object: the hole is held, not copied.
      result.push_back(gkPtrHandle_const<gkRegionT>(datumHole));
    }
  }
  return result;
}

template <typename T>
void gkRegionT<T>::holes(const HolesT& holes) {
  gkRegion::holes(gkRegion::Holes(holes.begin(), holes.end()));
}

template <typename T>
void gkRegionT<T>::holes(const std::vector<gkPtrHandle<gkRegionT>>& holes) {
  gkRegion::holes(gkRegion::Holes(holes.begin(), holes.end()));
}

template <typename T>
bool gkRegionT<T>::operator==(const gkRegionT& other) const {
  return gkContourT<T>::operator==(other);
}

template <typename T>
void gkRegionT<T>::draw(gkUITablet& tablet, const gkColor& color,
                        const gkUITablet::Layers& layer) const {
  gkContour::draw(tablet, gkContourDefs::eDrawOutline, color, layer);
  for (const gkPtrHandle_const<gkRegion>& hole : gkRegion::holes()) {
    hole->gkContour::draw(tablet, gkContourDefs::eDrawOutline, color, layer);
  }
}

template <typename T>
void gkRegionT<T>::regularizeT(gkRegionT& /*result*/) const {
  gk::detail::notImplementedForDatumShapes();
}

template <typename T>
void gkRegionT<T>::mapT(const gkXform<2>& /*xform*/, gkRegionT& /*result*/) const {
  gk::detail::notImplementedForDatumShapes();
}

template <typename T>
gkRegionT<T>::Instantiator::Instantiator()
    : registration_(typeid(gkRegionT<T>), &gkRegionT<T>::make,
                    gk::detail::datumTypeName("gkRegionT", gkDatumTraits<T>::kName).c_str()) {}

template <typename T>
const typename gkRegionT<T>::Instantiator gkRegionT<T>::sExemplar;

template <typename T>
void gkRegionT<T>::dispatchSerialize(gkArchive& ar) {
  if (gkPersistent::haveVisited(static_cast<const gkRegionT*>(this), sizeof(gkRegionT))) {
    return;
  }
  unsigned char version = 0;
  ar || version;
  gkRegionT::serialize_(ar, version);
  gkPersistent::setVisited(static_cast<const gkRegionT*>(this), sizeof(gkRegionT));
}

template <typename T>
void gkRegionT<T>::serialize_(gkArchive& ar, unsigned char version) {
  if (version != 0) {
    throw gkArchive::UnknownVersion("ch_core/cntrtmpl", 186);
  }
  gkRegion::dispatchSerialize(ar);
  if (ar.isLoading()) {
    makeDataConsistentWithPoints();
  }
}

template class gkRegionT<gkEdgelet>;
