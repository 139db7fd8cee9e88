#include <gk/cntr/moments/inertia_data.h>

#include <gtest/gtest.h>

namespace {

void expectSameRecord(const gk_InertiaData& actual, const gk_InertiaData& expected) {
  EXPECT_EQ(actual.area(), expected.area());
  EXPECT_EQ(actual.centerOfMass(), expected.centerOfMass());
  EXPECT_EQ(actual.inertiaMatrix(), expected.inertiaMatrix());
}

/// The record of an axis-aligned square of the given side centred at c, with the given sign of
/// area (the matrix is the point set's whatever the sign).
gk_InertiaData square(double side, const gkVector<2>& c, double sign) {
  const double area = side * side;
  const double m = side * side * side * side / 12.0;
  return gk_InertiaData(sign * area, c, gkMatrix<2>(m, 0.0, 0.0, m));
}

}  // namespace

// --- construction -----------------------------------------------------------------------------

TEST(InertiaData, DefaultIsTheEmptyRecord) {
  const gk_InertiaData d;
  EXPECT_EQ(d.area(), 0.0);
  EXPECT_EQ(d.centerOfMass(), gkVector<2>(0, 0));
  EXPECT_EQ(d.inertiaMatrix(), gkMatrix<2>());
}

TEST(InertiaData, AccessorsReturnTheFieldsAsGiven) {
  const gkMatrix<2> m(1.5, -0.25, -0.25, 2.5);
  const gk_InertiaData d(-3.0, gkVector<2>(4.0, -5.0), m);
  EXPECT_EQ(d.area(), -3.0);
  EXPECT_EQ(d.centerOfMass(), gkVector<2>(4.0, -5.0));
  EXPECT_EQ(d.inertiaMatrix(), m);
}

TEST(InertiaData, CopiesCarryEveryField) {
  const gk_InertiaData d(2.0, gkVector<2>(1.0, 2.0), gkMatrix<2>(3.0, 4.0, 4.0, 5.0));
  const gk_InertiaData copy(d);
  expectSameRecord(copy, d);
  gk_InertiaData assigned;
  assigned = d;
  expectSameRecord(assigned, d);
}

// --- operator+ with an empty piece -----------------------------------------------------------

TEST(InertiaDataSum, AZeroAreaRecordOnTheLeftReturnsTheOtherUnchanged) {
  const gk_InertiaData other(2.5, gkVector<2>(1.0, -1.0), gkMatrix<2>(0.5, 0.125, 0.125, 0.75));
  expectSameRecord(gk_InertiaData() + other, other);
  // Only the area decides: a zero-area record with a centre and a matrix is ignored too.
  const gk_InertiaData zeroArea(0.0, gkVector<2>(9.0, 9.0), gkMatrix<2>(7.0, 1.0, 1.0, 7.0));
  expectSameRecord(zeroArea + other, other);
}

TEST(InertiaDataSum, AZeroAreaRecordOnTheRightReturnsTheOtherUnchanged) {
  const gk_InertiaData self(-4.0, gkVector<2>(3.0, 2.0), gkMatrix<2>(1.0, -0.5, -0.5, 2.0));
  expectSameRecord(self + gk_InertiaData(), self);
  const gk_InertiaData zeroArea(0.0, gkVector<2>(-1.0, 5.0), gkMatrix<2>(3.0, 0.0, 0.0, 3.0));
  expectSameRecord(self + zeroArea, self);
}

TEST(InertiaDataSum, TwoEmptyRecordsGiveTheEmptyRecord) {
  expectSameRecord(gk_InertiaData() + gk_InertiaData(), gk_InertiaData());
}

// --- pieces of the same sign --------------------------------------------------------------------

TEST(InertiaDataSum, TwoPositiveSquaresSideBySideGiveTheRectangle) {
  // Unit squares centred at (0.5, 0.5) and (1.5, 0.5) make the 2 x 1 rectangle: Ixx = 8/12,
  // Iyy = 2/12 about its centre (1, 0.5).
  const gk_InertiaData sum =
      square(1.0, gkVector<2>(0.5, 0.5), 1.0) + square(1.0, gkVector<2>(1.5, 0.5), 1.0);
  EXPECT_EQ(sum.area(), 2.0);
  EXPECT_EQ(sum.centerOfMass(), gkVector<2>(1.0, 0.5));
  EXPECT_DOUBLE_EQ(sum.inertiaMatrix().element(0, 0), 2.0 / 3.0);
  EXPECT_DOUBLE_EQ(sum.inertiaMatrix().element(1, 1), 1.0 / 6.0);
  EXPECT_EQ(sum.inertiaMatrix().element(0, 1), 0.0);
  EXPECT_EQ(sum.inertiaMatrix().element(1, 0), 0.0);
}

