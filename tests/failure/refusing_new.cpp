#include "tests/failure/refusing_new.h"

#include <cstdlib>
#include <new>

namespace {

std::int64_t requests = 0, live = 0;
std::int64_t granted = -1;  // negative: all
bool isForever = false, wasRefused = false;
refusal::Manner manner = refusal::Manner::Throws;

bool IsRefused() {
  ++requests;
  if (granted < 0 || granted-- > 0) return false;
  granted = isForever ? 0 : -1;
  return wasRefused = true;
}

// Not inlined: the compiler would take malloc and free apart from new and delete and warn of a mismatch.
[[gnu::noinline]] void* Obtain(std::size_t bytes) {
  ++live;
  return std::malloc(bytes > 0 ? bytes : 1);
}
[[gnu::noinline]] void Release(void* block) {
  if (block == nullptr) return;
  --live;
  std::free(block);
}

}  // namespace

namespace refusal {

std::int64_t Requests() { return requests; }
std::int64_t LiveBlocks() { return live; }

void Begin(std::int64_t count, Manner how, bool forever) {
  granted = count;
  manner = how;
  isForever = forever;
  wasRefused = false;
}

bool End() {
  granted = -1;
  return wasRefused;
}

}  // namespace refusal

void* operator new(std::size_t bytes) {
  if (IsRefused()) throw std::bad_alloc();
  return Obtain(bytes);
}
// Refuses by null, which a sanitizer would report here.
__attribute__((no_sanitize("undefined"))) void* operator new[](std::size_t bytes) {
  const bool isRefused = IsRefused();
  if (isRefused && manner == refusal::Manner::Throws) throw std::bad_alloc();
  return isRefused ? nullptr : Obtain(bytes);
}
void operator delete(void* block) noexcept { Release(block); }
void operator delete[](void* block) noexcept { Release(block); }
void operator delete(void* block, std::size_t) noexcept { Release(block); }
void operator delete[](void* block, std::size_t) noexcept { Release(block); }
