// Writes the seed corpus of the archive fuzzer: one small archive of every persistent class,
// loaded each way the fuzzer loads (fuzz/archive_fuzz_target.h), plus the legacy layer forms.
// Every file is the selector byte followed by the archive; every file here must load (the replay
// test checks that for the files named valid_*).
//
//   gkgeom_make_seeds <directory>
#include <gk/base/archive.h>
#include <gk/base/edgelet.h>
#include <gk/base/matrix.h>
#include <gk/base/persistent.h>
#include <gk/base/ptr_handle.h>
#include <gk/base/vector.h>
#include <gk/base/xform.h>
#include <gk/base/xform_base.h>
#include <gk/ch_core/contour_t.h>
#include <gk/ch_core/region_set_t.h>
#include <gk/ch_core/region_t.h>
#include <gk/cntr/contour.h>
#include <gk/cntr/errors/contour_errors.h>
#include <gk/cntr/region.h>
#include <gk/cntr/region_set.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "archive_fuzz_target.h"

namespace {

using Points = std::vector<gkVector<2>>;
using EdgeletData = std::vector<gkEdgelet>;

std::string gDirectory;
int gWritten = 0;

void writeSeed(const std::string& name, gkArchiveFuzzChoice choice, const std::string& archive) {
  const std::string path = gDirectory + "/" + name;
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  const char selector = static_cast<char>(choice);
  out.write(&selector, 1);
  out.write(archive.data(), static_cast<std::streamsize>(archive.size()));
  if (!out) {
    throw std::runtime_error("cannot write " + path);
  }
  ++gWritten;
}

template <typename H>
void seedHandle(const std::string& name, gkArchiveFuzzChoice choice, H handle) {
  std::ostringstream bytes;
  {
    gkArchive ar(bytes);
    ar || handle;
  }
  writeSeed(name, choice, bytes.str());
}

void seedObject(const std::string& name, const gkPersistent& object) {
  std::ostringstream bytes;
  {
    gkArchive ar(bytes);
    ar.storeObject(object);
  }
  writeSeed(name, eFuzzLoadObject, bytes.str());
}

Points square(double x, double y, double side) {
  return {gkVector<2>(x, y), gkVector<2>(x + side, y), gkVector<2>(x + side, y + side),
          gkVector<2>(x, y + side)};
}

EdgeletData edgelets(const Points& points) {
  EdgeletData data;
  unsigned char angle = 0;
  for (const gkVector<2>& p : points) {
    data.emplace_back(p, static_cast<unsigned short>(100 + angle), gkAngle8(angle));
    angle = static_cast<unsigned char>(angle + 64);
  }
  return data;
}

gkPtrHandle<gkRegion> regionWithHole() {
  gkPtrHandle<gkRegion> outer(new gkRegion(square(0.0, 0.0, 10.0)));
  gkPtrHandle<gkRegion> hole(new gkRegion(square(2.0, 2.0, 3.0)));
  outer->holes(std::vector<gkPtrHandle<gkRegion>>{hole});
  return outer;
}

gkPtrHandle<gk2XformBase> scaling() {
  return gkPtrHandle<gk2XformBase>(
      new gk2XformLinear(gkXform<2>(gkMatrix<2>(2.0, 0.0, 0.0, 0.5), gkVector<2>(1.0, -3.0))));
}

// Legacy layer forms, which no archive writes any more: built byte by byte.
class Bytes {
 public:
  Bytes() { raw("GKAR\x01", 5); }
  Bytes& u8(unsigned v) {
    s_.push_back(static_cast<char>(v));
    return *this;
  }
  Bytes& u64(std::uint64_t v) {
    for (int i = 0; i < 8; ++i) {
      s_.push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
    }
    return *this;
  }
  Bytes& f64(double d) {
    std::uint64_t v = 0;
    std::memcpy(&v, &d, sizeof v);
    return u64(v);
  }
  Bytes& name(const char* n) {
    u64(std::strlen(n));
    raw(n, std::strlen(n));
    return *this;
  }
  Bytes& points(const Points& p) {
    u8(0).u64(p.size());
    for (const gkVector<2>& v : p) {
      f64(v.x()).f64(v.y());
    }
    return *this;
  }
  const std::string& str() const { return s_; }

