#pragma once

#include <gk/base/pel_errors.h>

namespace gk::detail {

/// The one body behind every operation the datum shapes deliberately do not implement.
[[noreturn]] inline void notImplementedForDatumShapes() {
  throw gkPel::BadWindow();
}

}  // namespace gk::detail
