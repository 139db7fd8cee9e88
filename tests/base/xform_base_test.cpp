#include <gtest/gtest.h>

#include <stdexcept>

#include <gk/base/math_error.h>
#include <gk/base/matrix.h>
#include <gk/base/ptr_handle.h>
#include <gk/base/vector.h>
#include <gk/base/xform.h>
#include <gk/base/xform_base.h>

namespace {

const gkXform<2> kStretchShift(gkMatrix<2>(2.0, 0.0, 0.0, 4.0), gkVector<2>(1.0, 2.0));
const gkXform<2> kTurnShift(gkMatrix<2>(0.0, -1.0, 1.0, 0.0), gkVector<2>(3.0, -1.0));

/// A non-linear transform for the tests: (x, y) -> (x + k y^2, y). Its inverse is the bend by -k,
/// and its first-order expansion at p has the Jacobian (1 2ky; 0 1).
class Bend final : public gk2XformBase {
 public:
  explicit Bend(double k) : k_(k) {}

  gkVector<2> map(const gkVector<2>& p) const override {
    return gkVector<2>(p.x() + k_ * p.y() * p.y(), p.y());
  }
  gkPtrHandle<gk2XformBase> inverse() const override {
    return gkPtrHandle<gk2XformBase>(new Bend(-k_));
  }
  gkPtrHandle<gk2XformBase> compose(const gk2XformBase& first) const override {
    // Only bends after bends are needed here: the bends add up.
    const Bend* b = dynamic_cast<const Bend*>(&first);
    return b != nullptr ? gkPtrHandle<gk2XformBase>(new Bend(k_ + b->k_))
                        : gkPtrHandle<gk2XformBase>();
  }
  gkPtrHandle<gk2XformBase> clone() const override {
    return gkPtrHandle<gk2XformBase>(new Bend(k_));
  }
  bool isLinear() const override { return false; }
  gkXform<2> linearXform(const gkVector<2>& p) const override {
    const gkMatrix<2> jacobian(1.0, 2.0 * k_ * p.y(), 0.0, 1.0);
    return gkXform<2>(jacobian, map(p) - jacobian * p);
  }

 private:
  double k_;
};

const gk2XformLinear& asLinear(const gkPtrHandle<gk2XformBase>& h) {
  const gk2XformLinear* linear = dynamic_cast<const gk2XformLinear*>(h.get());
  if (linear == nullptr) {
    throw std::runtime_error("not a gk2XformLinear");
  }
  return *linear;
}

}  // namespace

// ---- gk2XformLinear --------------------------------------------------------------------------

TEST(XformLinear, DefaultIsTheIdentity) {
  const gk2XformLinear x;
  EXPECT_EQ(x.xform(), gkXform<2>::I);
  EXPECT_EQ(x.map(gkVector<2>(0.1, -7.0)), gkVector<2>(0.1, -7.0));
}

TEST(XformLinear, MapsLikeItsAffineTransform) {
  const gk2XformLinear x(kStretchShift);
  EXPECT_EQ(x.xform(), kStretchShift);
  EXPECT_EQ(x.map(gkVector<2>(3.0, -1.0)), gkVector<2>(7.0, -2.0));
  EXPECT_EQ(x.map(gkVector<2>(0.5, 0.25)), kStretchShift * gkVector<2>(0.5, 0.25));
}

TEST(XformLinear, IsLinear) {
  EXPECT_TRUE(gk2XformLinear().isLinear());
  EXPECT_TRUE(gk2XformLinear(kTurnShift).isLinear());
}

TEST(XformLinear, LinearXformIsTheTransformItselfWhateverThePoint) {
  const gk2XformLinear x(kTurnShift);
  EXPECT_EQ(x.linearXform(gkVector<2>()), kTurnShift);
  EXPECT_EQ(x.linearXform(gkVector<2>(1e9, -3.5)), kTurnShift);
}

