// The stored forms of contours, regions, region sets, their edgelet variants and the contour
// errors: round trips, exact bytes, legacy forms, version refusals, hostile graphs, the golden
// files under tests/data/archive and a bit-flip sweep over some of them.

#include <gk/base/archive.h>
#include <gk/base/edgelet.h>
#include <gk/base/xform_base.h>
#include <gk/ch_core/contour_t.h>
#include <gk/ch_core/region_set_t.h>
#include <gk/ch_core/region_t.h>
#include <gk/cntr/contour.h>
#include <gk/cntr/errors/contour_errors.h>
#include <gk/cntr/region.h>
#include <gk/cntr/region_set.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "archive_bytes.h"

#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "contour_test_access.h"

#ifndef GKGEOM_TEST_DATA_DIR
#error "GKGEOM_TEST_DATA_DIR must name tests/data"
#endif

using ::testing::EndsWith;

namespace {

using Points = std::vector<gkVector<2>>;
using EdgeletContour = gkContourT<gkEdgelet>;
using EdgeletRegion = gkRegionT<gkEdgelet>;
using EdgeletRegionSet = gkRegionSetT<gkEdgelet>;

// --- bytes ------------------------------------------------------------------------------------

using Bytes = gk::test::ArchiveBytes;
using gk::test::hex;

// --- storing and loading ----------------------------------------------------------------------

template <typename T>
std::string storeHandle(const gkPtrHandle<T>& h) {
  std::ostringstream os;
  {
    gkArchive ar(os);
    gkPtrHandle<T> copy = h;
    ar || copy;
  }
  return os.str();
}

/// Loads one handle and checks that the whole input was used.
template <typename T>
gkPtrHandle<T> loadHandle(const std::string& bytes) {
  std::istringstream is(bytes);
  gkArchive ar(is);
  gkPtrHandle<T> h;
  ar || h;
  EXPECT_EQ(ar.offset(), bytes.size()) << "bytes left over";
  return h;
}

std::string storeByValue(const gkPersistent& object) {
  std::ostringstream os;
  {
    gkArchive ar(os);
    ar.storeObject(object);
  }
  return os.str();
}

std::unique_ptr<gkPersistent> loadByValue(const std::string& bytes) {
  std::istringstream is(bytes);
  gkArchive ar(is);
  std::unique_ptr<gkPersistent> object = ar.loadObject();
  EXPECT_EQ(ar.offset(), bytes.size()) << "bytes left over";
  return object;
}

// --- the old writer (legacy forms; nothing in the library writes them any more) -------------

/// Emits the version-0 layouts with the archive's own primitives.
class LegacyWriter {
 public:
  explicit LegacyWriter(gkArchive& ar) : ar_(ar) {}

  void tagAndName(const std::string& type) {
    unsigned char tag = 1;
    unsigned long length = type.size();
    ar_ || tag || length;
    for (char c : type) {
      auto b = static_cast<unsigned char>(c);
      ar_ || b;
    }
  }
  /// The old base class's layer: version 0 and the id it kept.
  void oldBaseLayer(unsigned long id) {
    unsigned char version = 0;
    ar_ || version || id;
  }
  void contourV0(Points pts, long bound, bool closed) {
    unsigned char version = 0;
    ar_ || version;
    oldBaseLayer(0xDEADBEEF);
    ar_.container(pts, 16);
    unsigned char dropped = 0x5A;
    ar_ || dropped || bound || closed;
  }
  void regionV0(Points pts, long bound) {
    unsigned char version = 0;
    ar_ || version;
    oldBaseLayer(42);
    ar_.container(pts, 16);
    unsigned char dropped = 0xA5;
    ar_ || dropped || bound;
  }
  /// A current-form contour layer, written field by field (for the edgelet contour's v0 form).
  void contourV1(unsigned long label, bool closed, Points pts, long bound) {
    unsigned char version = 1;
    unsigned char persistent = 0;
    ar_ || version || persistent || label || closed;
    ar_.container(pts, 16);
    ar_ || bound;
  }

 private:
  gkArchive& ar_;
};

// --- exact comparison -------------------------------------------------------------------------

bool sameBits(double a, double b) {
  std::uint64_t ua = 0;
  std::uint64_t ub = 0;
  std::memcpy(&ua, &a, 8);
  std::memcpy(&ub, &b, 8);
  return ua == ub;
}

::testing::AssertionResult samePoints(const Points& actual, const Points& expected) {
  if (actual.size() != expected.size()) {
    return ::testing::AssertionFailure()
           << actual.size() << " vertices where " << expected.size() << " were expected";
  }
  for (std::size_t i = 0; i < actual.size(); ++i) {
    if (!sameBits(actual[i].x(), expected[i].x()) || !sameBits(actual[i].y(), expected[i].y())) {
      return ::testing::AssertionFailure()
             << "vertex " << i << " is (" << actual[i].x() << ", " << actual[i].y() << ") not ("
             << expected[i].x() << ", " << expected[i].y() << ")";
    }
  }
  return ::testing::AssertionSuccess();
}

void expectSameContour(const gkContour& actual, const gkContour& expected) {
  EXPECT_TRUE(samePoints(actual.points(), expected.points()));
  EXPECT_EQ(actual.isClosed(), expected.isClosed());
  EXPECT_EQ(actual.label(), expected.label());
  EXPECT_EQ(actual.cachedVectorSize(), expected.cachedVectorSize());
  EXPECT_TRUE(gkContourTestAccess::noCache(actual));
}

void expectSameRegion(const gkRegion& actual, const gkRegion& expected) {
  expectSameContour(actual, expected);
  ASSERT_EQ(actual.holes().size(), expected.holes().size());
  for (std::size_t i = 0; i < actual.holes().size(); ++i) {
    expectSameRegion(*actual.holes()[i], *expected.holes()[i]);
  }
}

void expectSameSet(const gkRegionSet& actual, const gkRegionSet& expected) {
  EXPECT_EQ(actual.cachedVectorSize(), expected.cachedVectorSize());
  ASSERT_EQ(actual.regions().size(), expected.regions().size());
  for (std::size_t i = 0; i < actual.regions().size(); ++i) {
    expectSameRegion(*actual.regions()[i], *expected.regions()[i]);
  }
}

void expectSameXform(const gkXform<2>& actual, const gkXform<2>& expected) {
  for (int r = 0; r < 2; ++r) {
    for (int c = 0; c < 2; ++c) {
      EXPECT_TRUE(sameBits(actual.matrix().element(r, c), expected.matrix().element(r, c)));
    }
  }
  EXPECT_TRUE(sameBits(actual.trans().x(), expected.trans().x()));
  EXPECT_TRUE(sameBits(actual.trans().y(), expected.trans().y()));
}

void expectSameEdgelets(const std::vector<gkEdgelet>& actual,
                        const std::vector<gkEdgelet>& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < actual.size(); ++i) {
    EXPECT_TRUE(sameBits(actual[i].position().x(), expected[i].position().x())) << i;
    EXPECT_TRUE(sameBits(actual[i].position().y(), expected[i].position().y())) << i;
    EXPECT_EQ(actual[i].magnitude(), expected[i].magnitude()) << i;
    EXPECT_EQ(actual[i].angle().value(), expected[i].angle().value()) << i;
  }
}

