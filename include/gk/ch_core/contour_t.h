#pragma once

#include <vector>

#include <gk/base/edgelet.h>
#include <gk/base/ptr_handle.h>
#include <gk/base/vector.h>
#include <gk/base/xform.h>
#include <gk/base/xform_base.h>
#include <gk/ch_core/datum_traits.h>
#include <gk/cntr/contour.h>
#include <gk/gk_export.h>

template <typename T>
class gkRegionT;

/// A contour whose vertices each carry a datum (instantiated for gkEdgelet), kept in step with
/// the vertices through a transform dataFromPoints that maps a vertex to the data's position
/// space.
///
/// After every public operation there is exactly one datum per vertex, datum i belonging to
/// vertex i. Setting points rebuilds every datum from its vertex (an edgelet keeps only its
/// position: magnitude and angle become 0); setting data rebuilds every vertex from its datum
/// through the inverse transform, which is computed once and kept.
template <typename T>
class GK_EXPORT gkContourT : public virtual gkContour {
 public:
  using Data = std::vector<T>;
  using XformHandle = gkPtrHandle_const<gk2XformBase>;

  /// No data, the identity transform; the contour part is empty, closed, label 0.
  gkContourT();
  /// The data with the identity transform; the points are derived from the data.
  explicit gkContourT(const Data& data);
  /// The data with the given transform (an empty handle means a new identity); the points are
  /// derived from the data. Throws gkMathError::Singular when the transform has no inverse.
  gkContourT(const Data& data, const XformHandle& dataFromPoints);
  gkContourT(const gkContourT& other);
  gkContourT& operator=(const gkContourT& other);
  ~gkContourT() override;

  /// A new default object, owned by the caller (the archive's factory).
  static gkPersistent* make();

  /// Registers the class (as "gkContourT<" datum name ">") with the archive's type registry.
  class GK_EXPORT Instantiator {
   public:
    Instantiator();

   private:
    gk_Instantiator registration_;
  };
  static const Instantiator sExemplar;

  const Data& data() const { return data_; }
  /// Replaces the data and rebuilds every vertex from it.
  void data(const Data& data);

  /// The transform from points to data positions (shared, compared by identity).
  const XformHandle& dataFromPointsXform() const { return dataFromPoints_; }

  /// The datum at dataFromPoints(p) (for an edgelet: magnitude 0, angle 0).
  T datum(const gkVector<2>& p) const;
  /// The point of a datum: the inverse transform applied to its position. The inverse is
  /// computed on first use and kept. Throws gkMathError::Singular when there is none.
  gkVector<2> point(const T& datum) const;

  /// Same vertex lists (exactly) and the very same transform object: two equal but separately
  /// built transforms make the contours unequal. Data, closed flag and label are not compared.
  bool operator==(const gkContourT& other) const;
  bool operator!=(const gkContourT& other) const { return !(*this == other); }

  /// Not implemented for datum shapes: always throws a default gkPel::BadWindow.
  void convexHullT(gkRegionT<T>& result) const;
  /// Not implemented for datum shapes: always throws a default gkPel::BadWindow.
  void mapT(const gkXform<2>& xform, gkContourT& result) const;

 protected:
  /// Drops the caches, then rebuilds every datum from its vertex.
  void makeDataConsistentWithPoints() override;
  /// Drops the caches, then rebuilds every vertex from its datum (the data stay as they are).
  void makePointsConsistentWithData() override;

  /// Copies another contour's data, transform and cached inverse, not its vertices.
  void copyDataFrom(const gkContourT& other);

  /// The datum contour layer: version byte (1 is written), then serialize_.
  void dispatchSerialize(gkArchive& ar) override;
  /// The contour layer, the data, and in version 1 the transform handle. After a load the
  /// inverse is recomputed on next use, and a data count that differs from the vertex count, or
  /// an empty transform, throws gkArchive::BadFormat. Other versions throw UnknownVersion.
  void serialize_(gkArchive& ar, unsigned char version) override;

 private:
  Data data_;
  XformHandle dataFromPoints_;
  mutable bool pointsFromDataValid_ = false;
  mutable XformHandle pointsFromData_;
};

extern template class GK_EXPORT gkContourT<gkEdgelet>;
