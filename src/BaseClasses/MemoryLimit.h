#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace support {

/// Keeps the process's address space to what the machine can give it, so that a model too large for the memory meets a
/// failed allocation, which has words of its own, and not the kernel's out-of-memory killer, which has none. A limit
/// that is lower already stays. Linux only, and not in a build with a sanitizer, whose shadow memory needs far more
/// addresses than memory; elsewhere it does nothing.
void limitMemoryToMachine();

/// Bytes of memory that the machine, or the control group this process runs in, can give to the process, less a
/// sixteenth for the kernel's own bookkeeping; nothing where that cannot be told.
[[nodiscard]] std::optional<std::uint64_t> machineMemoryBytes();

/// Bytes told by the text of a control group's limit file; nothing for "max", which is no limit, or for anything else
/// that is no number.
[[nodiscard]] std::optional<std::uint64_t> parseMemoryLimit(std::string_view text);

}  // namespace support
