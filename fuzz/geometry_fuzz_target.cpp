#include "geometry_fuzz_target.h"

#include <gk/base/archive.h>
#include <gk/base/circle_fit.h>
#include <gk/base/convex_hull.h>
#include <gk/base/ellipse_fit.h>
#include <gk/base/exception.h>
#include <gk/base/ptr_handle.h>
#include <gk/base/svg_tablet.h>
#include <gk/base/ui_tablet.h>
#include <gk/base/xform_base.h>
#include <gk/ch_core/contour_t.h>
#include <gk/ch_core/region_set_t.h>
#include <gk/ch_core/region_t.h>
#include <gk/cntr/contour.h>
#include <gk/cntr/moments/ellipse_from_moments.h>
#include <gk/cntr/moments/polygon_moments.h>
#include <gk/cntr/region.h>
#include <gk/cntr/region_set.h>

#include <cstring>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Points = gkGeometryFuzzScene::Points;
using Shape = gkGeometryFuzzScene::Shape;
using EdgeletContour = gkContourT<gkEdgelet>;
using EdgeletRegion = gkRegionT<gkEdgelet>;
using EdgeletRegionSet = gkRegionSetT<gkEdgelet>;

// Every operation runs on its own: one refused with a gkException (an empty contour, a
// singular transform, a hole crossing its outline) must not hide the ones after it.
template <typename F>
void tryOp(F&& op) {
  try {
    op();
  } catch (const gkException&) {
  }
}

// Keeps results observable so that the operations are not optimised away.
volatile double gSink = 0.0;
void sink(double v) {
  gSink = gSink + v;
}
void sink(const gkVector<2>& v) {
  sink(v.x() + v.y());
}
void sink(bool v) {
  sink(v ? 1.0 : 0.0);
}
void sink(const gkRect& r) {
  sink(r.width() + r.height());
}

// A tablet that keeps nothing but a count; the SVG tablet is exercised separately.
class CountingTablet : public gkUITablet {
 public:
  void drawLineSeg(const gkPair<double>& from, const gkPair<double>& to, const gkColor&,
                   const Layers&) override {
    ++count;
    sink(from.x() + to.y());
  }
  std::size_t count = 0;
};

[[noreturn]] void finding(const std::string& what) {
  throw std::logic_error(what);
}

bool sameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

bool sameBits(const Points& a, const Points& b) {
  if (a.size() != b.size()) {
    return false;
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (!sameBits(a[i].x(), b[i].x()) || !sameBits(a[i].y(), b[i].y())) {
      return false;
    }
  }
  return true;
}

// Stores the object behind a handle and loads it back.
template <typename T>
gkPtrHandle<T> roundTrip(const gkPtrHandle<T>& h) {
  std::ostringstream os;
  {
    gkArchive ar(os);
    gkPtrHandle<T> stored = h;
    ar || stored;
  }
  std::istringstream is(os.str());
  gkArchive ar(is);
  gkPtrHandle<T> loaded;
  ar || loaded;
  if (!loaded) {
    finding("an object stored through a handle loaded as null");
  }
  return loaded;
}

gkXform<2> xformOf(const gkGeometryFuzzScene& s) {
  return gkXform<2>(gkMatrix<2>(s.xform[0], s.xform[1], s.xform[2], s.xform[3]),
                    gkVector<2>(s.xform[4], s.xform[5]));
}

gkPtrHandle<gkRegion> regionOf(const Shape& shape) {
  gkPtrHandle<gkRegion> r(new gkRegion(shape.outline));
  gkRegion::Holes holes;
  for (const Shape& hole : shape.holes) {
    holes.push_back(regionOf(hole));
  }
  // Holes that cross the outline are refused; the region then stays without them.
  tryOp([&] { r->holes(holes); });
  return r;
}

std::vector<gkEdgelet> edgeletsOf(const Points& points) {
  std::vector<gkEdgelet> out;
  for (std::size_t i = 0; i < points.size(); ++i) {
    out.emplace_back(points[i], static_cast<unsigned short>(i * 977u),
                     gkAngle8(static_cast<unsigned char>(i * 37u)));
  }
  return out;
}

