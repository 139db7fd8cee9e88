// The WKT and archive forms of shape files, beside the JSON form in shape_file.cpp.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <iomanip>
#include <limits>
#include <sstream>

#include <gk/gk.h>
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/linestring.hpp>
#include <boost/geometry/geometries/multi_polygon.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/polygon.hpp>

#include "shape_file.h"

namespace gkgeom_tool {

namespace {

namespace bg = boost::geometry;
using BPoint = bg::model::d2::point_xy<double>;
using BLine = bg::model::linestring<BPoint>;
// Orientation as given (no reordering on read or write); rings closed in WKT.
using BPolygon = bg::model::polygon<BPoint, true, true>;
using BMulti = bg::model::multi_polygon<BPolygon>;

std::string readAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    throw InputError(path + ": cannot open the file for reading");
  }
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

/// A WKT ring repeats its first vertex at the end; the library's rings do not.
template <typename Ring>
Points fromRing(const Ring& ring) {
  Points points;
  for (const BPoint& p : ring) {
    points.emplace_back(p.x(), p.y());
  }
  if (points.size() > 1 && points.front() == points.back()) {
    points.pop_back();
  }
  return points;
}

template <typename Ring>
void toRing(const Points& points, Ring& ring, bool close) {
  for (const gkVector<2>& p : points) {
    ring.push_back(BPoint(p.x(), p.y()));
  }
  if (close && !points.empty()) {
    ring.push_back(BPoint(points.front().x(), points.front().y()));
  }
}

Shape::Ring fromPolygon(const BPolygon& polygon) {
  Shape::Ring ring;
  ring.outer = fromRing(polygon.outer());
  for (const auto& inner : polygon.inners()) {
    ring.holes.push_back(fromRing(inner));
  }
  return ring;
}

BPolygon toPolygon(const Shape::Ring& ring) {
  BPolygon polygon;
  toRing(ring.outer, polygon.outer(), true);
  for (const Points& hole : ring.holes) {
    polygon.inners().emplace_back();
    toRing(hole, polygon.inners().back(), true);
  }
  return polygon;
}

void check(const std::string& path, const std::string& where, const Points& points,
           std::size_t minimum) {
  for (const gkVector<2>& p : points) {
    if (!std::isfinite(p.x()) || !std::isfinite(p.y())) {
      throw InputError(path + ": " + where + ": coordinates must be finite numbers");
    }
  }
  if (points.size() < minimum) {
    throw InputError(path + ": " + where + ": a ring needs at least " + std::to_string(minimum) +
                     " vertices, this one has " + std::to_string(points.size()));
  }
}

void checkRing(const std::string& path, const std::string& where, const Shape::Ring& ring) {
  check(path, where, ring.outer, 3);
  for (const Points& hole : ring.holes) {
    check(path, where + " (hole)", hole, 3);
  }
}

}  // namespace

std::vector<Shape> readWktFile(const std::string& path) {
  std::istringstream lines(readAll(path));
  std::vector<Shape> shapes;
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) {
    if (line.find_first_not_of(" \t\r") == std::string::npos) {
      continue;
    }
    const std::string where = "line " + std::to_string(number);
    const std::string head = line.substr(line.find_first_not_of(" \t"));
    Shape s;
    s.name = "shape " + std::to_string(shapes.size());
    try {
      if (head.rfind("LINESTRING", 0) == 0) {
        BLine l;
        bg::read_wkt(line, l);
        s.kind = Shape::eContour;
        s.closed = false;
        for (const BPoint& p : l) {
          s.points.emplace_back(p.x(), p.y());
        }
        check(path, where, s.points, 2);
      } else if (head.rfind("POLYGON", 0) == 0) {
        BPolygon polygon;
        bg::read_wkt(line, polygon);
        s.kind = Shape::eRegion;
        s.regions.push_back(fromPolygon(polygon));
        checkRing(path, where, s.regions.back());
      } else if (head.rfind("MULTIPOLYGON", 0) == 0) {
        BMulti multi;
        bg::read_wkt(line, multi);
        s.kind = Shape::eRegionSet;
        for (const BPolygon& polygon : multi) {
          s.regions.push_back(fromPolygon(polygon));
          checkRing(path, where, s.regions.back());
        }
      } else {
        throw InputError(path + ": " + where + ": unknown shape type (LINESTRING, POLYGON or " +
                         "MULTIPOLYGON expected)");
      }
    } catch (const bg::read_wkt_exception& e) {
      std::string what = e.what();
      std::replace(what.begin(), what.end(), '\n', ' ');
      throw InputError(path + ": " + where + ": malformed WKT (" + what + ")");
    }
    shapes.push_back(std::move(s));
  }
  return shapes;
}

std::string wktText(const std::vector<Shape>& shapes) {
  std::ostringstream out;
  // 17 significant digits: every double reads back as itself.
  out << std::setprecision(std::numeric_limits<double>::max_digits10);
  for (const Shape& s : shapes) {
    switch (s.kind) {
      case Shape::eContour:
        if (s.closed) {
          Shape::Ring ring;
          ring.outer = s.points;
          out << bg::wkt(toPolygon(ring));
        } else {
          BLine l;
          toRing(s.points, l, false);
          out << bg::wkt(l);
        }
        break;
      case Shape::eRegion:
        out << bg::wkt(toPolygon(s.regions.front()));
        break;
      case Shape::eRegionSet: {
        BMulti multi;
        for (const Shape::Ring& ring : s.regions) {
          multi.push_back(toPolygon(ring));
        }
        out << bg::wkt(multi);
        break;
      }
    }
    out << '\n';
  }
  return out.str();
}