/// The edgelets a region rebuilds from its vertices: positions only.
std::vector<gkEdgelet> bareEdgelets(const Points& pts) {
  std::vector<gkEdgelet> out;
  for (const gkVector<2>& p : pts) {
    out.emplace_back(p, 0, gkAngle8(0));
  }
  return out;
}

// --- shapes -----------------------------------------------------------------------------------

Points square(double x0, double y0, double side) {
  return {{x0, y0}, {x0 + side, y0}, {x0 + side, y0 + side}, {x0, y0 + side}};
}

gkPtrHandle<gkRegion> region(const Points& pts, unsigned long label, long bound) {
  gkPtrHandle<gkRegion> r(new gkRegion(pts));
  r->label(label);
  r->cachedVectorSize(bound);
  return r;
}

double quietNaNWithPayload() {
  const std::uint64_t bits = 0x7FF8000000ABCDEFull;
  double d = 0;
  std::memcpy(&d, &bits, 8);
  return d;
}

/// The contour of contour_v1.gka: open, label 7, bound 5, awkward coordinates.
gkPtrHandle<gkContour> goldenContour() {
  const double denormal = std::numeric_limits<double>::denorm_min() * 3;
  return gkPtrHandle<gkContour>(
      new gkContour(Points{{0, 0}, {1.5, -2.25}, {-0.0, denormal}, {1e300, -1e-300}}, false, 7));
}

/// The contour written in contour_v0.gka: its vertices, bound 9, closed.
Points legacyContourPoints() {
  return {{1, 2}, {3, 4}, {-5.5, 6.25}};
}

/// The region of region_v1.gka: an outline with one hole that has a hole of its own.
gkPtrHandle<gkRegion> goldenRegion() {
  gkPtrHandle<gkRegion> inner = region(square(4, 4, 2), 3, 4);
  gkPtrHandle<gkRegion> middle = region(square(2, 2, 6), 2, 3);
  middle->holes(gkRegion::Holes{inner});
  gkPtrHandle<gkRegion> outer = region(square(0, 0, 10), 1, 6);
  outer->holes(gkRegion::Holes{middle});
  return outer;
}

/// The set of region_set_v1.gka: two members, the first with a hole; bound 8.
gkPtrHandle<gkRegionSet> goldenSet() {
  gkPtrHandle<gkRegion> hole = region(square(1, 1, 1), 0, 3);
  gkPtrHandle<gkRegion> first = region(square(0, 0, 4), 11, 3);
  first->holes(gkRegion::Holes{hole});
  gkPtrHandle<gkRegion> second = region({{10, 10}, {14, 10}, {12, 13}}, 12, 5);
  gkPtrHandle<gkRegionSet> set(new gkRegionSet(gkRegionSet::Regions{first, second}));
  set->cachedVectorSize(8);
  return set;
}

/// The set of shared_hole_v1.gka: two regions that share one hole object.
gkPtrHandle<gkRegionSet> sharedHoleSet() {
  gkPtrHandle<gkRegion> hole = region(square(2, 2, 1), 5, 3);
  gkPtrHandle<gkRegion> a = region(square(0, 0, 10), 1, 3);
  gkPtrHandle<gkRegion> b = region(square(-1, -1, 12), 2, 3);
  a->holes(gkRegion::Holes{hole});
  b->holes(gkRegion::Holes{hole});
  return gkPtrHandle<gkRegionSet>(new gkRegionSet(gkRegionSet::Regions{a, b}));
}

std::vector<gkEdgelet> goldenEdgelets() {
  return {gkEdgelet({0, 0}, 0, gkAngle8(0)), gkEdgelet({4, 0}, 65535, gkAngle8(64)),
          gkEdgelet({4, 3}, 1234, gkAngle8(255))};
}

gkXform<2> goldenXform() {
  return gkXform<2>(gkMatrix<2>(2, 0.5, -0.25, 3), gkVector<2>(7, -9));
}

gkPtrHandle<EdgeletContour> goldenEdgeletContour() {
  const EdgeletContour::XformHandle x(new gk2XformLinear(goldenXform()));
  return gkPtrHandle<EdgeletContour>(new EdgeletContour(goldenEdgelets(), x));
}

gkPtrHandle<EdgeletRegion> goldenEdgeletRegion() {
  return gkPtrHandle<EdgeletRegion>(new EdgeletRegion(goldenEdgelets(), 21));
}

gkPtrHandle<EdgeletRegionSet> goldenEdgeletSet() {
  gkPtrHandle<EdgeletRegion> a(new EdgeletRegion(bareEdgelets(square(0, 0, 2)), 1));
  gkPtrHandle<EdgeletRegion> b(new EdgeletRegion(bareEdgelets(square(5, 5, 2)), 2));
  return gkPtrHandle<EdgeletRegionSet>(new EdgeletRegionSet(EdgeletRegionSet::RegionsT{a, b}));
}

// --- legacy archives --------------------------------------------------------------------------

std::string legacyContourArchive() {
  std::ostringstream os;
  {
    gkArchive ar(os);
    LegacyWriter w(ar);
    w.tagAndName("gkContour");
    w.contourV0(legacyContourPoints(), 9, true);
  }
  return os.str();
}