TEST(InertiaDataSum, TwoNegativePiecesAddAsPlainMomentsWithNegativeTotalArea) {
  // Clockwise pieces: the weights are taken absolute, so the matrix is the union's, as above.
  const gk_InertiaData sum =
      square(1.0, gkVector<2>(0.5, 0.5), -1.0) + square(1.0, gkVector<2>(1.5, 0.5), -1.0);
  EXPECT_EQ(sum.area(), -2.0);
  EXPECT_EQ(sum.centerOfMass(), gkVector<2>(1.0, 0.5));
  EXPECT_DOUBLE_EQ(sum.inertiaMatrix().element(0, 0), 2.0 / 3.0);
  EXPECT_DOUBLE_EQ(sum.inertiaMatrix().element(1, 1), 1.0 / 6.0);
  EXPECT_EQ(sum.inertiaMatrix().element(0, 1), 0.0);
}

TEST(InertiaDataSum, SameSignPiecesAddParallelAxisTermsToTheOffDiagonal) {
  // Unit squares at (0.5, 0.5) and (1.5, 1.5): centre (1, 1), each offset by (+-0.5, +-0.5).
  const gk_InertiaData sum =
      square(1.0, gkVector<2>(0.5, 0.5), 1.0) + square(1.0, gkVector<2>(1.5, 1.5), 1.0);
  EXPECT_EQ(sum.area(), 2.0);
  EXPECT_EQ(sum.centerOfMass(), gkVector<2>(1.0, 1.0));
  EXPECT_DOUBLE_EQ(sum.inertiaMatrix().element(0, 0), 2.0 / 12.0 + 0.5);
  EXPECT_DOUBLE_EQ(sum.inertiaMatrix().element(1, 1), 2.0 / 12.0 + 0.5);
  EXPECT_DOUBLE_EQ(sum.inertiaMatrix().element(0, 1), 0.5);
  EXPECT_DOUBLE_EQ(sum.inertiaMatrix().element(1, 0), 0.5);
}

// --- pieces of opposite signs -------------------------------------------------------------------

TEST(InertiaDataSum, ASquareWithAConcentricNegativeSquareLosesTheSmallMatrix) {
  const gkVector<2> c(1.0, 1.0);
  const gk_InertiaData big = square(2.0, c, 1.0);     // area 4
  const gk_InertiaData small = square(1.0, c, -1.0);  // area -1
  const gk_InertiaData sum = big + small;
  EXPECT_EQ(sum.area(), 3.0);
  EXPECT_EQ(sum.centerOfMass(), c);
  const double expected = big.inertiaMatrix().element(0, 0) - small.inertiaMatrix().element(0, 0);
  EXPECT_DOUBLE_EQ(sum.inertiaMatrix().element(0, 0), expected);
  EXPECT_DOUBLE_EQ(sum.inertiaMatrix().element(1, 1), expected);
  EXPECT_EQ(sum.inertiaMatrix().element(0, 1), 0.0);
  EXPECT_DOUBLE_EQ(expected, 16.0 / 12.0 - 1.0 / 12.0);
}

TEST(InertiaDataSum, TheNegativePieceIsSubtractedWhicheverSideItIsOn) {
  const gkVector<2> c(1.0, 1.0);
  const gk_InertiaData big = square(2.0, c, 1.0);
  const gk_InertiaData small = square(1.0, c, -1.0);
  const gk_InertiaData left = small + big;
  const gk_InertiaData right = big + small;
  EXPECT_EQ(left.area(), right.area());
  EXPECT_EQ(left.centerOfMass(), right.centerOfMass());
  EXPECT_DOUBLE_EQ(left.inertiaMatrix().element(0, 0), right.inertiaMatrix().element(0, 0));
  EXPECT_DOUBLE_EQ(left.inertiaMatrix().element(1, 1), right.inertiaMatrix().element(1, 1));
  EXPECT_EQ(left.inertiaMatrix().element(0, 1), 0.0);
}

TEST(InertiaDataSum, AnOffCentreHoleShiftsTheCentreAndSubtractsItsParallelAxisTerms) {
  // Square of side 4 centred at the origin, hole of side 2 centred at (1, 0). The remaining
  // figure has area 12 and centre (-1/3, 0); about that centre Ixx = 16 - 12/9 and
  // Iyy = 256/12 - 16/12 = 20 (computed about the origin and shifted).
  const gk_InertiaData sum =
      square(4.0, gkVector<2>(0.0, 0.0), 1.0) + square(2.0, gkVector<2>(1.0, 0.0), -1.0);
  EXPECT_EQ(sum.area(), 12.0);
  EXPECT_DOUBLE_EQ(sum.centerOfMass().x(), -1.0 / 3.0);
  EXPECT_EQ(sum.centerOfMass().y(), 0.0);
  EXPECT_NEAR(sum.inertiaMatrix().element(0, 0), 16.0 - 12.0 / 9.0, 1e-13);
  EXPECT_NEAR(sum.inertiaMatrix().element(1, 1), 20.0, 1e-13);
  EXPECT_EQ(sum.inertiaMatrix().element(0, 1), 0.0);
}

