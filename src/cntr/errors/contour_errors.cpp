#include <gk/cntr/errors/contour_errors.h>

// Out-of-line destructors anchor each class's vtable and type information in the library, so
// that a caller's catch clause matches what the library throws.
gkContourDefs::Errors::~Errors() = default;
gkContourDefs::EmptyContour::~EmptyContour() = default;
gkContourDefs::EmptyRegionSet::~EmptyRegionSet() = default;
gkContourDefs::BadParams::~BadParams() = default;
gkContourDefs::RegionCannotBeSetOpen::~RegionCannotBeSetOpen() = default;
