#pragma once

// The whole of Boost.Geometry: its single-algorithm headers do not bring the default strategies
// they need.
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/point_xy.hpp>

#include "inputs.h"

/// The inputs as Boost.Geometry models, made outside the timed loops.
namespace gk::bench {

namespace bg = boost::geometry;
using BPoint = bg::model::d2::point_xy<double>;
/// Counter-clockwise and closed, as the shapes are generated: no correct() needed.
using BRing = bg::model::ring<BPoint, false, true>;
using BPolygon = bg::model::polygon<BPoint, false, true>;
using BLinestring = bg::model::linestring<BPoint>;
using BMultiPoint = bg::model::multi_point<BPoint>;

inline BPoint boostPoint(const gkVector<2>& p) {
  return BPoint(p.x(), p.y());
}

/// The closed ring (first point repeated at the end).
inline BRing boostRing(const Points& points) {
  BRing ring;
  ring.reserve(points.size() + 1);
  for (const gkVector<2>& p : points) {
    ring.push_back(boostPoint(p));
  }
  ring.push_back(boostPoint(points.front()));
  return ring;
}

inline BPolygon boostPolygon(const Points& points) {
  BPolygon polygon;
  polygon.outer() = boostRing(points);
  return polygon;
}

/// The closed line string (first point repeated): the boundary as a curve, for distances.
inline BLinestring boostClosedLine(const Points& points) {
  BLinestring line;
  line.reserve(points.size() + 1);
  for (const gkVector<2>& p : points) {
    line.push_back(boostPoint(p));
  }
  line.push_back(boostPoint(points.front()));
  return line;
}

inline BMultiPoint boostMultiPoint(const Points& points) {
  BMultiPoint mp;
  mp.reserve(points.size());
  for (const gkVector<2>& p : points) {
    mp.push_back(boostPoint(p));
  }
  return mp;
}

}  // namespace gk::bench