namespace {

gkPtrHandle<gkRegion> regionHandle(const Shape::Ring& ring, unsigned long label) {
  gkPtrHandle<gkRegion> r(new gkRegion(gkContour(ring.outer, true, label), gkContourDefs::eIgnore));
  gkRegion::Holes holes;
  for (const Points& h : ring.holes) {
    holes.push_back(gkPtrHandle_const<gkRegion>(new gkRegion(h, gkContourDefs::eIgnore)));
  }
  r->holes(holes);
  return r;
}

Shape::Ring ringOfRegion(const gkRegion& r) {
  Shape::Ring ring;
  ring.outer = r.points();
  for (const auto& hole : r.holes()) {
    ring.holes.push_back(hole->points());
  }
  return ring;
}

}  // namespace

/// The kind byte of an edgelet contour in an archive shape file (after the three shape kinds).
constexpr unsigned char kEdgeletContour = 3;

std::string archiveBytes(const std::vector<Shape>& shapes) {
  std::ostringstream out;
  {
    gkArchive ar(out);
    // The file: a shape count, then each shape as a kind byte (0 contour, 1 region, 2 region
    // set, 3 edgelet contour) and the library's own stored form of it.
    unsigned long count = shapes.size();
    ar || count;
    for (const Shape& s : shapes) {
      unsigned char kind = static_cast<unsigned char>(s.kind);
      if (!s.edgelets.empty()) {
        kind = kEdgeletContour;
      }
      ar || kind;
      if (kind == kEdgeletContour) {
        gkPtrHandle<gkContourT<gkEdgelet>> e(new gkContourT<gkEdgelet>(s.edgelets));
        e->isClosed(s.closed);
        e->label(s.label);
        ar || e;
      } else if (s.kind == Shape::eContour) {
        gkPtrHandle<gkContour> c(new gkContour(s.points, s.closed, s.label));
        ar || c;
      } else if (s.kind == Shape::eRegion) {
        gkPtrHandle<gkRegion> r = regionHandle(s.regions.front(), s.label);
        ar || r;
      } else {
        gkRegionSet::Regions members;
        for (const Shape::Ring& ring : s.regions) {
          members.push_back(regionHandle(ring, 0));
        }
        gkPtrHandle<gkRegionSet> set(new gkRegionSet(members, gkContourDefs::eIgnore));
        ar || set;
      }
    }
  }
  return out.str();
}

std::vector<Shape> readArchiveFile(const std::string& path) {
  const std::string bytes = readAll(path);
  std::istringstream in(bytes);
  std::vector<Shape> shapes;
  try {
    gkArchive ar(in);
    unsigned long count = 0;
    ar || count;
    if (count > bytes.size()) {
      throw InputError(path + ": byte " + std::to_string(ar.offset()) + ": shape count " +
                       std::to_string(count) + " is more than the file can hold");
    }
    for (unsigned long i = 0; i < count; ++i) {
      const std::uint64_t at = ar.offset();
      unsigned char kind = 0;
      ar || kind;
      Shape s;
      s.name = "shape " + std::to_string(i);
      if (kind == Shape::eContour) {
        gkPtrHandle<gkContour> c;
        ar || c;
        if (!c) {
          throw InputError(path + ": byte " + std::to_string(at) + ": empty shape");
        }
        s.kind = Shape::eContour;
        s.closed = c->isClosed();
        s.label = c->label();
        s.points = c->points();
      } else if (kind == kEdgeletContour) {
        gkPtrHandle<gkContourT<gkEdgelet>> e;
        ar || e;
        if (!e) {
          throw InputError(path + ": byte " + std::to_string(at) + ": empty shape");
        }
        s.kind = Shape::eContour;
        s.closed = e->isClosed();
        s.label = e->label();
        s.edgelets = e->data();
        s.points = e->points();
      } else if (kind == Shape::eRegion) {
        gkPtrHandle<gkRegion> r;
        ar || r;
        if (!r) {
          throw InputError(path + ": byte " + std::to_string(at) + ": empty shape");
        }
        s.kind = Shape::eRegion;
        s.label = r->label();
        s.regions.push_back(ringOfRegion(*r));
      } else if (kind == Shape::eRegionSet) {
        gkPtrHandle<gkRegionSet> set;
        ar || set;
        if (!set) {
          throw InputError(path + ": byte " + std::to_string(at) + ": empty shape");
        }
        s.kind = Shape::eRegionSet;
        for (const auto& member : set->regions()) {
          s.regions.push_back(ringOfRegion(*member));
        }
      } else {
        throw InputError(path + ": byte " + std::to_string(at) + ": unknown shape type " +
                         std::to_string(kind));
      }
      shapes.push_back(std::move(s));
    }
  } catch (const gkArchive::InputError& e) {
    throw InputError(path + ": byte " + std::to_string(e.offset()) + ": bad archive (" + e.what() +
                     ")");
  } catch (const gkException& e) {
    throw InputError(path + ": bad archive (" + std::string(e.what()) + ")");
  }
  return shapes;
}

}  // namespace gkgeom_tool
