// Files of the tests.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace test {

inline std::string read_file(const std::filesystem::path &path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

// A folder that is removed with its files.
struct TempFolder {
  std::filesystem::path path;

  TempFolder() {
    std::string name = testing::TempDir() + "draimiofaf-XXXXXX";
    path = mkdtemp(name.data());
  }
  TempFolder(const TempFolder &) = delete;
  TempFolder &operator=(const TempFolder &) = delete;
  ~TempFolder() { std::filesystem::remove_all(path); }
};

}  // namespace test
