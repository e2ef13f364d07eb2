#include "BaseClasses/MemoryLimit.h"

#include <charconv>
#include <system_error>

#ifdef __linux__
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#endif

#include "BaseClasses/Sanitizers.h"

namespace support {

std::optional<std::uint64_t> parseMemoryLimit(std::string_view text) {
  std::uint64_t bytes = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), bytes);
  if (error != std::errc{} ||
      text.substr(static_cast<std::size_t>(end - text.data())).find_first_not_of(" \n") != std::string_view::npos) {
    return std::nullopt;
  }
  return bytes;
}

#ifdef __linux__

namespace {

constexpr std::uint64_t kNoLimit = std::numeric_limits<std::uint64_t>::max();

/// Lowest limit that the files `name` state from `root`/`group` up to `root`: a group is held to those above it too.
std::uint64_t lowestLimit(const std::filesystem::path& root, const std::string& group, const char* name) {
  std::uint64_t lowest = kNoLimit;
  std::filesystem::path below = std::filesystem::path(group).relative_path();
  while (true) {
    std::ifstream file(root / below / name);
    std::string text;
    if (std::getline(file, text)) {
      lowest = std::min(lowest, parseMemoryLimit(text).value_or(kNoLimit));
    }
    if (below.empty()) {
      return lowest;
    }
    below = below.parent_path();
  }
}

/// Limit of the control groups this process runs in, of either version.
std::uint64_t controlGroupLimit() {
  std::uint64_t lowest = kNoLimit;
  std::ifstream groups("/proc/self/cgroup");
  std::string line;  // hierarchy:controllers:path, without controllers in version 2
  while (std::getline(groups, line)) {
    const auto first = line.find(':');
    const auto second = line.find(':', first + 1);
    if (first == std::string::npos || second == std::string::npos) {
      continue;
    }
    std::string controllers = line.substr(first, second - first);
    controllers.front() = ',';
    controllers += ',';
    const std::string path = line.substr(second + 1);
    if (controllers == ",,") {
      lowest = std::min(lowest, lowestLimit("/sys/fs/cgroup", path, "memory.max"));
    } else if (controllers.find(",memory,") != std::string::npos) {
      lowest = std::min(lowest, lowestLimit("/sys/fs/cgroup/memory", path, "memory.limit_in_bytes"));
    }
  }
  return lowest;
}

}  // namespace

std::optional<std::uint64_t> machineMemoryBytes() {
  const long pages = sysconf(_SC_PHYS_PAGES);
  const long pageSize = sysconf(_SC_PAGESIZE);
  if (pages <= 0 || pageSize <= 0) {
    return std::nullopt;
  }
  const std::uint64_t physical = static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize);
  const std::uint64_t usable = std::min(physical, controlGroupLimit());
  return usable - usable / 16;
}

void limitMemoryToMachine() {
  if constexpr (kHasShadowMemory) {
    return;
  }
  const std::optional<std::uint64_t> bytes = machineMemoryBytes();
  rlimit limit{};
  if (!bytes.has_value() || getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur <= *bytes) {
    return;  // RLIM_INFINITY is the highest value there is
  }
  limit.rlim_cur = static_cast<rlim_t>(*bytes);
  // A refusal leaves the process without this limit, which it can run without.
  static_cast<void>(setrlimit(RLIMIT_AS, &limit));
}

#else

std::optional<std::uint64_t> machineMemoryBytes() {
  return std::nullopt;
}

void limitMemoryToMachine() {}

#endif

}  // namespace support
