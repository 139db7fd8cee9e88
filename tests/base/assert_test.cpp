#include <gk/base/assert.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <exception>
#include <string>

using ::testing::HasSubstr;

namespace {

/// What the recording handler was last given. Handlers are plain function pointers, so they
/// report through globals.
struct Recorded {
  int calls = 0;
  std::string file;
  int line = 0;
  std::string condition;
};
Recorded gRecorded;

void recordingHandler(const char* file, int line, const char* condition) {
  ++gRecorded.calls;
  gRecorded.file = file;
  gRecorded.line = line;
  gRecorded.condition = condition;
}

int gOtherCalls = 0;
void otherHandler(const char* /*file*/, int /*line*/, const char* /*condition*/) {
  ++gOtherCalls;
}

struct HandlerOwnError {
  int line;
};
void throwingHandler(const char* /*file*/, int line, const char* /*condition*/) {
  throw HandlerOwnError{line};
}

/// Every test starts and ends with the default handler installed.
class Assert : public ::testing::Test {
 protected:
  void SetUp() override {
    gwSetAssertHandler(nullptr);
    gRecorded = Recorded();
    gOtherCalls = 0;
  }
  void TearDown() override { gwSetAssertHandler(nullptr); }
};

}  // namespace

TEST_F(Assert, TrueConditionDoesNothing) {
  gwSetAssertHandler(&recordingHandler);
  const int two = 2;
  EXPECT_NO_THROW(GK_ASSERT(two == 2));
  EXPECT_EQ(gRecorded.calls, 0);
}

TEST_F(Assert, DefaultHandlerThrowsAFailureCarryingFileAndLine) {
  const int expectedLine = __LINE__ + 2;  // the line of GK_ASSERT below
  try {
    GK_ASSERT(false);
  } catch (const gkAssertionFailure& e) {
    EXPECT_EQ(e.file(), __FILE__);
    EXPECT_EQ(e.line(), expectedLine);
    return;
  }
  FAIL() << "GK_ASSERT(false) did not throw gkAssertionFailure";
}

TEST_F(Assert, FailureMessageNamesTheConditionFileAndLine) {
  try {
    gwAssertFailed("src/cntr/contour.cpp", 321, "n >= 2");
  } catch (const gkAssertionFailure& e) {
    EXPECT_EQ(e.file(), "src/cntr/contour.cpp");
    EXPECT_EQ(e.line(), 321);
    EXPECT_THAT(std::string(e.what()), HasSubstr("n >= 2"));
    EXPECT_THAT(std::string(e.what()), HasSubstr("src/cntr/contour.cpp"));
    EXPECT_THAT(std::string(e.what()), HasSubstr("321"));
    return;
  }
  FAIL() << "gwAssertFailed did not throw gkAssertionFailure";
}

TEST_F(Assert, FailureIsCaughtAsExceptionAndAsStdException) {
  EXPECT_THROW(GK_ASSERT(false), gkException);
  EXPECT_THROW(GK_ASSERT(false), std::exception);
}

TEST_F(Assert, CustomHandlerReceivesFileLineAndCondition) {
  gwSetAssertHandler(&recordingHandler);
  const int size = 1;
  const int expectedLine = __LINE__ + 2;  // the line of GK_ASSERT below
  try {
    GK_ASSERT(size >= 2);
  } catch (const gkAssertionFailure&) {
  }
  EXPECT_EQ(gRecorded.calls, 1);
  EXPECT_EQ(gRecorded.file, __FILE__);
  EXPECT_EQ(gRecorded.line, expectedLine);
  EXPECT_EQ(gRecorded.condition, "size >= 2");
}

TEST_F(Assert, FailureIsStillThrownAfterTheCustomHandlerReturns) {
  gwSetAssertHandler(&recordingHandler);
  const int expectedLine = __LINE__ + 2;  // the line of GK_ASSERT below
  try {
    GK_ASSERT(false);
  } catch (const gkAssertionFailure& e) {
    EXPECT_EQ(gRecorded.calls, 1);  // the handler ran before the throw
    EXPECT_EQ(e.file(), __FILE__);
    EXPECT_EQ(e.line(), expectedLine);
    return;
  }
  FAIL() << "the failure was not thrown after the handler returned";
}

TEST_F(Assert, HandlerMayThrowItsOwnException) {
  gwSetAssertHandler(&throwingHandler);
  try {
    gwAssertFailed("x.cpp", 77, "ok");
  } catch (const HandlerOwnError& e) {
    EXPECT_EQ(e.line, 77);
    return;
  } catch (const gkAssertionFailure&) {
    FAIL() << "the handler's own exception was replaced";
  }
  FAIL() << "nothing was thrown";
}

TEST_F(Assert, SetHandlerReturnsThePreviousHandler) {
  const gkAssertHandler defaultHandler = gwSetAssertHandler(&recordingHandler);
  EXPECT_NE(defaultHandler, nullptr);
  EXPECT_NE(defaultHandler, &recordingHandler);
  EXPECT_EQ(gwSetAssertHandler(&otherHandler), &recordingHandler);
  EXPECT_EQ(gwSetAssertHandler(&otherHandler), &otherHandler);
  EXPECT_EQ(gwSetAssertHandler(nullptr), &otherHandler);
  // nullptr installed the default again, and that is what the next call hands back.
  EXPECT_EQ(gwSetAssertHandler(nullptr), defaultHandler);
}

TEST_F(Assert, NullptrRestoresTheDefaultHandler) {
  gwSetAssertHandler(&recordingHandler);
  gwSetAssertHandler(nullptr);
  EXPECT_THROW(GK_ASSERT(false), gkAssertionFailure);
  EXPECT_EQ(gRecorded.calls, 0);
}

TEST_F(Assert, ReinstallingTheReturnedHandlerRestoresItsBehaviour) {
  gwSetAssertHandler(&recordingHandler);
  const gkAssertHandler previous = gwSetAssertHandler(&otherHandler);
  EXPECT_THROW(GK_ASSERT(false), gkAssertionFailure);
  EXPECT_EQ(gOtherCalls, 1);
  EXPECT_EQ(gRecorded.calls, 0);
  gwSetAssertHandler(previous);
  EXPECT_THROW(GK_ASSERT(false), gkAssertionFailure);
  EXPECT_EQ(gOtherCalls, 1);
  EXPECT_EQ(gRecorded.calls, 1);
}
