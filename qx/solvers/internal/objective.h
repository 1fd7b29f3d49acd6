#pragma once

#include <qx/foundation/scalar.h>
#include <qx/vectors/vector_n.h>

/// @file
/// The function that is minimised, in the two forms of the interface. Internal, not part of the interface.

namespace qxSolvers {

/// Function and gradient of n variables, called with or without the user's argument.
template <qxReal T>
class Objective {
 public:
  using Vector = CQXVectorN<T>;

  Objective(T (*f)(const Vector&), void (*g)(const Vector&, Vector&)) : m_f(f), m_g(g) {}
  Objective(void* user, T (*f)(const Vector&, void*), void (*g)(const Vector&, Vector&, void*))
      : m_user(user), m_fWithUser(f), m_gWithUser(g) {}

  [[nodiscard]] T Value(const Vector& x) const { return m_f != nullptr ? m_f(x) : m_fWithUser(x, m_user); }

  void CalculateGradient(const Vector& x, Vector& gradient) const {
    m_g != nullptr ? m_g(x, gradient) : m_gWithUser(x, gradient, m_user);
  }

 private:
  void* m_user = nullptr;
  T (*m_f)(const Vector&) = nullptr;
  void (*m_g)(const Vector&, Vector&) = nullptr;
  T (*m_fWithUser)(const Vector&, void*) = nullptr;
  void (*m_gWithUser)(const Vector&, Vector&, void*) = nullptr;
};

}  // namespace qxSolvers
