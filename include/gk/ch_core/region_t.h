#pragma once

#include <vector>

#include <gk/base/edgelet.h>
#include <gk/base/ptr_handle.h>
#include <gk/ch_core/contour_t.h>
#include <gk/cntr/region.h>
#include <gk/gk_export.h>

/// A region whose outer boundary's vertices each carry a datum (instantiated for gkEdgelet).
/// The datum contour and the region share one contour part; holes are datum regions too.
template <typename T>
class GK_EXPORT gkRegionT : public gkContourT<T>, public gkRegion {
 public:
  using Data = typename gkContourT<T>::Data;
  using XformHandle = typename gkContourT<T>::XformHandle;
  using HolesT = std::vector<gkPtrHandle_const<gkRegionT>>;

  /// An empty region with no data and the identity transform.
  gkRegionT();
  /// Holds c's data, transform and cached inverse, but none of c's vertices, and no hole; the
  /// label is set last. Nothing derives vertices here: the region has c's data and no vertex
  /// until its points are next made consistent with its data (setting data does that).
  gkRegionT(const gkContourT<T>& c, unsigned long label);
  /// The data with the identity transform and the label; the points are derived from the data.
  gkRegionT(const Data& data, unsigned long label);
  /// The data with the given transform and the label; the points are derived from the data.
  gkRegionT(const Data& data, const XformHandle& dataFromPoints, unsigned long label = 0);
  gkRegionT(const gkRegionT& other);
  gkRegionT& operator=(const gkRegionT& other);
  ~gkRegionT() override;

  /// A new default object, owned by the caller (the archive's factory).
  static gkPersistent* make();

  /// Registers the class (as "gkRegionT<" datum name ">") with the archive's type registry.
  class GK_EXPORT Instantiator {
   public:
    Instantiator();

   private:
    gk_Instantiator registration_;
  };
  static const Instantiator sExemplar;

  /// The holes that are datum regions, in order (holes of another kind, set through the plain
  /// region interface, are left out).
  HolesT holes() const;
  /// Sets the holes, with the checks of gkRegion::holes.
  void holes(const HolesT& holes);
  void holes(const std::vector<gkPtrHandle<gkRegionT>>& holes);

  /// Compares the datum-contour parts only (vertices and transform identity); holes are not
  /// compared.
  bool operator==(const gkRegionT& other) const;
  bool operator!=(const gkRegionT& other) const { return !(*this == other); }

  using gkRegion::draw;
  /// Draws the outer boundary and the holes' boundaries, each as the contour draws itself.
  void draw(gkUITablet& tablet, const gkColor& color,
            const gkUITablet::Layers& layer) const override;

  /// Not implemented for datum shapes: always throws a default gkPel::BadWindow.
  void regularizeT(gkRegionT& result) const;
  /// Not implemented for datum shapes: always throws a default gkPel::BadWindow.
  void mapT(const gkXform<2>& xform, gkRegionT& result) const;

 protected:
  void cleanCacheInfo() override { gkRegion::cleanCacheInfo(); }
  void makeDataConsistentWithPoints() override { gkContourT<T>::makeDataConsistentWithPoints(); }
  void makePointsConsistentWithData() override { gkContourT<T>::makePointsConsistentWithData(); }

  /// Version 0 only: the region layer. The data are not stored: after a load they are rebuilt
  /// from the vertices (positions only). Other versions throw UnknownVersion.
  void dispatchSerialize(gkArchive& ar) override;
  void serialize_(gkArchive& ar, unsigned char version) override;
};

extern template class GK_EXPORT gkRegionT<gkEdgelet>;
