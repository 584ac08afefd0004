// blocks.h - refusing large blocks.
#pragma once

#include <cstddef>

namespace fuzz {

/// What malloc, calloc and realloc give at most from now on, in bytes; new is not bound by it. A
/// stream may say that a table of buckets is large, which is then reserved and walked; here that is
/// refused, as a host's memory may be, so that inputs do not take seconds.
void limitBlocks(std::size_t bytes);

}  // namespace fuzz
