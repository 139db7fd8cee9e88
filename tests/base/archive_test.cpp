#include <gk/base/archive.h>
#include <gk/base/edgelet.h>
#include <gk/base/persistent.h>
#include <gk/base/xform_base.h>
#include <gk/cntr/contour.h>
#include <gk/cntr/region.h>
#include <gk/cntr/region_set.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "archive_bytes.h"

#include <cstdint>
#include <cstring>
#include <exception>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

using ::testing::HasSubstr;

static_assert(std::is_base_of_v<gkArchive::Errors, gkArchive::UnknownVersion>);
static_assert(std::is_base_of_v<gkExceptionWithString, gkArchive::Errors>);
static_assert(!std::is_default_constructible_v<gkArchive::UnknownVersion>,
              "an unknown version always names where it was refused");

TEST(ArchiveUnknownVersion, KeepsTheSourceAndTheLine) {
  const gkArchive::UnknownVersion e("src/cntr/contour.cpp", 412);
  EXPECT_EQ(e.source(), "src/cntr/contour.cpp");
  EXPECT_EQ(e.line(), 412);
}

TEST(ArchiveUnknownVersion, MessageMentionsTheSourceAndTheLine) {
  const gkArchive::UnknownVersion e("gkPolygon", 97);
  EXPECT_THAT(e.message(), HasSubstr(L"gkPolygon"));
  EXPECT_THAT(e.message(), HasSubstr(L"97"));
  EXPECT_THAT(std::string(e.what()), HasSubstr("gkPolygon"));
  EXPECT_THAT(std::string(e.what()), HasSubstr("97"));
}

TEST(ArchiveUnknownVersion, MessageNamesTheVersionProblem) {
  const gkArchive::UnknownVersion e("gkRect", 3);
  EXPECT_THAT(std::string(e.what()), HasSubstr("version"));
}

TEST(ArchiveUnknownVersion, LargeAndNegativeLinesAreKeptExactly) {
  const gkArchive::UnknownVersion large("a.cpp", 2147483647L);
  EXPECT_EQ(large.line(), 2147483647L);
  EXPECT_THAT(large.message(), HasSubstr(L"2147483647"));
  const gkArchive::UnknownVersion negative("a.cpp", -1);
  EXPECT_EQ(negative.line(), -1);
  EXPECT_THAT(negative.message(), HasSubstr(L"-1"));
}

TEST(ArchiveUnknownVersion, IsCaughtAsArchiveErrors) {
  try {
    throw gkArchive::UnknownVersion("src/base/rect.cpp", 55);
  } catch (const gkArchive::Errors& e) {
    const auto* concrete = dynamic_cast<const gkArchive::UnknownVersion*>(&e);
    ASSERT_NE(concrete, nullptr);
    EXPECT_EQ(concrete->source(), "src/base/rect.cpp");
    EXPECT_EQ(concrete->line(), 55);
    return;
  }
  FAIL() << "not caught as gkArchive::Errors";
}

TEST(ArchiveUnknownVersion, IsCaughtAsException) {
  try {
    throw gkArchive::UnknownVersion("src/base/line.cpp", 8);
  } catch (const gkException& e) {
    EXPECT_THAT(std::string(e.what()), HasSubstr("src/base/line.cpp"));
    EXPECT_THAT(std::string(e.what()), HasSubstr("8"));
    return;
  }
  FAIL() << "not caught as gkException";
}

TEST(ArchiveUnknownVersion, IsCaughtAsStdException) {
  try {
    throw gkArchive::UnknownVersion("gkEllipse", 21);
  } catch (const std::exception& e) {
    EXPECT_THAT(std::string(e.what()), HasSubstr("gkEllipse"));
    return;
  }
  FAIL() << "not caught as std::exception";
}

TEST(ArchiveUnknownVersion, CopyKeepsTheSourceTheLineAndTheMessage) {
  const gkArchive::UnknownVersion original("gkLine", 12);
  const gkArchive::UnknownVersion copy(original);
  EXPECT_EQ(copy.source(), "gkLine");
  EXPECT_EQ(copy.line(), 12);
  EXPECT_EQ(copy.message(), original.message());
}

