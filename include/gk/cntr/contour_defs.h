#pragma once

/// Enumerations shared by contours, regions and region sets. The errors of the same scope are
/// in <gk/cntr/errors/contour_errors.h>.
namespace gkContourDefs {

/// What a region or region set does with a self-intersecting boundary once it is stored.
/// Any other value acts as eIgnore.
enum IntersectionMode {
  eIgnore = 0,     ///< keep the shape as built
  eOuterHull = 1,  ///< replace it by its outer hull
  eRegularize = 2  ///< replace it by its regularization
};

/// How encloseCircle() and diameter() measure a contour.
enum DiameterMode {
  eFarthestPair = 0,        ///< circle on the farthest-apart pair of vertices
  eFirstVertexCentered = 1  ///< circle centred on vertex 0 through the farthest vertex from it
};

/// Accepted by contour drawing for the caller's bookkeeping; the contour does not consult it.
enum DrawMode { eDrawOutline = 0, eDrawVertices = 1 };

}  // namespace gkContourDefs