std::string legacyRegionArchive() {
  std::ostringstream os;
  {
    gkArchive ar(os);
    LegacyWriter w(ar);
    w.tagAndName("gkRegion");
    w.regionV0(square(1, 1, 3), 6);
  }
  return os.str();
}

/// A version-0 set: one legacy member and one current member, no bound.
std::string legacySetArchive() {
  std::ostringstream os;
  {
    gkArchive ar(os);
    LegacyWriter w(ar);
    w.tagAndName("gkRegionSet");
    unsigned char version = 0;
    unsigned char persistent = 0;
    unsigned char containerVersion = 0;
    unsigned long count = 2;
    ar || version || persistent || containerVersion || count;
    w.tagAndName("gkRegion");
    w.regionV0(square(0, 0, 2), 4);
    gkPtrHandle<gkRegion> current = region({{5, 5}, {9, 5}, {7, 8}}, 3, 7);
    ar || current;
  }
  return os.str();
}

/// An edgelet contour of version 0: the contour layer and the edgelets, no transform.
std::string legacyEdgeletContourArchive() {
  std::ostringstream os;
  {
    gkArchive ar(os);
    LegacyWriter w(ar);
    w.tagAndName("gkContourT<gkEdgelet>");
    unsigned char version = 0;
    ar || version;
    Points pts;
    for (const gkEdgelet& e : goldenEdgelets()) {
      pts.push_back(e.position());
    }
    w.contourV1(13, true, pts, 3);
    std::vector<gkEdgelet> data = goldenEdgelets();
    ar.container(data, 19);
  }
  return os.str();
}

// --- golden files -----------------------------------------------------------------------------

std::string goldenPath(const std::string& name) {
  return std::string(GKGEOM_TEST_DATA_DIR) + "/archive/" + name;
}