// === the byte format ==========================================================================

namespace {

using ::testing::HasSubstr;

using Bytes = gk::test::ArchiveBytes;
using gk::test::hex;

std::uint64_t bitsOf(double d) {
  std::uint64_t u = 0;
  std::memcpy(&u, &d, 8);
  return u;
}

double fromBits(std::uint64_t u) {
  double d = 0;
  std::memcpy(&d, &u, 8);
  return d;
}

template <typename T>
std::string storeValue(T v) {
  std::ostringstream os;
  {
    gkArchive ar(os);
    ar || v;
  }
  return os.str();
}

template <typename T>
T loadValue(const std::string& bytes) {
  std::istringstream is(bytes);
  gkArchive ar(is);
  T v{};
  ar || v;
  EXPECT_EQ(ar.offset(), bytes.size());
  return v;
}

template <typename T>
std::string storeHandle(gkPtrHandle<T> h) {
  std::ostringstream os;
  {
    gkArchive ar(os);
    ar || h;
  }
  return os.str();
}

template <typename T>
gkPtrHandle<T> loadHandle(const std::string& bytes) {
  std::istringstream is(bytes);
  gkArchive ar(is);
  gkPtrHandle<T> h;
  ar || h;
  EXPECT_EQ(ar.offset(), bytes.size());
  return h;
}

/// Runs load and expects the error E at the given offset, named in the message.
template <typename E, typename F>
void expectInputError(F load, std::uint64_t offset) {
  try {
    load();
    ADD_FAILURE() << "no error";
  } catch (const E& e) {
    EXPECT_EQ(e.offset(), offset);
    EXPECT_THAT(std::string(e.what()), HasSubstr("byte offset " + std::to_string(offset)));
  }
}

/// A persistent class that no one registered.
class Unregistered : public gkPersistent {};

const gkXform<2> kXform(gkMatrix<2>(2, -0.5, 0.25, 3), gkVector<2>(-7, 11));

}  // namespace

TEST(ArchiveHeader, AStoringArchiveWritesTheMagicAndTheFormatVersionAtOnce) {
  std::ostringstream os;
  gkArchive ar(os);
  EXPECT_FALSE(ar.isLoading());
  EXPECT_EQ(ar.offset(), 5u);
  EXPECT_EQ(hex(os.str()), hex(std::string("GKAR\x01", 5)));
}

TEST(ArchiveHeader, ALoadingArchiveChecksTheHeaderAndStartsAfterIt) {
  std::istringstream is(std::string("GKAR\x01", 5));
  gkArchive ar(is);
  EXPECT_TRUE(ar.isLoading());
  EXPECT_EQ(ar.offset(), 5u);
}

TEST(ArchiveHeader, AWrongMagicIsBadFormatAtOffsetZero) {
  expectInputError<gkArchive::BadFormat>(
      [] {
        std::istringstream is(std::string("GKAX\x01", 5));
        gkArchive ar(is);
      },
      0);
}

TEST(ArchiveHeader, AnotherFormatVersionIsBadFormatAtOffsetFour) {
  for (const char version : {'\x00', '\x02', '\xFF'}) {
    expectInputError<gkArchive::BadFormat>(
        [version] {
          std::istringstream is(std::string("GKAR", 4) + version);
          gkArchive ar(is);
        },
        4);
  }
}

TEST(ArchiveHeader, AShortHeaderIsTruncatedWhereTheMissingPartStarts) {
  for (std::size_t n = 0; n < 5; ++n) {
    expectInputError<gkArchive::Truncated>(
        [n] {
          std::istringstream is(std::string("GKAR\x01", n));
          gkArchive ar(is);
        },
        n < 4 ? 0 : 4);
  }
}

TEST(ArchivePrimitives, BoolsRoundTrip) {
  EXPECT_TRUE(loadValue<bool>(storeValue(true)));
  EXPECT_FALSE(loadValue<bool>(storeValue(false)));
  EXPECT_EQ(hex(storeValue(true)), hex(Bytes().header().u8(1).str()));
}

