#include <gk/base/persistent.h>

#include <gk/base/archive.h>

gkPersistent::~gkPersistent() = default;

void gkPersistent::dispatchSerialize(gkArchive& ar) {
  unsigned char version = 0;
  ar || version;
  if (version != 0) {
    throw gkArchive::UnknownVersion("gkPersistent", 0);
  }
}
