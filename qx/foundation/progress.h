#pragma once

#include <qx/foundation/api.h>

#include <concepts>
#include <cstdint>
#include <type_traits>

class qxProgress;

/// What qxProgress() can be made of: called with two counts, and no qxProgress itself.
template <typename Callable>
concept qxProgressCallable =
    std::invocable<Callable&, std::int32_t, std::int32_t> && !std::same_as<std::remove_cvref_t<Callable>, qxProgress>;

/// Reports from a long operation: how many steps are done and how many there are in all; the one who listens may
/// cancel.
///
/// It is a function pointer and a user pointer; the constructor from a callable sets both. Nothing is owned: a callable
/// is borrowed and must live as long as the call that it is handed to.
class qxProgress {
 public:
  /// @return false to cancel the operation
  using Function = bool (*)(std::int32_t done, std::int32_t total, void* user);

  /// Nobody listens.
  constexpr qxProgress() noexcept = default;
  constexpr qxProgress(Function function, void* user) noexcept : m_function(function), m_user(user) {}

  /// Any callable that takes (done, total). What it returns counts as bool; one that returns nothing never cancels.
  template <qxProgressCallable Callable>
  qxProgress(Callable&& callable) noexcept  // NOLINT(bugprone-forwarding-reference-overload): copies are no callables
      : m_function(&Call<std::remove_reference_t<Callable>>), m_user(reinterpret_cast<void*>(AddressOf(callable))) {}

  /// Reports. @return false when the operation is to be cancelled
  [[nodiscard]] bool Report(std::int32_t done, std::int32_t total) const {
    return m_function == nullptr || m_function(done, total, m_user);
  }

 private:
  template <typename Callable>
  static auto* AddressOf(Callable& callable) noexcept {
    if constexpr (std::is_function_v<Callable>) {
      return &callable;
    } else {
      return &const_cast<unsigned char&>(reinterpret_cast<const volatile unsigned char&>(callable));
    }
  }

  template <typename Callable>
  static bool Call(std::int32_t done, std::int32_t total, void* user) {
    Callable& callable = *reinterpret_cast<Callable*>(user);
    if constexpr (std::is_void_v<std::invoke_result_t<Callable&, std::int32_t, std::int32_t>>) {
      callable(done, total);
      return true;
    } else {
      return static_cast<bool>(callable(done, total));
    }
  }

  Function m_function = nullptr;
  void* m_user = nullptr;
};
