#pragma once

#include <gk/base/archive.h>
#include <gk/base/persistent.h>
#include <gk/base/ptr_handle.h>
#include <gk/base/rep_base.h>
#include <gk/base/vector.h>
#include <gk/base/xform.h>
#include <gk/gk_export.h>

/// A planar transform held by counted handle; possibly non-linear.
class GK_EXPORT gk2XformBase : public virtual gkRepBase, public virtual gkPersistent {
 public:
  ~gk2XformBase() override;

  /// Maps a point.
  virtual gkVector<2> map(const gkVector<2>& p) const = 0;
  /// The inverse transform, as a new object. Throws gkMathError::Singular when there is none.
  virtual gkPtrHandle<gk2XformBase> inverse() const = 0;
  /// The composition "this after first": the result maps p to map(first.map(p)).
  virtual gkPtrHandle<gk2XformBase> compose(const gk2XformBase& first) const = 0;
  /// A new object equal to this one.
  virtual gkPtrHandle<gk2XformBase> clone() const = 0;
  /// True when the transform is affine everywhere.
  virtual bool isLinear() const = 0;
  /// The affine transform that best approximates this one near p (its first-order expansion);
  /// for an affine transform, the transform itself whatever p.
  virtual gkXform<2> linearXform(const gkVector<2>& p) const = 0;

 protected:
  gk2XformBase() = default;
  gk2XformBase(const gk2XformBase&) = default;
  gk2XformBase& operator=(const gk2XformBase&) = default;
};

/// An affine transform as a gk2XformBase. Default is the identity.
class GK_EXPORT gk2XformLinear : public gk2XformBase {
 public:
  gk2XformLinear() = default;
  explicit gk2XformLinear(const gkXform<2>& xform) : xform_(xform) {}
  ~gk2XformLinear() override;

  const gkXform<2>& xform() const { return xform_; }

  gkVector<2> map(const gkVector<2>& p) const override { return xform_ * p; }
  gkPtrHandle<gk2XformBase> inverse() const override;
  gkPtrHandle<gk2XformBase> compose(const gk2XformBase& first) const override;
  gkPtrHandle<gk2XformBase> clone() const override;
  bool isLinear() const override { return true; }
  gkXform<2> linearXform(const gkVector<2>& /*p*/) const override { return xform_; }

  /// Registers the class with the archive's type registry.
  static const gk_Instantiator sExemplar;
  /// A new identity transform, owned by the caller (the archive's factory).
  static gkPersistent* make();

 protected:
  /// Version byte 0, the persistent layer, the matrix rows as two vectors, the translation.
  void dispatchSerialize(gkArchive& ar) override;

 private:
  gkXform<2> xform_;
};
