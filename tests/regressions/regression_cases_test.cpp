// Runs every case file of tests/data/regressions through one parameterised test. A case builds a
// shape, runs one operation and compares its result (or the exception it throws) with the
// expected JSON value. The format is described in tests/data/regressions/README.md.

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gk/base/assert.h>
#include <gk/base/convex_hull.h>
#include <gk/base/line_seg.h>
#include <gk/base/math_error.h>
#include <gk/base/ptr_handle.h>
#include <gk/cntr/contour.h>
#include <gk/cntr/errors/contour_errors.h>
#include <gk/cntr/moments/polygon_moments.h>
#include <gk/cntr/region.h>
#include <gk/cntr/region_set.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using json = nlohmann::json;
using Points = std::vector<gkVector<2>>;

/// A malformed case file: reported as a test failure naming the file, never skipped.
struct BadCase : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// --- reading ---------------------------------------------------------------------------------

double number(const json& v) {
  if (v.is_number()) {
    return v.get<double>();
  }
  if (v.is_string()) {
    const std::string s = v.get<std::string>();
    if (s == "nan") {
      return std::numeric_limits<double>::quiet_NaN();
    }
    if (s == "inf") {
      return std::numeric_limits<double>::infinity();
    }
    if (s == "-inf") {
      return -std::numeric_limits<double>::infinity();
    }
  }
  throw BadCase("not a coordinate: " + v.dump());
}

gkVector<2> point(const json& v) {
  if (!v.is_array() || v.size() != 2) {
    throw BadCase("not a point [x, y]: " + v.dump());
  }
  return gkVector<2>(number(v[0]), number(v[1]));
}

Points points(const json& v) {
  if (!v.is_array()) {
    throw BadCase("not a point list: " + v.dump());
  }
  Points out;
  for (const json& p : v) {
    out.push_back(point(p));
  }
  return out;
}

bool flag(const json& args, const char* name, bool fallback) {
  return args.contains(name) ? args.at(name).get<bool>() : fallback;
}

gkContourDefs::IntersectionMode mode(const json& shape) {
  const std::string m = shape.value("mode", std::string("ignore"));
  if (m == "ignore") {
    return gkContourDefs::eIgnore;
  }
  if (m == "outerHull") {
    return gkContourDefs::eOuterHull;
  }
  if (m == "regularize") {
    return gkContourDefs::eRegularize;
  }
  throw BadCase("unknown intersection mode: " + m);
}

/// A region: its outline, then its holes (each a point list, or a region object for a hole
/// with islands of its own).
gkPtrHandle<gkRegion> region(const json& shape) {
  gkPtrHandle<gkRegion> r(new gkRegion(points(shape.at("outer")), mode(shape)));
  if (shape.contains("holes")) {
    std::vector<gkPtrHandle<gkRegion>> holes;
    for (const json& h : shape.at("holes")) {
      holes.push_back(h.is_object() ? region(h) : gkPtrHandle<gkRegion>(new gkRegion(points(h))));
    }
    r->holes(holes);
  }
  return r;
}

struct Shape {
  std::string type;
  std::unique_ptr<gkContour> contour;  // contours only
  gkPtrHandle<gkRegion> region;
  std::unique_ptr<gkRegionSet> regionSet;
};

Shape build(const json& shape) {
  Shape s;
  s.type = shape.at("type").get<std::string>();
  if (s.type == "contour") {
    s.contour = std::make_unique<gkContour>(points(shape.at("points")), shape.value("closed", true),
                                            shape.value("label", 0UL));
  } else if (s.type == "region") {
    s.region = region(shape);
  } else if (s.type == "regionSet") {
    std::vector<gkPtrHandle<gkRegion>> members;
    for (const json& r : shape.at("regions")) {
      members.push_back(region(r));
    }
    s.regionSet = std::make_unique<gkRegionSet>(members, mode(shape));
  } else {
    throw BadCase("unknown shape type: " + s.type);
  }
  return s;
}

// --- writing results -------------------------------------------------------------------------

json toJson(double v) {
  if (std::isnan(v)) {
    return "nan";
  }
  if (std::isinf(v)) {
    return v > 0 ? "inf" : "-inf";
  }
  return v;
}

json toJson(const gkVector<2>& p) {
  return json::array({toJson(p.x()), toJson(p.y())});
}

json toJson(const Points& pts) {
  json out = json::array();
  for (const gkVector<2>& p : pts) {
    out.push_back(toJson(p));
  }
  return out;
}

json toJson(const gkMatrix<2>& m) {
  return json::array({json::array({toJson(m.element(0, 0)), toJson(m.element(0, 1))}),
                      json::array({toJson(m.element(1, 0)), toJson(m.element(1, 1))})});
}

