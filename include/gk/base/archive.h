#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include <gk/base/exception.h>
#include <gk/base/ptr_handle.h>
#include <gk/base/rep_base.h>
#include <gk/base/vector.h>
#include <gk/gk_export.h>

class gkEdgelet;
class gkPersistent;

/// The two-way stream that persistent objects are stored to and loaded from. One piece of code
/// serves both directions: `ar || x` writes x when storing and reads into x when loading.
///
/// The byte format is documented in docs/archive-format.md: a header, then fixed-width
/// little-endian values, doubles bit for bit. Objects reached through counted handles are
/// written once per archive and loaded as one object (sharing and cycles survive a round trip).
///
/// Loading is safe on any bytes: the input is read whole, every count is checked against the
/// bytes that remain before anything is allocated, nesting and the number of objects are
/// bounded, and every problem is a typed gkArchive error naming the byte offset.
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

  /// Base of the errors found in the bytes of an archive being loaded; offset() is where.
  class GK_EXPORT InputError : public Errors {
   public:
    ~InputError() override;
    /// The byte offset, from the start of the archive, at which the problem was found.
    std::uint64_t offset() const noexcept { return offset_; }

   protected:
    InputError(const std::string& what, std::uint64_t offset);

   private:
    std::uint64_t offset_;
  };

  /// The input ends before the value being read.
  class GK_EXPORT Truncated : public InputError {
   public:
    Truncated(const std::string& what, std::uint64_t offset) : InputError(what, offset) {}
    ~Truncated() override;
  };
  /// A value that no archive writes: a wrong header, a bool byte other than 0 or 1, an unknown
  /// handle tag, a value out of range for its field, data that do not fit together.
  class GK_EXPORT BadFormat : public InputError {
   public:
    BadFormat(const std::string& what, std::uint64_t offset) : InputError(what, offset) {}
    ~BadFormat() override;
  };
  /// A type name that no class registered.
  class GK_EXPORT UnknownType : public InputError {
   public:
    UnknownType(const std::string& what, std::uint64_t offset) : InputError(what, offset) {}
    ~UnknownType() override;
  };
  /// An object of a registered type that is not the type the handle being loaded holds.
  class GK_EXPORT WrongType : public InputError {
   public:
    WrongType(const std::string& what, std::uint64_t offset) : InputError(what, offset) {}
    ~WrongType() override;
  };
  /// A back-reference to an object that has not been read.
  class GK_EXPORT BadReference : public InputError {
   public:
    BadReference(const std::string& what, std::uint64_t offset) : InputError(what, offset) {}
    ~BadReference() override;
  };
  /// A count larger than the remaining bytes can hold, nesting deeper than kMaxDepth, or more
  /// objects than kMaxObjects.
  class GK_EXPORT LimitExceeded : public InputError {
   public:
    LimitExceeded(const std::string& what, std::uint64_t offset) : InputError(what, offset) {}
    ~LimitExceeded() override;
  };

  /// Objects may nest through handles at most this deep.
  static constexpr int kMaxDepth = 64;
  /// One archive creates at most this many objects while loading.
  static constexpr std::uint64_t kMaxObjects = 1u << 20;

  /// A storing archive: writes the header to out at once and every value as it is given.
  explicit gkArchive(std::ostream& out);
  /// A loading archive: reads all of in and checks the header (throws BadFormat or Truncated).
  explicit gkArchive(std::istream& in);
  gkArchive(const gkArchive&) = delete;
  gkArchive& operator=(const gkArchive&) = delete;
  ~gkArchive();

  bool isLoading() const noexcept { return in_ != nullptr; }
  /// Bytes written or read so far, header included.
  std::uint64_t offset() const noexcept { return position_; }

  gkArchive& operator||(bool& v);
  gkArchive& operator||(long& v);
  gkArchive& operator||(unsigned long& v);
  gkArchive& operator||(unsigned char& v);
  gkArchive& operator||(double& v);
  gkArchive& operator||(gkVector<2>& v);
  gkArchive& operator||(gkEdgelet& v);

  /// A vector in container form: version byte 0, the element count, the elements. A loaded
  /// count is checked against the bytes left (minBytes per element) before anything is
  /// allocated. A container version other than 0 throws UnknownVersion with no source, line 0.
  template <typename T>
  void container(std::vector<T>& v, std::size_t minBytes);

  /// A counted handle of any persistent class: null, a new object (its stored type name and its
  /// layers) or a back-reference to one written before. Loading checks that the object has the
  /// handle's type; on any failure the handle is left as it was.
  template <typename T>
  gkArchive& operator||(gkPtrHandle<T>& h);
  template <typename T>
  gkArchive& operator||(gkPtrHandle_const<T>& h);

  /// Stores an object by value: its registered type name, then its layers.
  void storeObject(const gkPersistent& object);
  /// Loads an object stored by storeObject, of whatever registered type it was; the caller owns
  /// it. Throws when the type is unknown or the layers are bad; nothing is handed over then.
  std::unique_ptr<gkPersistent> loadObject();
  /// The layers of an object whose type is known (no type name): object.dispatchSerialize.
  void serialize(gkPersistent& object);

  /// The archive of the current pass on this thread (the innermost live archive), or null.
  static gkArchive* current() noexcept;

 private:
  friend class gkPersistent;

  void write(const void* bytes, std::size_t n);
  const unsigned char* read(std::size_t n, const char* what);
  void checkCount(std::uint64_t count, std::size_t minBytes, const char* what);
  std::uint64_t remaining() const noexcept;
  /// Reads a type name and makes a default object of it (within the depth and object limits).
  std::unique_ptr<gkPersistent> makeNamed();
  /// object.dispatchSerialize, one nesting level down.
  void layersOf(gkPersistent& object);

  /// Stores a polymorphic pointer (tag, then name and layers, or a back-reference).
  void storePointer(const gkPersistent* object);
  /// Loads a polymorphic pointer; the archive keeps a share of every object it creates.
  gkPersistent* loadPointer();
  /// Holds a share of an object written or read, so that an address can never be reused for
  /// another object within the pass.
  void keepShare(const gkPersistent* object);

  std::ostream* out_ = nullptr;
  const std::istream* in_ = nullptr;
  std::string input_;
  std::uint64_t position_ = 0;
  int depth_ = 0;
  std::uint64_t created_ = 0;
  // Storing: object -> id. Loading: id - 1 -> object.
  std::map<const gkPersistent*, std::uint64_t> written_;
  std::vector<gkPersistent*> read_;
  std::vector<gkPtrHandle_const<gkRepBase>> shares_;
  std::vector<std::unique_ptr<gkPersistent>> owned_;
  std::set<std::pair<const void*, std::size_t>> visited_;
  gkArchive* previous_ = nullptr;
};

