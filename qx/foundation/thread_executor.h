#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/executor.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

/// @file
/// An executor over std::thread, in a header of its own: link with your platform's thread library.

namespace qxInternal {

inline void RunOnThreads(void* user, std::int32_t count, qxExecutor::Piece piece, void* context) {
  std::atomic<std::int32_t> next = 0;
  std::exception_ptr failure;
  std::mutex failureMutex;
  const auto work = [&] {
    for (std::int32_t index = next++; index < count; index = next++) {
      try {
        piece(context, index);
      } catch (...) {
        const std::lock_guard lock(failureMutex);
        if (!failure) failure = std::current_exception();
        next = count;
      }
    }
  };

  // The caller's thread works too. Fewer threads than wanted is no failure: the pieces are done by those there are.
  const std::int32_t helpersNb = std::min(static_cast<std::int32_t>(reinterpret_cast<std::intptr_t>(user)), count) - 1;
  std::vector<std::thread> helpers;
  try {
    for (std::int32_t i = 0; i < helpersNb; ++i) helpers.emplace_back(work);
  } catch (const std::exception&) {
  }
  work();
  for (std::thread& helper : helpers) helper.join();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace qxInternal

/// Runs pieces on up to @p threadsNb threads, the caller's among them. They are started for every operation, some ten
/// microseconds each, and have ended when it returns. When a piece throws, pieces that have not begun are left out.
[[nodiscard]] inline qxExecutor qxThreadExecutor(std::int32_t threadsNb) noexcept {
  const std::intptr_t count = std::max(threadsNb, std::int32_t{1});
  return {qxInternal::RunOnThreads, reinterpret_cast<void*>(count), static_cast<std::int32_t>(count)};
}
