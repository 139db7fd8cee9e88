#include <gk/base/archive.h>

#include <cstring>
#include <istream>
#include <iterator>
#include <limits>
#include <ostream>
#include <unordered_map>

#include <gk/base/edgelet.h>
#include <gk/base/persistent.h>

namespace {

/// The first bytes of every archive: "GKAR", then the format version.
constexpr unsigned char kMagic[4] = {'G', 'K', 'A', 'R'};
constexpr unsigned char kFormatVersion = 1;

/// Handle tags.
constexpr unsigned char kNullTag = 0;
constexpr unsigned char kNewTag = 1;
constexpr unsigned char kReferenceTag = 2;

/// Registered names are short; a longer one in the input is not a name.
constexpr std::uint64_t kMaxNameLength = 256;

/// The innermost live archive of this thread: the current pass for the visited marks.
thread_local gkArchive* tCurrent = nullptr;

std::wstring widen(const std::string& s) {
  return std::wstring(s.begin(), s.end());
}

struct Registry {
  std::unordered_map<std::string, gk_Instantiator::Make> byName;
  std::map<std::string, std::string> nameByType;  // type_info::name() -> stable name
};

Registry& registry() {
  static Registry r;
  return r;
}

void putLittleEndian(unsigned char* out, std::uint64_t v, int bytes) {
  for (int i = 0; i < bytes; ++i) {
    out[i] = static_cast<unsigned char>(v >> (8 * i));
  }
}

std::uint64_t getLittleEndian(const unsigned char* in, int bytes) {
  std::uint64_t v = 0;
  for (int i = 0; i < bytes; ++i) {
    v |= static_cast<std::uint64_t>(in[i]) << (8 * i);
  }
  return v;
}

}  // namespace

// --- errors -----------------------------------------------------------------------------------

gkArchive::Errors::~Errors() = default;

gkArchive::UnknownVersion::UnknownVersion(const char* source, long line)
    : Errors(L"unknown version in " + widen(source != nullptr ? source : "") + L" at line " +
             std::to_wstring(line)),
      source_(source != nullptr ? source : ""),
      line_(line) {}

gkArchive::UnknownVersion::~UnknownVersion() = default;

gkArchive::InputError::InputError(const std::string& what, std::uint64_t offset)
    : Errors(widen(what + " (byte offset " + std::to_string(offset) + ")")), offset_(offset) {}

gkArchive::InputError::~InputError() = default;
gkArchive::Truncated::~Truncated() = default;
gkArchive::BadFormat::~BadFormat() = default;
gkArchive::UnknownType::~UnknownType() = default;
gkArchive::WrongType::~WrongType() = default;
gkArchive::BadReference::~BadReference() = default;
gkArchive::LimitExceeded::~LimitExceeded() = default;

// --- construction -----------------------------------------------------------------------------

gkArchive::gkArchive(std::ostream& out) : out_(&out), previous_(tCurrent) {
  tCurrent = this;
  write(kMagic, sizeof kMagic);
  write(&kFormatVersion, 1);
}

gkArchive::gkArchive(std::istream& in) : in_(&in), previous_(tCurrent) {
  input_.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  tCurrent = this;
  try {
    const unsigned char* magic = read(sizeof kMagic, "archive header");
    if (std::memcmp(magic, kMagic, sizeof kMagic) != 0) {
      position_ = 0;
      throw BadFormat("not a gkgeom archive (wrong header)", position_);
    }
    const unsigned char* version = read(1, "archive format version");
    if (*version != kFormatVersion) {
      position_ -= 1;
      throw BadFormat("unknown archive format version " + std::to_string(*version), position_);
    }
  } catch (...) {
    tCurrent = previous_;
    throw;
  }
}

gkArchive::~gkArchive() {
  if (tCurrent == this) {
    tCurrent = previous_;
  }
}

gkArchive* gkArchive::current() noexcept {
  return tCurrent;
}

// --- raw bytes --------------------------------------------------------------------------------

void gkArchive::write(const void* bytes, std::size_t n) {
  out_->write(static_cast<const char*>(bytes), static_cast<std::streamsize>(n));
  position_ += n;
}

std::uint64_t gkArchive::remaining() const noexcept {
  return input_.size() - position_;
}

const unsigned char* gkArchive::read(std::size_t n, const char* what) {
  if (n > remaining()) {
    throw Truncated(std::string("input ends inside ") + what, position_);
  }
  const auto* p = reinterpret_cast<const unsigned char*>(input_.data()) + position_;
  position_ += n;
  return p;
}

