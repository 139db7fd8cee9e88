#include <gk/base/assert.h>

#include <atomic>
#include <string>

namespace {

void defaultHandler(const char* /*file*/, int /*line*/, const char* /*condition*/) {
  // Nothing to add: gwAssertFailed throws the failure with everything the handler was given.
}

std::atomic<gkAssertHandler> gHandler{&defaultHandler};

std::wstring widen(const std::string& s) {
  return std::wstring(s.begin(), s.end());
}

}  // namespace

gkAssertHandler gwSetAssertHandler(gkAssertHandler handler) {
  return gHandler.exchange(handler != nullptr ? handler : &defaultHandler);
}

void gwAssertFailed(const char* file, int line, const char* condition) {
  gHandler.load()(file, line, condition);
  throw gkAssertionFailure(file, line, condition);
}

gkAssertionFailure::gkAssertionFailure(const char* file, int line, const char* condition)
    : gkExceptionWithString(widen(std::string("assertion failed: ") +
                                  (condition != nullptr ? condition : "") + " at " +
                                  (file != nullptr ? file : "") + ":" + std::to_string(line))),
      file_(file != nullptr ? file : ""),
      line_(line) {}

gkAssertionFailure::~gkAssertionFailure() = default;
