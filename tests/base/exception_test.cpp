#include <gk/base/exception.h>
#include <gk/base/math_error.h>
#include <gk/base/pel_errors.h>
#include <gtest/gtest.h>

#include <exception>
#include <sstream>
#include <string>
#include <type_traits>

static_assert(std::is_base_of_v<std::exception, gkException>);
static_assert(std::is_base_of_v<gkPersistent, gkException>);
static_assert(std::is_base_of_v<gkException, gkExceptionWithString>);
static_assert(std::is_base_of_v<gkMathError::Errors, gkMathError::Singular>);
static_assert(std::is_base_of_v<gkExceptionWithString, gkMathError::Errors>);
static_assert(std::is_base_of_v<gkExceptionWithString, gkPel::BadWindow>);
static_assert(!std::is_convertible_v<std::wstring, gkExceptionWithString>,
              "a message must not silently become an exception");

namespace {

std::wstring messageOf(const gkException& e) {
  std::wostringstream os;
  e.message_(os);
  return os.str();
}

}  // namespace

TEST(Exception, BaseExceptionHasAnEmptyMessage) {
  const gkException e;
  EXPECT_STREQ(e.what(), "");
  EXPECT_EQ(messageOf(e), L"");
}

TEST(ExceptionWithString, DefaultConstructedHasAnEmptyMessage) {
  const gkExceptionWithString e;
  EXPECT_EQ(e.message(), L"");
  EXPECT_STREQ(e.what(), "");
  EXPECT_EQ(messageOf(e), L"");
}

TEST(ExceptionWithString, KeepsTheMessageFromAPointerOrAString) {
  const gkExceptionWithString fromPointer(L"matrix is singular");
  const gkExceptionWithString fromString(std::wstring(L"bad window"));
  EXPECT_EQ(fromPointer.message(), L"matrix is singular");
  EXPECT_EQ(fromString.message(), L"bad window");
}

TEST(ExceptionWithString, WhatIsTheAsciiMessage) {
  const gkExceptionWithString e(L"region cannot be open");
  EXPECT_STREQ(e.what(), "region cannot be open");
}

TEST(ExceptionWithString, WhatIsStableAcrossCalls) {
  const gkExceptionWithString e(L"stable");
  const char* first = e.what();
  EXPECT_STREQ(first, "stable");
  EXPECT_EQ(e.what(), first);
}

TEST(ExceptionWithString, WhatIsTheUtf8OfANonAsciiMessage) {
  const gkExceptionWithString e(L"\u00e9\u4e2d\U0001F600");
  // U+00E9 (2 bytes), U+4E2D (3 bytes), U+1F600 (4 bytes).
  EXPECT_EQ(std::string(e.what()), "\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80");
}

TEST(ExceptionWithString, WhatEncodesTheEdgesOfEachUtf8Length) {
  const gkExceptionWithString e(L"\u007F\u0080\u07FF\u0800\uFFFD\U00010000\U0010FFFF");
  EXPECT_EQ(std::string(e.what()),
            "\x7F"
            "\xC2\x80"
            "\xDF\xBF"
            "\xE0\xA0\x80"
            "\xEF\xBF\xBD"
            "\xF0\x90\x80\x80"
            "\xF4\x8F\xBF\xBF");
}

TEST(ExceptionWithString, LoneHighSurrogateBecomesTheReplacementCharacter) {
  std::wstring message = L"a";
  message += static_cast<wchar_t>(0xD800);
  message += L"b";
  const gkExceptionWithString e(message);
  EXPECT_EQ(std::string(e.what()),
            "a\xEF\xBF\xBD"
            "b");
}

TEST(ExceptionWithString, LoneLowSurrogateBecomesTheReplacementCharacter) {
  std::wstring message = L"x";
  message += static_cast<wchar_t>(0xDFFF);
  const gkExceptionWithString e(message);
  EXPECT_EQ(std::string(e.what()), "x\xEF\xBF\xBD");
}

TEST(ExceptionWithString, HighSurrogateAtTheEndBecomesTheReplacementCharacter) {
  std::wstring message = L"end";
  message += static_cast<wchar_t>(0xDBFF);
  const gkExceptionWithString e(message);
  EXPECT_EQ(std::string(e.what()), "end\xEF\xBF\xBD");
}

TEST(ExceptionWithString, ValueBeyondTheLastCodePointBecomesTheReplacementCharacter) {
  if constexpr (sizeof(wchar_t) < 4) {
    GTEST_SKIP() << "a 16-bit wchar_t cannot hold a value beyond U+10FFFF";
  } else {
    std::wstring message;
    message += static_cast<wchar_t>(0x110000);
    message += L"z";
    const gkExceptionWithString e(message);
    EXPECT_EQ(std::string(e.what()), "\xEF\xBF\xBDz");
  }
}

