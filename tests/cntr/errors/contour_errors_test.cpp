#include <gk/cntr/errors/contour_errors.h>
#include <gtest/gtest.h>

#include <array>
#include <exception>
#include <memory>
#include <set>
#include <string>
#include <type_traits>
#include <typeinfo>

namespace {

/// The documented code of each concrete error class.
template <typename E>
struct DocumentedCode;
template <>
struct DocumentedCode<gkContourDefs::EmptyContour> {
  static constexpr int kValue = 268453504;  // 0x10004680
};
template <>
struct DocumentedCode<gkContourDefs::EmptyRegionSet> {
  static constexpr int kValue = 268453506;  // 0x10004682
};
template <>
struct DocumentedCode<gkContourDefs::BadParams> {
  static constexpr int kValue = 268453507;  // 0x10004683
};
template <>
struct DocumentedCode<gkContourDefs::RegionCannotBeSetOpen> {
  static constexpr int kValue = 268453508;  // 0x10004684
};

using ContourErrorTypes =
    ::testing::Types<gkContourDefs::EmptyContour, gkContourDefs::EmptyRegionSet,
                     gkContourDefs::BadParams, gkContourDefs::RegionCannotBeSetOpen>;

/// Names each instantiation after its class rather than a number.
struct ContourErrorNames {
  template <typename E>
  static std::string GetName(int /*index*/) {
    if (std::is_same_v<E, gkContourDefs::EmptyContour>) {
      return "EmptyContour";
    }
    if (std::is_same_v<E, gkContourDefs::EmptyRegionSet>) {
      return "EmptyRegionSet";
    }
    if (std::is_same_v<E, gkContourDefs::BadParams>) {
      return "BadParams";
    }
    return "RegionCannotBeSetOpen";
  }
};

template <typename E>
class ContourError : public ::testing::Test {};

TYPED_TEST_SUITE(ContourError, ContourErrorTypes, ContourErrorNames);

}  // namespace

static_assert(std::is_abstract_v<gkContourDefs::Errors>);
static_assert(std::is_base_of_v<gkExceptionWithString, gkContourDefs::Errors>);

TYPED_TEST(ContourError, ErrorNumberIsTheDocumentedCode) {
  const TypeParam e;
  EXPECT_EQ(e.errorNumber(), DocumentedCode<TypeParam>::kValue);
  EXPECT_EQ(TypeParam::kErrorNumber, DocumentedCode<TypeParam>::kValue);
}

TYPED_TEST(ContourError, ErrorNumberThroughTheBaseIsTheDocumentedCode) {
  const TypeParam e(L"through the base");
  const gkContourDefs::Errors& base = e;
  EXPECT_EQ(base.errorNumber(), DocumentedCode<TypeParam>::kValue);
}

TYPED_TEST(ContourError, IsDerivedFromContourErrorsAndStdException) {
  static_assert(std::is_base_of_v<gkContourDefs::Errors, TypeParam>);
  static_assert(std::is_base_of_v<gkException, TypeParam>);
  static_assert(std::is_base_of_v<std::exception, TypeParam>);
  static_assert(!std::is_convertible_v<std::wstring, TypeParam>,
                "a message must not silently become an error");
  static_assert(std::is_copy_constructible_v<TypeParam>);
  static_assert(std::is_copy_assignable_v<TypeParam>);
  SUCCEED();
}

TYPED_TEST(ContourError, IsCaughtAsItsOwnClass) {
  try {
    throw TypeParam(L"own class");
  } catch (const TypeParam& e) {
    EXPECT_EQ(e.message(), L"own class");
    return;
  }
  FAIL() << "not caught as its own class";
}

TYPED_TEST(ContourError, IsCaughtAsContourErrors) {
  try {
    throw TypeParam(L"contour errors");
  } catch (const gkContourDefs::Errors& e) {
    EXPECT_EQ(e.errorNumber(), DocumentedCode<TypeParam>::kValue);
    EXPECT_EQ(e.message(), L"contour errors");
    return;
  }
  FAIL() << "not caught as gkContourDefs::Errors";
}

TYPED_TEST(ContourError, IsCaughtAsException) {
  try {
    throw TypeParam(L"exception");
  } catch (const gkException& e) {
    EXPECT_STREQ(e.what(), "exception");
    EXPECT_EQ(typeid(e), typeid(TypeParam));
    return;
  }
  FAIL() << "not caught as gkException";
}

TYPED_TEST(ContourError, IsCaughtAsStdException) {
  try {
    throw TypeParam(L"std \u00e9");
  } catch (const std::exception& e) {
    EXPECT_EQ(std::string(e.what()), "std \xC3\xA9");
    return;
  }
  FAIL() << "not caught as std::exception";
}

