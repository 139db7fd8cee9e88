#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include <gk/base/vector.h>

/// The command-line tool's own model of an input file: named shapes read from JSON, each
/// turned into the library's types by the command that uses it.
namespace gkgeom_tool {

using Points = std::vector<gkVector<2>>;

/// One shape of a file. A contour is one vertex list; a region an outer boundary with holes;
/// a region set several regions.
struct Shape {
  enum Kind { eContour, eRegion, eRegionSet };
  struct Ring {
    Points outer;
    std::vector<Points> holes;
  };
  Kind kind = eContour;
  std::string name;
  unsigned long label = 0;
  bool closed = true;         // contours only
  Points points;              // contours only
  std::vector<Ring> regions;  // one for a region, several for a region set
};

/// A bad input: the message names the file and the place in it.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads the JSON shape file at path (schema in docs/gkgeom-tool.md). Throws InputError.
std::vector<Shape> readShapeFile(const std::string& path);

/// The JSON text of a shape file holding shapes (the schema readShapeFile reads; coordinates
/// round-trip exactly).
std::string shapeFileText(const std::vector<Shape>& shapes);

}  // namespace gkgeom_tool
