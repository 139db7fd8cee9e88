#pragma once

#include <vector>

#include <gk/base/edgelet.h>
#include <gk/base/ellipse.h>
#include <gk/base/vector.h>
#include <gk/cntr/moments/inertia_data.h>
#include <gk/gk_export.h>

/// The ellipse with the same central second moments as the record: rotation
/// atan2(2 M01, M00 - M11) / 2, semi-axes inverting pi a^3 b / 4 and pi a b^3 / 4 (the record's
/// area is deliberately not used), radius a along the rotation. Throws gkMathError::Singular
/// (empty message) when a principal moment is within 1e-12 of 0 (a line or a point).
GK_EXPORT gkEllipse gw_EllipseFromInertiaData(const gk_InertiaData& data);

/// The least-squares ellipse of the points and its error (gwEllipseFit); when that fit fails,
/// the least-squares circle (gwCircleFit) as an ellipse; when that fails too, the default
/// ellipse and error -1.0. Never reports a fitting failure by exception: only exceptions that
/// are not gkException pass through.
GK_EXPORT void gw_FitEllipse(const std::vector<gkVector<2>>& points, gkEllipse& ellipse,
                             double& error);
/// gw_FitEllipse of the edgelets' positions, in order.
GK_EXPORT void gw_FitEllipse(const std::vector<gkEdgelet>& edgelets, gkEllipse& ellipse,
                             double& error);