TEST(ArchivePrimitives, ABoolByteOtherThanZeroOrOneIsBadFormatAtItsOffset) {
  const std::string bytes = Bytes().header().u8(1).u8(2).str();
  expectInputError<gkArchive::BadFormat>(
      [&] {
        std::istringstream is(bytes);
        gkArchive ar(is);
        bool a = false;
        bool b = false;
        ar || a || b;
      },
      6);
}

TEST(ArchivePrimitives, LongsRoundTripIncludingTheExtremes) {
  for (const long v : {0L, 1L, -1L, -2L, 123456789L, std::numeric_limits<long>::min(),
                       std::numeric_limits<long>::max()}) {
    EXPECT_EQ(loadValue<long>(storeValue(v)), v);
  }
}

TEST(ArchivePrimitives, LongsAreEightBytesTwosComplementLittleEndian) {
  EXPECT_EQ(hex(storeValue(-2L)), hex(Bytes().header().u64(0xFFFFFFFFFFFFFFFEull).str()));
  EXPECT_EQ(hex(storeValue(0x0102030405060708L)),
            hex(Bytes().header().raw("\x08\x07\x06\x05\x04\x03\x02\x01").str()));
}

TEST(ArchivePrimitives, UnsignedLongsRoundTripIncludingTheMaximum) {
  for (const unsigned long v : {0ul, 1ul, 0x8000000000000000ul, ~0ul}) {
    EXPECT_EQ(loadValue<unsigned long>(storeValue(v)), v);
  }
  EXPECT_EQ(hex(storeValue(0xA1B2C3D4ul)), hex(Bytes().header().u64(0xA1B2C3D4ull).str()));
}

TEST(ArchivePrimitives, BytesRoundTrip) {
  for (unsigned v = 0; v < 256; ++v) {
    const auto b = static_cast<unsigned char>(v);
    EXPECT_EQ(loadValue<unsigned char>(storeValue(b)), b);
  }
  EXPECT_EQ(storeValue(static_cast<unsigned char>(0xAB)).size(), 6u);
}

TEST(ArchivePrimitives, DoublesRoundTripBitForBit) {
  const std::uint64_t patterns[] = {
      bitsOf(0.0),
      bitsOf(-0.0),
      bitsOf(1.0),
      bitsOf(-1.5),
      bitsOf(std::numeric_limits<double>::infinity()),
      bitsOf(-std::numeric_limits<double>::infinity()),
      bitsOf(std::numeric_limits<double>::denorm_min()),
      bitsOf(-std::numeric_limits<double>::denorm_min() * 12345),
      bitsOf(std::numeric_limits<double>::max()),
      bitsOf(std::numeric_limits<double>::lowest()),
      0x7FF8000000000000ull,  // quiet NaN
      0x7FF8000000ABCDEFull,  // quiet NaN with a payload
      0xFFF0000000000001ull,  // negative signalling NaN
  };
  for (const std::uint64_t bits : patterns) {
    EXPECT_EQ(bitsOf(loadValue<double>(storeValue(fromBits(bits)))), bits) << std::hex << bits;
  }
}

TEST(ArchivePrimitives, DoublesAreTheirBitPatternLittleEndian) {
  EXPECT_EQ(hex(storeValue(1.0)),
            hex(Bytes().header().raw(std::string("\0\0\0\0\0\0\xF0\x3F", 8)).str()));
  EXPECT_EQ(hex(storeValue(-0.0)),
            hex(Bytes().header().raw(std::string("\0\0\0\0\0\0\0\x80", 8)).str()));
}

TEST(ArchivePrimitives, VectorsAreXThenYBitForBit) {
  const gkVector<2> v(fromBits(0x7FF8000000000123ull), -0.0);
  const std::string bytes = storeValue(v);
  EXPECT_EQ(hex(bytes), hex(Bytes().header().u64(0x7FF8000000000123ull).f64(-0.0).str()));
  const gkVector<2> loaded = loadValue<gkVector<2>>(bytes);
  EXPECT_EQ(bitsOf(loaded.x()), 0x7FF8000000000123ull);
  EXPECT_EQ(bitsOf(loaded.y()), bitsOf(-0.0));
}