void gkArchive::checkCount(std::uint64_t count, std::size_t minBytes, const char* what) {
  const std::uint64_t perElement = minBytes == 0 ? 1 : minBytes;
  if (count > remaining() / perElement) {
    throw LimitExceeded(std::string(what) + " " + std::to_string(count) +
                            " is more than the remaining bytes can hold",
                        position_);
  }
}

// --- values -----------------------------------------------------------------------------------

gkArchive& gkArchive::operator||(unsigned char& v) {
  if (isLoading()) {
    v = *read(1, "a byte");
  } else {
    write(&v, 1);
  }
  return *this;
}

gkArchive& gkArchive::operator||(bool& v) {
  if (isLoading()) {
    const unsigned char b = *read(1, "a bool");
    if (b > 1) {
      position_ -= 1;
      throw BadFormat("bool byte " + std::to_string(b) + " is neither 0 nor 1", position_);
    }
    v = b == 1;
  } else {
    const unsigned char b = v ? 1 : 0;
    write(&b, 1);
  }
  return *this;
}

gkArchive& gkArchive::operator||(long& v) {
  // Always 8 bytes, two's complement, whatever the width of long here.
  if (isLoading()) {
    const std::uint64_t u = getLittleEndian(read(8, "a long"), 8);
    const auto s = static_cast<std::int64_t>(u);
    if (s < static_cast<std::int64_t>(std::numeric_limits<long>::min()) ||
        s > static_cast<std::int64_t>(std::numeric_limits<long>::max())) {
      position_ -= 8;
      throw BadFormat("long value out of range here", position_);
    }
    v = static_cast<long>(s);
  } else {
    unsigned char b[8];
    putLittleEndian(b, static_cast<std::uint64_t>(static_cast<std::int64_t>(v)), 8);
    write(b, 8);
  }
  return *this;
}

gkArchive& gkArchive::operator||(unsigned long& v) {
  if (isLoading()) {
    const std::uint64_t u = getLittleEndian(read(8, "an unsigned long"), 8);
    if (u > std::numeric_limits<unsigned long>::max()) {
      position_ -= 8;
      throw BadFormat("unsigned long value out of range here", position_);
    }
    v = static_cast<unsigned long>(u);
  } else {
    unsigned char b[8];
    putLittleEndian(b, static_cast<std::uint64_t>(v), 8);
    write(b, 8);
  }
  return *this;
}

gkArchive& gkArchive::operator||(double& v) {
  // The IEEE-754 bits, so every double (NaN payloads and signed zeros included) round-trips.
  static_assert(sizeof(double) == 8, "doubles are 64-bit IEEE-754");
  if (isLoading()) {
    const std::uint64_t u = getLittleEndian(read(8, "a double"), 8);
    std::memcpy(&v, &u, 8);
  } else {
    std::uint64_t u = 0;
    std::memcpy(&u, &v, 8);
    unsigned char b[8];
    putLittleEndian(b, u, 8);
    write(b, 8);
  }
  return *this;
}

gkArchive& gkArchive::operator||(gkVector<2>& v) {
  double x = v.x();
  double y = v.y();
  *this || x || y;
  if (isLoading()) {
    v = gkVector<2>(x, y);
  }
  return *this;
}

gkArchive& gkArchive::operator||(gkEdgelet& v) {
  gkVector<2> position = v.position();
  unsigned char magnitude[2];
  putLittleEndian(magnitude, v.magnitude(), 2);
  unsigned char angle = v.angle().value();
  *this || position;
  if (isLoading()) {
    std::memcpy(magnitude, read(2, "an edgelet magnitude"), 2);
  } else {
    write(magnitude, 2);
  }
  *this || angle;
  if (isLoading()) {
    v = gkEdgelet(position, static_cast<unsigned short>(getLittleEndian(magnitude, 2)),
                  gkAngle8(angle));
  }
  return *this;
}

// --- objects ----------------------------------------------------------------------------------

void gkArchive::serialize(gkPersistent& object) {
  object.dispatchSerialize(*this);
}

void gkArchive::keepShare(const gkPersistent* object) {
  if (const auto* counted = dynamic_cast<const gkRepBase*>(object)) {
    shares_.emplace_back(counted);
  }
}

void gkArchive::storeObject(const gkPersistent& object) {
  const std::string* name = gk_Instantiator::nameOf(typeid(object));
  if (name == nullptr) {
    throw UnknownType(
        std::string("storing an object of an unregistered type ") + typeid(object).name(),
        position_);
  }
  unsigned long length = static_cast<unsigned long>(name->size());
  *this || length;
  write(name->data(), name->size());
  layersOf(const_cast<gkPersistent&>(object));
}

