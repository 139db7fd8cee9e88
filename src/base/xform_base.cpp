#include <gk/base/xform_base.h>

namespace {

/// "second after first" for transforms that are not both affine: kept as the two handles.
class ComposedXform final : public gk2XformBase {
 public:
  ComposedXform(gkPtrHandle<gk2XformBase> second, gkPtrHandle<gk2XformBase> first)
      : second_(std::move(second)), first_(std::move(first)) {}

  gkVector<2> map(const gkVector<2>& p) const override { return second_->map(first_->map(p)); }
  gkPtrHandle<gk2XformBase> inverse() const override {
    // (s after f)^-1 = f^-1 after s^-1.
    const gkPtrHandle<gk2XformBase> firstInverse = first_->inverse();
    const gkPtrHandle<gk2XformBase> secondInverse = second_->inverse();
    return gkPtrHandle<gk2XformBase>(new ComposedXform(firstInverse, secondInverse));
  }
  gkPtrHandle<gk2XformBase> compose(const gk2XformBase& first) const override {
    return gkPtrHandle<gk2XformBase>(new ComposedXform(clone(), first.clone()));
  }
  gkPtrHandle<gk2XformBase> clone() const override {
    return gkPtrHandle<gk2XformBase>(new ComposedXform(second_->clone(), first_->clone()));
  }
  bool isLinear() const override { return second_->isLinear() && first_->isLinear(); }
  gkXform<2> linearXform(const gkVector<2>& p) const override {
    // Chain rule: the expansion of s at f(p) after the expansion of f at p.
    return second_->linearXform(first_->map(p)) * first_->linearXform(p);
  }

 private:
  gkPtrHandle<gk2XformBase> second_;
  gkPtrHandle<gk2XformBase> first_;
};

}  // namespace

gk2XformBase::~gk2XformBase() = default;

gk2XformLinear::~gk2XformLinear() = default;

gkPtrHandle<gk2XformBase> gk2XformLinear::inverse() const {
  return gkPtrHandle<gk2XformBase>(new gk2XformLinear(xform_.inverse()));
}

gkPtrHandle<gk2XformBase> gk2XformLinear::compose(const gk2XformBase& first) const {
  if (first.isLinear()) {
    return gkPtrHandle<gk2XformBase>(new gk2XformLinear(xform_ * first.linearXform(gkVector<2>())));
  }
  return gkPtrHandle<gk2XformBase>(new ComposedXform(clone(), first.clone()));
}

gkPtrHandle<gk2XformBase> gk2XformLinear::clone() const {
  return gkPtrHandle<gk2XformBase>(new gk2XformLinear(xform_));
}

gkPersistent* gk2XformLinear::make() {
  return new gk2XformLinear();
}

const gk_Instantiator gk2XformLinear::sExemplar(typeid(gk2XformLinear), &gk2XformLinear::make,
                                                "gk2XformLinear");

void gk2XformLinear::dispatchSerialize(gkArchive& ar) {
  if (haveVisited(static_cast<const gk2XformLinear*>(this), sizeof(gk2XformLinear))) {
    return;
  }
  unsigned char version = 0;
  ar || version;
  if (version != 0) {
    throw gkArchive::UnknownVersion("gk2XformLinear", 0);
  }
  gkPersistent::dispatchSerialize(ar);
  const gkMatrix<2>& m = xform_.matrix();
  gkVector<2> row0(m.element(0, 0), m.element(0, 1));
  gkVector<2> row1(m.element(1, 0), m.element(1, 1));
  gkVector<2> trans = xform_.trans();
  ar || row0 || row1 || trans;
  if (ar.isLoading()) {
    xform_ = gkXform<2>(gkMatrix<2>(row0.x(), row0.y(), row1.x(), row1.y()), trans);
  }
  setVisited(static_cast<const gk2XformLinear*>(this), sizeof(gk2XformLinear));
}
