#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

/// @file
/// Lets a test refuse the library's blocks of memory. Only one source of a test program may include it.

/// What becomes of the next blocks.
enum class Memory { Granted, RefusedByNull, RefusedByException };
inline Memory memory = Memory::Granted;
/// Blocks that are granted before the refusal begins.
inline int grantsNb = 0;

// Not inlined: the compiler would take malloc and free apart from new and delete and warn of a mismatch. A sanitizer
// would report the null.
__attribute__((noinline, no_sanitize("undefined"))) void* operator new[](std::size_t bytes) {
  const bool isRefused = memory != Memory::Granted && grantsNb-- <= 0;
  void* const block = isRefused ? nullptr : std::malloc(bytes);
  if (block == nullptr && !(isRefused && memory == Memory::RefusedByNull)) throw std::bad_alloc();
  return block;
}
[[gnu::noinline]] void operator delete[](void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
