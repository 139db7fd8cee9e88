#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <gk/base/angle.h>
#include <gk/base/assert.h>
#include <gk/base/math_error.h>
#include <gk/base/matrix.h>
#include <gk/base/vector.h>

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::numeric_limits<double>::quiet_NaN();

void expectElements(const gkMatrix<2>& m, double a00, double a01, double a10, double a11) {
  EXPECT_EQ(m.element(0, 0), a00);
  EXPECT_EQ(m.element(0, 1), a01);
  EXPECT_EQ(m.element(1, 0), a10);
  EXPECT_EQ(m.element(1, 1), a11);
}

}  // namespace

TEST(Matrix, DefaultIsTheZeroMatrix) {
  expectElements(gkMatrix<2>(), 0.0, 0.0, 0.0, 0.0);
}

TEST(Matrix, ElementsAreGivenInRowOrder) {
  expectElements(gkMatrix<2>(1.0, 2.0, 3.0, 4.0), 1.0, 2.0, 3.0, 4.0);
}

TEST(Matrix, RowOrderShowsInTheProductWithAVector) {
  // (1 2; 3 4) * (1, 0) is the first column, * (0, 1) the second.
  const gkMatrix<2> m(1.0, 2.0, 3.0, 4.0);
  EXPECT_EQ(m * gkVector<2>(1.0, 0.0), gkVector<2>(1.0, 3.0));
  EXPECT_EQ(m * gkVector<2>(0.0, 1.0), gkVector<2>(2.0, 4.0));
  EXPECT_EQ(m * gkVector<2>(5.0, 6.0), gkVector<2>(17.0, 39.0));
}

TEST(Matrix, IdentityIsOneOnTheDiagonal) {
  expectElements(gkMatrix<2>::identity(), 1.0, 0.0, 0.0, 1.0);
}

TEST(Matrix, SettingAnElementChangesOnlyThatElement) {
  gkMatrix<2> m(1.0, 2.0, 3.0, 4.0);
  m.element(1, 0, -7.5);
  expectElements(m, 1.0, 2.0, -7.5, 4.0);
  m.element(0, 1, 0.1);
  expectElements(m, 1.0, 0.1, -7.5, 4.0);
}

TEST(Matrix, ReadingOutsideTheTwoByTwoRangeThrowsAnAssertionFailure) {
  const gkMatrix<2> m = gkMatrix<2>::identity();
  EXPECT_THROW(m.element(2, 0), gkAssertionFailure);
  EXPECT_THROW(m.element(0, 2), gkAssertionFailure);
  EXPECT_THROW(m.element(-1, 0), gkAssertionFailure);
  EXPECT_THROW(m.element(0, -1), gkAssertionFailure);
}

TEST(Matrix, WritingOutsideTheTwoByTwoRangeThrowsAndLeavesTheMatrixAlone) {
  gkMatrix<2> m(1.0, 2.0, 3.0, 4.0);
  EXPECT_THROW(m.element(2, 2, 9.0), gkAssertionFailure);
  EXPECT_THROW(m.element(-1, 1, 9.0), gkAssertionFailure);
  expectElements(m, 1.0, 2.0, 3.0, 4.0);
}

TEST(Matrix, RotationEqualToSkewWithUnitScalesIsTheRotation) {
  for (double t = -7.0; t <= 7.0; t += 0.125) {
    const gkMatrix<2> m(gkRadian{t}, gkRadian{t}, 1.0, 1.0);
    expectElements(m, std::cos(t), -std::sin(t), std::sin(t), std::cos(t));
  }
}

TEST(Matrix, RotationByZeroIsTheIdentity) {
  EXPECT_EQ(gkMatrix<2>(gkRadian(0.0), gkRadian(0.0), 1.0, 1.0), gkMatrix<2>::identity());
}

