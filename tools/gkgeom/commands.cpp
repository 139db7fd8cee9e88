#include "commands.h"

#include <atomic>
#include <cmath>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iomanip>
#include <mutex>
#include <ostream>
#include <sstream>
#include <thread>

#include <gk/gk.h>

namespace gkgeom_tool {

namespace {

using nlohmann::ordered_json;

ordered_json point(const gkVector<2>& p) {
  return ordered_json::array({p.x(), p.y()});
}

ordered_json circle(const gkCircle& c) {
  return ordered_json{{"center", point(c.center())}, {"radius", c.radius()}};
}

ordered_json ellipse(const gkEllipse& e) {
  return ordered_json{{"center", point(e.center())},
                      {"radii", point(e.radii())},
                      {"rotation", e.rotation().toDouble()}};
}

ordered_json matrix(const gkMatrix<2>& m) {
  return ordered_json::array({ordered_json::array({m.element(0, 0), m.element(0, 1)}),
                              ordered_json::array({m.element(1, 0), m.element(1, 1)})});
}

ordered_json box(const gkRect& r) {
  return ordered_json{{"min", point(r.ul())}, {"max", point(r.lr())}};
}

/// Runs f and stores its value under key, or "n/a: <reason>" when the library refuses.
template <typename F>
void put(ordered_json& out, const char* key, F&& f) {
  try {
    out[key] = f();
  } catch (const std::exception& e) {
    const std::string what = e.what();
    out[key] = "n/a: " + (what.empty() ? std::string("refused") : what);
  }
}

gkRegion regionOf(const Shape::Ring& ring) {
  gkRegion region(ring.outer, gkContourDefs::eIgnore);
  gkRegion::Holes holes;
  for (const Points& h : ring.holes) {
    holes.push_back(gkPtrHandle_const<gkRegion>(new gkRegion(h, gkContourDefs::eIgnore)));
  }
  region.holes(holes);
  return region;
}

void measureContour(const gkContour& c, ordered_json& out) {
  out["vertices"] = c.points().size();
  out["closed"] = c.isClosed();
  put(out, "length", [&] { return c.length(); });
  put(out, "bounding box", [&] { return box(c.encloseRect(gkXform<2>())); });
  put(out, "circle (farthest pair)",
      [&] { return circle(c.encloseCircle(gkContourDefs::eFarthestPair)); });
  put(out, "circle (vertex 0 centred)",
      [&] { return circle(c.encloseCircle(gkContourDefs::eFirstVertexCentered)); });
  put(out, "convex hull vertices", [&] {
    gkRegion hull;
    c.convexHull(hull);
    return hull.points().size();
  });
  put(out, "fitted ellipse", [&] {
    gkEllipse e;
    double residual = 0;
    c.fitEllipse(e, residual);
    ordered_json j = ellipse(e);
    j["residual"] = residual;
    return j;
  });
  put(out, "self-intersecting", [&] { return c.isSelfIntersecting(); });
}

void measureRegion(const gkRegion& r, ordered_json& out) {
  measureContour(r, out);
  out["holes"] = r.holes().size();
  put(out, "area", [&] { return r.area(false); });
  put(out, "area without holes", [&] { return r.area(true); });
  put(out, "center of mass", [&] { return point(r.centerOfMass(false)); });
  put(out, "center of mass without holes", [&] { return point(r.centerOfMass(true)); });
  put(out, "inertia matrix", [&] { return matrix(r.inertiaMatrix(false)); });
  put(out, "ellipse from moments",
      [&] { return ellipse(gw_EllipseFromInertiaData(gw_InertiaDataPolygon(r.points()))); });
}

}  // namespace

ordered_json measure(const Shape& shape) {
  ordered_json out;
  out["name"] = shape.name;
  out["label"] = shape.label;
  switch (shape.kind) {
    case Shape::eContour: {
      out["type"] = shape.edgelets.empty() ? "contour" : "edgelet contour";
      if (!shape.edgelets.empty()) {
        // The edgelet contour itself: its vertices are the edgelet positions.
        gkContourT<gkEdgelet> e(shape.edgelets);
        e.isClosed(shape.closed);
        e.label(shape.label);
        measureContour(e, out);
        put(out, "edgelet area", [&] { return gw_Area(shape.edgelets); });
        put(out, "edgelet center of mass", [&] { return point(gw_CenterOfMass(shape.edgelets)); });
        break;
      }
      const gkContour c(shape.points, shape.closed, shape.label);
      if (shape.closed) {
        measureRegion(gkRegion(c, gkContourDefs::eIgnore), out);
      } else {
        measureContour(c, out);
      }
      break;
    }
    case Shape::eRegion:
      out["type"] = "region";
      measureRegion(regionOf(shape.regions.front()), out);
      break;
    case Shape::eRegionSet: {
      out["type"] = "regionSet";
      gkRegionSet::Regions members;
      for (const Shape::Ring& ring : shape.regions) {
        members.push_back(gkPtrHandle_const<gkRegion>(new gkRegion(regionOf(ring))));
      }
      const gkRegionSet set(members, gkContourDefs::eIgnore);
      out["regions"] = members.size();
      put(out, "bounding box", [&] { return box(set.encloseRect(gkXform<2>())); });
      put(out, "area", [&] { return set.area(false); });
      put(out, "area without holes", [&] { return set.area(true); });
      put(out, "center of mass", [&] { return point(set.centerOfMass(false)); });
      put(out, "self-intersecting", [&] { return set.isSelfIntersecting(); });
      break;
    }
  }
  return out;
}

ordered_json insideQuery(const Shape& shape, const gkVector<2>& pt) {
  ordered_json out;
  out["name"] = shape.name;
  out["point"] = point(pt);
  if (shape.kind == Shape::eContour && !shape.closed) {
    const gkContour c(shape.points, false, shape.label);
    put(out, "distance", [&] { return c.distToPoint(pt, false); });
    put(out, "nearest point", [&] { return point(c.closestPoint(pt, false)); });
    return out;
  }
  if (shape.kind == Shape::eRegionSet) {
    gkRegionSet::Regions members;
    for (const Shape::Ring& ring : shape.regions) {
      members.push_back(gkPtrHandle_const<gkRegion>(new gkRegion(regionOf(ring))));
    }
    const gkRegionSet set(members, gkContourDefs::eIgnore);
    put(out, "inside", [&] { return set.inside(pt, true); });
    put(out, "inside ignoring holes", [&] { return set.inside(pt, false); });
    put(out, "distance", [&] { return set.distToPoint(pt, false, true, false); });
    return out;
  }
  const gkRegion r =
      shape.kind == Shape::eContour
          ? gkRegion(gkContour(shape.points, true, shape.label), gkContourDefs::eIgnore)
          : regionOf(shape.regions.front());
  put(out, "inside", [&] { return r.inside(pt, true); });
  put(out, "inside ignoring holes", [&] { return r.inside(pt, false); });
  put(out, "distance", [&] { return r.distToPoint(pt, false, true, false); });
  put(out, "nearest point", [&] { return point(r.closestPoint(pt, false, true)); });
  return out;
}

namespace {

Shape::Ring ringOf(const gkRegion& r) {
  Shape::Ring ring;
  ring.outer = r.points();
  for (const auto& hole : r.holes()) {
    ring.holes.push_back(hole->points());
  }
  return ring;
}

}  // namespace

Shape repairShape(const Shape& shape, bool hullOnly) {
  Shape out = shape;
  if (shape.kind == Shape::eContour) {
    if (shape.closed) {
      const gkRegion r(gkContour(shape.points, true, shape.label), gkContourDefs::eIgnore);
      gkRegion repaired;
      hullOnly ? r.outerHull(repaired) : r.regularize(repaired);
      out.points = repaired.points();
      if (out.points != shape.points) {
        // A repaired boundary has new vertices, which carry no edgelets.
        out.edgelets.clear();
      }
    }
    return out;
  }
  if (shape.kind == Shape::eRegion) {
    gkRegion repaired;
    const gkRegion r = regionOf(shape.regions.front());
    hullOnly ? r.outerHull(repaired) : r.regularize(repaired);
    out.regions = {ringOf(repaired)};
    return out;
  }
  gkRegionSet::Regions members;
  for (const Shape::Ring& ring : shape.regions) {
    members.push_back(gkPtrHandle_const<gkRegion>(new gkRegion(regionOf(ring))));
  }
  const gkRegionSet set(members, gkContourDefs::eIgnore);
  gkRegionSet repaired;
  hullOnly ? set.outerHull(repaired) : set.regularize(repaired);
  out.regions.clear();
  for (const auto& member : repaired.regions()) {
    out.regions.push_back(ringOf(*member));
  }
  return out;
}

std::vector<ordered_json> measureAll(const std::vector<Shape>& shapes, unsigned jobs,
                                     bool progress) {
  std::vector<ordered_json> result(shapes.size());
  std::atomic<std::size_t> next{0};
  std::atomic<std::size_t> done{0};
  std::mutex barMutex;
  const auto bar = [&] {
    if (!progress) {
      return;
    }
    const std::lock_guard<std::mutex> lock(barMutex);
    const std::size_t d = done.load();
    const int width = 40;
    const int filled = static_cast<int>(width * d / (shapes.empty() ? 1 : shapes.size()));
    std::fprintf(stderr, "\r[%s%s] %zu/%zu", std::string(filled, '#').c_str(),
                 std::string(width - filled, ' ').c_str(), d, shapes.size());
  };
  const auto work = [&] {
    for (std::size_t i = next++; i < shapes.size(); i = next++) {
      result[i] = measure(shapes[i]);
      ++done;
      bar();
    }
  };
  const unsigned threads = std::max(1u, std::min<unsigned>(jobs, shapes.size()));
  std::vector<std::thread> pool;
  for (unsigned t = 1; t < threads; ++t) {
    pool.emplace_back(work);
  }
  work();
  for (std::thread& t : pool) {
    t.join();
  }
  if (progress) {
    std::fprintf(stderr, "\n");
  }
  return result;
}

namespace {

std::string text(const ordered_json& v) {
  if (v.is_number_float()) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.6f", v.get<double>());
    return buf;
  }
  if (v.is_string()) {
    return v.get<std::string>();
  }
  if (v.is_array()) {
    std::string s = "(";
    for (std::size_t k = 0; k < v.size(); ++k) {
      s += (k ? ", " : "") + text(v[k]);
    }
    return s + ")";
  }
  if (v.is_object()) {
    std::string s;
    for (auto it = v.begin(); it != v.end(); ++it) {
      s += (s.empty() ? "" : "  ") + it.key() + " " + text(it.value());
    }
    return s;
  }
  return v.dump();
}

}  // namespace