gkPtrHandle<EdgeletRegion> edgeletRegionOf(const Shape& shape) {
  gkPtrHandle<EdgeletRegion> r(new EdgeletRegion(edgeletsOf(shape.outline), 7));
  EdgeletRegion::HolesT holes;
  for (const Shape& hole : shape.holes) {
    holes.push_back(edgeletRegionOf(hole));
  }
  tryOp([&] { r->holes(holes); });
  return r;
}

// The free functions of the base kit and the moments module on one vertex list.
void exercisePointFunctions(const Points& p, const gkGeometryFuzzScene& s) {
  tryOp([&] { sink(gw_Area(p)); });
  tryOp([&] { sink(gw_CenterOfMass(p)); });
  tryOp([&] { sink(gw_Area(edgeletsOf(p))); });
  tryOp([&] { sink(gw_CenterOfMass(edgeletsOf(p))); });
  tryOp([&] { sink(gw_EllipseFromInertiaData(gw_InertiaDataPolygon(p)).radii()); });
  tryOp([&] {
    gkEllipse e;
    double error = 0.0;
    gw_FitEllipse(p, e, error);
    sink(error);
  });
  tryOp([&] {
    gkEllipse e;
    double error = 0.0;
    gw_FitEllipse(edgeletsOf(p), e, error);
    sink(error);
  });
  tryOp([&] {
    std::vector<double> values;
    for (const gkVector<2>& v : p) {
      values.push_back(v.x());
    }
    sink(gw_StdDev(values));
  });
  tryOp([&] {
    Points hull;
    gwConvexHull(p, hull);
    sink(static_cast<double>(hull.size()));
  });
  tryOp([&] {
    gkCircleFitResults results;
    gwCircleFit(gkCircleFitParams(gkCircleFitParams::eLeastSquares, 1.0, s.fitRounds, s.fitLimit),
                p, results);
    sink(results.error());
  });
  tryOp([&] {
    gkEllipseFitResults results;
    gwEllipseFit(gkEllipseFitParams(gkEllipseFitParams::eLeastSquares, gkRadian(s.angle),
                                    s.fitRounds, s.fitLimit),
                 p, results);
    sink(results.error());
  });
}

void exerciseContour(const gkContour& c, const gkContour& other, const gkGeometryFuzzScene& s) {
  const gkXform<2> x = xformOf(s);
  const gkLineSeg seg(s.segmentStart, s.segmentEnd);
  sink(static_cast<double>(c.segmentCount()));
  tryOp([&] {
    const gkPolygon polygon = c.polygon();
    const gkContour fromPolygon(polygon, c.label());
    sink(fromPolygon == c);
    sink(static_cast<double>(polygon.size()));
  });
  tryOp([&] { sink(c.length()); });
  tryOp([&] { sink(c.meanPosition()); });
  for (const double angle : {s.angle, 0.0, 1.5707963267948966}) {
    tryOp([&] { sink(static_cast<double>(c.extremalVertexIndex(gkRadian(angle)))); });
    tryOp([&] { sink(c.extremalVertexPosition(gkRadian(angle))); });
  }
  tryOp([&] { sink(c.encloseRect()); });
  tryOp([&] { sink(c.encloseRect(x)); });
  // Only the two modes: any other value is outside the enumeration's range, undefined before
  // the call is even made (the refusal of a bad mode has its unit test).
  for (const auto m : {gkContourDefs::eFarthestPair, gkContourDefs::eFirstVertexCentered}) {
    tryOp([&] { sink(c.encloseCircle(m).radius()); });
    tryOp([&] { sink(c.diameter(m)); });
  }
  tryOp([&] {
    gkRegion hull;
    c.convexHull(hull);
    sink(hull.area(false));
  });
  tryOp([&] {
    gkEllipse e;
    double residual = 0.0;
    c.fitEllipse(e, residual);
    sink(residual);
  });
  tryOp([&] {
    CountingTablet tablet;
    c.draw(tablet, gkContourDefs::eDrawOutline, gkColor(1, 2, 3), gkUITablet::eDefaultLayer);
    c.draw(tablet, gkContourDefs::eDrawVertices, gkColor(1, 2, 3), gkUITablet::eOverlayLayer);
    sink(static_cast<double>(tablet.count));
  });
  tryOp([&] {
    gkSvgTablet svg;
    svg.beginGroup("contour");
    c.draw(svg, gkContourDefs::eDrawOutline, gkColor(1, 2, 3), gkUITablet::eDefaultLayer);
    sink(static_cast<double>(svg.str().size()));
  });
  tryOp([&] { sink(static_cast<double>(c.closestVertexIndex(s.point))); });
  for (const bool verticesOnly : {false, true}) {
    tryOp([&] { sink(c.closestPoint(s.point, verticesOnly)); });
    tryOp([&] { sink(c.distToPoint(s.point, verticesOnly)); });
  }
  for (const double tolerance : {s.tolerance, 1e-6}) {
    tryOp([&] { sink(static_cast<double>(c.vertexIndex(s.point, tolerance).size())); });
  }
  if (!c.points().empty()) {
    tryOp([&] { sink(static_cast<double>(c.vertexIndex(c.points().back(), 1e-6).size())); });
  }
  for (const bool includeEnds : {false, true}) {
    tryOp([&] { sink(static_cast<double>(c.intersections(seg, includeEnds).size())); });
  }
  tryOp([&] { sink(static_cast<double>(c.intersections(other).size())); });
  tryOp([&] { sink(c.isSelfIntersecting()); });
  tryOp([&] {
    gkContour mapped;
    c.map(x, mapped);
    sink(mapped.length());
    sink(mapped.isSelfIntersecting());
  });
  tryOp([&] {
    gkContour copy(c);
    copy.cachedVectorSize(s.cacheBound);
    sink(copy.encloseRect(x));
    copy.isClosed(!c.isClosed());
    sink(copy.length());
    sink(copy.isSelfIntersecting());
  });
}

