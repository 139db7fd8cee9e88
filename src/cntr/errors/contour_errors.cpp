#include <gk/cntr/errors/contour_errors.h>

// Out-of-line destructors anchor each class's vtable and type information in the library, so
// that a caller's catch clause matches what the library throws.
gkContourDefs::Errors::~Errors() = default;
gkContourDefs::EmptyContour::~EmptyContour() = default;
gkContourDefs::EmptyRegionSet::~EmptyRegionSet() = default;
gkContourDefs::BadParams::~BadParams() = default;
gkContourDefs::RegionCannotBeSetOpen::~RegionCannotBeSetOpen() = default;

void gkContourDefs::Errors::dispatchSerialize(gkArchive& ar) {
  if (haveVisited(static_cast<const Errors*>(this), sizeof(Errors))) {
    return;
  }
  unsigned char version = 0;
  ar || version;
  Errors::serialize_(ar, version);
  setVisited(static_cast<const Errors*>(this), sizeof(Errors));
}

void gkContourDefs::Errors::serialize_(gkArchive& ar, unsigned char version) {
  if (version != 0) {
    throw gkArchive::UnknownVersion("gkContourDefs::Errors", 0);
  }
  gkException::dispatchSerialize(ar);
}

gkPersistent* gkContourDefs::EmptyContour::make() {
  return new EmptyContour();
}
gkPersistent* gkContourDefs::EmptyRegionSet::make() {
  return new EmptyRegionSet();
}
gkPersistent* gkContourDefs::BadParams::make() {
  return new BadParams();
}
gkPersistent* gkContourDefs::RegionCannotBeSetOpen::make() {
  return new RegionCannotBeSetOpen();
}

const gk_Instantiator gkContourDefs::EmptyContour::sExemplar(typeid(EmptyContour), &make,
                                                             kClassName);
const gk_Instantiator gkContourDefs::EmptyRegionSet::sExemplar(typeid(EmptyRegionSet), &make,
                                                               kClassName);
const gk_Instantiator gkContourDefs::BadParams::sExemplar(typeid(BadParams), &make, kClassName);
const gk_Instantiator gkContourDefs::RegionCannotBeSetOpen::sExemplar(typeid(RegionCannotBeSetOpen),
                                                                      &make, kClassName);
