#include "Store/SafeFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace controller {
namespace {

[[noreturn]] void failFor(const std::string& path, int error) {
  throw std::system_error(error, std::generic_category(), "cannot write " + path);
}

void syncPath(const std::string& path, int flags) {
  const int descriptor = ::open(path.c_str(), flags | O_CLOEXEC);
  const bool isSynced = descriptor >= 0 && ::fsync(descriptor) == 0;
  const int error = errno;
  if (descriptor >= 0) {
    ::close(descriptor);
  }
  // Some file systems know no sync of a folder.
  if (!isSynced && error != EINVAL) {
    failFor(path, error);
  }
}

}  // namespace

SafeFile::SafeFile(std::string path) : path_(std::move(path)), temporary_(path_ + ".new") {
  file_ = std::fopen(temporary_.c_str(), "wbe");
  if (file_ == nullptr) {
    fail(errno);
  }
}

SafeFile::~SafeFile() {
  if (file_ != nullptr) {
    std::fclose(file_);
    std::error_code ignored;
    std::filesystem::remove(temporary_, ignored);
  }
}

void SafeFile::write(const std::string& text) {
  if (std::fwrite(text.data(), 1, text.size(), file_) != text.size()) {
    fail(errno);
  }
}

void SafeFile::finish() {
  if (std::fflush(file_) != 0) {
    fail(errno);
  }
  const int closed = std::fclose(file_);
  file_ = nullptr;
  if (closed != 0) {
    fail(errno);
  }
  putInPlace(temporary_, path_);
}

void SafeFile::fail(int error) const {
  failFor(path_, error);
}

void putInPlace(const std::string& temporary, const std::string& path) {
  syncPath(temporary, O_RDONLY);
  if (std::rename(temporary.c_str(), path.c_str()) != 0) {
    failFor(path, errno);
  }
  const auto folder = std::filesystem::path(path).parent_path();
  syncPath(folder.empty() ? "." : folder.string(), O_RDONLY | O_DIRECTORY);
}

FolderLock::FolderLock(const std::string& path)
    : descriptor_(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666)) {
  if (descriptor_ < 0) {
    failFor(path, errno);
  }
  if (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
    ::close(descriptor_);
    throw std::runtime_error("the study is locked: another quorva works on it (" + path +
                             "); wait for it to end, or end it");
  }
}

FolderLock::~FolderLock() {
  ::close(descriptor_);
}

}  // namespace controller