/// A region as the list of its outline's vertices and then each hole's.
json outlines(const gkRegion& r) {
  json out = json::array({toJson(r.points())});
  for (const gkPtrHandle_const<gkRegion>& h : r.holes()) {
    out.push_back(toJson(h->points()));
  }
  return out;
}

// --- operations ------------------------------------------------------------------------------

/// The contour every contour operation runs on: the contour itself, or a region's outline.
const gkContour& asContour(const Shape& s) {
  if (s.contour) {
    return *s.contour;
  }
  if (s.region) {
    return *s.region;
  }
  throw BadCase("this operation needs a contour or a region");
}

const gkRegion& asRegion(const Shape& s) {
  if (!s.region) {
    throw BadCase("this operation needs a region");
  }
  return *s.region;
}

gkContourDefs::DiameterMode diameterMode(const json& args) {
  const json m = args.value("mode", json("farthestPair"));
  if (m.is_number_integer()) {
    return static_cast<gkContourDefs::DiameterMode>(m.get<int>());
  }
  if (m == "farthestPair") {
    return gkContourDefs::eFarthestPair;
  }
  if (m == "firstVertexCentered") {
    return gkContourDefs::eFirstVertexCentered;
  }
  throw BadCase("unknown diameter mode: " + m.dump());
}

using Operation = std::function<json(const Shape&, const json&)>;

const std::map<std::string, Operation>& operations() {
  static const std::map<std::string, Operation> ops = {
      {"area",
       [](const Shape& s, const json& a) -> json {
         const bool holes = flag(a, "considerHoles", true);
         if (s.regionSet) {
           return toJson(s.regionSet->area(holes));
         }
         if (s.region) {
           return toJson(s.region->area(holes));
         }
         return toJson(gw_Area(s.contour->points()));
       }},
      {"centerOfMass",
       [](const Shape& s, const json& a) -> json {
         const bool holes = flag(a, "considerHoles", true);
         if (s.regionSet) {
           return toJson(s.regionSet->centerOfMass(holes));
         }
         if (s.region) {
           return toJson(s.region->centerOfMass(holes));
         }
         return toJson(gw_CenterOfMass(s.contour->points()));
       }},
      {"inertiaMatrix",
       [](const Shape& s, const json& a) -> json {
         const bool holes = flag(a, "considerHoles", true);
         if (s.regionSet) {
           return toJson(s.regionSet->inertiaMatrix(holes));
         }
         if (s.region) {
           return toJson(s.region->inertiaMatrix(holes));
         }
         return toJson(gw_InertiaDataPolygon(s.contour->points()).inertiaMatrix());
       }},
      {"length", [](const Shape& s, const json&) -> json { return toJson(asContour(s).length()); }},
      {"meanPosition",
       [](const Shape& s, const json&) -> json { return toJson(asContour(s).meanPosition()); }},
      {"isSelfIntersecting",
       [](const Shape& s, const json&) -> json {
         if (s.regionSet) {
           return s.regionSet->isSelfIntersecting();
         }
         return asContour(s).isSelfIntersecting();
       }},
      {"inside",
       [](const Shape& s, const json& a) -> json {
         const gkVector<2> pt = point(a.at("pt"));
         const bool holes = flag(a, "considerHoles", true);
         if (s.regionSet) {
           return s.regionSet->inside(pt, holes);
         }
         return asRegion(s).inside(pt, holes);
       }},
      {"distToPoint",
       [](const Shape& s, const json& a) -> json {
         const gkVector<2> pt = point(a.at("pt"));
         const bool verticesOnly = flag(a, "verticesOnly", false);
         const bool holes = flag(a, "considerHoles", true);
         const bool zero = flag(a, "zeroIfInside", false);
         if (s.regionSet) {
           return toJson(s.regionSet->distToPoint(pt, verticesOnly, holes, zero));
         }
         if (s.region) {
           return toJson(s.region->distToPoint(pt, verticesOnly, holes, zero));
         }
         return toJson(s.contour->distToPoint(pt, verticesOnly));
       }},
      {"closestPoint",
       [](const Shape& s, const json& a) -> json {
         const gkVector<2> pt = point(a.at("pt"));
         const bool verticesOnly = flag(a, "verticesOnly", false);
         if (s.region) {
           return toJson(s.region->closestPoint(pt, verticesOnly, flag(a, "considerHoles", true)));
         }
         return toJson(asContour(s).closestPoint(pt, verticesOnly));
       }},
      {"closestVertexIndex",
       [](const Shape& s, const json& a) -> json {
         const gkVector<2> pt = point(a.at("pt"));
         if (s.region) {
           // [vertex number, hole number or -1 for the outline]
           long hole = 0;
           const long index =
               s.region->closestVertexIndex(pt, flag(a, "considerHoles", true), hole);
           return json::array({index, hole});
         }
         return asContour(s).closestVertexIndex(pt);
       }},
      {"vertexIndex",
       [](const Shape& s, const json& a) -> json {
         return asContour(s).vertexIndex(point(a.at("pt")), number(a.at("tolerance")));
       }},
      {"convexHull",
       [](const Shape& s, const json&) -> json {
         gkRegion hull;
         asContour(s).convexHull(hull);
         return toJson(hull.points());
       }},
      {"encloseCircle",
       [](const Shape& s, const json& a) -> json {
         const gkCircle c = asContour(s).encloseCircle(diameterMode(a));
         return json{{"center", toJson(c.center())}, {"radius", toJson(c.radius())}};
       }},
      {"regularize",
       [](const Shape& s, const json&) -> json {
         if (s.regionSet) {
           gkRegionSet out;
           s.regionSet->regularize(out);
           json all = json::array();
           for (const gkPtrHandle_const<gkRegion>& r : out.regions()) {
             all.push_back(outlines(*r));
           }
           return all;
         }
         gkRegion out;
         asRegion(s).regularize(out);
         return outlines(out);
       }},
      {"outerHull",
       [](const Shape& s, const json&) -> json {
         if (s.regionSet) {
           gkRegionSet out;
           s.regionSet->outerHull(out);
           json all = json::array();
           for (const gkPtrHandle_const<gkRegion>& r : out.regions()) {
             all.push_back(outlines(*r));
           }
           return all;
         }
         gkRegion out;
         asRegion(s).outerHull(out);
         return outlines(out);
       }},
      {"intersections",
       [](const Shape& s, const json& a) -> json {
         if (a.contains("seg")) {
           const Points seg = points(a.at("seg"));
           if (seg.size() != 2) {
             throw BadCase("seg needs two points");
           }
           const gkLineSeg ls(seg[0], seg[1]);
           const bool ends = flag(a, "includeEnds", true);
           if (s.region) {
             return toJson(s.region->intersections(ls, ends, flag(a, "considerHoles", true)));
           }
           return toJson(asContour(s).intersections(ls, ends));
         }
         const gkContour other(points(a.at("contour")), a.value("closed", true), 0);
         if (s.region) {
           return toJson(s.region->intersections(other, flag(a, "considerHoles", true)));
         }
         return toJson(asContour(s).intersections(other));
       }},
  };
  return ops;
}

