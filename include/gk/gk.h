#pragma once

/// Everything gkgeom offers: include this and link gkgeom::gkgeom.

// Base geometry and persistence kit.
#include <gk/base/angle.h>
#include <gk/base/archive.h>
#include <gk/base/assert.h>
#include <gk/base/bounded_cache.h>
#include <gk/base/circle.h>
#include <gk/base/circle_fit.h>
#include <gk/base/color.h>
#include <gk/base/convex_hull.h>
#include <gk/base/edgelet.h>
#include <gk/base/ellipse.h>
#include <gk/base/ellipse_fit.h>
#include <gk/base/exception.h>
#include <gk/base/line.h>
#include <gk/base/line_seg.h>
#include <gk/base/math_error.h>
#include <gk/base/matrix.h>
#include <gk/base/numeric.h>
#include <gk/base/pair.h>
#include <gk/base/pel_errors.h>
#include <gk/base/persistent.h>
#include <gk/base/point.h>
#include <gk/base/polygon.h>
#include <gk/base/ptr_handle.h>
#include <gk/base/random_uniform.h>
#include <gk/base/rect.h>
#include <gk/base/rep_base.h>
#include <gk/base/svg_tablet.h>
#include <gk/base/thread_local.h>
#include <gk/base/tolerances.h>
#include <gk/base/ui_tablet.h>
#include <gk/base/vector.h>
#include <gk/base/xform.h>
#include <gk/base/xform_base.h>

// Errors.
#include <gk/cntr/errors/contour_errors.h>

// Moments and ellipses.
#include <gk/cntr/moments/ellipse_from_moments.h>
#include <gk/cntr/moments/inertia_data.h>
#include <gk/cntr/moments/moment_cache.h>
#include <gk/cntr/moments/polygon_moments.h>

// Contours, regions and region sets.
#include <gk/cntr/contour.h>
#include <gk/cntr/contour_defs.h>
#include <gk/cntr/region.h>
#include <gk/cntr/region_set.h>

// Shapes whose vertices carry edgelets.
#include <gk/ch_core/contour_t.h>
#include <gk/ch_core/datum_traits.h>
#include <gk/ch_core/region_set_t.h>
#include <gk/ch_core/region_t.h>
