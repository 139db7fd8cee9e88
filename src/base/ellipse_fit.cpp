#include <gk/base/ellipse_fit.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include <gk/base/math_error.h>

#include "base/detail/ellipse_distance.h"
#include "base/detail/fit_points.h"

// The direct least-squares ellipse fit of Fitzgibbon, Pilu and Fisher ("Direct Least Square
// Fitting of Ellipses", 1999) in the numerically stable form of Halir and Flusser ("Numerically
// Stable Direct Least Squares Fitting of Ellipses", 1998), on points centred at their centroid
// and scaled to unit root-mean-square distance.
//
// The conic a*u^2 + b*u*v + c*v^2 + d*u + e*v + f = 0 is split into its quadratic part
// a1 = (a, b, c) and linear part a2 = (d, e, f). Minimising the algebraic error under
// 4ac - b^2 = 1 eliminates a2 = T a1 with T = -S3^-1 S2^T and leaves the 3x3 generalised
// eigenproblem M a1 = lambda C1 a1, M = S1 + S2 T the (symmetric, positive semi-definite) reduced
// scatter matrix (computed by orthogonalisation, see directFit), C1 the constraint. C1 has one
// positive and two negative eigenvalues, so exactly one eigenvalue lambda is >= 0 and its
// eigenvector is the ellipse (lambda = a'Ma / a'C1a); the other two have a'C1a < 0 (hyperbolae).
// Hence the fit takes the largest eigenvalue, which is more robust than testing the sign of 4ac -
// b^2 of three noisy eigenvectors.

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr const wchar_t* kWho = L"gwEllipseFit";
/// Five points in general position determine a conic.
constexpr std::size_t kMinDistinctPoints = 5;
/// The largest root of the characteristic cubic is approached by Newton's method from above,
/// which decreases monotonically for a cubic with real roots; it settles in well under a hundred
/// steps from the Cauchy bound, so this many only stops a sequence that rounding keeps alive.
constexpr int kMaxNewtonSteps = 200;
/// The eigenvector is the longest cross product of two rows of M - lambda*C1. When even that is
/// this small relative to the row lengths (the sine of the angle between the rows), all rows are
/// parallel: the eigenvalue is double and no single conic is singled out. In step with
/// gkTolParallelSine.
constexpr double kEigenvectorMinSine = gk::detail::kFitCollinearRatio;
/// Rayleigh-quotient refinements of the eigenpair; the first already brings lambda to working
/// precision, the second confirms it.
constexpr int kRayleighSteps = 2;
/// The ellipse's residual limit is in point units: distances are compared unscaled.
constexpr double kLimitUnitsPerPointUnit = 1.0;

using Vec3 = std::array<double, 3>;
using Mat3 = std::array<Vec3, 3>;

