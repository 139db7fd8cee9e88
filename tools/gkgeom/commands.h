#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "shape_file.h"

namespace gkgeom_tool {

/// Every measure of one shape, in a fixed order, as the library computes it. A measure the
/// library refuses for this shape is the string "n/a: <reason>".
nlohmann::ordered_json measure(const Shape& shape);

/// Measures every shape on up to `jobs` threads (each owns its shapes; the order of the
/// result is the order of the input), with a progress bar on stderr when `progress`.
std::vector<nlohmann::ordered_json> measureAll(const std::vector<Shape>& shapes, unsigned jobs,
                                               bool progress);

/// The aligned text report of measured shapes.
void writeReport(std::ostream& out, const std::vector<nlohmann::ordered_json>& measured);

/// Containment and proximity of pt for one shape: inside with and without holes, distance to
/// the boundary and the nearest boundary point (what applies to the shape's kind).
nlohmann::ordered_json insideQuery(const Shape& shape, const gkVector<2>& pt);

/// The shape with every self-intersecting boundary replaced by its regularization or, with
/// hullOnly, its outer hull; an open contour is returned as it is.
Shape repairShape(const Shape& shape, bool hullOnly);

/// What draw adds to the outlines.
struct DrawOptions {
  bool hull = false;
  bool ellipse = false;
  bool circle = false;
  bool indices = false;
  bool regularized = false;
};

/// An SVG picture of the shapes, drawn through the shapes' own draw calls.
std::string drawSvg(const std::vector<Shape>& shapes, const DrawOptions& options,
                    const std::string& title);

/// Writes text to path through a temporary file in the same folder, renamed into place, so a
/// failure leaves no partial file. Throws InputError when it cannot.
void writeFileAtomically(const std::string& path, const std::string& text);

}  // namespace gkgeom_tool