TEST(ArchivePrimitives, EdgeletsArePositionMagnitudeAndAngle) {
  const gkEdgelet e(gkVector<2>(1.0, -2.0), 0xBEEF, gkAngle8(200));
  const std::string bytes = storeValue(e);
  EXPECT_EQ(hex(bytes), hex(Bytes().header().f64(1.0).f64(-2.0).u8(0xEF).u8(0xBE).u8(200).str()));
  const gkEdgelet loaded = loadValue<gkEdgelet>(bytes);
  EXPECT_EQ(loaded, e);
  EXPECT_EQ(loaded.magnitude(), 0xBEEF);
  EXPECT_EQ(loaded.angle().value(), 200);
}

TEST(ArchivePrimitives, EdgeletExtremesRoundTrip) {
  for (const gkEdgelet& e : {gkEdgelet(gkVector<2>(0, 0), 0, gkAngle8(0)),
                             gkEdgelet(gkVector<2>(std::numeric_limits<double>::infinity(), -0.0),
                                       65535, gkAngle8(255))}) {
    const gkEdgelet loaded = loadValue<gkEdgelet>(storeValue(e));
    EXPECT_EQ(bitsOf(loaded.position().x()), bitsOf(e.position().x()));
    EXPECT_EQ(bitsOf(loaded.position().y()), bitsOf(e.position().y()));
    EXPECT_EQ(loaded.magnitude(), e.magnitude());
    EXPECT_EQ(loaded.angle().value(), e.angle().value());
  }
}

TEST(ArchivePrimitives, OffsetCountsEveryByteWrittenOrRead) {
  std::ostringstream os;
  gkArchive ar(os);
  long l = 3;
  bool b = true;
  gkVector<2> v(1, 2);
  ar || l || b || v;
  EXPECT_EQ(ar.offset(), 5u + 8 + 1 + 16);
  EXPECT_EQ(os.str().size(), ar.offset());
}

TEST(ArchiveContainers, AVectorIsVersionCountAndElements) {
  std::vector<unsigned char> v{1, 2, 3};
  std::ostringstream os;
  {
    gkArchive ar(os);
    ar.container(v, 1);
  }
  EXPECT_EQ(hex(os.str()), hex(Bytes().header().u8(0).u64(3).u8(1).u8(2).u8(3).str()));
  std::istringstream is(os.str());
  gkArchive ar(is);
  std::vector<unsigned char> loaded{9};
  ar.container(loaded, 1);
  EXPECT_EQ(loaded, v);
}

TEST(ArchiveContainers, AnotherContainerVersionIsUnknownVersionWithNoSource) {
  const std::string bytes = Bytes().header().u8(1).u64(0).str();
  std::istringstream is(bytes);
  gkArchive ar(is);
  std::vector<double> v;
  try {
    ar.container(v, 8);
    ADD_FAILURE() << "loaded";
  } catch (const gkArchive::UnknownVersion& e) {
    EXPECT_EQ(e.source(), "");
    EXPECT_EQ(e.line(), 0);
  }
}

TEST(ArchiveContainers, ACountLargerThanTheRemainingBytesIsRefusedBeforeAllocating) {
  for (const std::uint64_t count : {std::uint64_t{1} << 60, ~std::uint64_t{0}, std::uint64_t{2}}) {
    const std::string bytes = Bytes().header().u8(0).u64(count).f64(1.0).str();
    expectInputError<gkArchive::LimitExceeded>(
        [&] {
          std::istringstream is(bytes);
          gkArchive ar(is);
          std::vector<double> v;
          ar.container(v, 8);
        },
        5 + 1 + 8);
  }
}