Vec3 cross(const Vec3& a, const Vec3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double norm(const Vec3& a) {
  return std::sqrt(a[0] * a[0] + a[1] * a[1] + a[2] * a[2]);
}

double det3(const Mat3& m) {
  return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
         m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
         m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
}

/// The largest real root of x^3 - t*x^2 + m*x - d (all roots real in exact arithmetic), by
/// Newton's method from the Cauchy bound, where the cubic and its derivative are positive.
double largestCubicRoot(double t, double m, double d) {
  auto p = [&](double x) { return ((x - t) * x + m) * x - d; };
  auto dp = [&](double x) { return (3.0 * x - 2.0 * t) * x + m; };
  double x = 1.0 + std::fmax(std::fabs(t), std::fmax(std::fabs(m), std::fabs(d)));
  for (int i = 0; i < kMaxNewtonSteps; ++i) {
    const double slope = dp(x);
    if (!(slope > 0.0)) {
      break;
    }
    const double next = x - p(x) / slope;
    if (!(next < x)) {
      break;
    }
    x = next;
  }
  return x;
}

/// The algebraic conic a*u^2 + b*u*v + c*v^2 + d*u + e*v + f = 0 in the fit frame.
struct Conic {
  double a, b, c, d, e, f;
};

/// The null vector of the symmetric M - lambda*C1: the longest cross product of two of its rows.
Vec3 nullVector(const Mat3& m, double lambda) {
  Mat3 shifted = m;
  shifted[0][2] -= 2.0 * lambda;
  shifted[2][0] -= 2.0 * lambda;
  shifted[1][1] += lambda;
  const Vec3 candidates[3] = {cross(shifted[0], shifted[1]), cross(shifted[0], shifted[2]),
                              cross(shifted[1], shifted[2])};
  const double rowScale[3] = {norm(shifted[0]) * norm(shifted[1]),
                              norm(shifted[0]) * norm(shifted[2]),
                              norm(shifted[1]) * norm(shifted[2])};
  int best = 0;
  for (int i = 1; i < 3; ++i) {
    if (norm(candidates[i]) > norm(candidates[best])) {
      best = i;
    }
  }
  if (!(norm(candidates[best]) > kEigenvectorMinSine * rowScale[best])) {
    throw gkMathError::Singular(std::wstring(kWho) + L": the conic is not determined");
  }
  return candidates[best];
}

double dot(const std::vector<double>& a, const std::vector<double>& b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    sum += a[i] * b[i];
  }
  return sum;
}

/// Removes from x its components along the orthonormal columns q[0..count), adding them to
/// coefficients. Two passes of modified Gram-Schmidt: the second removes what rounding left of
/// the first, so the residual is orthogonal to working precision however small it is.
void project(const std::vector<double> (&q)[3], int count, std::vector<double>& x,
             double (&coefficients)[3]) {
  for (int pass = 0; pass < 2; ++pass) {
    for (int k = 0; k < count; ++k) {
      const double c = dot(q[k], x);
      coefficients[k] += c;
      for (std::size_t i = 0; i < x.size(); ++i) {
        x[i] -= c * q[k][i];
      }
    }
  }
}