std::string readGolden(const std::string& name) {
  std::ifstream in(goldenPath(name), std::ios::binary);
  EXPECT_TRUE(in.good()) << "cannot open " << goldenPath(name);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void writeGolden(const std::string& name, const std::string& bytes) {
  std::ofstream out(goldenPath(name), std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  ASSERT_TRUE(out.good()) << "cannot write " << goldenPath(name);
}

/// Every golden file and how to make its bytes.
struct Golden {
  const char* name;
  std::function<std::string()> bytes;
};

std::vector<Golden> goldens() {
  return {
      {"contour_v1.gka", [] { return storeHandle(goldenContour()); }},
      {"contour_v0.gka", legacyContourArchive},
      {"region_v1.gka", [] { return storeHandle(goldenRegion()); }},
      {"region_v0.gka", legacyRegionArchive},
      {"region_set_v1.gka", [] { return storeHandle(goldenSet()); }},
      {"region_set_v0.gka", legacySetArchive},
      {"shared_hole_v1.gka", [] { return storeHandle(sharedHoleSet()); }},
      {"edgelet_contour_v1.gka", [] { return storeHandle(goldenEdgeletContour()); }},
      {"edgelet_contour_v0.gka", legacyEdgeletContourArchive},
      {"edgelet_region_v0.gka", [] { return storeHandle(goldenEdgeletRegion()); }},
      {"edgelet_region_set_v0.gka", [] { return storeHandle(goldenEdgeletSet()); }},
      {"bad_params_v0.gka",
       [] { return storeByValue(gkContourDefs::BadParams(L"holes cannot intersect region")); }},
  };
}

}  // namespace

// === round trips ==============================================================================

TEST(ContourArchive, LoadingAStoredContourGivesItsVerticesFlagLabelAndBoundWithNoCache) {
  gkPtrHandle<gkContour> original(new gkContour(square(0, 0, 3), true, 17));
  original->cachedVectorSize(12);
  gkContourTestAccess::fillPlainCaches(*original);
  const gkPtrHandle<gkContour> loaded = loadHandle<gkContour>(storeHandle(original));
  ASSERT_TRUE(loaded);
  EXPECT_TRUE(samePoints(loaded->points(), original->points()));
  EXPECT_TRUE(loaded->isClosed());
  EXPECT_EQ(loaded->label(), 17u);
  EXPECT_EQ(loaded->cachedVectorSize(), 12);
  EXPECT_TRUE(gkContourTestAccess::noCache(*loaded));
}

TEST(ContourArchive, NaNPayloadsInfinitiesSignedZerosAndDenormalsSurviveBitForBit) {
  const double inf = std::numeric_limits<double>::infinity();
  const Points pts{{quietNaNWithPayload(), -inf},
                   {inf, -0.0},
                   {std::numeric_limits<double>::denorm_min(), std::numeric_limits<double>::max()},
                   {std::numeric_limits<double>::lowest(), 0.0}};
  gkPtrHandle<gkContour> original(new gkContour(pts, false, ~0ul));
  const gkPtrHandle<gkContour> loaded = loadHandle<gkContour>(storeHandle(original));
  expectSameContour(*loaded, *original);
}

TEST(ContourArchive, AnEmptyOpenContourRoundTrips) {
  gkPtrHandle<gkContour> original(new gkContour(Points{}, false, 0));
  original->cachedVectorSize(0);
  expectSameContour(*loadHandle<gkContour>(storeHandle(original)), *original);
}

TEST(ContourArchive, TheLargestCacheBoundRoundTrips) {
  gkPtrHandle<gkContour> original(new gkContour(square(0, 0, 1), true, 1));
  original->cachedVectorSize(std::numeric_limits<int>::max());
  expectSameContour(*loadHandle<gkContour>(storeHandle(original)), *original);
}

TEST(ContourArchive, StoresTheDocumentedBytes) {
  gkPtrHandle<gkContour> c(new gkContour(Points{{0, 0}, {1, 0}}, true, 7));
  const std::string expected = Bytes()
                                   .header()
                                   .newObject("gkContour")
                                   .contourLayer(7, true, Points{{0, 0}, {1, 0}}, 3)
                                   .str();
  EXPECT_EQ(hex(storeHandle(c)), hex(expected));
}

TEST(ContourArchive, StoreLoadStoreIsByteIdentical) {
  const std::string first = storeHandle(goldenContour());
  EXPECT_EQ(hex(storeHandle(loadHandle<gkContour>(first))), hex(first));
}

TEST(RegionArchive, HolesWithHolesLabelsAndBoundsRoundTrip) {
  const gkPtrHandle<gkRegion> original = goldenRegion();
  const gkPtrHandle<gkRegion> loaded = loadHandle<gkRegion>(storeHandle(original));
  expectSameRegion(*loaded, *original);
  EXPECT_TRUE(loaded->isClosed());
}

TEST(RegionArchive, StoreLoadStoreIsByteIdentical) {
  const std::string first = storeHandle(goldenRegion());
  EXPECT_EQ(hex(storeHandle(loadHandle<gkRegion>(first))), hex(first));
}

TEST(RegionArchive, StoresItsOutlineAsAContourLayerThenItsHoles) {
  const gkPtrHandle<gkRegion> r = region(Points{{0, 0}, {1, 0}, {0, 1}}, 4, 3);
  const std::string expected = Bytes()
                                   .header()
                                   .newObject("gkRegion")
                                   .u8(1)
                                   .contourLayer(4, true, Points{{0, 0}, {1, 0}, {0, 1}}, 3)
                                   .u8(0)
                                   .u64(0)
                                   .str();
  EXPECT_EQ(hex(storeHandle(r)), hex(expected));
}

TEST(RegionSetArchive, MembersAndBoundRoundTrip) {
  const gkPtrHandle<gkRegionSet> original = goldenSet();
  expectSameSet(*loadHandle<gkRegionSet>(storeHandle(original)), *original);
}

TEST(RegionSetArchive, AnEmptySetRoundTrips) {
  gkPtrHandle<gkRegionSet> original(new gkRegionSet());
  original->cachedVectorSize(0);
  expectSameSet(*loadHandle<gkRegionSet>(storeHandle(original)), *original);
}

TEST(RegionSetArchive, StoreLoadStoreIsByteIdentical) {
  const std::string first = storeHandle(goldenSet());
  EXPECT_EQ(hex(storeHandle(loadHandle<gkRegionSet>(first))), hex(first));
}

TEST(SharedObjectArchive, AHoleSharedByTwoRegionsIsWrittenOnceAndStaysShared) {
  const std::string bytes = storeHandle(sharedHoleSet());
  const std::string regionName = Bytes().u64(8).raw("gkRegion").str();
  std::size_t names = 0;
  for (std::size_t at = bytes.find(regionName); at != std::string::npos;
       at = bytes.find(regionName, at + 1)) {
    ++names;
  }
  EXPECT_EQ(names, 3u) << "two regions and one hole, each written once";
  // The set is object 1, the first region 2, the hole 3: the second region names it again.
  EXPECT_NE(bytes.find(Bytes().u8(0).u64(1).u8(2).u64(3).str()), std::string::npos) << hex(bytes);

  const gkPtrHandle<gkRegionSet> loaded = loadHandle<gkRegionSet>(bytes);
  ASSERT_EQ(loaded->regions().size(), 2u);
  ASSERT_EQ(loaded->regions()[0]->holes().size(), 1u);
  ASSERT_EQ(loaded->regions()[1]->holes().size(), 1u);
  EXPECT_EQ(loaded->regions()[0]->holes()[0].get(), loaded->regions()[1]->holes()[0].get());
  expectSameSet(*loaded, *sharedHoleSet());
  EXPECT_EQ(hex(storeHandle(loaded)), hex(bytes));
}

TEST(SharedObjectArchive, TheSameContourStoredTwiceInOnePassIsABackReference) {
  gkPtrHandle<gkContour> c(new gkContour(square(0, 0, 1), true, 1));
  std::ostringstream os;
  {
    gkArchive ar(os);
    gkPtrHandle<gkContour> a = c;
    gkPtrHandle<gkContour> b = c;
    ar || a || b;
  }
  const std::string bytes = os.str();
  EXPECT_EQ(bytes.substr(bytes.size() - 9), Bytes().u8(2).u64(1).str());
  std::istringstream is(bytes);
  gkArchive ar(is);
  gkPtrHandle<gkContour> a;
  gkPtrHandle<gkContour> b;
  ar || a || b;
  EXPECT_EQ(a.get(), b.get());
}

TEST(EdgeletContourArchive, EdgeletsWithMagnitudeAndAngleAndTheTransformRoundTrip) {
  const gkPtrHandle<EdgeletContour> original = goldenEdgeletContour();
  const gkPtrHandle<EdgeletContour> loaded = loadHandle<EdgeletContour>(storeHandle(original));
  expectSameEdgelets(loaded->data(), original->data());
  EXPECT_TRUE(samePoints(loaded->points(), original->points()));
  ASSERT_TRUE(loaded->dataFromPointsXform());
  const auto* x = dynamic_cast<const gk2XformLinear*>(loaded->dataFromPointsXform().get());
  ASSERT_NE(x, nullptr);
  expectSameXform(x->xform(), goldenXform());
  EXPECT_EQ(loaded->label(), original->label());
  EXPECT_EQ(loaded->isClosed(), original->isClosed());
}

TEST(EdgeletContourArchive, StoreLoadStoreIsByteIdentical) {
  const std::string first = storeHandle(goldenEdgeletContour());
  EXPECT_EQ(hex(storeHandle(loadHandle<EdgeletContour>(first))), hex(first));
}

TEST(EdgeletRegionArchive, RebuildsBareEdgeletsFromTheStoredOutline) {
  const gkPtrHandle<EdgeletRegion> original = goldenEdgeletRegion();
  const gkPtrHandle<EdgeletRegion> loaded = loadHandle<EdgeletRegion>(storeHandle(original));
  EXPECT_TRUE(samePoints(loaded->points(), original->points()));
  expectSameEdgelets(loaded->data(), bareEdgelets(original->points()));
  EXPECT_EQ(loaded->label(), 21u);
}

TEST(EdgeletRegionArchive, StoreLoadStoreIsByteIdentical) {
  const std::string first = storeHandle(goldenEdgeletRegion());
  EXPECT_EQ(hex(storeHandle(loadHandle<EdgeletRegion>(first))), hex(first));
}

TEST(EdgeletRegionSetArchive, MembersRoundTripAsEdgeletRegions) {
  const gkPtrHandle<EdgeletRegionSet> original = goldenEdgeletSet();
  const gkPtrHandle<EdgeletRegionSet> loaded = loadHandle<EdgeletRegionSet>(storeHandle(original));
  ASSERT_EQ(loaded->regionsT().size(), 2u);
  ASSERT_EQ(loaded->regions().size(), 2u);
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_TRUE(samePoints(loaded->regionsT()[i]->points(), original->regionsT()[i]->points()));
    EXPECT_TRUE(samePoints(loaded->regions()[i]->points(), original->regionsT()[i]->points()));
    EXPECT_EQ(loaded->regionsT()[i]->label(), original->regionsT()[i]->label());
  }
}