 private:
  void raw(const char* p, std::size_t n) { s_.append(p, n); }
  std::string s_;
};

void legacySeeds() {
  // gkContour v0: old base layer, vertices, ignored byte, cache bound, closed.
  Bytes contour;
  contour.u8(1).name("gkContour").u8(0).u8(0).u64(77).points(square(0, 0, 1)).u8(0).u64(3).u8(1);
  writeSeed("valid_legacy_contour_v0", eFuzzContour, contour.str());
  // gkRegion v0: old base layer, outline, ignored byte, cache bound.
  Bytes region;
  region.u8(1).name("gkRegion").u8(0).u8(0).u64(5).points(square(0, 0, 2)).u8(0).u64(3);
  writeSeed("valid_legacy_region_v0", eFuzzRegion, region.str());
  // gkRegionSet v0: persistent layer, members (one new region, one back-reference to it),
  // no cache bound.
  Bytes set;
  set.u8(1).name("gkRegionSet").u8(0).u8(0).u8(0).u64(2);
  set.u8(1).name("gkRegion").u8(0).u8(0).u64(0).points(square(1, 1, 1)).u8(0).u64(3);
  set.u8(2).u64(2);
  writeSeed("valid_legacy_regionset_v0", eFuzzRegionSet, set.str());
}

void allSeeds() {
  const Points tri = {gkVector<2>(0.0, 0.0), gkVector<2>(4.0, 0.0), gkVector<2>(0.0, 3.0)};

  // Through loadObject: every registered class by value.
  seedObject("valid_object_contour", gkContour(tri, true, 7));
  seedObject("valid_object_contour_open", gkContour(tri, false, 0));
  seedObject("valid_object_region", *regionWithHole());
  seedObject("valid_object_regionset",
             gkRegionSet(std::vector<gkPtrHandle<gkRegion>>{
                 regionWithHole(), gkPtrHandle<gkRegion>(new gkRegion(square(20, 0, 1)))}));
  seedObject("valid_object_contour_t", gkContourT<gkEdgelet>(edgelets(tri), scaling()));
  seedObject("valid_object_region_t", gkRegionT<gkEdgelet>(edgelets(square(0, 0, 3)), 4));
  seedObject(
      "valid_object_regionset_t",
      gkRegionSetT<gkEdgelet>(std::vector<gkPtrHandle<gkRegionT<gkEdgelet>>>{
          gkPtrHandle<gkRegionT<gkEdgelet>>(new gkRegionT<gkEdgelet>(edgelets(square(0, 0, 1)), 1)),
          gkPtrHandle<gkRegionT<gkEdgelet>>(
              new gkRegionT<gkEdgelet>(edgelets(square(5, 5, 2)), 2))}));
  seedObject("valid_object_xform_linear", *scaling());
  seedObject("valid_object_empty_contour", gkContourDefs::EmptyContour(L"no vertices"));
  seedObject("valid_object_empty_region_set", gkContourDefs::EmptyRegionSet(L"no regions"));
  seedObject("valid_object_bad_params", gkContourDefs::BadParams(L"bad \u00e9 params"));
  seedObject("valid_object_region_cannot_be_set_open", gkContourDefs::RegionCannotBeSetOpen(L""));

  // Through handles: each handle type, null and not.
  seedHandle("valid_handle_contour", eFuzzContour,
             gkPtrHandle<gkContour>(new gkContour(tri, true, 3)));
  seedHandle("valid_handle_contour_null", eFuzzContour, gkPtrHandle<gkContour>());
  seedHandle("valid_handle_region", eFuzzRegion, regionWithHole());
  {
    // A region whose hole has an island: nesting two deep.
    gkPtrHandle<gkRegion> island(new gkRegion(square(3.0, 3.0, 1.0)));
    gkPtrHandle<gkRegion> hole(new gkRegion(square(2.0, 2.0, 3.0)));
    hole->holes(std::vector<gkPtrHandle<gkRegion>>{island});
    gkPtrHandle<gkRegion> outer(new gkRegion(square(0.0, 0.0, 10.0)));
    outer->holes(std::vector<gkPtrHandle<gkRegion>>{hole});
    seedHandle("valid_handle_region_nested", eFuzzRegion, outer);
  }
  {
    // One region twice in a set: the second is a back-reference.
    gkPtrHandle<gkRegion> shared(new gkRegion(square(0.0, 0.0, 1.0)));
    seedHandle("valid_handle_regionset_shared", eFuzzRegionSet,
               gkPtrHandle<gkRegionSet>(
                   new gkRegionSet(std::vector<gkPtrHandle<gkRegion>>{shared, shared})));
  }
  seedHandle(
      "valid_handle_contour_t", eFuzzContourT,
      gkPtrHandle<gkContourT<gkEdgelet>>(new gkContourT<gkEdgelet>(edgelets(tri), scaling())));
  seedHandle("valid_handle_contour_t_plain", eFuzzContourT,
             gkPtrHandle<gkContourT<gkEdgelet>>(new gkContourT<gkEdgelet>(edgelets(tri))));
  seedHandle("valid_handle_region_t", eFuzzRegionT,
             gkPtrHandle<gkRegionT<gkEdgelet>>(
                 new gkRegionT<gkEdgelet>(edgelets(square(1, 1, 2)), scaling(), 9)));
  seedHandle("valid_handle_regionset_t", eFuzzRegionSetT,
             gkPtrHandle<gkRegionSetT<gkEdgelet>>(new gkRegionSetT<gkEdgelet>(
                 std::vector<gkPtrHandle<gkRegionT<gkEdgelet>>>{gkPtrHandle<gkRegionT<gkEdgelet>>(
                     new gkRegionT<gkEdgelet>(edgelets(square(0, 0, 4)), 1))})));
  seedHandle("valid_handle_xform", eFuzzXform, gkPtrHandle_const<gk2XformBase>(scaling()));
  seedHandle("valid_handle_xform_singular", eFuzzXform,
             gkPtrHandle_const<gk2XformBase>(new gk2XformLinear(
                 gkXform<2>(gkMatrix<2>(1.0, 2.0, 2.0, 4.0), gkVector<2>(0.0, 0.0)))));
  seedHandle("valid_handle_xform_null", eFuzzXform, gkPtrHandle_const<gk2XformBase>());

  legacySeeds();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: " << argv[0] << " <directory>\n";
    return 2;
  }
  gDirectory = argv[1];
  try {
    allSeeds();
  } catch (const std::exception& e) {
    std::cerr << "gkgeom_make_seeds: " << e.what() << '\n';
    return 1;
  }
  std::cout << "wrote " << gWritten << " seeds to " << gDirectory << '\n';
  return 0;
}