TEST(XformLinear, InverseIsANewObjectHoldingTheInverseTransform) {
  const gkPtrHandle<gk2XformBase> original(new gk2XformLinear(kStretchShift));
  const gkPtrHandle<gk2XformBase> inv = original->inverse();
  ASSERT_TRUE(inv);
  EXPECT_NE(inv.get(), original.get());
  EXPECT_EQ(inv->refCount(), 1);
  EXPECT_EQ(original->refCount(), 1);
  EXPECT_EQ(asLinear(inv).xform(), kStretchShift.inverse());
  EXPECT_EQ(asLinear(original).xform(), kStretchShift);
}

TEST(XformLinear, InverseUndoesTheMapping) {
  const gk2XformLinear x(kTurnShift);
  const gkPtrHandle<gk2XformBase> inv = x.inverse();
  const gkVector<2> p(5.0, 7.0);
  EXPECT_EQ(inv->map(x.map(p)), p);
  EXPECT_TRUE(inv->isLinear());
}

TEST(XformLinear, InverseOfASingularTransformThrowsSingular) {
  const gk2XformLinear flat(gkXform<2>(gkMatrix<2>(1.0, 2.0, 2.0, 4.0), gkVector<2>(1.0, 0.0)));
  EXPECT_THROW(flat.inverse(), gkMathError::Singular);
}

TEST(XformLinear, ComposeMapsThroughTheArgumentFirst) {
  const gk2XformLinear stretch(kStretchShift);
  const gk2XformLinear turn(kTurnShift);
  const gkPtrHandle<gk2XformBase> turnAfterStretch = turn.compose(stretch);
  const gkPtrHandle<gk2XformBase> stretchAfterTurn = stretch.compose(turn);
  const gkVector<2> p(1.0, 2.0);
  // stretch: (1, 2) -> (3, 10); turn: (3, 10) -> (-7, 2).
  EXPECT_EQ(turnAfterStretch->map(p), gkVector<2>(-7.0, 2.0));
  // turn: (1, 2) -> (1, 0); stretch: (1, 0) -> (3, 2).
  EXPECT_EQ(stretchAfterTurn->map(p), gkVector<2>(3.0, 2.0));
}

TEST(XformLinear, ComposingTwoLinearTransformsGivesTheirProduct) {
  const gk2XformLinear stretch(kStretchShift);
  const gk2XformLinear turn(kTurnShift);
  const gkPtrHandle<gk2XformBase> c = turn.compose(stretch);
  EXPECT_TRUE(c->isLinear());
  EXPECT_EQ(asLinear(c).xform(), kTurnShift * kStretchShift);
  EXPECT_NE(c.get(), static_cast<const gk2XformBase*>(&turn));
  EXPECT_NE(c.get(), static_cast<const gk2XformBase*>(&stretch));
}

TEST(XformLinear, ComposeLeavesBothOperandsUnchanged) {
  const gk2XformLinear stretch(kStretchShift);
  const gk2XformLinear turn(kTurnShift);
  const gkPtrHandle<gk2XformBase> c = turn.compose(stretch);
  EXPECT_EQ(turn.xform(), kTurnShift);
  EXPECT_EQ(stretch.xform(), kStretchShift);
}

TEST(XformLinear, CloneIsADistinctObjectEqualToTheOriginal) {
  const gkPtrHandle<gk2XformBase> original(new gk2XformLinear(kTurnShift));
  const gkPtrHandle<gk2XformBase> copy = original->clone();
  ASSERT_TRUE(copy);
  EXPECT_NE(copy.get(), original.get());
  EXPECT_EQ(copy->refCount(), 1);
  EXPECT_EQ(original->refCount(), 1);
  EXPECT_EQ(asLinear(copy).xform(), kTurnShift);
  EXPECT_TRUE(copy->isLinear());
}

