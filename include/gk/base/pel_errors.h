#pragma once

#include <gk/base/exception.h>
#include <gk/gk_export.h>

/// Errors of the image-processing layer (edgelets and pixel windows).
namespace gkPel {

/// An operation asked for something outside the valid window of the data. The edgelet shapes
/// also throw it, default-constructed, from the operations they do not implement.
class GK_EXPORT BadWindow : public gkExceptionWithString {
 public:
  BadWindow() = default;
  explicit BadWindow(const std::wstring& message) : gkExceptionWithString(message) {}
  ~BadWindow() override;
};

}  // namespace gkPel
