#include "shape_file.h"

#include <cmath>
#include <fstream>
#include <sstream>

#include <nlohmann/json.hpp>

namespace gkgeom_tool {

namespace {

using nlohmann::json;

/// Where a bad value is: the file and a JSON pointer into it.
[[noreturn]] void fail(const std::string& path, const std::string& where, const std::string& what) {
  throw InputError(path + ": " + (where.empty() ? "/" : where) + ": " + what);
}

/// Accepts every event and remembers where the parser gave up.
struct FailureFinder : nlohmann::json_sax<json> {
  std::size_t position = 0;
  bool null() override { return true; }
  bool boolean(bool) override { return true; }
  bool number_integer(number_integer_t) override { return true; }
  bool number_unsigned(number_unsigned_t) override { return true; }
  bool number_float(number_float_t, const string_t&) override { return true; }
  bool string(string_t&) override { return true; }
  bool binary(binary_t&) override { return true; }
  bool start_object(std::size_t) override { return true; }
  bool key(string_t&) override { return true; }
  bool end_object() override { return true; }
  bool start_array(std::size_t) override { return true; }
  bool end_array() override { return true; }
  bool parse_error(std::size_t at, const std::string&,
                   const nlohmann::detail::exception&) override {
    position = at;
    return false;
  }
};

std::size_t failurePosition(const std::string& text) {
  FailureFinder finder;
  json::sax_parse(text, &finder);
  return finder.position;
}

Points readPoints(const std::string& path, const json& list, const std::string& where,
                  std::size_t minimum) {
  if (!list.is_array()) {
    fail(path, where, "expected an array of [x, y] points");
  }
  Points points;
  for (std::size_t k = 0; k < list.size(); ++k) {
    const json& p = list[k];
    const std::string at = where + "/" + std::to_string(k);
    if (!p.is_array() || p.size() != 2 || !p[0].is_number() || !p[1].is_number()) {
      fail(path, at, "expected a point [x, y] of two numbers");
    }
    const double x = p[0].get<double>();
    const double y = p[1].get<double>();
    if (!std::isfinite(x) || !std::isfinite(y)) {
      fail(path, at, "coordinates must be finite numbers");
    }
    points.emplace_back(x, y);
  }
  if (points.size() < minimum) {
    fail(path, where,
         "a ring needs at least " + std::to_string(minimum) + " vertices, this one has " +
             std::to_string(points.size()));
  }
  return points;
}

std::vector<gkEdgelet> readEdgelets(const std::string& path, const json& list,
                                    const std::string& where) {
  if (!list.is_array()) {
    fail(path, where, "expected an array of [x, y, magnitude, angle] edgelets");
  }
  std::vector<gkEdgelet> edgelets;
  for (std::size_t k = 0; k < list.size(); ++k) {
    const json& e = list[k];
    const std::string at = where + "/" + std::to_string(k);
    if (!e.is_array() || e.size() != 4 || !e[0].is_number() || !e[1].is_number() ||
        !e[2].is_number_unsigned() || !e[3].is_number_unsigned() ||
        e[2].get<unsigned long>() > 65535 || e[3].get<unsigned long>() > 255) {
      fail(path, at,
           "expected an edgelet [x, y, magnitude 0..65535, angle 0..255 (256ths of a turn)]");
    }
    const double x = e[0].get<double>();
    const double y = e[1].get<double>();
    if (!std::isfinite(x) || !std::isfinite(y)) {
      fail(path, at, "coordinates must be finite numbers");
    }
    edgelets.emplace_back(gkVector<2>(x, y), static_cast<unsigned short>(e[2].get<unsigned long>()),
                          gkAngle8(static_cast<unsigned char>(e[3].get<unsigned long>())));
  }
  if (edgelets.size() < 2) {
    fail(path, where,
         "a contour needs at least 2 vertices, this one has " + std::to_string(edgelets.size()));
  }
  return edgelets;
}

Shape::Ring readRing(const std::string& path, const json& j, const std::string& where) {
  if (!j.is_object() || !j.contains("outer")) {
    fail(path, where, "expected an object with \"outer\" (and optional \"holes\")");
  }
  Shape::Ring ring;
  ring.outer = readPoints(path, j.at("outer"), where + "/outer", 3);
  if (j.contains("holes")) {
    const json& holes = j.at("holes");
    if (!holes.is_array()) {
      fail(path, where + "/holes", "expected an array of rings");
    }
    for (std::size_t h = 0; h < holes.size(); ++h) {
      ring.holes.push_back(readPoints(path, holes[h], where + "/holes/" + std::to_string(h), 3));
    }
  }
  return ring;
}

}  // namespace

std::vector<Shape> readJsonFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    throw InputError(path + ": cannot open the file for reading");
  }
  std::stringstream text;
  text << in.rdbuf();
  json doc;
  try {
    doc = json::parse(text.str());
  } catch (const json::parse_error& e) {
    throw InputError(path + ": byte " + std::to_string(e.byte) + ": malformed JSON (" + e.what() +
                     ")");
  } catch (const json::exception& e) {
    // A number too large for a double (1e999): coordinates must be finite. The exception has
    // no position; a second, event-driven pass over the text finds where the parser stopped.
    throw InputError(path + ": byte " + std::to_string(failurePosition(text.str())) +
                     ": a number is not finite or out of range (" + e.what() + ")");
  }
  if (!doc.is_object() || !doc.contains("shapes") || !doc.at("shapes").is_array()) {
    fail(path, "", "expected an object with a \"shapes\" array");
  }
  std::vector<Shape> shapes;
  const json& list = doc.at("shapes");
  for (std::size_t i = 0; i < list.size(); ++i) {
    const json& j = list[i];
    const std::string where = "/shapes/" + std::to_string(i);
    if (!j.is_object() || !j.contains("type") || !j.at("type").is_string()) {
      fail(path, where, "expected an object with a \"type\"");
    }
    Shape s;
    s.name = j.value("name", "shape " + std::to_string(i));
    if (j.contains("label")) {
      if (!j.at("label").is_number_unsigned()) {
        fail(path, where + "/label", "a label is a non-negative integer");
      }
      s.label = j.at("label").get<unsigned long>();
    }
    const std::string type = j.at("type").get<std::string>();
    if (type == "contour") {
      s.kind = Shape::eContour;
      s.closed = j.value("closed", true);
      if (j.contains("edgelets")) {
        s.edgelets = readEdgelets(path, j.at("edgelets"), where + "/edgelets");
        for (const gkEdgelet& e : s.edgelets) {
          s.points.push_back(e.position());
        }
      } else if (j.contains("points")) {
        s.points = readPoints(path, j.at("points"), where + "/points", 2);
      } else {
        fail(path, where, "a contour needs \"points\" or \"edgelets\"");
      }
    } else if (type == "region") {
      s.kind = Shape::eRegion;
      s.regions.push_back(readRing(path, j, where));
    } else if (type == "regionSet") {
      s.kind = Shape::eRegionSet;
      if (!j.contains("regions") || !j.at("regions").is_array()) {
        fail(path, where, "a region set needs a \"regions\" array");
      }
      for (std::size_t r = 0; r < j.at("regions").size(); ++r) {
        s.regions.push_back(
            readRing(path, j.at("regions")[r], where + "/regions/" + std::to_string(r)));
      }
    } else {
      fail(path, where + "/type", "unknown shape type \"" + type + "\"");
    }
    shapes.push_back(std::move(s));
  }
  return shapes;
}

