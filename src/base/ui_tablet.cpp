#include <gk/base/ui_tablet.h>

gkUITablet::~gkUITablet() = default;
