#pragma once

#include <filesystem>
#include <string>

#include "BaseClasses/ProcessId.h"

namespace fuzz {

/// An empty folder of this process's own, in which it works for the lifetime of the object.
class FuzzFolder {
 public:
  FuzzFolder() : before_(std::filesystem::current_path()), folder_(freshFolder()) {
    std::filesystem::current_path(folder_);
  }
  FuzzFolder(const FuzzFolder&) = delete;
  FuzzFolder& operator=(const FuzzFolder&) = delete;
  ~FuzzFolder() {
    std::error_code ignored;
    std::filesystem::current_path(before_, ignored);
    std::filesystem::remove_all(folder_, ignored);
  }

 private:
  static std::filesystem::path freshFolder() {
    auto folder = std::filesystem::temp_directory_path() / ("quorva_fuzz_" + std::to_string(support::processId()));
    std::filesystem::create_directories(folder);
    return folder;
  }

  std::filesystem::path before_;
  std::filesystem::path folder_;
};

}  // namespace fuzz
