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

namespace {

namespace fs = std::filesystem;

std::vector<std::string> filesIn(const char* directory) {
  std::vector<std::string> files;
  if (!fs::is_directory(directory)) {
    return files;
  }
  for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
    const std::string name = entry.path().filename().string();
    if (entry.is_regular_file() && name.front() != '.' && name != "README.md") {
      files.push_back(entry.path().string());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<std::uint8_t> bytesOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in),
                                   std::istreambuf_iterator<char>());
}

std::string testName(const ::testing::TestParamInfo<std::string>& info) {
  std::string name = fs::path(info.param).filename().string();
  for (char& c : name) {
    if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'))) {
      c = '_';
    }
  }
  return name + "_" + std::to_string(info.index);
}

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