namespace {

json pointsJson(const Points& points) {
  json list = json::array();
  for (const gkVector<2>& p : points) {
    list.push_back(json::array({p.x(), p.y()}));
  }
  return list;
}

json ringJson(const Shape::Ring& ring) {
  json j = {{"outer", pointsJson(ring.outer)}};
  if (!ring.holes.empty()) {
    json holes = json::array();
    for (const Points& h : ring.holes) {
      holes.push_back(pointsJson(h));
    }
    j["holes"] = holes;
  }
  return j;
}

}  // namespace

std::string shapeFileText(const std::vector<Shape>& shapes) {
  json list = json::array();
  for (const Shape& s : shapes) {
    json j = {{"name", s.name}, {"label", s.label}};
    switch (s.kind) {
      case Shape::eContour:
        j["type"] = "contour";
        j["closed"] = s.closed;
        if (s.edgelets.empty()) {
          j["points"] = pointsJson(s.points);
        } else {
          json edgelets = json::array();
          for (const gkEdgelet& e : s.edgelets) {
            edgelets.push_back(json::array({e.position().x(), e.position().y(), e.magnitude(),
                                            static_cast<unsigned>(e.angle().value())}));
          }
          j["edgelets"] = edgelets;
        }
        break;
      case Shape::eRegion:
        j["type"] = "region";
        j.update(ringJson(s.regions.front()));
        break;
      case Shape::eRegionSet: {
        j["type"] = "regionSet";
        json regions = json::array();
        for (const Shape::Ring& ring : s.regions) {
          regions.push_back(ringJson(ring));
        }
        j["regions"] = regions;
        break;
      }
    }
    list.push_back(j);
  }
  return json{{"shapes", list}}.dump(1) + "\n";
}

Format formatOf(const std::string& path, const std::string& name) {
  if (name == "json") {
    return Format::eJson;
  }
  if (name == "wkt") {
    return Format::eWkt;
  }
  if (name == "gka") {
    return Format::eArchive;
  }
  if (!name.empty()) {
    throw InputError("unknown format \"" + name + "\" (json, wkt or gka)");
  }
  const auto dot = path.rfind('.');
  const std::string extension = dot == std::string::npos ? "" : path.substr(dot);
  if (extension == ".wkt") {
    return Format::eWkt;
  }
  if (extension == ".gka") {
    return Format::eArchive;
  }
  return Format::eJson;
}

std::vector<Shape> readShapes(const std::string& path, Format format) {
  switch (format) {
    case Format::eWkt:
      return readWktFile(path);
    case Format::eArchive:
      return readArchiveFile(path);
    case Format::eJson:
      break;
  }
  return readJsonFile(path);
}

std::vector<Shape> readShapeFile(const std::string& path) {
  return readShapes(path, formatOf(path, ""));
}

std::string shapesText(const std::vector<Shape>& shapes, Format format) {
  switch (format) {
    case Format::eWkt:
      return wktText(shapes);
    case Format::eArchive:
      return archiveBytes(shapes);
    case Format::eJson:
      break;
  }
  return shapeFileText(shapes);
}

}  // namespace gkgeom_tool
