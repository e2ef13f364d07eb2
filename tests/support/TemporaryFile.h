#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "BaseClasses/ProcessId.h"

namespace support {

/// All bytes of a file; empty for one that cannot be read.
inline std::string bytesOf(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// A file name that nobody else uses; the file is removed at the end of the scope.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& label)
      : name_((std::filesystem::temp_directory_path() /
               ("quorva_" + label + "_" + std::to_string(processId()) + "_" + std::to_string(nextNumber())))
                  .string()) {}
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    std::error_code ignored;  // a test may never have made the file
    std::filesystem::remove(name_, ignored);
  }

  [[nodiscard]] const char* name() const { return name_.c_str(); }
  [[nodiscard]] std::string bytes() const { return bytesOf(name_); }
  [[nodiscard]] bool exists() const { return std::filesystem::exists(name_); }

 private:
  static std::int32_t nextNumber() {
    static std::int32_t number = 0;
    return ++number;
  }

  std::string name_;
};

}  // namespace support
