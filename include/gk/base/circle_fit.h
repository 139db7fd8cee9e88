#pragma once

#include <vector>

#include <gk/base/circle.h>
#include <gk/base/vector.h>
#include <gk/gk_export.h>

/// How gwCircleFit fits. The meaning of each argument is documented in docs/fitting.md.
class GK_EXPORT gkCircleFitParams {
 public:
  /// The fitting method.
  enum FitMode {
    eLeastSquares = 0  ///< the algebraic fit that stays accurate on short arcs
  };

  /// mode: the method. scale: the size of one point unit in the units of residualLimit (positive
  /// and finite; 1: the limit is in point units); it does not change the fit. count: the number
  /// of outlier-rejection rounds (0 or less: none). residualLimit: points whose orthogonal
  /// distance from the fitted circle, times scale, exceeds this are dropped in each rejection
  /// round (the largest double: none; NaN or negative: refused).
  gkCircleFitParams(FitMode mode, double scale, long count, double residualLimit);

  FitMode mode() const { return mode_; }
  double scale() const { return scale_; }
  long count() const { return count_; }
  double residualLimit() const { return residualLimit_; }

 private:
  FitMode mode_;
  double scale_;
  long count_;
  double residualLimit_;
};

/// What gwCircleFit found.
class GK_EXPORT gkCircleFitResults {
 public:
  gkCircleFitResults() = default;

  /// The fitted circle.
  const gkCircle& circle() const { return circle_; }
  /// The root-mean-square orthogonal distance from the points used to the fitted circle, in
  /// point units (scale does not apply).
  double error() const { return error_; }

  void circle(const gkCircle& c) { circle_ = c; }
  void error(double e) { error_ = e; }

 private:
  gkCircle circle_;
  double error_ = 0.0;
};

/// Fits a circle to points (see docs/fitting.md). Throws gkMathError::Singular when it cannot:
/// fewer than 3 distinct points (also after outlier rejection), all of them on one line (within
/// a relative 1e-10), a NaN or infinite coordinate, or invalid parameters.
GK_EXPORT void gwCircleFit(const gkCircleFitParams& params, const std::vector<gkVector<2>>& points,
                           gkCircleFitResults& results);