void writeReport(std::ostream& out, const std::vector<ordered_json>& measured) {
  for (const ordered_json& shape : measured) {
    std::size_t width = 0;
    for (auto it = shape.begin(); it != shape.end(); ++it) {
      width = std::max(width, it.key().size());
    }
    for (auto it = shape.begin(); it != shape.end(); ++it) {
      out << std::left << std::setw(static_cast<int>(width) + 2) << it.key() << text(it.value())
          << '\n';
    }
    out << '\n';
  }
}

namespace {

/// An ellipse as a closed contour of 96 points, so that it draws through the contour's draw.
gkContour ellipseOutline(const gkEllipse& e) {
  Points v;
  const double c = std::cos(e.rotation().toDouble());
  const double s = std::sin(e.rotation().toDouble());
  for (int k = 0; k < 96; ++k) {
    const double t = 6.283185307179586 * k / 96;
    const double x = e.radii().x() * std::cos(t);
    const double y = e.radii().y() * std::sin(t);
    v.emplace_back(e.center().x() + c * x - s * y, e.center().y() + s * x + c * y);
  }
  return gkContour(v, true, 0);
}

const gkColor kOutline(20, 20, 20);
const gkColor kHole(200, 40, 40);
const gkColor kHull(30, 110, 220);
const gkColor kEllipse(20, 160, 60);
const gkColor kCircle(230, 140, 0);
const gkColor kRegular(150, 50, 200);
const gkColor kIndex(90, 90, 90);

void drawRing(gkSvgTablet& tablet, const gkContour& c, const gkColor& color,
              const DrawOptions& options) {
  c.draw(tablet, gkContourDefs::eDrawOutline, color, gkUITablet::eDefaultLayer);
  if (options.indices) {
    for (std::size_t k = 0; k < c.points().size(); ++k) {
      tablet.drawText({c.points()[k].x(), c.points()[k].y()}, std::to_string(k), kIndex,
                      gkUITablet::eOverlayLayer);
    }
  }
}

}  // namespace

