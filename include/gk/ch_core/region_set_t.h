#pragma once

#include <vector>

#include <gk/base/edgelet.h>
#include <gk/base/ptr_handle.h>
#include <gk/ch_core/region_t.h>
#include <gk/cntr/region_set.h>
#include <gk/gk_export.h>

/// A region set whose members are datum regions (instantiated for gkEdgelet).
///
/// The set keeps its own list of datum-region handles beside the plain member list of
/// gkRegionSet, and keeps the two in step: the plain list always holds the same objects as the
/// datum list. A member given through the plain interface that is not a datum region is turned
/// into one (its data made from its points) when the set is next made consistent.
template <typename T>
class GK_EXPORT gkRegionSetT : public gkRegionSet {
 public:
  using RegionsT = std::vector<gkPtrHandle_const<gkRegionT<T>>>;

  gkRegionSetT();
  explicit gkRegionSetT(const RegionsT& regions);
  explicit gkRegionSetT(const std::vector<gkPtrHandle<gkRegionT<T>>>& regions);
  gkRegionSetT(const gkRegionSetT& other);
  gkRegionSetT& operator=(const gkRegionSetT& other);
  ~gkRegionSetT() override;

  /// A new default object, owned by the caller (the archive's factory).
  static gkPersistent* make();

  /// Registers the class (as "gkRegionSetT<" datum name ">") with the archive's type registry.
  class GK_EXPORT Instantiator {
   public:
    Instantiator();

   private:
    gk_Instantiator registration_;
  };
  static const Instantiator sExemplar;

  /// The members as datum regions.
  const RegionsT& regionsT() const { return regionsT_; }
  /// Replaces the members (dropping every cache).
  void regionsT(const RegionsT& regions);

  /// Not implemented for datum shapes: always throws a default gkPel::BadWindow.
  void regularizeT(gkRegionSetT& result) const;
  /// Not implemented for datum shapes: always throws a default gkPel::BadWindow.
  void mapT(const gkXform<2>& xform, gkRegionSetT& result) const;

 protected:
  /// Brings the datum list in step with the plain member list (members that are not datum
  /// regions become datum regions made from their points), then drops the caches.
  void makeDataConsistentWithPoints() override;
  /// Brings the plain member list in step with the datum list, then drops the caches.
  void makePointsConsistentWithData() override;

  /// Version 0 only: the region-set layer, then the datum-region handles (which become the
  /// members). Other versions throw UnknownVersion.
  void dispatchSerialize(gkArchive& ar) override;
  void serialize_(gkArchive& ar, unsigned char version) override;

 private:
  RegionsT regionsT_;
};

extern template class GK_EXPORT gkRegionSetT<gkEdgelet>;