TEST(XformLinear, CloneOutlivesTheOriginal) {
  gkPtrHandle<gk2XformBase> original(new gk2XformLinear(kStretchShift));
  const gkPtrHandle<gk2XformBase> copy = original->clone();
  original.reset();
  EXPECT_EQ(copy->map(gkVector<2>(1.0, 1.0)), gkVector<2>(3.0, 6.0));
}

// ---- composition with a non-linear transform -------------------------------------------------

TEST(XformComposed, LinearAfterNonLinearMapsThroughTheNonLinearFirst) {
  const gk2XformLinear turn(kTurnShift);
  const Bend bend(1.0);
  const gkPtrHandle<gk2XformBase> c = turn.compose(bend);
  const gkVector<2> p(1.0, 2.0);
  // bend: (1, 2) -> (5, 2); turn: (5, 2) -> (1, 4).
  EXPECT_EQ(c->map(p), gkVector<2>(1.0, 4.0));
  EXPECT_EQ(c->map(p), turn.map(bend.map(p)));
}

TEST(XformComposed, IsNotLinearWhenAPartIsNot) {
  const gkPtrHandle<gk2XformBase> c = gk2XformLinear(kTurnShift).compose(Bend(0.5));
  EXPECT_FALSE(c->isLinear());
}

TEST(XformComposed, LinearXformFollowsTheChainRule) {
  const gk2XformLinear turn(kTurnShift);
  const Bend bend(0.5);
  const gkPtrHandle<gk2XformBase> c = turn.compose(bend);
  const gkVector<2> p(1.0, 2.0);
  const gkXform<2> expected = kTurnShift * bend.linearXform(p);
  EXPECT_EQ(c->linearXform(p), expected);
  // The expansion is exact at p itself.
  EXPECT_EQ(c->linearXform(p) * p, c->map(p));
}

TEST(XformComposed, InverseUndoesTheComposition) {
  const gkPtrHandle<gk2XformBase> c = gk2XformLinear(kTurnShift).compose(Bend(1.0));
  const gkPtrHandle<gk2XformBase> inv = c->inverse();
  for (const gkVector<2>& p : {gkVector<2>(1.0, 2.0), gkVector<2>(-3.0, 0.5), gkVector<2>()}) {
    EXPECT_EQ(inv->map(c->map(p)), p);
    EXPECT_EQ(c->map(inv->map(p)), p);
  }
}

TEST(XformComposed, InverseOfACompositionWithASingularPartThrowsSingular) {
  const gk2XformLinear flat(gkXform<2>(gkMatrix<2>(1.0, 1.0, 1.0, 1.0), gkVector<2>()));
  const gkPtrHandle<gk2XformBase> c = flat.compose(Bend(1.0));
  EXPECT_THROW(c->inverse(), gkMathError::Singular);
}

TEST(XformComposed, ComposingFurtherKeepsTheOrder) {
  const gk2XformLinear stretch(kStretchShift);
  const gk2XformLinear turn(kTurnShift);
  const Bend bend(1.0);
  const gkPtrHandle<gk2XformBase> turnAfterBend = turn.compose(bend);
  const gkPtrHandle<gk2XformBase> all = turnAfterBend->compose(stretch);
  const gkVector<2> p(0.5, -0.25);
  EXPECT_EQ(all->map(p), turn.map(bend.map(stretch.map(p))));
  EXPECT_FALSE(all->isLinear());
}

TEST(XformComposed, CloneIsADistinctObjectThatMapsTheSame) {
  const gkPtrHandle<gk2XformBase> c = gk2XformLinear(kTurnShift).compose(Bend(1.0));
  const gkPtrHandle<gk2XformBase> copy = c->clone();
  ASSERT_TRUE(copy);
  EXPECT_NE(copy.get(), c.get());
  const gkVector<2> p(1.0, 2.0);
  EXPECT_EQ(copy->map(p), c->map(p));
  EXPECT_EQ(copy->linearXform(p), c->linearXform(p));
}
