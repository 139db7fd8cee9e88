#include <gk/base/persistent.h>

gkPersistent::~gkPersistent() = default;

void gkPersistent::dispatchSerialize(gkArchive& /*ar*/) {}
