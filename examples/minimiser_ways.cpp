// Draws the ways of the minimisers over the contours of a function of two variables, and says what each one cost.

#include <qx/solvers/optimization.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <functional>
#include <iostream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "gnuplot.h"
#include <CLI/CLI.hpp>

namespace {

using Vector = CQXVectorN<double>;
using Point = std::array<double, 2>;

struct Landscape {
  double (*value)(double x, double y);
  void (*slopes)(double x, double y, double& alongX, double& alongY);
  double left, right, bottom, top;
  Point start;
};

const std::map<std::string, Landscape> landscapes = {
    {"rosenbrock",
     {[](double x, double y) { return (1 - x) * (1 - x) + 100 * (y - x * x) * (y - x * x); },
      [](double x, double y, double& alongX, double& alongY) {
        alongX = -2 * (1 - x) - 400 * x * (y - x * x);
        alongY = 200 * (y - x * x);
      },
      -1.8,
      1.8,
      -0.8,
      2.2,
      {-1.2, 1}}},
    {"himmelblau",
     {[](double x, double y) { return (x * x + y - 11) * (x * x + y - 11) + (x + y * y - 7) * (x + y * y - 7); },
      [](double x, double y, double& alongX, double& alongY) {
        alongX = 4 * x * (x * x + y - 11) + 2 * (x + y * y - 7);
        alongY = 2 * (x * x + y - 11) + 4 * y * (x + y * y - 7);
      },
      -6,
      6,
      -6,
      6,
      {0.5, -0.5}}},
    {"beale",
     {[](double x, double y) {
        const double a = 1.5 - x + x * y, b = 2.25 - x + x * y * y, c = 2.625 - x + x * y * y * y;
        return a * a + b * b + c * c;
      },
      [](double x, double y, double& alongX, double& alongY) {
        const double a = 1.5 - x + x * y, b = 2.25 - x + x * y * y, c = 2.625 - x + x * y * y * y;
        alongX = 2 * (a * (y - 1) + b * (y * y - 1) + c * (y * y * y - 1));
        alongY = 2 * x * (a + 2 * b * y + 3 * c * y * y);
      },
      -1,
      4.5,
      -2,
      2,
      {0, -1.5}}}};

/// What a method did: the points at which the value got smaller, and the number of evaluations.
struct Way {
  const char* name;
  std::vector<Point> points;
  int values = 0;
  double least = HUGE_VAL;
  QX_OPTIMIZATION_INFO info = QX_OPT_IN_PROGRESS;
};

const char* WordsFor(QX_OPTIMIZATION_INFO info) {
  switch (info) {
    case QX_OPT_FUNCTION_CONVERGED:
      return "the function falls no more";
    case QX_OPT_STEP_CONVERGED:
      return "the steps are small";
    case QX_OPT_GRADIENT_CONVERGED:
      return "the gradient is small";
    case QX_OPT_ITERATION_LIMIT:
      return "limit of iterations";
    default:
      return "no lower value found";
  }
}

std::vector<Way> FollowAll(const Landscape& landscape, const Point& start, int limit) {
  constexpr double xTol = 1e-9, fTol = 1e-13, gTol = 1e-6;
  using F = std::function<double(const Vector&)>;
  using G = std::function<void(const Vector&, Vector&)>;
  using Method = std::function<void(Vector&, F, G, QX_OPTIMIZATION_INFO&)>;
  using O = CQXOptimization;
  const std::vector<std::pair<const char*, Method>> methods = {
      {"FastestDescend",
       [=](Vector& x, F f, G g, auto& info) { O::FastestDescend(2, x, xTol, fTol, gTol, limit, f, g, info); }},
      {"ConjugateGradient",
       [=](Vector& x, F f, G g, auto& info) { O::ConjugateGradient(2, x, xTol, fTol, gTol, limit, f, g, info); }},
      {"QuasiNewtonBFGS",
       [=](Vector& x, F f, G g, auto& info) { O::QuasiNewtonBFGS(2, x, xTol, fTol, gTol, limit, f, g, info); }},
      {"SimplexDescent",
       [=](Vector& x, F f, G, auto& info) { O::SimplexDescent(2, x, 0.3, xTol, fTol, limit, f, info); }},
      {"PowellConjugateDirections",
       [=](Vector& x, F f, G, auto& info) { O::PowellConjugateDirections(2, x, 0.3, xTol, fTol, limit, f, info); }}};
  std::vector<Way> ways;
  for (const auto& [name, method] : methods) {
    Way way{name, {}};
    const auto f = [&](const Vector& at) {
      const double value = landscape.value(at[0], at[1]);
      ++way.values;
      if (value < way.least) {
        way.least = value;
        way.points.push_back({at[0], at[1]});
      }
      return value;
    };
    const auto g = [&](const Vector& at, Vector& slopes) { landscape.slopes(at[0], at[1], slopes[0], slopes[1]); };
    Vector x(2, start.data());
    method(x, f, g, way.info);
    ways.push_back(way);
  }
  return ways;
}

void Draw(Gnuplot& picture, const Landscape& landscape, const std::vector<Way>& ways) {
  std::ostringstream commands;
  commands << "$heights << EOD\n";
  constexpr int cells = 150;
  for (int j = 0; j <= cells; ++j) {
    for (int i = 0; i <= cells; ++i) {
      const double x = landscape.left + (landscape.right - landscape.left) * i / cells;
      const double y = landscape.bottom + (landscape.top - landscape.bottom) * j / cells;
      commands << x << ' ' << y << ' ' << std::log10(landscape.value(x, y) + 1e-3) << '\n';
    }
    commands << '\n';
  }
  commands << "EOD\nset contour base\nunset surface\nset cntrparam levels 18\nset table $contours\n"
           << "splot $heights using 1:2:3 with lines\nunset table\n";
  for (std::size_t i = 0; i < ways.size(); ++i) {
    commands << "$way" << i << " << EOD\n";
    for (const Point& p : ways[i].points) commands << p[0] << ' ' << p[1] << '\n';
    commands << "EOD\n";
  }
  commands << "set xrange [" << landscape.left << ':' << landscape.right << "]\nset yrange [" << landscape.bottom << ':'
           << landscape.top << "]\nset key outside bottom center horizontal\nset xlabel 'x'\nset ylabel 'y'\n"
           << "plot $contours with lines linecolor rgb '#c0c0c0' notitle";
  const char* const colours[] = {"#d95f02", "#7570b3", "#1b9e77", "#e7298a", "#386cb0"};
  for (std::size_t i = 0; i < ways.size(); ++i) {
    commands << ", $way" << i << " with linespoints pointtype 7 pointsize 0.4 linewidth 1.5 linecolor rgb '"
             << colours[i] << "' title '" << ways[i].name << " (" << ways[i].values << " values)'";
  }
  commands << '\n';
  picture.Write(commands.str());
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Draws the ways of the minimisers over the contours of a function, logarithmic in its value.");
  std::string output = "minimiser_ways.svg", name = "himmelblau";
  std::vector<double> start;
  int limit = 2000;
  std::vector<std::string> names;
  for (const auto& entry : landscapes) names.push_back(entry.first);
  app.add_option("output", output, "Picture to write (.svg or .png)")->capture_default_str();
  app.add_option("--function", name, "Function to minimise")->check(CLI::IsMember(names))->capture_default_str();
  app.add_option("--start", start, "Where to begin, x and y; each function has its own")->expected(2);
  app.add_option("--limit", limit, "Most iterations of a method")->check(CLI::Range(1, 1000000))->capture_default_str();
  CLI11_PARSE(app, argc, argv);
  try {
    const Landscape& landscape = landscapes.at(name);
    const Point from = start.empty() ? landscape.start : Point{start[0], start[1]};
    if (!std::isfinite(landscape.value(from[0], from[1])))
      throw std::runtime_error("the function has no value at the start");
    const std::vector<Way> ways = FollowAll(landscape, from, limit);
    Gnuplot picture(output, 900, 720);
    Draw(picture, landscape, ways);
    picture.Finish();
    for (const Way& way : ways) {
      std::printf("%-26s %5d values, least %10.3g at (%.6f, %.6f): %s\n", way.name, way.values, way.least,
                  way.points.back()[0], way.points.back()[1], WordsFor(way.info));
    }
  } catch (const std::exception& error) {
    std::cerr << "minimiser_ways: " << error.what() << '\n';
    return 1;
  }
}
