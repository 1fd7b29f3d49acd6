#pragma once

#include <qx/foundation/api.h>

#include <cstdint>

/// Runs the independent pieces of a large operation: in order on the caller's thread by default, on several threads
/// where the caller hands over another one (qx/foundation/thread_executor.h has one over std::thread).
///
/// An operation that takes an executor gives the same bits with every one: pieces write to places of their own, and
/// what has to be summed is summed afterwards in a fixed order. An executor is a plain value; what it calls must be
/// safe to call from the thread that runs the operation.
struct qxExecutor {
  using Piece = void (*)(void* context, std::int32_t index);

  /// Calls piece(context, index) once for every index below @p count, in any order and on any thread, and returns when
  /// all calls have returned. An exception of a piece is thrown again on the caller's thread, when all have ended.
  /// Null: in order, on the caller's thread.
  void (*run)(void* user, std::int32_t count, Piece piece, void* context) = nullptr;
  /// Handed to `run`.
  void* user = nullptr;
  /// How many pieces run at once, at least 1: operations keep memory for that many.
  std::int32_t concurrency = 1;

  /// Runs function(index) for every index below @p count.
  template <typename Function>
  void Run(std::int32_t count, Function function) const {
    if (run == nullptr || count < 2) {
      for (std::int32_t index = 0; index < count; ++index) function(index);
    } else {
      run(
          user, count, [](void* context, std::int32_t index) { (*static_cast<Function*>(context))(index); }, &function);
    }
  }
};
