#include <gk/base/archive.h>

#include <string>

namespace {

std::wstring unknownVersionMessage(const char* source, long line) {
  const std::string s = source != nullptr ? source : "";
  // The source is a path or a class name: ASCII, so a byte-wise widening is exact.
  return L"unknown version in " + std::wstring(s.begin(), s.end()) + L" at line " +
         std::to_wstring(line);
}

}  // namespace

gkArchive::Errors::~Errors() = default;

gkArchive::UnknownVersion::UnknownVersion(const char* source, long line)
    : Errors(unknownVersionMessage(source, line)),
      source_(source != nullptr ? source : ""),
      line_(line) {}

gkArchive::UnknownVersion::~UnknownVersion() = default;
