#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

/// What the fuzz replay tests share: the input files of a corpus or regressions directory,
/// their bytes, and a test name per file.
namespace gk::test {

/// The regular files of directory (none when it does not exist), sorted, without hidden files
/// and README.md.
inline std::vector<std::string> filesIn(const char* directory) {
  namespace fs = std::filesystem;
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

/// A fuzzer's seeds and then its kept reproducers.
inline std::vector<std::string> seedsAndReproducers(const char* corpus, const char* regressions) {
  std::vector<std::string> files = filesIn(corpus);
  const std::vector<std::string> more = filesIn(regressions);
  files.insert(files.end(), more.begin(), more.end());
  return files;
}

inline std::vector<std::uint8_t> bytesOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in),
                                   std::istreambuf_iterator<char>());
}

/// A parameterised test's name from its file: letters and digits kept, the rest '_', and the
/// index to keep names unique.
inline std::string testName(const ::testing::TestParamInfo<std::string>& info) {
  std::string name = std::filesystem::path(info.param).filename().string();
  for (char& c : name) {
    if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'))) {
      c = '_';
    }
  }
  return name + "_" + std::to_string(info.index);
}

}  // namespace gk::test
