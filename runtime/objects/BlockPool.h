// Small blocks.
//
// A text of settings becomes a small object for each value, and most of what a general allocator
// does for each is more than they need. The pool cuts slabs into blocks of one size. Blocks that
// are made one after the other lie side by side, and a slab whose blocks are all free goes back to
// the system. Thread safe; threads have pools of their own, and a block may be freed by any thread.
#pragma once

#include <cstddef>

namespace bibrt {

// The largest block of the pool.
inline constexpr std::size_t kMaxPooled = 512;

// A block of size bytes, aligned for every type; null when memory runs out.
// REQUIRES: 0 < size <= kMaxPooled.
void* AllocPooled(std::size_t size) noexcept;

// Frees a block of AllocPooled.
void FreePooled(void* block) noexcept;

} // namespace bibrt