void checkContourRoundTrip(const gkContour& c) {
  tryOp([&] {
    const gkPtrHandle<gkContour> back = roundTrip(gkPtrHandle<gkContour>(new gkContour(c)));
    if (!sameBits(back->points(), c.points()) || back->isClosed() != c.isClosed() ||
        back->label() != c.label() || back->cachedVectorSize() != c.cachedVectorSize()) {
      finding("a contour changed through the archive");
    }
  });
}

// What a region's derived regions (hull, regularization) are asked in turn.
void glance(const gkRegion& r) {
  tryOp([&] { sink(r.area(true)); });
  tryOp([&] { sink(r.isSelfIntersecting()); });
}

void exerciseRegion(const gkRegion& r, const gkContour& other, const gkGeometryFuzzScene& s) {
  exerciseContour(r, other, s);
  const gkLineSeg seg(s.segmentStart, s.segmentEnd);
  for (const bool holes : {false, true}) {
    tryOp([&] { sink(r.inside(s.point, holes)); });
    for (const gkVector<2>& v : r.points()) {
      tryOp([&] { sink(r.inside(v, holes)); });
    }
    tryOp([&] {
      long holeIndex = -2;
      sink(static_cast<double>(r.closestVertexIndex(s.point, holes, holeIndex) + holeIndex));
    });
    for (const bool verticesOnly : {false, true}) {
      tryOp([&] { sink(r.closestPoint(s.point, verticesOnly, holes)); });
      for (const bool zeroIfInside : {false, true}) {
        tryOp([&] { sink(r.distToPoint(s.point, verticesOnly, holes, zeroIfInside)); });
      }
    }
    for (const bool includeEnds : {false, true}) {
      tryOp([&] { sink(static_cast<double>(r.intersections(seg, includeEnds, holes).size())); });
    }
    tryOp([&] { sink(static_cast<double>(r.intersections(other, holes).size())); });
    tryOp([&] { sink(r.area(holes)); });
    tryOp([&] { sink(r.centerOfMass(holes)); });
    tryOp([&] { sink(r.inertiaMatrix(holes).element(0, 1)); });
  }
  tryOp([&] {
    gkRegion result;
    r.regularize(result);
    glance(result);
  });
  tryOp([&] {
    gkRegion result;
    r.outerHull(result);
    glance(result);
  });
  tryOp([&] {
    // In place: the result overwrites the region that caches it.
    gkRegion copy(r);
    copy.outerHull(copy);
    glance(copy);
    copy.regularize(copy);
    copy.convexHull(copy);
    glance(copy);
  });
  tryOp([&] {
    gkRegion mapped;
    r.map(xformOf(s), mapped);
    glance(mapped);
  });
  tryOp([&] {
    CountingTablet tablet;
    r.draw(tablet, gkColor(4, 5, 6), gkUITablet::eDefaultLayer);
    sink(static_cast<double>(tablet.count));
  });
  tryOp([&] {
    gkRegion copy(r);
    copy.isClosed(false);
  });
  tryOp([&] {
    gkRegion copy(r);
    copy.holes(r.holes());
    sink(copy == r);
  });
  tryOp([&] {
    const gkPtrHandle<gkRegion> back = roundTrip(gkPtrHandle<gkRegion>(new gkRegion(r)));
    if (!sameBits(back->points(), r.points()) || back->holes().size() != r.holes().size()) {
      finding("a region changed through the archive");
    }
    glance(*back);
  });
}

