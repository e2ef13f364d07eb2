#pragma once

namespace support {

/// Whether this is a build that compares what activities do with their arcs: the option QUORVA_CHECK_ARCS. In any other
/// build the step has no trace of the check.
#ifdef QUORVA_CHECK_ARCS
inline constexpr bool kArcsAreChecked = true;
#else
inline constexpr bool kArcsAreChecked = false;
#endif

}  // namespace support
