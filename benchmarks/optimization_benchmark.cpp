#include <qx/solvers/optimization.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tests/solvers/minimisation_problems.h"
#include <benchmark/benchmark.h>

#if __has_include(<lbfgs.h>)
#include <lbfgs.h>
#define HAS_LIBLBFGS
#endif
#if __has_include(<nlopt.h>)
#include <nlopt.h>
#define HAS_NLOPT
#endif
#if __has_include(<gsl/gsl_min.h>)
#include <gsl/gsl_errno.h>
#include <gsl/gsl_min.h>
#define HAS_GSL
#endif
#if __has_include(<boost/math/tools/minima.hpp>)
#include <boost/math/tools/minima.hpp>
#define HAS_BOOST
#endif

namespace {

using problems::Problem;

constexpr int memory = 5;

/// Counts what a minimiser asks for, and when the value came within 1e-6 max(1, |f0 - f*|) of the published minimum.
/// Points are counted beside evaluations: the unbounded method evaluates the start of each line search once more.
struct Count {
  const Problem<double>* problem;
  double start;
  double least;
  int evaluations = 0;
  int points = 0;
  int pointsUntilTarget = 0;
  std::vector<double> gradient;
  std::vector<double> last;

  explicit Count(const Problem<double>& p) : problem(&p), gradient(p.start.size()) {
    start = p.evaluate(p.start.size(), p.start.data(), gradient.data());
    least = start;
  }
  double Evaluate(const double* x, double* g) {
    const double f = problem->evaluate(gradient.size(), x, g);
    ++evaluations;
    if (!std::equal(last.begin(), last.end(), x) || last.empty()) {
      ++points;
      last.assign(x, x + gradient.size());
    }
    least = std::min(least, f);
    const bool isReached = f - problem->minimum <= 1e-6 * std::max(1.0, std::abs(start - problem->minimum));
    if (isReached && pointsUntilTarget == 0) pointsUntilTarget = points;
    return f;
  }
};

// The callbacks of QX come in pairs: the value calculates the gradient too and hands it over, as the peers' do.

double QxValue(const CQXVectorN<double>& x, void* user) {
  Count& count = *static_cast<Count*>(user);
  return count.Evaluate(x.Data(), count.gradient.data());
}

void QxGradient(const CQXVectorN<double>&, CQXVectorN<double>& gradient, void* user) {
  gradient.Fill(static_cast<Count*>(user)->gradient.data());
}

void RunQx(Count& count, int maxIterations) {
  const Problem<double>& p = *count.problem;
  const auto n = static_cast<std::int32_t>(p.start.size());
  CQXVectorN<double> x(n, p.start.data());
  QX_OPTIMIZATION_INFO info = QX_OPT_IN_PROGRESS;
  if (p.kinds.empty()) {
    CQXOptimization::QuasiNewtonLBFGS(n, std::min(n, memory), x, 1e-12, 1e-14, 1e-6, maxIterations, &count, QxValue,
                                      QxGradient, info);
  } else {
    CQXOptimization::QuasiNewtonConstraintLBFGSB(n, std::min(n, memory), x, 1e-12, 1e-14, 1e-6, maxIterations,
                                                 p.kinds.data(), p.lower.data(), p.upper.data(), &count, QxValue,
                                                 QxGradient, info);
  }
}

#ifdef HAS_LIBLBFGS
void RunLiblbfgs(Count& count, int maxIterations) {
  const Problem<double>& p = *count.problem;
  lbfgs_parameter_t parameters;
  lbfgs_parameter_init(&parameters);
  parameters.m = std::min(static_cast<int>(p.start.size()), memory);
  parameters.epsilon = 1e-6;
  parameters.past = 1;
  parameters.delta = 1e-14;
  parameters.max_iterations = maxIterations;
  std::vector<double> x = p.start;
  double f = 0;
  lbfgs(
      static_cast<int>(x.size()), x.data(), &f,
      [](void* user, const double* at, double* g, int, double) { return static_cast<Count*>(user)->Evaluate(at, g); },
      nullptr, &count, &parameters);
}
#endif

#ifdef HAS_NLOPT
void RunNlopt(Count& count, int maxEvaluations) {
  const Problem<double>& p = *count.problem;
  nlopt_opt task = nlopt_create(NLOPT_LD_LBFGS, static_cast<unsigned>(p.start.size()));
  nlopt_set_vector_storage(task, memory);
  nlopt_set_ftol_rel(task, 1e-14);
  nlopt_set_maxeval(task, maxEvaluations);
  nlopt_set_min_objective(
      task,
      [](unsigned, const double* at, double* g, void* user) {
        Count& c = *static_cast<Count*>(user);
        return c.Evaluate(at, g != nullptr ? g : c.gradient.data());
      },
      &count);
  if (!p.kinds.empty()) {
    std::vector<double> lower(p.start.size(), -HUGE_VAL), upper(p.start.size(), HUGE_VAL);
    for (std::size_t i = 0; i < lower.size(); ++i) {
      if (p.kinds[i] == QX_LOWER_BOUND || p.kinds[i] == QX_BOTH_BOUNDS) lower[i] = p.lower[i];
      if (p.kinds[i] >= QX_BOTH_BOUNDS) upper[i] = p.upper[i];
    }
    nlopt_set_lower_bounds(task, lower.data());
    nlopt_set_upper_bounds(task, upper.data());
  }
  std::vector<double> x = p.start;
  double f = 0;
  nlopt_optimize(task, x.data(), &f);
  nlopt_destroy(task);
}
#endif

using Runner = void (*)(Count&, int);

/// Time and evaluations on a standard problem; points_until_target is 0 when another stationary point was found.
void Solve(benchmark::State& state, const Problem<double>& problem, Runner run) {
  Count count(problem);
  for (auto _ : state) {
    count = Count(problem);
    run(count, 2000);
  }
  state.counters["evaluations"] = count.evaluations;
  state.counters["points"] = count.points;
  state.counters["points_until_target"] = count.pointsUntilTarget;
  state.counters["error"] = count.least - problem.minimum;
}

/// Time for one iteration beside the evaluations, on the chain with or without bounds.
void Iterate(benchmark::State& state, std::size_t n, bool isBounded, Runner run, int limit) {
  const auto chain = [](std::size_t size, const double* x, double* g) { return problems::Chain<double>(size, x, g); };
  std::vector<QX_OPTIMIZATION_CONSTRAINTS> kinds;
  std::vector<double> lower, upper;
  if (isBounded) {
    kinds.assign(n, QX_BOTH_BOUNDS);
    lower = problems::Repeat<double>(n, {1, -100});
    upper.assign(n, 100);
  }
  const Problem<double> problem("chain", problems::Repeat<double>(n, {3}), 0, chain, kinds, lower, upper);
  Count count(problem);
  for (auto _ : state) {
    count = Count(problem);
    run(count, limit);
  }
  state.counters["evaluations"] = count.evaluations;
  state.counters["least"] = count.least;
  state.counters["per_evaluation"] = benchmark::Counter(
      count.evaluations, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// One variable: time and evaluations beside Boost.Math and GSL, at the same tolerance.

int evaluations1D = 0;  // plain counters: the functions below have no user argument in the peers
double Pole(double x) {
  ++evaluations1D;
  return x + 1 / x;
}
double Waves(double x) {
  ++evaluations1D;
  return std::sin(x) + std::sin(10 * x / 3);
}
double WavesSlope(double x) { return std::cos(x) + 10 * std::cos(10 * x / 3) / 3; }
double PoleSlope(double x) { return 1 - 1 / (x * x); }

void Minimise1D(benchmark::State& state, const std::function<double()>& minimise) {
  int runs = 0;
  evaluations1D = 0;
  double x = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(x = minimise());
    ++runs;
  }
  state.counters["evaluations"] = static_cast<double>(evaluations1D) / runs;
  state.counters["x"] = x;
}

void Register1D(const std::string& name, double (*f)(double), double (*df)(double), double a, double b, double c) {
  const auto add = [&](const char* method, std::function<double()> minimise) {
    benchmark::RegisterBenchmark((name + "/" + method).c_str(), Minimise1D, std::move(minimise));
  };
  add("GoldenSection", [=] {
    double x;
    CQXOptimization::GoldenSection(a, b, c, 1e-8, x, f);
    return x;
  });
  add("ParabolicDescent", [=] {
    double x;
    CQXOptimization::ParabolicDescent(a, b, c, 1e-8, x, f);
    return x;
  });
  add("DerivativeEstimationDescent", [=] {
    double x;
    CQXOptimization::DerivativeEstimationDescent(a, b, c, 1e-8, x, f, df);
    return x;
  });
#ifdef HAS_BOOST
  add("boost_brent", [=] { return boost::math::tools::brent_find_minima(f, a, c, 26).first; });
#endif
#ifdef HAS_GSL
  const auto gsl = [=](const gsl_min_fminimizer_type* type) {
    double (*function)(double) = f;
    gsl_function wrapped{[](double x, void* p) { return (*static_cast<double (**)(double)>(p))(x); }, &function};
    gsl_min_fminimizer* minimizer = gsl_min_fminimizer_alloc(type);
    gsl_min_fminimizer_set(minimizer, &wrapped, b, a, c);
    for (int i = 0; i < 100; ++i) {
      gsl_min_fminimizer_iterate(minimizer);
      if (gsl_min_test_interval(gsl_min_fminimizer_x_lower(minimizer), gsl_min_fminimizer_x_upper(minimizer), 1e-9,
                                1e-8) == GSL_SUCCESS) {
        break;
      }
    }
    const double x = gsl_min_fminimizer_x_minimum(minimizer);
    gsl_min_fminimizer_free(minimizer);
    return x;
  };
  add("gsl_brent", [=] { return gsl(gsl_min_fminimizer_brent); });
  add("gsl_golden", [=] { return gsl(gsl_min_fminimizer_goldensection); });
#endif
}

const bool isRegistered = [] {
#ifdef HAS_GSL
  gsl_set_error_handler_off();
#endif
  Register1D("Pole", Pole, PoleSlope, 0.25, 2, 8);
  Register1D("Waves", Waves, WavesSlope, 4, 5, 6);

  std::vector<std::pair<const char*, Runner>> runners = {{"qx", RunQx}};
#ifdef HAS_LIBLBFGS
  runners.emplace_back("liblbfgs", RunLiblbfgs);
#endif
#ifdef HAS_NLOPT
  runners.emplace_back("nlopt", RunNlopt);
#endif
  static const std::vector<Problem<double>> lists[] = {problems::Unbounded<double>(), problems::Bounded<double>()};
  for (const auto& list : lists) {
    for (const Problem<double>& problem : list) {
      for (const auto& [name, run] : runners) {
        if (!problem.kinds.empty() && std::string(name) == "liblbfgs") continue;  // knows no bounds
        const std::string title = std::string(problem.name) + " n=" + std::to_string(problem.start.size()) + "/" + name;
        benchmark::RegisterBenchmark(title.c_str(), Solve, problem, run)->Unit(benchmark::kMicrosecond);
      }
    }
  }
  for (const std::size_t n : {std::size_t(1000), std::size_t(100000)}) {
    for (const bool isBounded : {false, true}) {
      for (const auto& [name, run] : runners) {
        if (isBounded && std::string(name) == "liblbfgs") continue;
        const std::string title =
            std::string(isBounded ? "bounded" : "free") + " iterations n=" + std::to_string(n) + "/" + name;
        const int limit = std::string(name) == "nlopt" ? 40 : 20;
        benchmark::RegisterBenchmark(title.c_str(), Iterate, n, isBounded, run, limit)->Unit(benchmark::kMicrosecond);
      }
    }
  }
  return true;
}();

}  // namespace
