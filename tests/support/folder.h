#pragma once

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace nerova_zel::test {

/** An empty folder that goes with it. */
class Folder {
 public:
  Folder() {
    std::random_device random;
    do {
      path_ = std::filesystem::temp_directory_path() / ("nerova_zel_" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path_));
  }
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }
  /** Names of what is in it, in order. */
  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace nerova_zel::test
