#pragma once

#include <vector>

#include <gk/base/angle.h>
#include <gk/base/ellipse.h>
#include <gk/base/vector.h>
#include <gk/gk_export.h>

/// How gwEllipseFit fits. The meaning of each argument is documented in docs/fitting.md.
class GK_EXPORT gkEllipseFitParams {
 public:
  /// The fitting method.
  enum FitMode {
    eLeastSquares = 0  ///< the direct least-squares ellipse fit, on centred and scaled points
  };

  /// mode: the method. angle: the start of the half turn the reported rotation lies in, which
  /// is [angle, angle + pi) (gkRadian(0): [0, pi)); it does not change the fit. count: the
  /// number of outlier-rejection rounds (0 or less: none). residualLimit: points whose
  /// orthogonal distance from the fitted ellipse exceeds this (in point units) are dropped in
  /// each rejection round (the largest double: none; NaN or negative: refused).
  gkEllipseFitParams(FitMode mode, const gkRadian& angle, long count, double residualLimit);

  FitMode mode() const { return mode_; }
  const gkRadian& angle() const { return angle_; }
  long count() const { return count_; }
  double residualLimit() const { return residualLimit_; }

 private:
  FitMode mode_;
  gkRadian angle_;
  long count_;
  double residualLimit_;
};

/// What gwEllipseFit found.
class GK_EXPORT gkEllipseFitResults {
 public:
  gkEllipseFitResults() = default;

  /// The fitted ellipse: radii().x() is the major semi-axis, along rotation().
  const gkEllipse& ellipse() const { return ellipse_; }
  /// The root-mean-square orthogonal (true geometric) distance from the points used to the
  /// fitted ellipse.
  double error() const { return error_; }

  void ellipse(const gkEllipse& e) { ellipse_ = e; }
  void error(double e) { error_ = e; }

 private:
  gkEllipse ellipse_;
  double error_ = 0.0;
};

/// Fits an ellipse to points by least squares (see docs/fitting.md). Throws
/// gkMathError::Singular when it cannot: fewer than 5 distinct points (also after outlier
/// rejection), points on one line or otherwise a singular system, a best conic that is not a
/// real ellipse, a NaN or infinite coordinate, or invalid parameters.
GK_EXPORT void gwEllipseFit(const gkEllipseFitParams& params,
                            const std::vector<gkVector<2>>& points, gkEllipseFitResults& results);