Conic directFit(const std::vector<gkVector<2>>& q) {
  const std::size_t count = q.size();
  // S3 is the moment matrix of (u, v, 1): singular exactly when the points are collinear.
  gk::detail::requireNotCollinear(q, kWho);
  // Halir and Flusser form M = S1 - S2 S3^-1 S2^T from the moment matrices. For exact or nearly
  // exact data M is tiny next to S1, and that difference cancels most of the digits (an
  // elongated ellipse then loses its centre in the ninth digit). The same M is the Gram matrix
  // of the quadratic columns (u^2, uv, v^2) of the design matrix after their least-squares
  // projection on the linear columns (u, v, 1) has been removed; orthogonalising first and
  // multiplying the small residuals afterwards keeps M accurate to its own size.
  std::vector<double> linear[3];
  std::vector<double> quadratic[3];
  for (auto& column : linear) {
    column.reserve(count);
  }
  for (auto& column : quadratic) {
    column.reserve(count);
  }
  for (const gkVector<2>& p : q) {
    linear[0].push_back(p.x());
    linear[1].push_back(p.y());
    linear[2].push_back(1.0);
    quadratic[0].push_back(p.x() * p.x());
    quadratic[1].push_back(p.x() * p.y());
    quadratic[2].push_back(p.y() * p.y());
  }
  // QR of the linear columns: linear = Q R, R upper triangular.
  double r[3][3] = {};
  for (int k = 0; k < 3; ++k) {
    double coefficients[3] = {};
    project(linear, k, linear[k], coefficients);
    const double length = std::sqrt(dot(linear[k], linear[k]));
    if (!(length > 0.0) || !std::isfinite(length)) {
      throw gkMathError::Singular(std::wstring(kWho) + L": singular moment matrix");
    }
    for (int i = 0; i < k; ++i) {
      r[i][k] = coefficients[i];
    }
    r[k][k] = length;
    for (double& x : linear[k]) {
      x /= length;
    }
  }
  // Each quadratic column: its least-squares fit by the linear columns (R t = Q' column, so that
  // a2 = T a1 with T = -[t0 t1 t2]) and its residual.
  Mat3 t{};
  for (int k = 0; k < 3; ++k) {
    double coefficients[3] = {};
    project(linear, 3, quadratic[k], coefficients);
    for (int i = 2; i >= 0; --i) {
      double sum = coefficients[i];
      for (int j = i + 1; j < 3; ++j) {
        sum -= r[i][j] * -t[j][k];
      }
      t[i][k] = -sum / r[i][i];
    }
  }
  // M, divided by the count so that its entries do not grow with the number of points.
  const double n = static_cast<double>(count);
  Mat3 m{};
  for (int i = 0; i < 3; ++i) {
    for (int j = i; j < 3; ++j) {
      m[i][j] = dot(quadratic[i], quadratic[j]) / n;
      m[j][i] = m[i][j];
    }
  }
  // A = C1^-1 M, C1 = [[0, 0, 2], [0, -1, 0], [2, 0, 0]]: row permutation and exact scalings.
  const Mat3 a{{{0.5 * m[2][0], 0.5 * m[2][1], 0.5 * m[2][2]},
                {-m[1][0], -m[1][1], -m[1][2]},
                {0.5 * m[0][0], 0.5 * m[0][1], 0.5 * m[0][2]}}};
  const double trace = a[0][0] + a[1][1] + a[2][2];
  const double minors = (a[0][0] * a[1][1] - a[0][1] * a[1][0]) +
                        (a[0][0] * a[2][2] - a[0][2] * a[2][0]) +
                        (a[1][1] * a[2][2] - a[1][2] * a[2][1]);
  const double lambda = largestCubicRoot(trace, minors, det3(a));
  Vec3 a1 = nullVector(m, lambda);
  // For nearly exact data lambda is tiny next to the entries of the cubic, so the root carries an
  // absolute error that is large relative to the small entries of M (those of an elongated
  // ellipse). The Rayleigh quotient a'Ma / a'C1a, with a'Ma the squared length of the residual
  // combination (no cancellation), gives lambda to its own precision; one more null-space step
  // then sharpens the eigenvector.
  for (int step = 0; step < kRayleighSteps; ++step) {
    const double constraint = 4.0 * a1[0] * a1[2] - a1[1] * a1[1];
    if (!(constraint > 0.0)) {
      break;
    }
    double residual = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
      const double e = a1[0] * quadratic[0][i] + a1[1] * quadratic[1][i] + a1[2] * quadratic[2][i];
      residual += e * e;
    }
    a1 = nullVector(m, residual / n / constraint);
  }
  Vec3 a2{};
  for (int i = 0; i < 3; ++i) {
    a2[i] = t[i][0] * a1[0] + t[i][1] * a1[1] + t[i][2] * a1[2];
  }
  return Conic{a1[0], a1[1], a1[2], a2[0], a2[1], a2[2]};
}

