// All 35 problems of More, Garbow and Hillstrom from their starts times 1, 10 and 100: how many end at the published
// least value, what that costs, and how long it takes, beside the peers.

#include <qx/matrices/matrix_mn.h>
#include <qx/solvers/optimization.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "tests/solvers/more_garbow_hillstrom.h"
#include <benchmark/benchmark.h>

#if __has_include(<gsl/gsl_multimin.h>) && defined(QX_LINK_GSL)
#include <gsl/gsl_blas.h>
#include <gsl/gsl_errno.h>
#include <gsl/gsl_multifit_nlinear.h>
#include <gsl/gsl_multimin.h>
#define HAS_GSL
#endif
#if __has_include(<nlopt.h>)
#include <nlopt.h>
#define HAS_NLOPT
#endif
#if __has_include(<cminpack-1/cminpack.h>) && defined(QX_LINK_CMINPACK)
#include <cminpack-1/cminpack.h>
#define HAS_CMINPACK
#endif

namespace {

constexpr int maxIterations = 5000;

/// One problem with its start, and what a method asked for.
struct Run {
  const mgh::Problem* problem;
  std::vector<double> x;
  int values = 0;
  int gradients = 0;

  double Value(const double* at) {
    ++values;
    return problem->Value(at, static_cast<double*>(nullptr));
  }
  void Gradient(const double* at, double* gradient) {
    ++gradients;
    problem->Value(at, gradient);
  }
  void Residuals(const double* at, double* r) {
    ++values;
    problem->Evaluate(at, r);
  }
  void Jacobian(const double* at, double* j) {
    ++gradients;
    problem->EvaluateJacobian(at, j);
  }
};

using Runner = void (*)(Run&);

// ---- QX

using Vector = CQXVectorN<double>;

double ValueOf(const Vector& x, void* run) { return static_cast<Run*>(run)->Value(x.Data()); }
void GradientOf(const Vector& x, Vector& g, void* run) { static_cast<Run*>(run)->Gradient(x.Data(), g.Data()); }

template <auto method>
void ByGradient(Run& run) {
  Vector x(static_cast<std::int32_t>(run.x.size()), run.x.data());
  QX_OPTIMIZATION_INFO info;
  method(x.Dim(), x, 1e-10, 1e-15, 1e-8, maxIterations, &run, ValueOf, GradientOf, info);
  x.Dump(run.x.data());
}

template <auto method>
void ByValue(Run& run) {
  Vector x(static_cast<std::int32_t>(run.x.size()), run.x.data());
  QX_OPTIMIZATION_INFO info;
  method(x.Dim(), x, 0.5, 1e-10, 1e-15, 10 * maxIterations, &run, ValueOf, info);
  x.Dump(run.x.data());
}

void ByLimitedMemory(Run& run) {
  Vector x(static_cast<std::int32_t>(run.x.size()), run.x.data());
  QX_OPTIMIZATION_INFO info;
  CQXOptimization::QuasiNewtonLBFGS(x.Dim(), std::min(x.Dim(), 5), x, 1e-10, 1e-15, 1e-8, maxIterations, &run, ValueOf,
                                    GradientOf, info);
  x.Dump(run.x.data());
}

void ByLeastSquares(Run& run) {
  Vector x(static_cast<std::int32_t>(run.x.size()), run.x.data());
  CQXLeastSquaresOptions<double> options;
  options.maxIterations = maxIterations;
  QX_OPTIMIZATION_INFO info;
  CQXOptimization::LevenbergMarquardt(
      x.Dim(), static_cast<std::int32_t>(run.problem->m), x, options,
      [&](const Vector& at, Vector& r) { run.Residuals(at.Data(), r.Data()); },
      [&](const Vector& at, CQXMatrixMN<double>& j) { run.Jacobian(at.Data(), j.Data()); }, info);
  x.Dump(run.x.data());
}

// ---- GSL

#ifdef HAS_GSL
gsl_vector_view ViewOf(std::vector<double>& x) { return gsl_vector_view_array(x.data(), x.size()); }

void GslByGradient(Run& run, const gsl_multimin_fdfminimizer_type* type) {
  gsl_multimin_function_fdf function{
      [](const gsl_vector* x, void* p) { return static_cast<Run*>(p)->Value(x->data); },
      [](const gsl_vector* x, void* p, gsl_vector* g) { static_cast<Run*>(p)->Gradient(x->data, g->data); },
      [](const gsl_vector* x, void* p, double* f, gsl_vector* g) {
        *f = static_cast<Run*>(p)->Value(x->data);
        static_cast<Run*>(p)->Gradient(x->data, g->data);
      },
      run.x.size(), &run};
  gsl_multimin_fdfminimizer* minimizer = gsl_multimin_fdfminimizer_alloc(type, run.x.size());
  const gsl_vector_view start = ViewOf(run.x);
  gsl_multimin_fdfminimizer_set(minimizer, &function, &start.vector, 0.1, 0.1);
  for (int i = 0; i < maxIterations; ++i) {
    if (gsl_multimin_fdfminimizer_iterate(minimizer) != GSL_SUCCESS) break;
    if (gsl_multimin_test_gradient(minimizer->gradient, 1e-8) == GSL_SUCCESS) break;
  }
  std::copy_n(minimizer->x->data, run.x.size(), run.x.data());
  gsl_multimin_fdfminimizer_free(minimizer);
}
void GslBfgs(Run& run) { GslByGradient(run, gsl_multimin_fdfminimizer_vector_bfgs2); }
void GslConjugate(Run& run) { GslByGradient(run, gsl_multimin_fdfminimizer_conjugate_pr); }
void GslSteepest(Run& run) { GslByGradient(run, gsl_multimin_fdfminimizer_steepest_descent); }

void GslSimplex(Run& run) {
  gsl_multimin_function function{[](const gsl_vector* x, void* p) { return static_cast<Run*>(p)->Value(x->data); },
                                 run.x.size(), &run};
  gsl_multimin_fminimizer* minimizer = gsl_multimin_fminimizer_alloc(gsl_multimin_fminimizer_nmsimplex2, run.x.size());
  std::vector<double> steps(run.x.size(), 0.5);
  const gsl_vector_view start = ViewOf(run.x), step = ViewOf(steps);
  gsl_multimin_fminimizer_set(minimizer, &function, &start.vector, &step.vector);
  while (run.values < 10 * maxIterations) {
    if (gsl_multimin_fminimizer_iterate(minimizer) != GSL_SUCCESS) break;
    if (gsl_multimin_test_size(gsl_multimin_fminimizer_size(minimizer), 1e-10) == GSL_SUCCESS) break;
  }
  std::copy_n(minimizer->x->data, run.x.size(), run.x.data());
  gsl_multimin_fminimizer_free(minimizer);
}

void GslLeastSquares(Run& run) {
  const mgh::Problem& problem = *run.problem;
  if (problem.m < problem.n) return;
  gsl_multifit_nlinear_fdf function{};
  function.f = [](const gsl_vector* x, void* p, gsl_vector* r) {
    static_cast<Run*>(p)->Residuals(x->data, r->data);
    return static_cast<int>(GSL_SUCCESS);
  };
  function.df = [](const gsl_vector* x, void* p, gsl_matrix* j) {
    static_cast<Run*>(p)->Jacobian(x->data, j->data);
    return static_cast<int>(GSL_SUCCESS);
  };
  function.n = problem.m;
  function.p = problem.n;
  function.params = &run;
  const gsl_multifit_nlinear_parameters parameters = gsl_multifit_nlinear_default_parameters();
  gsl_multifit_nlinear_workspace* work =
      gsl_multifit_nlinear_alloc(gsl_multifit_nlinear_trust, &parameters, problem.m, problem.n);
  const gsl_vector_view start = ViewOf(run.x);
  gsl_multifit_nlinear_init(&start.vector, &function, work);
  int info = 0;
  gsl_multifit_nlinear_driver(maxIterations, 1e-10, 1e-10, 1e-12, nullptr, nullptr, &info, work);
  std::copy_n(gsl_multifit_nlinear_position(work)->data, run.x.size(), run.x.data());
  gsl_multifit_nlinear_free(work);
}
#endif

// ---- NLopt

#ifdef HAS_NLOPT
void Nlopt(Run& run, nlopt_algorithm algorithm) {
  nlopt_opt task = nlopt_create(algorithm, static_cast<unsigned>(run.x.size()));
  nlopt_set_ftol_rel(task, 1e-15);
  nlopt_set_xtol_rel(task, 1e-10);
  nlopt_set_maxeval(task, 10 * maxIterations);
  nlopt_set_initial_step1(task, 0.5);
  nlopt_set_min_objective(
      task,
      [](unsigned, const double* at, double* g, void* p) {
        Run& self = *static_cast<Run*>(p);
        if (g != nullptr) self.Gradient(at, g);
        return self.Value(at);
      },
      &run);
  double f = 0;
  nlopt_optimize(task, run.x.data(), &f);
  nlopt_destroy(task);
}
void NloptLbfgs(Run& run) { Nlopt(run, NLOPT_LD_LBFGS); }
void NloptNewton(Run& run) { Nlopt(run, NLOPT_LD_TNEWTON_PRECOND_RESTART); }
void NloptSimplex(Run& run) { Nlopt(run, NLOPT_LN_NELDERMEAD); }
void NloptPraxis(Run& run) { Nlopt(run, NLOPT_LN_PRAXIS); }
#endif

// ---- MINPACK

#ifdef HAS_CMINPACK
void Minpack(Run& run) {
  const int m = static_cast<int>(run.problem->m), n = static_cast<int>(run.problem->n);
  std::vector<double> r(run.problem->m), columns(run.problem->m * run.problem->n), diagonal(run.x.size()),
      qtf(run.x.size()), work[3];
  for (auto& w : work) w.resize(run.x.size());
  std::vector<double> last(run.problem->m);
  std::vector<int> pivots(run.x.size());
  int values = 0, jacobians = 0;
  lmder(
      [](void* p, int rows, int variables, const double* x, double* residuals, double* jacobian, int, int flag) {
        Run& self = *static_cast<Run*>(p);
        if (flag == 1) {
          self.Residuals(x, residuals);
        } else {
          const auto mm = static_cast<std::size_t>(rows), nn = static_cast<std::size_t>(variables);
          std::vector<double> j(mm * nn);
          self.Jacobian(x, j.data());
          for (std::size_t i = 0; i < mm; ++i) {
            for (std::size_t k = 0; k < nn; ++k) jacobian[k * mm + i] = j[i * nn + k];
          }
        }
        return 0;
      },
      &run, m, n, run.x.data(), r.data(), columns.data(), m, 1e-12, 1e-10, 0, maxIterations, diagonal.data(), 1, 100, 0,
      &values, &jacobians, pivots.data(), qtf.data(), work[0].data(), work[1].data(), work[2].data(), last.data());
}
#endif

void SolveAll(benchmark::State& state, double factor, Runner runner) {
  static const std::vector<mgh::Problem> problems = mgh::All();
  int solved = 0, known = 0, values = 0, gradients = 0;
  for (auto _ : state) {
    solved = known = values = gradients = 0;
    for (const mgh::Problem& problem : problems) {
      Run run{&problem, problem.start};
      const bool isZero = std::all_of(run.x.begin(), run.x.end(), [](double x) { return x == 0; });
      for (double& x : run.x) x = isZero && factor != 1 ? factor : factor * x;  // as the authors do
      runner(run);
      values += run.values;
      gradients += run.gradients;
      const double f = problem.Value(run.x.data(), static_cast<double*>(nullptr));
      solved += problem.IsSolved(f);
      known += problem.IsSolved(f, true);
    }
  }
  state.counters["solved"] = solved;
  state.counters["known"] = known;
  state.counters["values"] = values;
  state.counters["gradients"] = gradients;
}

const bool isRegistered = [] {
  using O = CQXOptimization;
  std::vector<std::pair<const char*, Runner>> runners = {
      {"qx LevenbergMarquardt", ByLeastSquares},
#ifdef HAS_CMINPACK
      {"minpack lmder", Minpack},
#endif
#ifdef HAS_GSL
      {"gsl multifit_nlinear", GslLeastSquares},
#endif
      {"qx QuasiNewtonBFGS", ByGradient<O::QuasiNewtonBFGS<double>>},
#ifdef HAS_GSL
      {"gsl bfgs2", GslBfgs},
#endif
      {"qx QuasiNewtonLBFGS", ByLimitedMemory},
#ifdef HAS_NLOPT
      {"nlopt LBFGS", NloptLbfgs},
      {"nlopt truncated Newton", NloptNewton},
#endif
      {"qx ConjugateGradient", ByGradient<O::ConjugateGradient<double>>},
#ifdef HAS_GSL
      {"gsl conjugate_pr", GslConjugate},
#endif
      {"qx FastestDescend", ByGradient<O::FastestDescend<double>>},
#ifdef HAS_GSL
      {"gsl steepest_descent", GslSteepest},
#endif
      {"qx SimplexDescent", ByValue<O::SimplexDescent<double>>},
#ifdef HAS_GSL
      {"gsl nmsimplex2", GslSimplex},
#endif
#ifdef HAS_NLOPT
      {"nlopt Nelder-Mead", NloptSimplex},
#endif
      {"qx PowellConjugateDirections", ByValue<O::PowellConjugateDirections<double>>},
#ifdef HAS_NLOPT
      {"nlopt PRAXIS", NloptPraxis},
#endif
  };
#ifdef HAS_GSL
  gsl_set_error_handler_off();
#endif
  for (const auto& [name, runner] : runners) {
    for (const int factor : {1, 10, 100}) {
      const std::string title = std::string(name) + " x" + std::to_string(factor);
      benchmark::RegisterBenchmark(title.c_str(), SolveAll, static_cast<double>(factor), runner)
          ->Unit(benchmark::kMillisecond)
          ->Iterations(1);
    }
  }
  return true;
}();

}  // namespace
