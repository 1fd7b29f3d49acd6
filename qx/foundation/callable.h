#pragma once

#include <qx/foundation/api.h>

#include <type_traits>

/// @file
/// Callables of any type, lambdas with a capture among them, as plain functions with a user pointer: the form in which
/// the library takes what it calls back. Nothing is copied; a callable has to live as long as the call it is given to.

/// A callable that is no plain function itself: it gives R for arguments of the types A.
template <typename F, typename R, typename... A>
concept qxCallable = std::is_invocable_r_v<R, F&, A...> && !std::is_convertible_v<F, R (*)(A...)>;

/// One or two callables behind a user pointer.
template <typename F, typename G = F>
struct qxCallables {
  F& first;
  G& second;

  /// One callable, which must outlive this object.
  explicit qxCallables(F& f) noexcept : first(f), second(f) {}
  /// Two callables, which must outlive this object.
  qxCallables(F& f, G& g) noexcept : first(f), second(g) {}

  /// The plain functions that go with a pointer to this object, with the arguments of the callables.
  template <typename R, typename... A>
  static R CallFirst(A... arguments, void* user) {
    return static_cast<qxCallables*>(user)->first(static_cast<A>(arguments)...);
  }
  /// The plain function of the second callable.
  template <typename R, typename... A>
  static R CallSecond(A... arguments, void* user) {
    return static_cast<qxCallables*>(user)->second(static_cast<A>(arguments)...);
  }
};