TYPED_TEST(ContourError, DefaultMessageIsEmptyAndSameAsAnEmptyString) {
  const TypeParam byDefault;
  const TypeParam empty(L"");
  EXPECT_EQ(byDefault.message(), L"");
  EXPECT_EQ(byDefault.message(), empty.message());
  EXPECT_STREQ(byDefault.what(), "");
  EXPECT_STREQ(empty.what(), "");
}

TYPED_TEST(ContourError, KeepsItsMessage) {
  const TypeParam e(L"diameterMode is not one of the valid enums");
  EXPECT_EQ(e.message(), L"diameterMode is not one of the valid enums");
  EXPECT_STREQ(e.what(), "diameterMode is not one of the valid enums");
}

TYPED_TEST(ContourError, CopyKeepsTheMessageAndTheCode) {
  const TypeParam original(L"copied");
  const TypeParam copy(original);
  EXPECT_EQ(copy.message(), L"copied");
  EXPECT_STREQ(copy.what(), "copied");
  EXPECT_EQ(copy.errorNumber(), DocumentedCode<TypeParam>::kValue);
}

TYPED_TEST(ContourError, AssignmentKeepsTheSourcesMessage) {
  TypeParam target(L"before");
  EXPECT_STREQ(target.what(), "before");
  const TypeParam source(L"after");
  target = source;
  EXPECT_EQ(target.message(), L"after");
  EXPECT_STREQ(target.what(), "after");
  EXPECT_EQ(source.message(), L"after");
}

TYPED_TEST(ContourError, SuicideAndRethrowThrowsTheConcreteClassWithTheSameMessage) {
  // Heap-allocated, as the archive's factory makes them; the sanitizer build checks that the
  // object is freed exactly once.
  gkContourDefs::Errors* heap = new TypeParam(L"msg");
  try {
    heap->suicideAndRethrow();
  } catch (const TypeParam& e) {
    EXPECT_EQ(typeid(e), typeid(TypeParam));
    EXPECT_EQ(e.message(), L"msg");
    EXPECT_STREQ(e.what(), "msg");
    EXPECT_EQ(e.errorNumber(), DocumentedCode<TypeParam>::kValue);
    return;
  } catch (...) {
    FAIL() << "suicideAndRethrow threw something other than the concrete class";
  }
  FAIL() << "suicideAndRethrow returned";
}

TYPED_TEST(ContourError, SuicideAndRethrowOfAnUnnamedErrorKeepsTheEmptyMessage) {
  TypeParam* heap = new TypeParam();
  try {
    heap->suicideAndRethrow();
  } catch (const gkContourDefs::Errors& e) {
    EXPECT_EQ(typeid(e), typeid(TypeParam));
    EXPECT_EQ(e.message(), L"");
    EXPECT_EQ(e.errorNumber(), DocumentedCode<TypeParam>::kValue);
    return;
  }
  FAIL() << "suicideAndRethrow returned";
}

TEST(ContourErrors, CodesAreDistinctAndSkip0x10004681) {
  const gkContourDefs::EmptyContour emptyContour;
  const gkContourDefs::EmptyRegionSet emptyRegionSet;
  const gkContourDefs::BadParams badParams;
  const gkContourDefs::RegionCannotBeSetOpen regionCannotBeSetOpen;
  const std::array<const gkContourDefs::Errors*, 4> all = {&emptyContour, &emptyRegionSet,
                                                           &badParams, &regionCannotBeSetOpen};
  std::set<int> codes;
  for (const gkContourDefs::Errors* e : all) {
    codes.insert(e->errorNumber());
  }
  EXPECT_EQ(codes, (std::set<int>{0x10004680, 0x10004682, 0x10004683, 0x10004684}));
  EXPECT_EQ(codes.count(0x10004681), 0U);
}

TEST(ContourErrors, EachClassIsCaughtOnlyAsItself) {
  try {
    throw gkContourDefs::BadParams(L"bad");
  } catch (const gkContourDefs::EmptyContour&) {
    FAIL() << "BadParams caught as EmptyContour";
  } catch (const gkContourDefs::EmptyRegionSet&) {
    FAIL() << "BadParams caught as EmptyRegionSet";
  } catch (const gkContourDefs::RegionCannotBeSetOpen&) {
    FAIL() << "BadParams caught as RegionCannotBeSetOpen";
  } catch (const gkContourDefs::BadParams& e) {
    EXPECT_EQ(e.message(), L"bad");
  }
}
