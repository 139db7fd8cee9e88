#pragma once

#include <string>

namespace gk::detail {

/// The stored type name of a datum shape: "gkContourT<gkEdgelet>" and the like.
inline std::string datumTypeName(const char* shape, const char* datum) {
  return std::string(shape) + "<" + datum + ">";
}

}  // namespace gk::detail