TEST(Matrix, RotationTurnsTheXAxisCounterClockwise) {
  const double t = kPi / 2.0;
  const gkMatrix<2> m(gkRadian{t}, gkRadian{t}, 1.0, 1.0);
  const gkVector<2> ex = m * gkVector<2>(1.0, 0.0);
  const gkVector<2> ey = m * gkVector<2>(0.0, 1.0);
  EXPECT_EQ(ex, gkVector<2>(std::cos(t), 1.0));
  EXPECT_EQ(ey, gkVector<2>(-1.0, std::cos(t)));
  EXPECT_GT(gkVector<2>(1.0, 0.0).cross(ex), 0.0);
}

TEST(Matrix, RotationKeepsLengthsAndHasDeterminantOne) {
  for (double t = -3.0; t <= 3.0; t += 0.25) {
    const gkMatrix<2> m(gkRadian{t}, gkRadian{t}, 1.0, 1.0);
    EXPECT_NEAR(m.determinant(), 1.0, 1e-15) << t;
    EXPECT_NEAR((m * gkVector<2>(3.0, 4.0)).len(), 5.0, 1e-14) << t;
  }
}

TEST(Matrix, ScalesMultiplyTheirColumns) {
  const gkMatrix<2> m(gkRadian(0.0), gkRadian(0.0), 2.0, 3.0);
  expectElements(m, 2.0, -0.0, 0.0, 3.0);
  EXPECT_EQ(m * gkVector<2>(1.0, 1.0), gkVector<2>(2.0, 3.0));
}

TEST(Matrix, ScaledRotationHasEachColumnScaled) {
  const double r = 0.75;
  const double s = -0.5;
  const gkMatrix<2> m(gkRadian(r), gkRadian(s), 2.0, 3.0);
  expectElements(m, 2.0 * std::cos(r), -3.0 * std::sin(s), 2.0 * std::sin(r), 3.0 * std::cos(s));
}

TEST(Matrix, SkewTiltsOnlyTheSecondColumn) {
  const double skew = kPi / 4.0;
  const gkMatrix<2> m(gkRadian(0.0), gkRadian(skew), 1.0, 1.0);
  EXPECT_EQ(m * gkVector<2>(1.0, 0.0), gkVector<2>(1.0, 0.0));
  EXPECT_EQ(m * gkVector<2>(0.0, 1.0), gkVector<2>(-std::sin(skew), std::cos(skew)));
}

TEST(Matrix, DeterminantAndTranspose) {
  const gkMatrix<2> m(1.0, 2.0, 3.0, 4.0);
  EXPECT_EQ(m.determinant(), -2.0);
  expectElements(m.transpose(), 1.0, 3.0, 2.0, 4.0);
  EXPECT_EQ(m.transpose().transpose(), m);
}

TEST(Matrix, ProductIsRowsTimesColumns) {
  const gkMatrix<2> a(1.0, 2.0, 3.0, 4.0);
  const gkMatrix<2> b(5.0, 6.0, 7.0, 8.0);
  expectElements(a * b, 19.0, 22.0, 43.0, 50.0);
  expectElements(b * a, 23.0, 34.0, 31.0, 46.0);
}

TEST(Matrix, ProductAppliesTheRightFactorFirst) {
  const gkMatrix<2> a(0.0, -1.0, 1.0, 0.0);  // quarter turn
  const gkMatrix<2> b(2.0, 0.0, 0.0, 1.0);   // stretch x
  const gkVector<2> p(1.0, 1.0);
  EXPECT_EQ((a * b) * p, a * (b * p));
  EXPECT_EQ((a * b) * p, gkVector<2>(-1.0, 2.0));
}

TEST(Matrix, IdentityIsNeutralInProducts) {
  const gkMatrix<2> m(0.1, -2.0, 3.5, 1e10);
  EXPECT_EQ(m * gkMatrix<2>::identity(), m);
  EXPECT_EQ(gkMatrix<2>::identity() * m, m);
}

TEST(Matrix, SumAndScalarProductAreElementWise) {
  const gkMatrix<2> a(1.0, 2.0, 3.0, 4.0);
  const gkMatrix<2> b(0.5, -2.0, 0.25, 8.0);
  expectElements(a + b, 1.5, 0.0, 3.25, 12.0);
  expectElements(a * -2.0, -2.0, -4.0, -6.0, -8.0);
}