TEST(EdgeletRegionSetArchive, StoreLoadStoreIsByteIdentical) {
  const std::string first = storeHandle(goldenEdgeletSet());
  EXPECT_EQ(hex(storeHandle(loadHandle<EdgeletRegionSet>(first))), hex(first));
}

// === versions =================================================================================

namespace {

template <typename T>
void expectUnknownVersion(const std::string& bytes, const char* sourceTail, long line) {
  try {
    loadHandle<T>(bytes);
    ADD_FAILURE() << "loaded";
  } catch (const gkArchive::UnknownVersion& e) {
    EXPECT_THAT(e.source(), EndsWith(sourceTail));
    EXPECT_EQ(e.line(), line);
  }
}

std::string patched(std::string bytes, std::size_t at, unsigned char value) {
  bytes.at(at) = static_cast<char>(value);
  return bytes;
}

/// Where the first object's own version byte is: header, tag, name length, name.
std::size_t firstVersionByte(const std::string& type) {
  return 5 + 1 + 8 + type.size();
}

}  // namespace

TEST(ContourArchive, VersionByteTwoIsRefusedNamingTheContourSourceAndLine) {
  const std::string bytes = storeHandle(goldenContour());
  ASSERT_EQ(bytes[firstVersionByte("gkContour")], 1);
  expectUnknownVersion<gkContour>(patched(bytes, firstVersionByte("gkContour"), 2), "cntr/contour",
                                  904);
}

TEST(RegionArchive, VersionByteTwoIsRefusedNamingTheRegionSourceAndLine) {
  const std::string bytes = storeHandle(goldenRegion());
  expectUnknownVersion<gkRegion>(patched(bytes, firstVersionByte("gkRegion"), 2), "cntr/region",
                                 819);
}

TEST(RegionSetArchive, VersionByteTwoIsRefusedNamingTheSetSourceAndLine) {
  const std::string bytes = storeHandle(goldenSet());
  expectUnknownVersion<gkRegionSet>(patched(bytes, firstVersionByte("gkRegionSet"), 2),
                                    "cntr/regionst", 479);
}

TEST(EdgeletContourArchive, VersionByteTwoIsRefusedNamingLine98) {
  const std::string bytes = storeHandle(goldenEdgeletContour());
  expectUnknownVersion<EdgeletContour>(patched(bytes, firstVersionByte("gkContourT<gkEdgelet>"), 2),
                                       "ch_core/cntrtmpl", 98);
}

TEST(EdgeletRegionArchive, VersionByteOneIsRefusedNamingLine186) {
  const std::string bytes = storeHandle(goldenEdgeletRegion());
  ASSERT_EQ(bytes[firstVersionByte("gkRegionT<gkEdgelet>")], 0);
  expectUnknownVersion<EdgeletRegion>(patched(bytes, firstVersionByte("gkRegionT<gkEdgelet>"), 1),
                                      "ch_core/cntrtmpl", 186);
}

TEST(EdgeletRegionSetArchive, VersionByteOneIsRefusedNamingLine283) {
  const std::string bytes = storeHandle(goldenEdgeletSet());
  expectUnknownVersion<EdgeletRegionSet>(
      patched(bytes, firstVersionByte("gkRegionSetT<gkEdgelet>"), 1), "ch_core/cntrtmpl", 283);
}

TEST(ContourArchive, AnOldBaseLayerOfAnotherVersionIsRefused) {
  const std::string bytes = legacyContourArchive();
  EXPECT_THROW(loadHandle<gkContour>(patched(bytes, firstVersionByte("gkContour") + 1, 1)),
               gkArchive::UnknownVersion);
}

// === legacy forms =============================================================================

TEST(ContourArchive, TheLegacyFormReadsVerticesBoundAndClosedFlagWithLabelZero) {
  const gkPtrHandle<gkContour> loaded = loadHandle<gkContour>(legacyContourArchive());
  EXPECT_TRUE(samePoints(loaded->points(), legacyContourPoints()));
  EXPECT_EQ(loaded->cachedVectorSize(), 9);
  EXPECT_TRUE(loaded->isClosed());
  EXPECT_EQ(loaded->label(), 0u);
  EXPECT_TRUE(gkContourTestAccess::noCache(*loaded));
}

TEST(ContourArchive, TheLegacyFormReadsAnOpenContour) {
  std::ostringstream os;
  {
    gkArchive ar(os);
    LegacyWriter w(ar);
    w.tagAndName("gkContour");
    w.contourV0(Points{{0, 0}, {2, 2}}, 3, false);
  }
  EXPECT_FALSE(loadHandle<gkContour>(os.str())->isClosed());
}

TEST(ContourArchive, TheLegacyFormIsStoredAgainInTheCurrentForm) {
  const gkPtrHandle<gkContour> loaded = loadHandle<gkContour>(legacyContourArchive());
  const std::string again = storeHandle(loaded);
  EXPECT_EQ(static_cast<unsigned char>(again[firstVersionByte("gkContour")]), 1);
  expectSameContour(*loadHandle<gkContour>(again), *loaded);
}

TEST(RegionArchive, TheLegacyFormReadsTheOutlineAndBoundWithLabelZeroAndNoHoles) {
  const gkPtrHandle<gkRegion> loaded = loadHandle<gkRegion>(legacyRegionArchive());
  EXPECT_TRUE(samePoints(loaded->points(), square(1, 1, 3)));
  EXPECT_EQ(loaded->cachedVectorSize(), 6);
  EXPECT_EQ(loaded->label(), 0u);
  EXPECT_TRUE(loaded->holes().empty());
  EXPECT_TRUE(loaded->isClosed()) << "a region reads as closed whatever its outline says";
  EXPECT_TRUE(gkContourTestAccess::noCache(*loaded));
}