TEST(ArchiveContainers, ACountThatTheRemainingBytesHoldExactlyLoads) {
  const std::string bytes = Bytes().header().u8(0).u64(2).f64(1.0).f64(2.0).str();
  std::istringstream is(bytes);
  gkArchive ar(is);
  std::vector<double> v;
  ar.container(v, 8);
  EXPECT_EQ(v, (std::vector<double>{1.0, 2.0}));
}

TEST(ArchiveTruncation, EveryPrefixOfASmallArchiveIsATypedInputError) {
  gkPtrHandle<gk2XformLinear> x(new gk2XformLinear(kXform));
  std::ostringstream os;
  {
    gkArchive ar(os);
    long l = -5;
    bool b = true;
    std::vector<gkVector<2>> pts{{1, 2}, {3, 4}};
    gkEdgelet e(gkVector<2>(1, 1), 7, gkAngle8(9));
    ar || l || b;
    ar.container(pts, 16);
    ar || e || x || x;
  }
  const std::string full = os.str();
  const auto load = [](const std::string& bytes) {
    std::istringstream is(bytes);
    gkArchive ar(is);
    long l = 0;
    bool b = false;
    std::vector<gkVector<2>> pts;
    gkEdgelet e;
    gkPtrHandle<gk2XformLinear> a;
    gkPtrHandle<gk2XformLinear> c;
    ar || l || b;
    ar.container(pts, 16);
    ar || e || a || c;
    EXPECT_EQ(a.get(), c.get());
  };
  load(full);
  for (std::size_t n = 0; n < full.size(); ++n) {
    try {
      load(full.substr(0, n));
      ADD_FAILURE() << "a prefix of " << n << " bytes loaded";
    } catch (const gkArchive::Truncated& e) {
      EXPECT_LE(e.offset(), n);
    } catch (const gkArchive::LimitExceeded& e) {
      // A cut inside the vertices: the count no longer fits the bytes left.
      EXPECT_LE(e.offset(), n);
    } catch (const gkArchive::InputError& e) {
      ADD_FAILURE() << n << " bytes: not Truncated but " << e.what();
    }
  }
}

TEST(ArchiveHandles, ANullHandleIsTagZero) {
  const std::string bytes = storeHandle(gkPtrHandle<gk2XformLinear>());
  EXPECT_EQ(hex(bytes), hex(Bytes().header().u8(0).str()));
  gkPtrHandle<gk2XformLinear> h(new gk2XformLinear());
  std::istringstream is(bytes);
  gkArchive ar(is);
  ar || h;
  EXPECT_FALSE(h);
}

TEST(ArchiveHandles, ANewObjectIsTagOneTheTypeNameAndItsLayers) {
  const std::string bytes = storeHandle(gkPtrHandle<gk2XformLinear>(new gk2XformLinear(kXform)));
  EXPECT_EQ(hex(bytes), hex(Bytes()
                                .header()
                                .newObject("gk2XformLinear")
                                .xformLayers(2, -0.5, 0.25, 3, -7, 11)
                                .str()));
  const gkPtrHandle<gk2XformLinear> loaded = loadHandle<gk2XformLinear>(bytes);
  ASSERT_TRUE(loaded);
  EXPECT_EQ(loaded->xform().matrix(), kXform.matrix());
  EXPECT_EQ(loaded->xform().trans(), kXform.trans());
}

TEST(ArchiveHandles, TheTransformRoundTripsBitForBit) {
  const gkXform<2> odd(
      gkMatrix<2>(fromBits(0x7FF80000000000AAull), -0.0, std::numeric_limits<double>::denorm_min(),
                  std::numeric_limits<double>::infinity()),
      gkVector<2>(1e300, -1e-300));
  const gkPtrHandle<gk2XformLinear> loaded =
      loadHandle<gk2XformLinear>(storeHandle(gkPtrHandle<gk2XformLinear>(new gk2XformLinear(odd))));
  for (int r = 0; r < 2; ++r) {
    for (int c = 0; c < 2; ++c) {
      EXPECT_EQ(bitsOf(loaded->xform().matrix().element(r, c)), bitsOf(odd.matrix().element(r, c)));
    }
  }
  EXPECT_EQ(bitsOf(loaded->xform().trans().x()), bitsOf(1e300));
  EXPECT_EQ(bitsOf(loaded->xform().trans().y()), bitsOf(-1e-300));
}

