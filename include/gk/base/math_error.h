#pragma once

#include <string>

#include <gk/base/exception.h>
#include <gk/gk_export.h>

/// Numerical failures of the base kit.
namespace gkMathError {

/// Base of the numerical errors.
class GK_EXPORT Errors : public gkExceptionWithString {
 public:
  ~Errors() override;

 protected:
  Errors() = default;
  explicit Errors(const std::wstring& message) : gkExceptionWithString(message) {}
};

/// A matrix that must be inverted (or a moment matrix that must be non-degenerate) is singular.
class GK_EXPORT Singular : public Errors {
 public:
  Singular() = default;
  explicit Singular(const std::wstring& message) : Errors(message) {}
  ~Singular() override;
};

}  // namespace gkMathError
