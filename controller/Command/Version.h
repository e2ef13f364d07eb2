#pragma once

namespace controller {

/// Such as "2.5".
[[nodiscard]] const char* programVersion();
/// The commit that the program was built from, or "unknown".
[[nodiscard]] const char* programCommit();

}  // namespace controller