void exerciseSet(const gkRegionSet& set, const gkGeometryFuzzScene& s) {
  const gkXform<2> x = xformOf(s);
  tryOp([&] { sink(set.encloseRect()); });
  tryOp([&] { sink(set.encloseRect(x)); });
  tryOp([&] { sink(set.isSelfIntersecting()); });
  for (const bool holes : {false, true}) {
    tryOp([&] { sink(set.area(holes)); });
    tryOp([&] { sink(set.centerOfMass(holes)); });
    tryOp([&] { sink(set.inertiaMatrix(holes).element(1, 1)); });
    tryOp([&] { sink(set.inside(s.point, holes)); });
    for (const bool verticesOnly : {false, true}) {
      for (const bool zeroIfInside : {false, true}) {
        tryOp([&] { sink(set.distToPoint(s.point, verticesOnly, holes, zeroIfInside)); });
      }
    }
  }
  tryOp([&] {
    gkRegionSet result;
    set.regularize(result);
    sink(result.area(false));
  });
  tryOp([&] {
    gkRegionSet result;
    set.outerHull(result);
    sink(result.area(false));
  });
  tryOp([&] {
    gkRegionSet copy(set);
    copy.cachedVectorSize(s.cacheBound);
    copy.regularize(copy);
    sink(copy == set);
    copy.outerHull(copy);
    sink(copy.isSelfIntersecting());
  });
  tryOp([&] {
    CountingTablet tablet;
    set.draw(tablet, gkColor(7, 8, 9), gkUITablet::eOverlayLayer);
    sink(static_cast<double>(tablet.count));
  });
  tryOp([&] {
    const gkPtrHandle<gkRegionSet> back = roundTrip(gkPtrHandle<gkRegionSet>(new gkRegionSet(set)));
    if (back->regions().size() != set.regions().size()) {
      finding("a region set changed through the archive");
    }
    sink(back->area(false));
  });
}

