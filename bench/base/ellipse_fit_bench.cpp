// gwEllipseFit (one least-squares fit, no outlier rounds) against OpenCV's fitEllipse and
// fitEllipseDirect on noisy points of a known ellipse.
//
// Besides the time (of trial 0's points), each benchmark reports how far its fits lie from the
// true ellipse, as counters computed outside the timed loop over kTrials independent noise
// draws (one draw alone is too noisy to rank two fits), each a root mean square over the trials:
//   centreErr    distance of the fitted centre from the true one
//   majorErr     fitted major semi-axis - 80; minorErr likewise for 30
//   angleErrDeg  angle between the fitted and the true major axis, in degrees (modulo 180)
//   rmsErr       the four numbers dx, dy, majorErr, minorErr together
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gk/gk.h>
#include <opencv2/imgproc.hpp>

#include "../peers.h"
#include "../registry.h"

namespace gk::bench {

namespace {

const std::string kFamily = "ellipse";
constexpr std::uint64_t kTrials = 16;

/// A fitted ellipse in one form for every implementation.
struct Fit {
  double cx = 0;
  double cy = 0;
  double major = 0;  ///< semi-axis
  double minor = 0;  ///< semi-axis
  double angle = 0;  ///< of the major axis, radians
};

using Fitter = std::function<Fit(const Points&)>;

struct Accuracy {
  double centreErr = 0;
  double majorErr = 0;
  double minorErr = 0;
  double angleErrDeg = 0;
  double rmsErr = 0;
};

Accuracy measureAccuracy(int n, const Fitter& fitter) {
  const EllipseTruth truth;
  double centre2 = 0;
  double major2 = 0;
  double minor2 = 0;
  double angle2 = 0;
  for (std::uint64_t trial = 0; trial < kTrials; ++trial) {
    const Fit fit = fitter(noisyEllipse(n, trial));
    const double dx = fit.cx - truth.cx;
    const double dy = fit.cy - truth.cy;
    const double da = fit.major - truth.a;
    const double db = fit.minor - truth.b;
    // The axis is a direction modulo a half turn.
    double dAngle = std::fmod(std::fabs(fit.angle - truth.rotation), kPi);
    dAngle = std::min(dAngle, kPi - dAngle) * 180.0 / kPi;
    centre2 += dx * dx + dy * dy;
    major2 += da * da;
    minor2 += db * db;
    angle2 += dAngle * dAngle;
  }
  const double trials = static_cast<double>(kTrials);
  Accuracy a;
  a.centreErr = std::sqrt(centre2 / trials);
  a.majorErr = std::sqrt(major2 / trials);
  a.minorErr = std::sqrt(minor2 / trials);
  a.angleErrDeg = std::sqrt(angle2 / trials);
  a.rmsErr = std::sqrt((centre2 + major2 + minor2) / (4.0 * trials));
  return a;
}

/// Sets the accuracy counters of impl at n, measured on the first call only (Google Benchmark
/// runs a body several times while it settles the iteration count).
void reportAccuracy(benchmark::State& state, const std::string& impl, int n, const Fitter& fitter) {
  static std::map<std::pair<std::string, int>, Accuracy> measured;
  const auto key = std::make_pair(impl, n);
  auto it = measured.find(key);
  if (it == measured.end()) {
    it = measured.emplace(key, measureAccuracy(n, fitter)).first;
  }
  const Accuracy& a = it->second;
  state.counters["centreErr"] = a.centreErr;
  state.counters["majorErr"] = a.majorErr;
  state.counters["minorErr"] = a.minorErr;
  state.counters["angleErrDeg"] = a.angleErrDeg;
  state.counters["rmsErr"] = a.rmsErr;
}

const gkEllipseFitParams& oneFit() {
  static const gkEllipseFitParams params(gkEllipseFitParams::eLeastSquares, gkRadian(0), 0,
                                         std::numeric_limits<double>::max());
  return params;
}

Fit fitGk(const Points& pts) {
  gkEllipseFitResults results;
  gwEllipseFit(oneFit(), pts, results);
  const gkEllipse& e = results.ellipse();
  Fit fit;
  fit.cx = e.center().x();
  fit.cy = e.center().y();
  fit.major = e.radii().x();
  fit.minor = e.radii().y();
  fit.angle = e.rotation().toDouble();
  return fit;
}

Fit fromRotatedRect(const cv::RotatedRect& box) {
  // size holds full axis lengths; width lies along angle (degrees), height across it.
  Fit fit;
  fit.cx = box.center.x;
  fit.cy = box.center.y;
  const double w = box.size.width / 2.0;
  const double h = box.size.height / 2.0;
  const double a = box.angle * kPi / 180.0;
  if (w >= h) {
    fit.major = w;
    fit.minor = h;
    fit.angle = a;
  } else {
    fit.major = h;
    fit.minor = w;
    fit.angle = a + kPi / 2.0;
  }
  return fit;
}

Fit fitCv(const Points& pts) {
  return fromRotatedRect(cv::fitEllipse(cvPoints(pts)));
}

Fit fitCvDirect(const Points& pts) {
  return fromRotatedRect(cv::fitEllipseDirect(cvPoints(pts)));
}

void registerFits(int n) {
  const std::string op = "ellipseFit";
  add(op, "gkgeom", kFamily, n, [n](benchmark::State& state) {
    const Points pts = noisyEllipse(n);
    gkEllipseFitResults results;
    for (auto _ : state) {
      gwEllipseFit(oneFit(), pts, results);
      benchmark::DoNotOptimize(&results);
    }
    reportAccuracy(state, "gkgeom", n, fitGk);
  });
  add(op, "opencv", kFamily, n, [n](benchmark::State& state) {
    const std::vector<cv::Point2f> pts = cvPoints(noisyEllipse(n));
    for (auto _ : state) {
      const cv::RotatedRect box = cv::fitEllipse(pts);
      benchmark::DoNotOptimize(box);
    }
    reportAccuracy(state, "opencv", n, fitCv);
  });
  add(op, "opencv-direct", kFamily, n, [n](benchmark::State& state) {
    const std::vector<cv::Point2f> pts = cvPoints(noisyEllipse(n));
    for (auto _ : state) {
      const cv::RotatedRect box = cv::fitEllipseDirect(pts);
      benchmark::DoNotOptimize(box);
    }
    reportAccuracy(state, "opencv-direct", n, fitCvDirect);
  });
}

}  // namespace

void registerEllipseFitBenchmarks() {
  for (const int n : sizes()) {
    registerFits(n);
  }
}

}  // namespace gk::bench