TEST(Matrix, InverseOfAnExactlyInvertibleMatrix) {
  const gkMatrix<2> m(1.0, 2.0, 3.0, 4.0);
  const gkMatrix<2> inv = m.inverse();
  expectElements(inv, -2.0, 1.0, 1.5, -0.5);
  EXPECT_EQ(m * inv, gkMatrix<2>::identity());
  EXPECT_EQ(inv * m, gkMatrix<2>::identity());
}

TEST(Matrix, InverseOfADiagonalMatrixInvertsTheDiagonal) {
  expectElements(gkMatrix<2>(2.0, 0.0, 0.0, 4.0).inverse(), 0.5, -0.0, -0.0, 0.25);
}

TEST(Matrix, InverseOfARotationIsItsTranspose) {
  const gkMatrix<2> m(gkRadian(0.6), gkRadian(0.6), 1.0, 1.0);
  const gkMatrix<2> inv = m.inverse();
  const gkMatrix<2> t = m.transpose();
  for (int r = 0; r < 2; ++r) {
    for (int c = 0; c < 2; ++c) {
      EXPECT_NEAR(inv.element(r, c), t.element(r, c), 1e-15);
    }
  }
}

TEST(Matrix, InverseOfASingularMatrixThrowsSingular) {
  EXPECT_THROW(gkMatrix<2>().inverse(), gkMathError::Singular);
  EXPECT_THROW(gkMatrix<2>(1.0, 2.0, 2.0, 4.0).inverse(), gkMathError::Singular);
  EXPECT_THROW(gkMatrix<2>(1.0, 0.0, 0.0, 0.0).inverse(), gkMathError::Singular);
}

TEST(Matrix, InverseOfANonFiniteMatrixThrowsSingular) {
  EXPECT_THROW(gkMatrix<2>(kNaN, 0.0, 0.0, 1.0).inverse(), gkMathError::Singular);
  EXPECT_THROW(gkMatrix<2>(kInf, 0.0, 0.0, 1.0).inverse(), gkMathError::Singular);
  EXPECT_THROW(gkMatrix<2>(1.0, kInf, 1.0, 1.0).inverse(), gkMathError::Singular);
}

TEST(Matrix, InverseWhoseDeterminantOverflowsOrUnderflowsThrowsSingular) {
  EXPECT_THROW(gkMatrix<2>(1e200, 0.0, 0.0, 1e200).inverse(), gkMathError::Singular);
  EXPECT_THROW(gkMatrix<2>(1e-200, 0.0, 0.0, 1e-200).inverse(), gkMathError::Singular);
}

TEST(Matrix, SingularErrorIsAMathErrorAndALibraryException) {
  try {
    gkMatrix<2>(1.0, 1.0, 1.0, 1.0).inverse();
    FAIL() << "no exception";
  } catch (const gkMathError::Errors& e) {
    EXPECT_NE(dynamic_cast<const gkMathError::Singular*>(&e), nullptr);
    EXPECT_NE(dynamic_cast<const gkException*>(&e), nullptr);
  }
}

TEST(Matrix, EqualityIsExactElementByElement) {
  const gkMatrix<2> m(1.0, 2.0, 3.0, 4.0);
  EXPECT_EQ(m, gkMatrix<2>(1.0, 2.0, 3.0, 4.0));
  EXPECT_NE(m, gkMatrix<2>(1.5, 2.0, 3.0, 4.0));
  EXPECT_NE(m, gkMatrix<2>(1.0, 2.5, 3.0, 4.0));
  EXPECT_NE(m, gkMatrix<2>(1.0, 2.0, 3.5, 4.0));
  EXPECT_NE(m, gkMatrix<2>(1.0, 2.0, 3.0, 4.5));
  EXPECT_NE(m, gkMatrix<2>(1.0, 2.0, 3.0, std::nextafter(4.0, 5.0)));
}
