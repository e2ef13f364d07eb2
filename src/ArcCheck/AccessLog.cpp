#include "ArcCheck/AccessLog.h"

#include <limits>
#include <utility>

namespace support {

namespace {

constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

}  // namespace

AccessLog* AccessLog::listening_ = nullptr;

AccessLog::AccessLog(std::vector<Range> ranges) : ranges_(std::move(ranges)), entryOf_(ranges_.size(), kNone) {
  accesses_.reserve(ranges_.size());
}

AccessLog::~AccessLog() {
  stop();
}

void AccessLog::start() {
  for (const Access& access : accesses_) {
    entryOf_[access.range] = kNone;
  }
  accesses_.clear();
  listening_ = this;
}

std::span<const AccessLog::Access> AccessLog::stop() {
  if (listening_ == this) {
    listening_ = nullptr;
    seen_ += accesses_.size();
  }
  return accesses_;
}

void AccessLog::note(const volatile void* address, std::size_t bytes, bool isWrite) noexcept {
  AccessLog* const log = listening_;
  if (log == nullptr) {
    return;
  }
  // The linker may have taken a function of the standard library that is used here from instrumented code.
  listening_ = nullptr;
  log->enter(reinterpret_cast<std::uintptr_t>(address), bytes, isWrite);
  listening_ = log;
}

void AccessLog::enter(std::uintptr_t address, std::size_t bytes, bool isWrite) noexcept {
  const std::uintptr_t end = address + bytes;
  // The first range that ends behind the address.
  std::size_t low = 0;
  std::size_t high = ranges_.size();
  while (low < high) {
    const std::size_t middle = low + (high - low) / 2;
    if (ranges_[middle].begin + ranges_[middle].bytes > address) {
      high = middle;
    } else {
      low = middle + 1;
    }
  }
  for (std::size_t range = low; range < ranges_.size() && ranges_[range].begin < end; ++range) {
    if (entryOf_[range] == kNone) {
      entryOf_[range] = accesses_.size();
      accesses_.push_back({range, false, false});
    }
    Access& access = accesses_[entryOf_[range]];
    access.isRead = access.isRead || !isWrite;
    access.isWritten = access.isWritten || isWrite;
  }
}

}  // namespace support