/// Runs the case, turning a library exception into {"throws": name}.
json run(const json& c) {
  const std::string op = c.at("operation").get<std::string>();
  const auto found = operations().find(op);
  if (found == operations().end()) {
    throw BadCase("unknown operation \"" + op + "\"");
  }
  try {
    const Shape shape = build(c.at("shape"));
    return found->second(shape, c.value("args", json::object()));
  } catch (const gkContourDefs::EmptyContour&) {
    return {{"throws", "EmptyContour"}};
  } catch (const gkContourDefs::EmptyRegionSet&) {
    return {{"throws", "EmptyRegionSet"}};
  } catch (const gkContourDefs::BadParams&) {
    return {{"throws", "BadParams"}};
  } catch (const gkContourDefs::RegionCannotBeSetOpen&) {
    return {{"throws", "RegionCannotBeSetOpen"}};
  } catch (const gkMathError::Singular&) {
    return {{"throws", "Singular"}};
  } catch (const gkAssertionFailure&) {
    return {{"throws", "gkAssertionFailure"}};
  }
}

// --- comparing -------------------------------------------------------------------------------

/// Empty when actual matches expected; else where and how they differ.
std::string compare(const json& actual, const json& expected, double tolerance,
                    const std::string& where) {
  const bool expectedNumber =
      expected.is_number() ||
      (expected.is_string() && (expected == "nan" || expected == "inf" || expected == "-inf"));
  if (expectedNumber && (actual.is_number() || actual.is_string())) {
    const double a = number(actual);
    const double e = number(expected);
    const bool same = (std::isnan(a) && std::isnan(e)) || a == e ||
                      (tolerance > 0 && std::fabs(a - e) <= tolerance);
    if (same) {
      return "";
    }
    std::ostringstream os;
    os.precision(17);
    os << where << ": got " << a << ", expected " << e;
    if (tolerance > 0) {
      os << " within " << tolerance;
    }
    return os.str();
  }
  if (expected.is_array() && actual.is_array()) {
    if (expected.size() != actual.size()) {
      return where + ": got " + actual.dump() + ", expected " + expected.dump();
    }
    for (std::size_t i = 0; i < expected.size(); ++i) {
      const std::string d =
          compare(actual[i], expected[i], tolerance, where + "[" + std::to_string(i) + "]");
      if (!d.empty()) {
        return d;
      }
    }
    return "";
  }
  if (expected.is_object() && actual.is_object()) {
    if (expected.size() != actual.size()) {
      return where + ": got " + actual.dump() + ", expected " + expected.dump();
    }
    for (auto it = expected.begin(); it != expected.end(); ++it) {
      if (!actual.contains(it.key())) {
        return where + ": got " + actual.dump() + ", expected " + expected.dump();
      }
      const std::string d =
          compare(actual.at(it.key()), it.value(), tolerance, where + "." + it.key());
      if (!d.empty()) {
        return d;
      }
    }
    return "";
  }
  if (actual == expected) {
    return "";
  }
  return where + ": got " + actual.dump() + ", expected " + expected.dump();
}

