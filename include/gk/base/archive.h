#pragma once

#include <string>

#include <gk/base/exception.h>
#include <gk/gk_export.h>

/// The two-way stream that persistent objects are stored to and loaded from.
class GK_EXPORT gkArchive {
 public:
  /// Base of the archive's own errors.
  class GK_EXPORT Errors : public gkExceptionWithString {
   public:
    ~Errors() override;

   protected:
    Errors() = default;
    explicit Errors(const std::wstring& message) : gkExceptionWithString(message) {}
  };

  /// A stored layer has a version byte that the reading class does not accept. Names the
  /// source unit (or class) that refused it and a line number.
  class GK_EXPORT UnknownVersion : public Errors {
   public:
    UnknownVersion(const char* source, long line);
    ~UnknownVersion() override;

    const std::string& source() const noexcept { return source_; }
    long line() const noexcept { return line_; }

   private:
    std::string source_;
    long line_ = 0;
  };
};