template <typename T>
void gkArchive::container(std::vector<T>& v, std::size_t minBytes) {
  unsigned char version = 0;
  *this || version;
  if (version != 0) {
    throw UnknownVersion("", 0);
  }
  unsigned long count = static_cast<unsigned long>(v.size());
  *this || count;
  if (isLoading()) {
    checkCount(count, minBytes, "container element count");
    std::vector<T> loaded(static_cast<std::size_t>(count));
    for (T& element : loaded) {
      *this || element;
    }
    v.swap(loaded);
  } else {
    for (T& element : v) {
      *this || element;
    }
  }
}

template <typename T>
gkArchive& gkArchive::operator||(gkPtrHandle<T>& h) {
  if (!isLoading()) {
    storePointer(h.get());
    return *this;
  }
  const std::uint64_t at = position_;
  gkPersistent* loaded = loadPointer();
  if (loaded == nullptr) {
    h.reset();
    return *this;
  }
  T* typed = dynamic_cast<T*>(loaded);
  if (typed == nullptr) {
    throw WrongType("object of another type where a handle expects its own", at);
  }
  h = gkPtrHandle<T>(typed);
  return *this;
}

template <typename T>
gkArchive& gkArchive::operator||(gkPtrHandle_const<T>& h) {
  if (!isLoading()) {
    storePointer(h.get());
    return *this;
  }
  gkPtrHandle<T> loaded;
  *this || loaded;
  h = loaded;
  return *this;
}

/// Registers a persistent class with the archive's type registry under a stable name (not
/// type_info::name(), which differs between compilers), with the factory that makes a default
/// object of it. One static instance per class, built when the library is loaded.
class GK_EXPORT gk_Instantiator {
 public:
  using Make = gkPersistent* (*)();

  gk_Instantiator(const std::type_info& type, Make make, const char* stableName);
  gk_Instantiator(const gk_Instantiator&) = delete;
  gk_Instantiator& operator=(const gk_Instantiator&) = delete;

  /// The factory registered under name, or null.
  static Make find(const std::string& name);
  /// The stable name registered for the dynamic type, or null.
  static const std::string* nameOf(const std::type_info& type);
};