TEST(InertiaDataSum, OppositePiecesFollowTheSmallerAreaRuleStepByStep) {
  // a is the larger signed area, so b's own matrix takes the factor -1; the signed weights
  // stay on both parallel-axis terms.
  const gk_InertiaData a(3.0, gkVector<2>(1.0, 2.0), gkMatrix<2>(2.0, 0.5, 0.5, 1.0));
  const gk_InertiaData b(-1.0, gkVector<2>(-1.0, 4.0), gkMatrix<2>(0.25, -0.125, -0.125, 0.5));
  const gk_InertiaData sum = a + b;
  EXPECT_EQ(sum.area(), 2.0);
  // c = (3 (1, 2) - (-1, 4)) / 2 = (2, 1).
  EXPECT_EQ(sum.centerOfMass(), gkVector<2>(2.0, 1.0));
  // da = (1, -1), db = (3, -3).
  EXPECT_EQ(sum.inertiaMatrix().element(0, 0), 2.0 + 3.0 * 1.0 - 0.25 + (-1.0) * 9.0);
  EXPECT_EQ(sum.inertiaMatrix().element(1, 1), 1.0 + 3.0 * 1.0 - 0.5 + (-1.0) * 9.0);
  EXPECT_EQ(sum.inertiaMatrix().element(0, 1), 0.5 + 3.0 * -1.0 + 0.125 + (-1.0) * -9.0);
  EXPECT_EQ(sum.inertiaMatrix().element(1, 0), sum.inertiaMatrix().element(0, 1));

  // Swapped operands: b is now "this" and still the smaller, so the matrix is the same.
  const gk_InertiaData swapped = b + a;
  EXPECT_EQ(swapped.area(), 2.0);
  EXPECT_EQ(swapped.centerOfMass(), gkVector<2>(2.0, 1.0));
  EXPECT_EQ(swapped.inertiaMatrix(), sum.inertiaMatrix());
}

TEST(InertiaDataSum, WhenThePositivePieceIsSmallerInMagnitudeTheNegativeOneStillLosesItsMatrix) {
  // Signed comparison: -5 < 1, so the negative record is the smaller one.
  const gk_InertiaData a(1.0, gkVector<2>(0.0, 0.0), gkMatrix<2>(1.0, 0.0, 0.0, 2.0));
  const gk_InertiaData b(-5.0, gkVector<2>(0.0, 0.0), gkMatrix<2>(4.0, 1.0, 1.0, 3.0));
  const gk_InertiaData sum = a + b;
  EXPECT_EQ(sum.area(), -4.0);
  EXPECT_EQ(sum.centerOfMass(), gkVector<2>(0.0, 0.0));
  EXPECT_EQ(sum.inertiaMatrix(), gkMatrix<2>(1.0 - 4.0, -1.0, -1.0, 2.0 - 3.0));
}

TEST(InertiaDataSum, ACancellingTotalAreaPutsTheCentreAtTheOrigin) {
  const gk_InertiaData a(1.0, gkVector<2>(2.0, 3.0), gkMatrix<2>(1.0, 0.0, 0.0, 1.0));
  const gk_InertiaData b(-1.0, gkVector<2>(5.0, 5.0), gkMatrix<2>(0.5, 0.25, 0.25, 0.5));
  const gk_InertiaData sum = a + b;
  EXPECT_EQ(sum.area(), 0.0);
  EXPECT_EQ(sum.centerOfMass(), gkVector<2>(0.0, 0.0));
  // da = (-2, -3), db = (-5, -5); b is the smaller and loses its matrix.
  EXPECT_EQ(sum.inertiaMatrix().element(0, 0), 1.0 + 4.0 - 0.5 - 25.0);
  EXPECT_EQ(sum.inertiaMatrix().element(1, 1), 1.0 + 9.0 - 0.5 - 25.0);
  EXPECT_EQ(sum.inertiaMatrix().element(0, 1), 0.0 + 6.0 - 0.25 - 25.0);
}

TEST(InertiaDataSum, ATotalAreaAboveTheCancellationBoundKeepsItsCentre) {
  // |A| = 1e-15 > 1e-16: the centre is the weighted mean.
  const gk_InertiaData a(1.0 + 1e-15, gkVector<2>(0.0, 0.0), gkMatrix<2>());
  const gk_InertiaData b(-1.0, gkVector<2>(0.0, 0.0), gkMatrix<2>());
  const gk_InertiaData sum = a + b;
  EXPECT_NE(sum.area(), 0.0);
  EXPECT_EQ(sum.centerOfMass(), gkVector<2>(0.0, 0.0));
  const gk_InertiaData shifted(1.0 + 1e-15, gkVector<2>(1.0, 0.0), gkMatrix<2>());
  const gk_InertiaData sum2 = shifted + b;
  // (1 + 1e-15) / A: a large but finite centre, not the origin.
  EXPECT_GT(sum2.centerOfMass().x(), 1e14);
}
