#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include <gk/base/edgelet.h>
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
  bool closed = true;  // contours only
  Points points;       // contours only
  // An edgelet contour carries one edgelet a vertex; points are then their positions.
  std::vector<gkEdgelet> edgelets;
  std::vector<Ring> regions;  // one for a region, several for a region set
};

/// A bad input: the message names the file and the place in it.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The three file forms: JSON (the tool's schema), WKT (one LINESTRING, POLYGON or
/// MULTIPOLYGON a line) and the library's binary archive.
enum class Format { eJson, eWkt, eArchive };

/// The form named (json, wkt, gka), or when name is empty the one the path's extension names
/// (.wkt, .gka; anything else is JSON). Throws InputError for an unknown name.
Format formatOf(const std::string& path, const std::string& name);

/// Reads the shape file at path in the form its extension names. Throws InputError.
std::vector<Shape> readShapeFile(const std::string& path);
/// Reads the shape file at path in the given form. Throws InputError.
std::vector<Shape> readShapes(const std::string& path, Format format);
/// The file contents of shapes in the given form (coordinates round-trip exactly in all three;
/// WKT keeps neither names nor labels, and writes a closed contour as a POLYGON).
std::string shapesText(const std::vector<Shape>& shapes, Format format);

std::vector<Shape> readJsonFile(const std::string& path);
std::vector<Shape> readWktFile(const std::string& path);
std::vector<Shape> readArchiveFile(const std::string& path);
std::string shapeFileText(const std::vector<Shape>& shapes);
std::string wktText(const std::vector<Shape>& shapes);
std::string archiveBytes(const std::vector<Shape>& shapes);

}  // namespace gkgeom_tool