// --- the cases -------------------------------------------------------------------------------

std::vector<std::string> caseFiles() {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(GKGEOM_REGRESSIONS_DIR)) {
    if (entry.path().extension() == ".json") {
      files.push_back(entry.path().string());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

/// The file's stem with every character a test name may not hold replaced by '_'.
std::string caseName(const testing::TestParamInfo<std::string>& info) {
  std::string name = std::filesystem::path(info.param).stem().string();
  for (char& ch : name) {
    const bool ok =
        (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') || (ch >= '0' && ch <= '9');
    if (!ok) {
      ch = '_';
    }
  }
  return name;
}

class RegressionCase : public testing::TestWithParam<std::string> {};

TEST_P(RegressionCase, GivesTheRecordedResult) {
  std::ifstream in(GetParam());
  ASSERT_TRUE(in) << "cannot open " << GetParam();
  json c;
  try {
    c = json::parse(in);
  } catch (const json::exception& e) {
    FAIL() << GetParam() << ": not JSON: " << e.what();
  }
  ASSERT_TRUE(c.contains("description") && c.at("description").is_string() &&
              !c.at("description").get<std::string>().empty())
      << GetParam() << ": every case says why it exists in \"description\"";
  ASSERT_TRUE(c.contains("expect")) << GetParam() << ": no \"expect\"";
  json actual;
  try {
    actual = run(c);
  } catch (const BadCase& e) {
    FAIL() << GetParam() << ": " << e.what();
  } catch (const json::exception& e) {
    FAIL() << GetParam() << ": malformed case: " << e.what();
  }
  const std::string diff = compare(actual, c.at("expect"), c.value("tolerance", 0.0), "result");
  EXPECT_TRUE(diff.empty()) << GetParam() << "\n  " << c.at("description").get<std::string>()
                            << "\n  " << diff;
}

INSTANTIATE_TEST_SUITE_P(Regressions, RegressionCase, testing::ValuesIn(caseFiles()), caseName);

// The runner itself, so that a broken comparison cannot pass every case silently.

TEST(RegressionRunner, ComparesNumbersExactlyUnlessAToleranceIsGiven) {
  EXPECT_TRUE(compare(json(0.1 + 0.2), json(0.3), 0.0, "r") != "");
  EXPECT_EQ(compare(json(0.1 + 0.2), json(0.3), 1e-15, "r"), "");
  EXPECT_EQ(compare(json("nan"), json("nan"), 0.0, "r"), "");
  EXPECT_NE(compare(json("inf"), json(1e308), 0.0, "r"), "");
  EXPECT_EQ(compare(json::array({1.0, 2.0}), json::array({1, 2}), 0.0, "r"), "");
  EXPECT_NE(compare(json::array({1.0, 2.0}), json::array({1, 2, 3}), 0.0, "r"), "");
  EXPECT_NE(compare(json(true), json(false), 0.0, "r"), "");
  EXPECT_NE(compare(json{{"throws", "BadParams"}}, json(1.0), 0.0, "r"), "");
}

TEST(RegressionRunner, UnknownOperationIsReportedByName) {
  const json c = {{"shape", {{"type", "contour"}, {"points", json::array()}}},
                  {"operation", "frobnicate"}};
  try {
    run(c);
    FAIL() << "an unknown operation ran";
  } catch (const BadCase& e) {
    EXPECT_NE(std::string(e.what()).find("frobnicate"), std::string::npos);
  }
}

TEST(RegressionRunner, LibraryErrorsBecomeTheirClassNames) {
  const json c = {{"shape", {{"type", "contour"}, {"points", json::array()}}},
                  {"operation", "length"}};
  EXPECT_EQ(run(c), json(0.0));
  const json d = {{"shape", {{"type", "contour"}, {"points", json::array()}}},
                  {"operation", "meanPosition"}};
  EXPECT_EQ(run(d), (json{{"throws", "EmptyContour"}}));
}

}  // namespace
