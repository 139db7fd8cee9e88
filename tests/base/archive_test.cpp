#include <gk/base/archive.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <type_traits>

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
