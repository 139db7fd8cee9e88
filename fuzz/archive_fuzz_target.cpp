#include "archive_fuzz_target.h"

#include <gk/base/archive.h>
#include <gk/base/exception.h>
#include <gk/base/persistent.h>
#include <gk/base/ptr_handle.h>
#include <gk/base/vector.h>
#include <gk/base/xform_base.h>
#include <gk/ch_core/contour_t.h>
#include <gk/ch_core/region_set_t.h>
#include <gk/ch_core/region_t.h>
#include <gk/cntr/contour.h>
#include <gk/cntr/region.h>
#include <gk/cntr/region_set.h>

#include <cstring>
#include <memory>
#include <sstream>
#include <string>

namespace {

// Every query runs on its own: one refused with a gkException (an empty contour, a singular
// transform) must not hide the ones after it.
template <typename F>
void tryQuery(F&& query) {
  try {
    query();
  } catch (const gkException&) {
  }
}

// Keeps results observable so that the queries are not optimised away.
volatile double gSink = 0.0;

void exerciseContour(const gkContour& c) {
  gSink = gSink + static_cast<double>(c.points().size()) + static_cast<double>(c.label());
  tryQuery([&] { gSink = gSink + (c.isClosed() ? 1.0 : 0.0); });
  tryQuery([&] { gSink = gSink + static_cast<double>(c.segmentCount()); });
  tryQuery([&] { gSink = gSink + c.length(); });
  tryQuery([&] { gSink = gSink + c.encloseRect().width(); });
  tryQuery([&] { gSink = gSink + (c.isSelfIntersecting() ? 1.0 : 0.0); });
}

void exerciseRegion(const gkRegion& r) {
  gSink = gSink + static_cast<double>(r.holes().size());
  tryQuery([&] { gSink = gSink + r.area(false); });
  tryQuery([&] { gSink = gSink + r.area(true); });
  tryQuery([&] { gSink = gSink + (r.inside(gkVector<2>(0.5, 0.5), true) ? 1.0 : 0.0); });
}

void exerciseRegionSet(const gkRegionSet& s) {
  gSink = gSink + static_cast<double>(s.regions().size());
  tryQuery([&] { gSink = gSink + s.area(false); });
  tryQuery([&] { gSink = gSink + s.area(true); });
  tryQuery([&] { gSink = gSink + s.encloseRect().width(); });
  tryQuery([&] { gSink = gSink + (s.isSelfIntersecting() ? 1.0 : 0.0); });
}

void exerciseXform(const gk2XformBase& x) {
  tryQuery([&] { gSink = gSink + x.map(gkVector<2>(1.0, 2.0)).x(); });
  tryQuery([&] { gSink = gSink + (x.isLinear() ? 1.0 : 0.0); });
  tryQuery([&] {
    const gkPtrHandle<gk2XformBase> inverse = x.inverse();
    if (inverse) {
      gSink = gSink + inverse->map(gkVector<2>(1.0, 2.0)).y();
    }
  });
}

void exerciseContourT(const gkContourT<gkEdgelet>& c) {
  gSink = gSink + static_cast<double>(c.data().size());
  tryQuery([&] {
    if (!c.data().empty()) {
      gSink = gSink + c.point(c.data().front()).x();
    }
  });
  tryQuery([&] { gSink = gSink + c.datum(gkVector<2>(0.0, 0.0)).position().x(); });
}

// Whatever the object is, every query its classes offer.
void exercise(const gkPersistent* object) {
  if (object == nullptr) {
    return;
  }
  if (const auto* c = dynamic_cast<const gkContour*>(object)) {
    exerciseContour(*c);
  }
  if (const auto* r = dynamic_cast<const gkRegion*>(object)) {
    exerciseRegion(*r);
  }
  if (const auto* s = dynamic_cast<const gkRegionSet*>(object)) {
    exerciseRegionSet(*s);
  }
  if (const auto* x = dynamic_cast<const gk2XformBase*>(object)) {
    exerciseXform(*x);
  }
  if (const auto* t = dynamic_cast<const gkContourT<gkEdgelet>*>(object)) {
    exerciseContourT(*t);
  }
  if (const auto* e = dynamic_cast<const gkException*>(object)) {
    gSink = gSink + static_cast<double>(std::strlen(e->what()));
  }
}

template <typename H>
void loadHandle(gkArchive& ar) {
  H handle;
  ar || handle;
  exercise(handle.get());
}

}  // namespace

bool gkArchiveFuzzLoad(const std::uint8_t* data, std::size_t size) {
  if (size == 0) {
    return false;
  }
  const unsigned choice = data[0] % kArchiveFuzzChoices;
  std::istringstream in(std::string(reinterpret_cast<const char*>(data + 1), size - 1));
  try {
    gkArchive ar(in);
    switch (choice) {
      case eFuzzLoadObject: {
        const std::unique_ptr<gkPersistent> object = ar.loadObject();
        exercise(object.get());
        break;
      }
      case eFuzzContour:
        loadHandle<gkPtrHandle<gkContour>>(ar);
        break;
      case eFuzzRegion:
        loadHandle<gkPtrHandle<gkRegion>>(ar);
        break;
      case eFuzzRegionSet:
        loadHandle<gkPtrHandle<gkRegionSet>>(ar);
        break;
      case eFuzzContourT:
        loadHandle<gkPtrHandle<gkContourT<gkEdgelet>>>(ar);
        break;
      case eFuzzRegionT:
        loadHandle<gkPtrHandle<gkRegionT<gkEdgelet>>>(ar);
        break;
      case eFuzzRegionSetT:
        loadHandle<gkPtrHandle<gkRegionSetT<gkEdgelet>>>(ar);
        break;
      default:
        loadHandle<gkPtrHandle_const<gk2XformBase>>(ar);
        break;
    }
  } catch (const gkException&) {
    return false;
  }
  return true;
}

int gkArchiveFuzzOne(const std::uint8_t* data, std::size_t size) {
  (void)gkArchiveFuzzLoad(data, size);
  return 0;
}
