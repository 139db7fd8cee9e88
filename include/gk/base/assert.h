#pragma once

#include <string>

#include <gk/base/exception.h>
#include <gk/gk_export.h>

/// Receives a failed internal condition: the source path, the line and the condition's text.
using gkAssertHandler = void (*)(const char* file, int line, const char* condition);

/// Installs handler and returns the one it replaces; nullptr reinstalls the default handler.
/// The handler is process-wide; install it once at start-up, not while other threads may assert.
GK_EXPORT gkAssertHandler gwSetAssertHandler(gkAssertHandler handler);

/// Reports a failed internal condition to the installed handler, then throws
/// gkAssertionFailure. A library never aborts its host, and never goes on past a condition it
/// relies on: a handler may log, and may throw an exception of its own, but if it returns the
/// failure is still thrown.
[[noreturn]] GK_EXPORT void gwAssertFailed(const char* file, int line, const char* condition);

/// Thrown for a failed internal condition; carries where it failed.
class GK_EXPORT gkAssertionFailure : public gkExceptionWithString {
 public:
  gkAssertionFailure(const char* file, int line, const char* condition);
  ~gkAssertionFailure() override;

  const std::string& file() const noexcept { return file_; }
  int line() const noexcept { return line_; }

 private:
  std::string file_;
  int line_ = 0;
};

/// Checks an internal condition; on failure reports it through the assertion hook.
#define GK_ASSERT(condition)                            \
  do {                                                  \
    if (!(condition)) {                                 \
      ::gwAssertFailed(__FILE__, __LINE__, #condition); \
    }                                                   \
  } while (0)