/// The ellipse of a conic in the fit frame, in original coordinates, major semi-axis first, with
/// the rotation brought into [reference, reference + pi). Throws when the conic is not a real,
/// non-degenerate ellipse.
gkEllipse toEllipse(Conic k, const gk::detail::FitFrame& frame, double reference) {
  const double disc = 4.0 * k.a * k.c - k.b * k.b;
  if (!(disc > 0.0) || !std::isfinite(disc)) {
    throw gkMathError::Singular(std::wstring(kWho) + L": the best conic is not an ellipse");
  }
  if (k.a + k.c < 0.0) {
    k = Conic{-k.a, -k.b, -k.c, -k.d, -k.e, -k.f};
  }
  // Centre: the gradient of the conic vanishes.
  const double u0 = (k.b * k.e - 2.0 * k.c * k.d) / disc;
  const double v0 = (k.b * k.d - 2.0 * k.a * k.e) / disc;
  // The conic at its centre; negative for a real ellipse (the quadratic part is positive).
  const double f0 = k.f + 0.5 * (k.d * u0 + k.e * v0);
  // Eigenvalues of [[a, b/2], [b/2, c]]: the larger directly, the smaller as determinant over
  // the larger, which keeps it accurate for elongated ellipses.
  const double diff = k.a - k.c;
  const double larger = 0.5 * (k.a + k.c + std::sqrt(diff * diff + k.b * k.b));
  // Rounding can put the quotient a hair above the larger one for a circle; the major radius
  // must not come out shorter than the minor.
  const double smaller = std::fmin(0.25 * disc / larger, larger);
  const double major = std::sqrt(-f0 / smaller) * frame.unit;
  const double minor = std::sqrt(-f0 / larger) * frame.unit;
  // The larger eigenvalue's axis (the minor axis) is at half of atan2(b, a - c); the major axis
  // is a quarter turn from it.
  const double minorAxis = 0.5 * std::atan2(k.b, diff);
  double rotation = std::fmod(minorAxis + 0.5 * kPi - reference, kPi);
  if (rotation < 0.0) {
    rotation += kPi;
  }
  if (rotation >= kPi) {
    rotation = 0.0;
  }
  rotation += reference;
  const gkVector<2> center = frame.fromFrame(gkVector<2>(u0, v0));
  if (!(f0 < 0.0) || !(minor > 0.0) || !std::isfinite(major) || !std::isfinite(center.x()) ||
      !std::isfinite(center.y())) {
    throw gkMathError::Singular(std::wstring(kWho) + L": the best conic is not a real ellipse");
  }
  return gkEllipse(gkEllipse::gkEllipseGeom{center, gkVector<2>(major, minor), gkRadian(rotation),
                                            false, false});
}

gkEllipse fitOnce(const std::vector<gkVector<2>>& points, double reference) {
  if (!gk::detail::hasDistinctPoints(points, kMinDistinctPoints)) {
    throw gkMathError::Singular(std::wstring(kWho) + L": fewer than 5 distinct points");
  }
  const gk::detail::FitFrame frame = gk::detail::fitFrame(points, kWho);
  std::vector<gkVector<2>> q;
  q.reserve(points.size());
  for (const gkVector<2>& p : points) {
    q.push_back(frame.toFrame(p));
  }
  return toEllipse(directFit(q), frame, reference);
}

}  // namespace

gkEllipseFitParams::gkEllipseFitParams(FitMode mode, const gkRadian& angle, long count,
                                       double residualLimit)
    : mode_(mode), angle_(angle), count_(count), residualLimit_(residualLimit) {}

void gwEllipseFit(const gkEllipseFitParams& params, const std::vector<gkVector<2>>& points,
                  gkEllipseFitResults& results) {
  if (params.mode() != gkEllipseFitParams::eLeastSquares ||
      !std::isfinite(params.angle().toDouble())) {
    throw gkMathError::Singular(std::wstring(kWho) + L": invalid mode or angle");
  }
  gk::detail::requireRejectionParams(params.residualLimit(), kLimitUnitsPerPointUnit, kWho);
  gk::detail::requireFinitePoints(points, kWho);
  const double reference = params.angle().toDouble();
  double rms = 0.0;
  const gkEllipse ellipse = gk::detail::fitRejectingOutliers<gkEllipse>(
      points, params.count(), params.residualLimit(), kLimitUnitsPerPointUnit, kMinDistinctPoints,
      kWho, [reference](const std::vector<gkVector<2>>& kept) { return fitOnce(kept, reference); },
      [](const gkEllipse& e, const gkVector<2>& p) { return gk::detail::ellipseDistance(e, p); },
      rms);
  results.ellipse(ellipse);
  results.error(rms);
}