TEST(ArchiveHandles, TheSameObjectTwiceIsABackReferenceAndLoadsAsOneObject) {
  gkPtrHandle<gk2XformLinear> x(new gk2XformLinear(kXform));
  std::ostringstream os;
  {
    gkArchive ar(os);
    ar || x || x;
  }
  const std::string expected = Bytes()
                                   .header()
                                   .newObject("gk2XformLinear")
                                   .xformLayers(2, -0.5, 0.25, 3, -7, 11)
                                   .u8(2)
                                   .u64(1)
                                   .str();
  EXPECT_EQ(hex(os.str()), hex(expected));
  std::istringstream is(os.str());
  gkArchive ar(is);
  gkPtrHandle<gk2XformLinear> a;
  gkPtrHandle<gk2XformLinear> b;
  ar || a || b;
  ASSERT_TRUE(a);
  EXPECT_EQ(a.get(), b.get());
}

TEST(ArchiveHandles, AnUnknownTagIsBadFormatAtTheTag) {
  for (const unsigned tag : {3u, 0x80u, 0xFFu}) {
    const std::string bytes = Bytes().header().u8(tag).str();
    expectInputError<gkArchive::BadFormat>([&] { loadHandle<gk2XformLinear>(bytes); }, 5);
  }
}

TEST(ArchiveHandles, AReferenceToAnObjectNotYetReadIsBadReference) {
  for (const std::uint64_t id : {std::uint64_t{0}, std::uint64_t{1}, ~std::uint64_t{0}}) {
    const std::string bytes = Bytes().header().u8(2).u64(id).str();
    expectInputError<gkArchive::BadReference>([&] { loadHandle<gk2XformLinear>(bytes); }, 5);
  }
  // One object read: id 2 is still ahead.
  const std::string bytes =
      Bytes().header().newObject("gk2XformLinear").xformLayers(1, 0, 0, 1, 0, 0).u8(2).u64(2).str();
  expectInputError<gkArchive::BadReference>(
      [&] {
        std::istringstream is(bytes);
        gkArchive ar(is);
        gkPtrHandle<gk2XformLinear> a;
        gkPtrHandle<gk2XformLinear> b;
        ar || a || b;
      },
      bytes.size() - 9);
}

TEST(ArchiveHandles, AnUnknownTypeNameIsUnknownTypeAtTheName) {
  const std::string bytes = Bytes().header().newObject("gkNoSuchClass").str();
  expectInputError<gkArchive::UnknownType>([&] { loadHandle<gk2XformLinear>(bytes); }, 6);
}

TEST(ArchiveHandles, ATypeNameOfLengthZeroOrOverTwoHundredFiftySixIsBadFormat) {
  for (const std::uint64_t length :
       {std::uint64_t{0}, std::uint64_t{257}, std::uint64_t{1} << 62}) {
    const std::string bytes = Bytes().header().u8(1).u64(length).raw(std::string(300, 'a')).str();
    expectInputError<gkArchive::BadFormat>([&] { loadHandle<gk2XformLinear>(bytes); }, 6);
  }
}

TEST(ArchiveHandles, AnObjectOfAnotherTypeIsWrongTypeAtTheTag) {
  const std::string bytes =
      Bytes().header().newObject("gkContour").u8(1).u8(0).u64(0).u8(1).u8(0).u64(0).u64(3).str();
  expectInputError<gkArchive::WrongType>([&] { loadHandle<gkRegionSet>(bytes); }, 5);
  expectInputError<gkArchive::WrongType>([&] { loadHandle<gk2XformLinear>(bytes); }, 5);
  EXPECT_TRUE(loadHandle<gkContour>(bytes));
}