std::unique_ptr<gkPersistent> gkArchive::makeNamed() {
  if (depth_ >= kMaxDepth) {
    throw LimitExceeded("objects nest deeper than " + std::to_string(kMaxDepth), position_);
  }
  if (created_ >= kMaxObjects) {
    throw LimitExceeded("more than " + std::to_string(kMaxObjects) + " objects", position_);
  }
  const std::uint64_t at = position_;
  unsigned long length = 0;
  *this || length;
  if (length == 0 || length > kMaxNameLength) {
    throw BadFormat("type name length " + std::to_string(length), at);
  }
  const auto* bytes = reinterpret_cast<const char*>(read(length, "a type name"));
  const std::string name(bytes, length);
  const gk_Instantiator::Make make = gk_Instantiator::find(name);
  if (make == nullptr) {
    throw UnknownType("unknown type name '" + name + "'", at);
  }
  ++created_;
  return std::unique_ptr<gkPersistent>(make());
}

void gkArchive::layersOf(gkPersistent& object) {
  ++depth_;
  try {
    object.dispatchSerialize(*this);
  } catch (...) {
    --depth_;
    throw;
  }
  --depth_;
}

std::unique_ptr<gkPersistent> gkArchive::loadObject() {
  std::unique_ptr<gkPersistent> object = makeNamed();
  layersOf(*object);
  return object;
}

void gkArchive::storePointer(const gkPersistent* object) {
  if (object == nullptr) {
    unsigned char tag = kNullTag;
    *this || tag;
    return;
  }
  const auto found = written_.find(object);
  if (found != written_.end()) {
    unsigned char tag = kReferenceTag;
    unsigned long id = static_cast<unsigned long>(found->second);
    *this || tag || id;
    return;
  }
  unsigned char tag = kNewTag;
  *this || tag;
  // Numbered before its layers are written, so a cycle back to it becomes a reference; and
  // held, so its address cannot be reused by another object during this pass.
  written_.emplace(object, written_.size() + 1);
  keepShare(object);
  storeObject(*object);
}

gkPersistent* gkArchive::loadPointer() {
  const std::uint64_t at = position_;
  unsigned char tag = 0;
  *this || tag;
  if (tag == kNullTag) {
    return nullptr;
  }
  if (tag == kReferenceTag) {
    unsigned long id = 0;
    *this || id;
    if (id == 0 || id > read_.size()) {
      position_ = at;
      throw BadReference("reference to object " + std::to_string(id) + " of " +
                             std::to_string(read_.size()) + " read",
                         position_);
    }
    return read_[id - 1];
  }
  if (tag != kNewTag) {
    position_ = at;
    throw BadFormat("unknown handle tag " + std::to_string(tag), position_);
  }
  // The object is numbered and held before its layers are read, so a cycle back to it resolves
  // to this same object, and it is freed with the archive if the load fails part-way.
  std::unique_ptr<gkPersistent> made = makeNamed();
  gkPersistent* object = made.get();
  if (dynamic_cast<const gkRepBase*>(object) != nullptr) {
    keepShare(made.release());
  } else {
    owned_.push_back(std::move(made));
  }
  read_.push_back(object);
  layersOf(*object);
  return object;
}

// --- persistent base --------------------------------------------------------------------------

bool gkPersistent::haveVisited(const void* object, std::size_t extent) {
  const gkArchive* ar = gkArchive::current();
  return ar != nullptr && ar->visited_.count({object, extent}) != 0;
}

void gkPersistent::setVisited(const void* object, std::size_t extent) {
  if (gkArchive* ar = gkArchive::current()) {
    ar->visited_.insert({object, extent});
  }
}

void gkPersistent::serializePointer(gkArchive& ar, gkPersistent*& pointer) {
  if (ar.isLoading()) {
    pointer = ar.loadPointer();
  } else {
    ar.storePointer(pointer);
  }
}

// --- registry ---------------------------------------------------------------------------------

gk_Instantiator::gk_Instantiator(const std::type_info& type, Make make, const char* stableName) {
  Registry& r = registry();
  r.byName[stableName] = make;
  r.nameByType[type.name()] = stableName;
}

gk_Instantiator::Make gk_Instantiator::find(const std::string& name) {
  const Registry& r = registry();
  const auto it = r.byName.find(name);
  return it == r.byName.end() ? nullptr : it->second;
}

const std::string* gk_Instantiator::nameOf(const std::type_info& type) {
  const Registry& r = registry();
  const auto it = r.nameByType.find(type.name());
  return it == r.nameByType.end() ? nullptr : &it->second;
}
