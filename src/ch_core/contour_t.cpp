#include <gk/ch_core/contour_t.h>

#include <gk/ch_core/region_t.h>

#include "ch_core/detail/not_implemented.h"
#include "ch_core/detail/type_name.h"

namespace {

gkPtrHandle_const<gk2XformBase> identityXform() {
  return gkPtrHandle_const<gk2XformBase>(new gk2XformLinear());
}

}  // namespace

// The contour part is a virtual base built by the most derived class, empty, closed, label 0;
// each constructor then installs what it was given.

template <typename T>
gkContourT<T>::gkContourT() : gkContour(), dataFromPoints_(identityXform()) {
  makePointsConsistentWithData();
}

template <typename T>
gkContourT<T>::gkContourT(const Data& data) : gkContourT(data, XformHandle()) {}

template <typename T>
gkContourT<T>::gkContourT(const Data& data, const XformHandle& dataFromPoints)
    : gkContour(), data_(data), dataFromPoints_(dataFromPoints ? dataFromPoints : identityXform()) {
  makePointsConsistentWithData();
}

template <typename T>
gkContourT<T>::gkContourT(const gkContourT& other) : gkPersistent(), gkRepBase(), gkContour() {
  *this = other;
}

template <typename T>
gkContourT<T>& gkContourT<T>::operator=(const gkContourT& other) {
  if (this != &other) {
    gkContour::operator=(other);
    copyDataFrom(other);
  }
  return *this;
}

template <typename T>
gkContourT<T>::~gkContourT() = default;

template <typename T>
gkPersistent* gkContourT<T>::make() {
  return new gkContourT();
}

template <typename T>
void gkContourT<T>::copyDataFrom(const gkContourT& other) {
  data_ = other.data_;
  dataFromPoints_ = other.dataFromPoints_;
  pointsFromDataValid_ = other.pointsFromDataValid_;
  pointsFromData_ = other.pointsFromData_;
}

template <typename T>
void gkContourT<T>::data(const Data& data) {
  data_ = data;
  makePointsConsistentWithData();
}

template <typename T>
T gkContourT<T>::datum(const gkVector<2>& p) const {
  return gkDatumTraits<T>::fromPosition(dataFromPoints_->map(p));
}

template <typename T>
gkVector<2> gkContourT<T>::point(const T& datum) const {
  if (!pointsFromDataValid_) {
    pointsFromData_ = dataFromPoints_->inverse();
    pointsFromDataValid_ = true;
  }
  return pointsFromData_->map(gkDatumTraits<T>::position(datum));
}

template <typename T>
void gkContourT<T>::makeDataConsistentWithPoints() {
  gkContour::makeDataConsistentWithPoints();
  Data rebuilt;
  rebuilt.reserve(points().size());
  for (const gkVector<2>& p : points()) {
    rebuilt.push_back(datum(p));
  }
  data_.swap(rebuilt);
}

template <typename T>
void gkContourT<T>::makePointsConsistentWithData() {
  gkContour::makePointsConsistentWithData();
  std::vector<gkVector<2>> rebuilt;
  rebuilt.reserve(data_.size());
  for (const T& d : data_) {
    rebuilt.push_back(point(d));
  }
  setPoints(rebuilt);
}

template <typename T>
bool gkContourT<T>::operator==(const gkContourT& other) const {
  return points() == other.points() && dataFromPoints_.get() == other.dataFromPoints_.get();
}

template <typename T>
void gkContourT<T>::convexHullT(gkRegionT<T>& /*result*/) const {
  gk::detail::notImplementedForDatumShapes();
}

template <typename T>
void gkContourT<T>::mapT(const gkXform<2>& /*xform*/, gkContourT& /*result*/) const {
  gk::detail::notImplementedForDatumShapes();
}

template <typename T>
gkContourT<T>::Instantiator::Instantiator()
    : registration_(typeid(gkContourT<T>), &gkContourT<T>::make,
                    gk::detail::datumTypeName("gkContourT", gkDatumTraits<T>::kName).c_str()) {}

template <typename T>
const typename gkContourT<T>::Instantiator gkContourT<T>::sExemplar;

template <typename T>
void gkContourT<T>::dispatchSerialize(gkArchive& ar) {
  if (haveVisited(static_cast<const gkContourT*>(this), sizeof(gkContourT))) {
    return;
  }
  unsigned char version = 1;
  ar || version;
  gkContourT::serialize_(ar, version);
  setVisited(static_cast<const gkContourT*>(this), sizeof(gkContourT));
}

template <typename T>
void gkContourT<T>::serialize_(gkArchive& ar, unsigned char version) {
  if (version > 1) {
    throw gkArchive::UnknownVersion("ch_core/cntrtmpl", 98);
  }
  gkContour::dispatchSerialize(ar);
  ar.container(data_, gkDatumTraits<T>::kStoredBytes);
  if (version == 1) {
    ar || dataFromPoints_;
  }
  if (ar.isLoading()) {
    // The inverse belongs to the transform as it was before the load.
    pointsFromDataValid_ = false;
    pointsFromData_.reset();
    if (!dataFromPoints_) {
      throw gkArchive::BadFormat("a datum contour has no transform", ar.offset());
    }
    if (data_.size() != points().size()) {
      throw gkArchive::BadFormat("a datum contour holds " + std::to_string(data_.size()) +
                                     " data for " + std::to_string(points().size()) + " vertices",
                                 ar.offset());
    }
  }
}

template class gkContourT<gkEdgelet>;