TEST(ArchiveHandles, AFailedLoadLeavesTheHandleAsItWas) {
  gkPtrHandle<gk2XformLinear> before(new gk2XformLinear(kXform));
  gkPtrHandle<gk2XformLinear> h = before;
  const std::string bytes = Bytes().header().newObject("gk2XformLinear").u8(0).u8(0).str();
  std::istringstream is(bytes);
  gkArchive ar(is);
  EXPECT_THROW(ar || h, gkArchive::Truncated);
  EXPECT_EQ(h.get(), before.get());
}

TEST(ArchiveHandles, ObjectsNestedDeeperThanTheLimitAreLimitExceededAtTheDeepestName) {
  // Regions whose single hole is the next region: empty outlines, one hole each but the last.
  const auto nested = [](int depth, std::vector<std::uint64_t>& nameOffsets) {
    Bytes b;
    b.header();
    for (int i = 0; i < depth; ++i) {
      b.u8(1);
      nameOffsets.push_back(b.str().size());
      b.u64(8).raw("gkRegion");
      b.u8(1).u8(1).u8(0).u64(0).u8(1).u8(0).u64(0).u64(3);  // outline: no vertices, bound 3
      b.u8(0).u64(i + 1 < depth ? 1 : 0);                    // holes
    }
    return b.str();
  };
  std::vector<std::uint64_t> offsets;
  EXPECT_TRUE(loadHandle<gkRegion>(nested(gkArchive::kMaxDepth, offsets)));
  offsets.clear();
  const std::string tooDeep = nested(gkArchive::kMaxDepth + 1, offsets);
  expectInputError<gkArchive::LimitExceeded>([&] { loadHandle<gkRegion>(tooDeep); },
                                             offsets.back());
}

TEST(ArchiveObjects, StoringAnUnregisteredTypeIsUnknownType) {
  std::ostringstream os;
  gkArchive ar(os);
  EXPECT_THROW(ar.storeObject(Unregistered()), gkArchive::UnknownType);
}

TEST(ArchiveObjects, AnObjectStoredByValueLoadsAsItsOwnType) {
  std::ostringstream os;
  {
    gkArchive ar(os);
    ar.storeObject(gk2XformLinear(kXform));
  }
  EXPECT_EQ(hex(os.str()), hex(Bytes()
                                   .header()
                                   .u64(14)
                                   .raw("gk2XformLinear")
                                   .xformLayers(2, -0.5, 0.25, 3, -7, 11)
                                   .str()));
  std::istringstream is(os.str());
  gkArchive ar(is);
  const std::unique_ptr<gkPersistent> loaded = ar.loadObject();
  const auto* x = dynamic_cast<const gk2XformLinear*>(loaded.get());
  ASSERT_NE(x, nullptr);
  EXPECT_EQ(x->xform().matrix(), kXform.matrix());
}

TEST(ArchiveObjects, AnotherTransformVersionIsUnknownVersion) {
  const std::string bytes = Bytes().header().newObject("gk2XformLinear").u8(1).str();
  EXPECT_THROW(loadHandle<gk2XformLinear>(bytes), gkArchive::UnknownVersion);
}

TEST(ArchiveObjects, TheRegistryFindsEveryStableName) {
  for (const char* name : {"gkContour", "gkRegion", "gkRegionSet", "gkContourT<gkEdgelet>",
                           "gkRegionT<gkEdgelet>", "gkRegionSetT<gkEdgelet>", "gk2XformLinear",
                           "gkContourDefs::EmptyContour", "gkContourDefs::EmptyRegionSet",
                           "gkContourDefs::BadParams", "gkContourDefs::RegionCannotBeSetOpen"}) {
    EXPECT_NE(gk_Instantiator::find(name), nullptr) << name;
  }
  EXPECT_EQ(gk_Instantiator::find("gkContourDefs::Errors"), nullptr);
  const std::string* name = gk_Instantiator::nameOf(typeid(gk2XformLinear));
  ASSERT_NE(name, nullptr);
  EXPECT_EQ(*name, "gk2XformLinear");
  EXPECT_EQ(gk_Instantiator::nameOf(typeid(Unregistered)), nullptr);
}

// === errors ===================================================================================

