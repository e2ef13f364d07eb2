#pragma once

#include <cstdio>
#include <string>

namespace controller {

/// A file that is written under another name, synced, and renamed: whoever looks sees the old one or the whole new one.
/// Failure  functions throw std::system_error with the file's name, such as for a full disk; then the old file stays
class SafeFile {
 public:
  explicit SafeFile(std::string path);
  /// Without finish() the new file is dropped.
  ~SafeFile();
  SafeFile(const SafeFile&) = delete;
  SafeFile& operator=(const SafeFile&) = delete;

  void write(const std::string& text);
  void finish();

 private:
  [[noreturn]] void fail(int error) const;

  std::string path_;
  std::string temporary_;
  std::FILE* file_ = nullptr;  // owned; null once finished
};

/// Syncs a file that is complete, renames it, and syncs the folder.
void putInPlace(const std::string& temporary, const std::string& path);

/// Keeps other processes from working on the same study for as long as the object lives, or the process: a lock that dies
/// with its process. Throws std::runtime_error where somebody else has it.
class FolderLock {
 public:
  explicit FolderLock(const std::string& path);
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  int descriptor_;
};

}  // namespace controller
