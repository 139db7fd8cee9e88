// Replays the archive fuzzer's seed corpus (fuzz/corpus/archive) and its crash reproducers
// (fuzz/regressions) through the fuzzer's own body, without libFuzzer: one test per file.
// A reproducer passes when only gkException escapes the load and nothing crashes; the seeds
// named valid_* and golden_* must also load.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "archive_fuzz_target.h"
#include "replay_files.h"

namespace {

using gk::test::bytesOf;
using gk::test::filesIn;
using gk::test::testName;

namespace fs = std::filesystem;

class ArchiveFuzzCorpus : public ::testing::TestWithParam<std::string> {};
class ArchiveFuzzRegression : public ::testing::TestWithParam<std::string> {};

TEST_P(ArchiveFuzzCorpus, LoadsOrRefusesWithGkException) {
  const std::vector<std::uint8_t> bytes = bytesOf(GetParam());
  const bool loaded = gkArchiveFuzzLoad(bytes.data(), bytes.size());
  const std::string name = fs::path(GetParam()).filename().string();
  if (name.rfind("valid_", 0) == 0 || name.rfind("golden_", 0) == 0) {
    EXPECT_TRUE(loaded) << GetParam() << " is a seed made from an archive the library wrote";
  }
}

TEST_P(ArchiveFuzzRegression, LoadsOrRefusesWithGkException) {
  const std::vector<std::uint8_t> bytes = bytesOf(GetParam());
  EXPECT_EQ(gkArchiveFuzzOne(bytes.data(), bytes.size()), 0);
}

INSTANTIATE_TEST_SUITE_P(Files, ArchiveFuzzCorpus,
                         ::testing::ValuesIn(filesIn(GKGEOM_FUZZ_CORPUS_DIR)), testName);
INSTANTIATE_TEST_SUITE_P(Files, ArchiveFuzzRegression,
                         ::testing::ValuesIn(filesIn(GKGEOM_FUZZ_REGRESSIONS_DIR)), testName);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ArchiveFuzzRegression);

TEST(ArchiveFuzzReplay, TheSeedCorpusIsThere) {
  EXPECT_GE(filesIn(GKGEOM_FUZZ_CORPUS_DIR).size(), 20u) << GKGEOM_FUZZ_CORPUS_DIR;
}

TEST(ArchiveFuzzReplay, AnEmptyInputIsHarmless) {
  EXPECT_EQ(gkArchiveFuzzOne(nullptr, 0), 0);
  const std::uint8_t selectorOnly[] = {3};
  EXPECT_FALSE(gkArchiveFuzzLoad(selectorOnly, sizeof selectorOnly));
}

}  // namespace