namespace {

template <typename E>
void expectCaughtAsEveryBase(std::uint64_t offset) {
  try {
    throw E("something odd", offset);
  } catch (const gkArchive::InputError& e) {
    EXPECT_EQ(e.offset(), offset);
    EXPECT_THAT(std::string(e.what()), HasSubstr("something odd"));
    EXPECT_THAT(std::string(e.what()), HasSubstr("byte offset " + std::to_string(offset)));
  }
  EXPECT_THROW(throw E("x", offset), gkArchive::Errors);
  EXPECT_THROW(throw E("x", offset), gkException);
  EXPECT_THROW(throw E("x", offset), std::exception);
}

}  // namespace

TEST(ArchiveErrors, EveryInputErrorIsCaughtAsArchiveErrorsAndExceptionWithItsOffset) {
  expectCaughtAsEveryBase<gkArchive::Truncated>(0);
  expectCaughtAsEveryBase<gkArchive::BadFormat>(17);
  expectCaughtAsEveryBase<gkArchive::UnknownType>(12345678901234ull);
  expectCaughtAsEveryBase<gkArchive::WrongType>(5);
  expectCaughtAsEveryBase<gkArchive::BadReference>(6);
  expectCaughtAsEveryBase<gkArchive::LimitExceeded>(~std::uint64_t{0});
}

TEST(ArchiveErrors, ALoadErrorNamesTheByteOffsetInItsMessage) {
  const std::string bytes = Bytes().header().u8(7).str();
  try {
    loadHandle<gk2XformLinear>(bytes);
    ADD_FAILURE() << "loaded";
  } catch (const gkException& e) {
    EXPECT_THAT(std::string(e.what()), HasSubstr("byte offset 5"));
  }
}

// === visited marks and the current archive ====================================================

TEST(ArchiveVisited, WithoutAnArchiveNothingIsVisitedAndMarkingDoesNothing) {
  ASSERT_EQ(gkArchive::current(), nullptr);
  int object = 0;
  gkPersistent::setVisited(&object, sizeof object);
  EXPECT_FALSE(gkPersistent::haveVisited(&object, sizeof object));
}

TEST(ArchiveVisited, AMarkHoldsForItsAddressAndExtentWithinThePass) {
  int object[2] = {0, 0};
  std::ostringstream os;
  {
    gkArchive ar(os);
    EXPECT_EQ(gkArchive::current(), &ar);
    EXPECT_FALSE(gkPersistent::haveVisited(object, sizeof object));
    gkPersistent::setVisited(object, sizeof object);
    EXPECT_TRUE(gkPersistent::haveVisited(object, sizeof object));
    EXPECT_FALSE(gkPersistent::haveVisited(object, sizeof object[0]))
        << "a layer of another extent at the same address is another layer";
    EXPECT_FALSE(gkPersistent::haveVisited(&object[1], sizeof object));
  }
  EXPECT_EQ(gkArchive::current(), nullptr);
  std::ostringstream again;
  gkArchive ar(again);
  EXPECT_FALSE(gkPersistent::haveVisited(object, sizeof object)) << "a new pass starts clean";
}

TEST(ArchiveVisited, AnInnerArchiveHasItsOwnMarksAndRestoresTheOuterOne) {
  int object = 0;
  std::ostringstream outerOut;
  gkArchive outer(outerOut);
  gkPersistent::setVisited(&object, sizeof object);
  {
    std::istringstream innerIn(std::string("GKAR\x01", 5));
    gkArchive inner(innerIn);
    EXPECT_EQ(gkArchive::current(), &inner);
    EXPECT_FALSE(gkPersistent::haveVisited(&object, sizeof object));
  }
  EXPECT_EQ(gkArchive::current(), &outer);
  EXPECT_TRUE(gkPersistent::haveVisited(&object, sizeof object));
}

TEST(ArchiveVisited, AnArchiveWhoseHeaderFailsIsNotLeftCurrent) {
  std::istringstream in(std::string("nope!", 5));
  EXPECT_THROW(gkArchive ar(in), gkArchive::BadFormat);
  EXPECT_EQ(gkArchive::current(), nullptr);
}