TEST(RegionSetArchive, TheLegacyFormReadsTheMembersAndKeepsTheDefaultBound) {
  const gkPtrHandle<gkRegionSet> loaded = loadHandle<gkRegionSet>(legacySetArchive());
  EXPECT_EQ(loaded->cachedVectorSize(), 3);
  ASSERT_EQ(loaded->regions().size(), 2u);
  EXPECT_TRUE(samePoints(loaded->regions()[0]->points(), square(0, 0, 2)));
  EXPECT_EQ(loaded->regions()[0]->cachedVectorSize(), 4);
  EXPECT_EQ(loaded->regions()[0]->label(), 0u);
  expectSameRegion(*loaded->regions()[1], *region({{5, 5}, {9, 5}, {7, 8}}, 3, 7));
}

TEST(EdgeletContourArchive, TheLegacyFormKeepsTheEdgeletsAndGetsTheIdentityTransform) {
  const gkPtrHandle<EdgeletContour> loaded =
      loadHandle<EdgeletContour>(legacyEdgeletContourArchive());
  expectSameEdgelets(loaded->data(), goldenEdgelets());
  EXPECT_EQ(loaded->label(), 13u);
  ASSERT_TRUE(loaded->dataFromPointsXform());
  const auto* x = dynamic_cast<const gk2XformLinear*>(loaded->dataFromPointsXform().get());
  ASSERT_NE(x, nullptr);
  expectSameXform(x->xform(), gkXform<2>());
  EXPECT_TRUE(samePoints(loaded->points(), {{0, 0}, {4, 0}, {4, 3}}));
}

// === exceptions ===============================================================================

namespace {

template <typename E>
void expectExceptionLayers(const std::wstring& message, const std::string& utf8) {
  const E original(message);
  const std::string bytes = storeByValue(original);
  const std::string name = E::kClassName;
  Bytes expected;
  expected.header().u64(name.size()).raw(name);
  expected.u8(0).u8(0).u8(0).u8(0);  // own layer, Errors, gkException, persistent
  expected.u8(0).u64(utf8.size()).raw(utf8);
  EXPECT_EQ(hex(bytes), hex(expected.str())) << name;

  const std::unique_ptr<gkPersistent> loaded = loadByValue(bytes);
  const auto* e = dynamic_cast<const E*>(loaded.get());
  ASSERT_NE(e, nullptr) << name;
  EXPECT_EQ(e->message(), message) << name;
  EXPECT_EQ(e->errorNumber(), original.errorNumber());
  EXPECT_EQ(hex(storeByValue(*e)), hex(bytes));

  // Each layer's version byte: the concrete class, then the Errors layer.
  const std::size_t own = 5 + 8 + name.size();
  try {
    loadByValue(patched(bytes, own, 1));
    ADD_FAILURE() << name << " loaded with version 1";
  } catch (const gkArchive::UnknownVersion& u) {
    EXPECT_EQ(u.source(), name);
    EXPECT_EQ(u.line(), 0);
  }
  try {
    loadByValue(patched(bytes, own + 1, 1));
    ADD_FAILURE() << name << " loaded with an Errors layer of version 1";
  } catch (const gkArchive::UnknownVersion& u) {
    EXPECT_EQ(u.source(), "gkContourDefs::Errors");
    EXPECT_EQ(u.line(), 0);
  }
}

}  // namespace

TEST(ContourErrorArchive, EachErrorStoresItsLayersAndReloadsWithItsMessage) {
  expectExceptionLayers<gkContourDefs::EmptyContour>(L"", "");
  expectExceptionLayers<gkContourDefs::EmptyRegionSet>(L"no region", "no region");
  expectExceptionLayers<gkContourDefs::BadParams>(L"diameterMode is not one of the valid enums",
                                                  "diameterMode is not one of the valid enums");
  expectExceptionLayers<gkContourDefs::RegionCannotBeSetOpen>(L"caf\u00e9", "caf\xC3\xA9");
}

// === hostile input ============================================================================

namespace {

/// A region with the given vertices whose hole list the caller writes next.
Bytes& regionHead(Bytes& b, const Points& pts) {
  return b.newObject("gkRegion").u8(1).contourLayer(0, true, pts, 3);
}

template <typename T, typename Error>
void expectLoadThrows(const std::string& bytes) {
  try {
    loadHandle<T>(bytes);
    ADD_FAILURE() << "loaded: " << hex(bytes);
  } catch (const Error& e) {
    EXPECT_THAT(std::string(e.what()), ::testing::HasSubstr("byte offset"));
  }
}

}  // namespace

TEST(RegionArchive, ARegionAmongItsOwnHolesIsBadFormat) {
  Bytes b;
  b.header();
  regionHead(b, square(0, 0, 1)).u8(0).u64(1).u8(2).u64(1);
  expectLoadThrows<gkRegion, gkArchive::BadFormat>(b.str());
}

TEST(RegionArchive, ARegionAmongTheHolesOfItsHoleIsBadFormat) {
  Bytes b;
  b.header();
  regionHead(b, square(0, 0, 4)).u8(0).u64(1);
  regionHead(b, square(1, 1, 1)).u8(0).u64(1).u8(2).u64(1);
  expectLoadThrows<gkRegion, gkArchive::BadFormat>(b.str());
}

TEST(RegionArchive, ANullHoleIsBadFormat) {
  Bytes b;
  b.header();
  regionHead(b, square(0, 0, 1)).u8(0).u64(1).u8(0);
  expectLoadThrows<gkRegion, gkArchive::BadFormat>(b.str());
}

TEST(RegionArchive, AContourAmongTheHolesIsWrongType) {
  Bytes b;
  b.header();
  regionHead(b, square(0, 0, 4))
      .u8(0)
      .u64(1)
      .newObject("gkContour")
      .contourLayer(0, true, square(1, 1, 1), 3);
  expectLoadThrows<gkRegion, gkArchive::WrongType>(b.str());
}

