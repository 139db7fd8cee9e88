#pragma once

#include <string>

#include <gk/base/archive.h>
#include <gk/base/exception.h>
#include <gk/gk_export.h>

namespace gkContourDefs {

/// Base of every error the contour library reports. Catch it to catch them all; errorNumber()
/// tells them apart.
class GK_EXPORT Errors : public gkExceptionWithString {
 public:
  ~Errors() override;

  /// The fixed code of the concrete error class.
  virtual int errorNumber() const = 0;

  /// For an error allocated on the heap (as the archive's factory does): copies it, frees this
  /// object, and throws the copy by value. Never returns; calling it on an object that is not
  /// heap-allocated is undefined, exactly as `delete` of such an object is.
  [[noreturn]] virtual void suicideAndRethrow() = 0;

 protected:
  explicit Errors(const std::wstring& message) : gkExceptionWithString(message) {}
  Errors(const Errors&) = default;
  Errors& operator=(const Errors&) = default;

  /// Version byte 0, then the exception layer (which carries the message).
  void dispatchSerialize(gkArchive& ar) override;
  virtual void serialize_(gkArchive& ar, unsigned char version);
};

}  // namespace gkContourDefs

namespace gk::detail {

/// What the four concrete errors share: a fixed code and the copy-free-rethrow of a heap
/// object. Derived is the concrete class, so the thrown copy has the concrete type.
template <typename Derived, int Code>
class ContourError : public gkContourDefs::Errors {
 public:
  static constexpr int kErrorNumber = Code;

  int errorNumber() const override { return Code; }

  [[noreturn]] void suicideAndRethrow() override {
    Derived copy(static_cast<const Derived&>(*this));
    delete this;
    throw copy;
  }

 protected:
  explicit ContourError(const std::wstring& message) : gkContourDefs::Errors(message) {}

  /// Version byte 0, then the Errors layer; another version names the concrete class.
  void dispatchSerialize(gkArchive& ar) override {
    if (haveVisited(static_cast<const Derived*>(this), sizeof(Derived))) {
      return;
    }
    unsigned char version = 0;
    ar || version;
    serialize_(ar, version);
    setVisited(static_cast<const Derived*>(this), sizeof(Derived));
  }
  void serialize_(gkArchive& ar, unsigned char version) override {
    if (version != 0) {
      throw gkArchive::UnknownVersion(Derived::kClassName, 0);
    }
    gkContourDefs::Errors::dispatchSerialize(ar);
  }
};

}  // namespace gk::detail

namespace gkContourDefs {

/// A contour with fewer than 2 vertices, or a region with fewer than 3, was asked for something
/// that needs extent. Code 0x10004680.
class GK_EXPORT EmptyContour : public gk::detail::ContourError<EmptyContour, 0x10004680> {
 public:
  explicit EmptyContour(const std::wstring& message = std::wstring()) : ContourError(message) {}
  ~EmptyContour() override;

  static constexpr const char* kClassName = "gkContourDefs::EmptyContour";
  /// Registers the class with the archive's type registry.
  static const gk_Instantiator sExemplar;

 private:
  /// A new error with an empty message, owned by the caller (the archive's factory).
  static gkPersistent* make();
};

/// A region set with no member was asked for something that needs one. Code 0x10004682.
class GK_EXPORT EmptyRegionSet : public gk::detail::ContourError<EmptyRegionSet, 0x10004682> {
 public:
  explicit EmptyRegionSet(const std::wstring& message = std::wstring()) : ContourError(message) {}
  ~EmptyRegionSet() override;

  static constexpr const char* kClassName = "gkContourDefs::EmptyRegionSet";
  /// Registers the class with the archive's type registry.
  static const gk_Instantiator sExemplar;

 private:
  /// A new error with an empty message, owned by the caller (the archive's factory).
  static gkPersistent* make();
};

/// An argument is out of its valid range. Code 0x10004683.
class GK_EXPORT BadParams : public gk::detail::ContourError<BadParams, 0x10004683> {
 public:
  explicit BadParams(const std::wstring& message = std::wstring()) : ContourError(message) {}
  ~BadParams() override;

  static constexpr const char* kClassName = "gkContourDefs::BadParams";
  /// Registers the class with the archive's type registry.
  static const gk_Instantiator sExemplar;

 private:
  /// A new error with an empty message, owned by the caller (the archive's factory).
  static gkPersistent* make();
};

/// A region was asked to become an open contour; regions are always closed. Code 0x10004684.
/// (0x10004681 belongs to no class: the gap in the numbering is kept.)
class GK_EXPORT RegionCannotBeSetOpen
    : public gk::detail::ContourError<RegionCannotBeSetOpen, 0x10004684> {
 public:
  explicit RegionCannotBeSetOpen(const std::wstring& message = std::wstring())
      : ContourError(message) {}
  ~RegionCannotBeSetOpen() override;

  static constexpr const char* kClassName = "gkContourDefs::RegionCannotBeSetOpen";
  /// Registers the class with the archive's type registry.
  static const gk_Instantiator sExemplar;

 private:
  /// A new error with an empty message, owned by the caller (the archive's factory).
  static gkPersistent* make();
};

}  // namespace gkContourDefs