std::string drawSvg(const std::vector<Shape>& shapes, const DrawOptions& options,
                    const std::string& title) {
  gkSvgTablet tablet;
  tablet.title(title);
  for (std::size_t i = 0; i < shapes.size(); ++i) {
    const Shape& shape = shapes[i];
    std::vector<gkRegion> regions;
    if (shape.kind == Shape::eContour) {
      tablet.beginGroup(shape.name + " outline");
      const gkContour c(shape.points, shape.closed, shape.label);
      drawRing(tablet, c, kOutline, options);
      if (shape.closed) {
        regions.emplace_back(c, gkContourDefs::eIgnore);
      }
    } else {
      for (const Shape::Ring& ring : shape.regions) {
        regions.push_back(regionOf(ring));
      }
    }
    for (const gkRegion& r : regions) {
      if (shape.kind != Shape::eContour) {
        tablet.beginGroup(shape.name + " outline");
        drawRing(tablet, r, kOutline, options);
        tablet.beginGroup(shape.name + " holes");
        for (const auto& hole : r.holes()) {
          drawRing(tablet, *hole, kHole, options);
        }
      }
      try {
        if (options.hull) {
          tablet.beginGroup(shape.name + " hull");
          gkRegion hull;
          r.convexHull(hull);
          hull.gkContour::draw(tablet, gkContourDefs::eDrawOutline, kHull,
                               gkUITablet::eDefaultLayer);
        }
        if (options.ellipse) {
          tablet.beginGroup(shape.name + " fitted ellipse");
          gkEllipse e;
          double residual = 0;
          r.fitEllipse(e, residual);
          ellipseOutline(e).draw(tablet, gkContourDefs::eDrawOutline, kEllipse,
                                 gkUITablet::eDefaultLayer);
        }
        if (options.circle) {
          tablet.beginGroup(shape.name + " enclosing circle");
          ellipseOutline(gkEllipse(r.encloseCircle(gkContourDefs::eFarthestPair)))
              .draw(tablet, gkContourDefs::eDrawOutline, kCircle, gkUITablet::eDefaultLayer);
        }
        if (options.regularized && r.isSelfIntersecting()) {
          tablet.beginGroup(shape.name + " regularized");
          gkRegion regular;
          r.regularize(regular);
          regular.gkContour::draw(tablet, gkContourDefs::eDrawOutline, kRegular,
                                  gkUITablet::eOverlayLayer);
        }
      } catch (const std::exception&) {
        // A measure the library refuses for this shape is left out of the picture.
      }
    }
  }
  tablet.addLegendEntry("outline", kOutline);
  tablet.addLegendEntry("hole", kHole);
  if (options.hull) {
    tablet.addLegendEntry("convex hull", kHull);
  }
  if (options.ellipse) {
    tablet.addLegendEntry("fitted ellipse", kEllipse);
  }
  if (options.circle) {
    tablet.addLegendEntry("enclosing circle (farthest pair)", kCircle);
  }
  if (options.regularized) {
    tablet.addLegendEntry("regularized", kRegular);
  }
  return tablet.str();
}

void writeFileAtomically(const std::string& path, const std::string& text) {
  const std::string temporary = path + ".partial";
  {
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    if (!out) {
      throw InputError(path + ": cannot write the file");
    }
    out << text;
    out.flush();
    if (!out) {
      std::remove(temporary.c_str());
      throw InputError(path + ": cannot write the file");
    }
  }
  if (std::rename(temporary.c_str(), path.c_str()) != 0) {
    std::remove(temporary.c_str());
    throw InputError(path + ": cannot move the finished file into place");
  }
}

}  // namespace gkgeom_tool