TEST(RegionSetArchive, ANullMemberIsBadFormat) {
  const std::string bytes =
      Bytes().header().newObject("gkRegionSet").u8(1).u8(0).u8(0).u64(1).u8(0).i64(3).str();
  expectLoadThrows<gkRegionSet, gkArchive::BadFormat>(bytes);
}

TEST(RegionSetArchive, TheSetAmongItsOwnMembersIsWrongType) {
  const std::string bytes =
      Bytes().header().newObject("gkRegionSet").u8(1).u8(0).u8(0).u64(1).u8(2).u64(1).i64(3).str();
  expectLoadThrows<gkRegionSet, gkArchive::WrongType>(bytes);
}

TEST(ContourArchive, ANegativeOrTooLargeCacheBoundIsBadFormat) {
  for (const std::int64_t bound : {std::int64_t{-1}, std::int64_t{1} << 31}) {
    const std::string bytes =
        Bytes().header().newObject("gkContour").contourLayer(0, true, {}, bound).str();
    expectLoadThrows<gkContour, gkArchive::BadFormat>(bytes);
  }
}

TEST(EdgeletContourArchive, MoreEdgeletsThanVerticesIsBadFormat) {
  Bytes b;
  b.header().newObject("gkContourT<gkEdgelet>").u8(1);
  b.contourLayer(0, true, {{0, 0}}, 3);
  b.u8(0).u64(2);
  for (int i = 0; i < 2; ++i) {
    b.f64(0).f64(0).u8(0).u8(0).u8(0);
  }
  b.newObject("gk2XformLinear").u8(0).u8(0).f64(1).f64(0).f64(0).f64(1).f64(0).f64(0);
  expectLoadThrows<EdgeletContour, gkArchive::BadFormat>(b.str());
}

TEST(EdgeletContourArchive, ANullTransformIsBadFormat) {
  Bytes b;
  b.header().newObject("gkContourT<gkEdgelet>").u8(1);
  b.contourLayer(0, true, {{0, 0}}, 3);
  b.u8(0).u64(1).f64(0).f64(0).u8(0).u8(0).u8(0);
  b.u8(0);
  expectLoadThrows<EdgeletContour, gkArchive::BadFormat>(b.str());
}

TEST(RegionArchive, HolesNestedSixtyFourDeepLoadButSixtyFiveExceedTheLimit) {
  const auto nested = [](int depth) {
    Bytes b;
    b.header();
    for (int i = 0; i < depth; ++i) {
      regionHead(b, square(i, i, 1000.0 - 2 * i)).u8(0).u64(i + 1 < depth ? 1 : 0);
    }
    return b.str();
  };
  const gkPtrHandle<gkRegion> deepest = loadHandle<gkRegion>(nested(gkArchive::kMaxDepth));
  EXPECT_EQ(deepest->holes().size(), 1u);
  expectLoadThrows<gkRegion, gkArchive::LimitExceeded>(nested(gkArchive::kMaxDepth + 1));
}

// === golden files =============================================================================

/// Writes every golden file again. Run by hand after a deliberate change of a stored form:
///   gkgeom_cntr_tests --gtest_also_run_disabled_tests --gtest_filter='*WritesTheGoldenFiles'
TEST(ArchiveGoldenFiles, DISABLED_WritesTheGoldenFiles) {
  for (const Golden& g : goldens()) {
    writeGolden(g.name, g.bytes());
  }
}

TEST(ArchiveGoldenFiles, EachFileHoldsTheBytesItsMakerWrites) {
  for (const Golden& g : goldens()) {
    EXPECT_EQ(hex(readGolden(g.name)), hex(g.bytes())) << g.name;
  }
}

TEST(ArchiveGoldenFiles, ContourFilesLoadAsTheirContours) {
  const std::string v1 = readGolden("contour_v1.gka");
  const gkPtrHandle<gkContour> loaded = loadHandle<gkContour>(v1);
  expectSameContour(*loaded, *goldenContour());
  EXPECT_EQ(hex(storeHandle(loaded)), hex(v1));

  const gkPtrHandle<gkContour> legacy = loadHandle<gkContour>(readGolden("contour_v0.gka"));
  gkContour expected(legacyContourPoints(), true, 0);
  expected.cachedVectorSize(9);
  expectSameContour(*legacy, expected);
}

TEST(ArchiveGoldenFiles, RegionFilesLoadAsTheirRegions) {
  const std::string v1 = readGolden("region_v1.gka");
  const gkPtrHandle<gkRegion> loaded = loadHandle<gkRegion>(v1);
  expectSameRegion(*loaded, *goldenRegion());
  EXPECT_EQ(hex(storeHandle(loaded)), hex(v1));

  const gkPtrHandle<gkRegion> legacy = loadHandle<gkRegion>(readGolden("region_v0.gka"));
  expectSameRegion(*legacy, *region(square(1, 1, 3), 0, 6));
}

TEST(ArchiveGoldenFiles, RegionSetFilesLoadAsTheirSets) {
  const std::string v1 = readGolden("region_set_v1.gka");
  const gkPtrHandle<gkRegionSet> loaded = loadHandle<gkRegionSet>(v1);
  expectSameSet(*loaded, *goldenSet());
  EXPECT_EQ(hex(storeHandle(loaded)), hex(v1));

  const gkPtrHandle<gkRegionSet> legacy = loadHandle<gkRegionSet>(readGolden("region_set_v0.gka"));
  const gkRegionSet expected(
      gkRegionSet::Regions{region(square(0, 0, 2), 0, 4), region({{5, 5}, {9, 5}, {7, 8}}, 3, 7)});
  expectSameSet(*legacy, expected);
}

TEST(ArchiveGoldenFiles, TheSharedHoleFileLoadsWithOneHoleObject) {
  const std::string bytes = readGolden("shared_hole_v1.gka");
  const gkPtrHandle<gkRegionSet> loaded = loadHandle<gkRegionSet>(bytes);
  expectSameSet(*loaded, *sharedHoleSet());
  ASSERT_EQ(loaded->regions().size(), 2u);
  EXPECT_EQ(loaded->regions()[0]->holes().at(0).get(), loaded->regions()[1]->holes().at(0).get());
  EXPECT_EQ(hex(storeHandle(loaded)), hex(bytes));
}