void exerciseEdgelets(const gkGeometryFuzzScene& s, const gkContour& other,
                      const gkRegion& plainRegion) {
  const std::vector<gkEdgelet> data = edgeletsOf(s.contour);
  const EdgeletContour::XformHandle xf(new gk2XformLinear(xformOf(s)));
  tryOp([&] {
    EdgeletContour c(data);
    c.isClosed(s.contourClosed);
    exerciseContour(c, other, s);
    checkContourRoundTrip(c);
    tryOp([&] { sink(c.point(c.datum(s.point)).x()); });
    tryOp([&] {
      EdgeletContour result;
      c.mapT(xformOf(s), result);
    });
    tryOp([&] {
      EdgeletRegion result;
      c.convexHullT(result);
    });
    c.data(edgeletsOf(s.other));
    sink(c.length());
  });
  tryOp([&] {
    // The transform may be singular: deriving the points then throws.
    EdgeletContour c(data, xf);
    sink(c.length());
    sink(c.point(c.datum(s.point)));
    c.points(s.other);
    sink(static_cast<double>(c.data().size()));
    sink(c.isSelfIntersecting());
    const gkPtrHandle<EdgeletContour> back =
        roundTrip(gkPtrHandle<EdgeletContour>(new EdgeletContour(c)));
    if (back->data().size() != back->points().size()) {
      finding("an edgelet contour loaded with data out of step with its points");
    }
  });
  tryOp([&] {
    const gkPtrHandle<EdgeletRegion> r = edgeletRegionOf(s.region);
    exerciseRegion(*r, other, s);
    tryOp([&] {
      CountingTablet tablet;
      r->draw(tablet, gkColor(1, 1, 1), gkUITablet::eDefaultLayer);
      sink(static_cast<double>(tablet.count));
    });
    tryOp([&] {
      EdgeletRegion result;
      r->regularizeT(result);
    });
    tryOp([&] {
      EdgeletRegion result;
      r->mapT(xformOf(s), result);
    });
    tryOp([&] { sink(static_cast<double>(r->holes().size())); });
    tryOp([&] {
      const EdgeletRegion fromContour(EdgeletContour(data), 3);
      sink(static_cast<double>(fromContour.points().size()));
    });
    tryOp([&] {
      const EdgeletRegion withXform(data, xf, 5);
      sink(withXform.area(false));
    });
    tryOp([&] {
      const gkPtrHandle<EdgeletRegion> back = roundTrip(r);
      if (!sameBits(back->points(), r->points()) || back->data().size() != back->points().size()) {
        finding("an edgelet region changed through the archive");
      }
    });

    EdgeletRegionSet::RegionsT members{r};
    for (const Shape& m : s.setMembers) {
      members.push_back(edgeletRegionOf(m));
    }
    EdgeletRegionSet set(members);
    // A plain region through the plain interface becomes an edgelet region.
    set.add(gkPtrHandle_const<gkRegion>(new gkRegion(plainRegion)),
            static_cast<gkContourDefs::IntersectionMode>(s.setMode));
    sink(static_cast<double>(set.regionsT().size()));
    exerciseSet(set, s);
    tryOp([&] {
      EdgeletRegionSet result;
      set.regularizeT(result);
    });
    tryOp([&] {
      EdgeletRegionSet result;
      set.mapT(xformOf(s), result);
    });
    tryOp([&] {
      const gkPtrHandle<EdgeletRegionSet> back =
          roundTrip(gkPtrHandle<EdgeletRegionSet>(new EdgeletRegionSet(set)));
      if (back->regionsT().size() != back->regions().size()) {
        finding("an edgelet region set loaded with its two member lists out of step");
      }
    });
  });
}

}  // namespace

void gkGeometryFuzzRun(const gkGeometryFuzzScene& s) {
  const gkContour contour(s.contour, s.contourClosed, 11);
  const gkContour other(s.other, s.otherClosed, 12);
  exercisePointFunctions(s.contour, s);
  exerciseContour(contour, other, s);
  checkContourRoundTrip(contour);

  const auto regionMode = static_cast<gkContourDefs::IntersectionMode>(s.regionMode);
  const gkPtrHandle<gkRegion> region = regionOf(s.region);
  exerciseRegion(*region, other, s);
  // The same outline built with the region's mode, and from the contour and its polygon.
  tryOp([&] { glance(gkRegion(s.region.outline, regionMode)); });
  tryOp([&] { glance(gkRegion(contour, regionMode)); });
  tryOp([&] { glance(gkRegion(contour.polygon(), regionMode)); });

  gkRegionSet::Regions members{region};
  for (const Shape& m : s.setMembers) {
    members.push_back(regionOf(m));
  }
  const auto setMode = static_cast<gkContourDefs::IntersectionMode>(s.setMode);
  tryOp([&] {
    const gkRegionSet set(members, setMode);
    exerciseSet(set, s);
  });
  tryOp([&] {
    gkRegionSet set;
    for (const gkPtrHandle_const<gkRegion>& m : members) {
      set.add(m, setMode);
    }
    sink(set.area(true));
  });

  exerciseEdgelets(s, other, *region);
}

int gkGeometryFuzzOne(const std::uint8_t* data, std::size_t size) {
  gkGeometryFuzzRun(gkGeometryFuzzDecode(data, size));
  return 0;
}