TEST(ExceptionWithString, MessageWritesTheStoredTextToAWideStream) {
  const gkExceptionWithString e(L"\u00e9t\u00e9");
  std::wostringstream os;
  os << L"[";
  e.message_(os);
  os << L"]";
  EXPECT_EQ(os.str(), L"[\u00e9t\u00e9]");
}

TEST(ExceptionWithString, MessageIsWrittenThroughABaseReference) {
  const gkExceptionWithString e(L"through the base");
  const gkException& base = e;
  EXPECT_EQ(messageOf(base), L"through the base");
  EXPECT_STREQ(base.what(), "through the base");
}

TEST(ExceptionWithString, CopyKeepsTheMessage) {
  const gkExceptionWithString original(L"copied \u4e2d");
  (void)original.what();  // whatever the original built for itself
  const gkExceptionWithString copy(original);
  EXPECT_EQ(copy.message(), L"copied \u4e2d");
  EXPECT_EQ(std::string(copy.what()), "copied \xE4\xB8\xAD");
  EXPECT_NE(copy.what(), original.what());  // each exception owns its text
}

TEST(ExceptionWithString, AssignmentReplacesTheMessageAndWhat) {
  gkExceptionWithString target(L"first");
  EXPECT_STREQ(target.what(), "first");  // builds and keeps the text of the first message
  const gkExceptionWithString source(L"second");
  target = source;
  EXPECT_EQ(target.message(), L"second");
  EXPECT_STREQ(target.what(), "second");
  EXPECT_EQ(source.message(), L"second");
}

TEST(ExceptionWithString, CopyingDoesNotCopyTheChangeCount) {
  gkExceptionWithString original(L"counted");
  original.mutating();
  original.mutating();
  const gkExceptionWithString copy(original);
  EXPECT_EQ(original.changeCount(), 2U);
  EXPECT_EQ(copy.changeCount(), 0U);
}

TEST(ExceptionWithString, IsCaughtAsStdException) {
  try {
    throw gkExceptionWithString(L"caught \u00e9");
  } catch (const std::exception& e) {
    EXPECT_EQ(std::string(e.what()), "caught \xC3\xA9");
    return;
  }
  FAIL() << "not caught as std::exception";
}

TEST(ExceptionWithString, IsCaughtAsException) {
  try {
    throw gkExceptionWithString(L"base");
  } catch (const gkException& e) {
    EXPECT_EQ(messageOf(e), L"base");
    return;
  }
  FAIL() << "not caught as gkException";
}

TEST(MathError, SingularDefaultConstructedHasAnEmptyMessage) {
  const gkMathError::Singular e;
  EXPECT_EQ(e.message(), L"");
  EXPECT_STREQ(e.what(), "");
}

TEST(MathError, SingularKeepsItsMessage) {
  const gkMathError::Singular e(L"moment matrix is singular");
  EXPECT_EQ(e.message(), L"moment matrix is singular");
  EXPECT_STREQ(e.what(), "moment matrix is singular");
}

TEST(MathError, SingularIsCaughtAsMathErrorAndAsException) {
  try {
    throw gkMathError::Singular(L"singular");
  } catch (const gkMathError::Errors& e) {
    EXPECT_EQ(e.message(), L"singular");
  }
  try {
    throw gkMathError::Singular(L"singular");
  } catch (const gkException& e) {
    EXPECT_STREQ(e.what(), "singular");
    EXPECT_NE(dynamic_cast<const gkMathError::Singular*>(&e), nullptr);
    return;
  }
  FAIL() << "not caught as gkException";
}

TEST(PelErrors, BadWindowDefaultConstructedHasAnEmptyMessage) {
  const gkPel::BadWindow e;
  EXPECT_EQ(e.message(), L"");
  EXPECT_STREQ(e.what(), "");
}

TEST(PelErrors, BadWindowKeepsItsMessage) {
  const gkPel::BadWindow e(L"outside the valid window");
  EXPECT_EQ(e.message(), L"outside the valid window");
  EXPECT_STREQ(e.what(), "outside the valid window");
}

TEST(PelErrors, BadWindowIsCaughtAsExceptionAndAsStdException) {
  try {
    throw gkPel::BadWindow();
  } catch (const gkException& e) {
    EXPECT_NE(dynamic_cast<const gkPel::BadWindow*>(&e), nullptr);
    EXPECT_STREQ(e.what(), "");
  }
  try {
    throw gkPel::BadWindow(L"window");
  } catch (const std::exception& e) {
    EXPECT_STREQ(e.what(), "window");
    return;
  }
  FAIL() << "not caught as std::exception";
}