TEST(ArchiveGoldenFiles, EdgeletFilesLoadAsTheirShapes) {
  const std::string contour = readGolden("edgelet_contour_v1.gka");
  const gkPtrHandle<EdgeletContour> c = loadHandle<EdgeletContour>(contour);
  expectSameEdgelets(c->data(), goldenEdgelets());
  const auto* x = dynamic_cast<const gk2XformLinear*>(c->dataFromPointsXform().get());
  ASSERT_NE(x, nullptr);
  expectSameXform(x->xform(), goldenXform());
  EXPECT_EQ(hex(storeHandle(c)), hex(contour));

  const gkPtrHandle<EdgeletContour> legacy =
      loadHandle<EdgeletContour>(readGolden("edgelet_contour_v0.gka"));
  expectSameEdgelets(legacy->data(), goldenEdgelets());

  const std::string regionBytes = readGolden("edgelet_region_v0.gka");
  const gkPtrHandle<EdgeletRegion> r = loadHandle<EdgeletRegion>(regionBytes);
  EXPECT_TRUE(samePoints(r->points(), goldenEdgeletRegion()->points()));
  expectSameEdgelets(r->data(), bareEdgelets(r->points()));
  EXPECT_EQ(r->label(), 21u);
  EXPECT_EQ(hex(storeHandle(r)), hex(regionBytes));

  const std::string setBytes = readGolden("edgelet_region_set_v0.gka");
  const gkPtrHandle<EdgeletRegionSet> s = loadHandle<EdgeletRegionSet>(setBytes);
  ASSERT_EQ(s->regionsT().size(), 2u);
  EXPECT_TRUE(samePoints(s->regionsT()[1]->points(), square(5, 5, 2)));
  EXPECT_EQ(hex(storeHandle(s)), hex(setBytes));
}

TEST(ArchiveGoldenFiles, TheBadParamsFileLoadsWithItsMessage) {
  const std::string bytes = readGolden("bad_params_v0.gka");
  const std::unique_ptr<gkPersistent> loaded = loadByValue(bytes);
  const auto* e = dynamic_cast<const gkContourDefs::BadParams*>(loaded.get());
  ASSERT_NE(e, nullptr);
  EXPECT_EQ(e->message(), L"holes cannot intersect region");
  EXPECT_EQ(hex(storeByValue(*e)), hex(bytes));
}

// === bit-flip sweep ===========================================================================

namespace {

/// Loads bytes as the file's kind; true when it loaded. Only typed library errors may escape.
using Loader = std::function<void(const std::string&)>;

bool loadsOrThrowsTyped(const Loader& load, const std::string& bytes, std::string& failure) {
  try {
    load(bytes);
    return true;
  } catch (const gkArchive::Errors&) {
  } catch (const gkContourDefs::Errors&) {
  } catch (const gkException&) {
  } catch (const std::exception& e) {
    failure = std::string("untyped std::exception: ") + e.what();
  } catch (...) {
    failure = "an exception of an unknown type";
  }
  return false;
}

template <typename T>
Loader handleLoader() {
  return [](const std::string& bytes) {
    std::istringstream is(bytes);
    gkArchive ar(is);
    gkPtrHandle<T> h;
    ar || h;
  };
}

/// A run of bytes within which every pair of bits is flipped too.
struct ByteRange {
  std::size_t first;
  std::size_t count;
};

void sweep(const std::string& file, const Loader& load, const std::vector<ByteRange>& pairRanges) {
  const std::string bytes = readGolden(file);
  ASSERT_FALSE(bytes.empty());
  int failures = 0;
  const auto check = [&](const std::string& variant, const std::string& what) {
    std::string failure;
    loadsOrThrowsTyped(load, variant, failure);
    if (!failure.empty() && ++failures <= 5) {
      ADD_FAILURE() << file << ", " << what << ": " << failure;
    }
  };
  const auto flip = [](std::string& v, std::size_t bit) {
    v[bit / 8] = static_cast<char>(v[bit / 8] ^ (1 << (bit % 8)));
  };
  const std::size_t bits = bytes.size() * 8;
  for (std::size_t i = 0; i < bits; ++i) {
    std::string v = bytes;
    flip(v, i);
    check(v, "bit " + std::to_string(i));
  }
  for (const ByteRange& range : pairRanges) {
    const std::size_t begin = range.first * 8;
    const std::size_t end = std::min(bits, (range.first + range.count) * 8);
    for (std::size_t i = begin; i < end; ++i) {
      for (std::size_t j = i + 1; j < end; ++j) {
        std::string v = bytes;
        flip(v, i);
        flip(v, j);
        check(v, "bits " + std::to_string(i) + " and " + std::to_string(j));
      }
    }
  }
}

}  // namespace

// Every single bit of a few small files; every pair of bits only in the contour file's header
// and handle tag and in its vertex count (the sweep must stay fast).
TEST(ArchiveBitFlipSweep, EveryFlippedContourFileLoadsOrThrowsATypedError) {
  // header and tag; vertex count (after tag, name, versions, label, flag, container version)
  sweep("contour_v1.gka", handleLoader<gkContour>(), {{0, 6}, {5 + 1 + 8 + 9 + 2 + 8 + 1 + 1, 8}});
}

TEST(ArchiveBitFlipSweep, EveryFlippedSharedHoleFileLoadsOrThrowsATypedError) {
  sweep("shared_hole_v1.gka", handleLoader<gkRegionSet>(), {});
}

TEST(ArchiveBitFlipSweep, EveryFlippedLegacyRegionFileLoadsOrThrowsATypedError) {
  sweep("region_v0.gka", handleLoader<gkRegion>(), {});
}

TEST(ArchiveBitFlipSweep, EveryFlippedEdgeletRegionFileLoadsOrThrowsATypedError) {
  sweep("edgelet_region_v0.gka", handleLoader<EdgeletRegion>(), {});
}

TEST(ArchiveBitFlipSweep, EveryFlippedErrorFileLoadsOrThrowsATypedError) {
  sweep("bad_params_v0.gka",
        [](const std::string& bytes) {
          std::istringstream is(bytes);
          gkArchive ar(is);
          ar.loadObject();
        },
        {});
}
