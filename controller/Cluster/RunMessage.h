#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "Process/Executor.h"

namespace controller {

/// What processes of a cluster send each other: a run to start, and what became of one. As JSON, behind which the result
/// file stands as it is.
[[nodiscard]] std::vector<std::byte> packRequest(std::int64_t ticket, const RunRequest& request);
[[nodiscard]] std::vector<std::byte> packFinished(const Executor::Finished& finished);

struct TicketedRequest {
  std::int64_t ticket = 0;
  RunRequest request;
};
/// Both throw std::exception for bytes that are no such message.
[[nodiscard]] TicketedRequest unpackRequest(std::span<const std::byte> bytes);
[[nodiscard]] Executor::Finished unpackFinished(std::span<const std::byte> bytes);

}  // namespace controller
