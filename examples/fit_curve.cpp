// Fits a exp(-b t) + c to points of a file, or to made ones with outliers, within bounds: by least squares, and with a
// loss that outliers do not rule.

#include <qx/arrays/random.h>
#include <qx/solvers/optimization.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "gnuplot.h"
#include <CLI/CLI.hpp>

namespace {

using Vector = CQXVectorN<double>;
using Parameters = std::array<double, 3>;

struct Point {
  double t, y;
};

constexpr std::array<const char*, 3> losses = {"huber", "soft-l1", "cauchy"};
constexpr Parameters truth = {4, 0.9, 0.5};

double Model(const double* p, double t) { return p[0] * std::exp(-p[1] * t) + p[2]; }

/// Points on the true curve with noise; every ninth stands far above it.
std::vector<Point> MakePoints(int count, double noise) {
  CQXRandom<double> random;
  random.SetAlgorithm(1);
  random.SetNormal(0, 1);
  random.SetXorshift64Seed(1);
  random.Initialize();
  std::vector<Point> points;
  for (int i = 0; i < count; ++i) {
    const double t = 5.0 * i / count;
    points.push_back({t, Model(truth.data(), t) + noise * random.GetNumber() + (i % 9 == 4 ? 2.5 : 0)});
  }
  return points;
}

std::vector<Point> ReadPoints(const std::string& file) {
  std::ifstream stream(file);
  if (!stream) throw std::runtime_error("cannot read " + file);
  std::vector<Point> points;
  std::string line;
  for (int number = 1; std::getline(stream, line); ++number) {
    std::replace(line.begin(), line.end(), ',', ' ');
    if (line.find_first_not_of(" \t\r") == std::string::npos || line[0] == '#') continue;
    std::istringstream words(line);
    Point p;
    std::string rest;
    if (!(words >> p.t >> p.y) || words >> rest || !std::isfinite(p.t) || !std::isfinite(p.y)) {
      throw std::runtime_error(file + ", line " + std::to_string(number) + ": two numbers are wanted, t and y");
    }
    points.push_back(p);
  }
  if (points.size() < 3) throw std::runtime_error(file + ": at least three points are wanted");
  return points;
}

/// The parameters with the least loss, a >= 0, 0 <= b <= 20, c >= 0.
Parameters Fit(const std::vector<Point>& points, QX_ROBUST_LOSS loss, double scale) {
  const QX_OPTIMIZATION_CONSTRAINTS kinds[] = {QX_LOWER_BOUND, QX_BOTH_BOUNDS, QX_LOWER_BOUND};
  const double lower[] = {0, 0, 0}, upper[] = {0, 20, 0};
  CQXLeastSquaresOptions<double> options;
  options.constraints = kinds;
  options.lower = lower;
  options.upper = upper;
  options.loss = loss;
  options.lossScale = scale;
  Parameters p = {1, 1, 0};
  Vector x(3, p.data());
  QX_OPTIMIZATION_INFO info;
  const auto residuals = [&](const Vector& at, Vector& r) {
    for (std::size_t i = 0; i < points.size(); ++i) {
      r[static_cast<std::int32_t>(i)] = Model(at.Data(), points[i].t) - points[i].y;
    }
  };
  CQXOptimization::LevenbergMarquardt(3, static_cast<std::int32_t>(points.size()), x, options, residuals, info);
  if (info < QX_OPT_FUNCTION_CONVERGED || info > QX_OPT_GRADIENT_CONVERGED) {
    throw std::runtime_error("the fit did not converge");
  }
  x.Dump(p.data());
  return p;
}

void Draw(Gnuplot& picture, const std::vector<Point>& points, const Parameters& squares, const Parameters& robust,
          const std::string& loss) {
  std::ostringstream commands;
  commands.precision(12);
  commands << "$points << EOD\n";
  for (const Point& p : points) commands << p.t << ' ' << p.y << '\n';
  commands << "EOD\nset samples 400\nset xlabel 't'\nset ylabel 'y'\nset key top right\n"
           << "f(a, b, c, t) = a * exp(-b * t) + c\nplot $points with points pointtype 6 linecolor rgb '#606060' title "
              "'points'";
  const auto add = [&](const Parameters& p, const char* colour, const std::string& title) {
    commands << ", f(" << p[0] << ", " << p[1] << ", " << p[2] << ", x) with lines linewidth 2 linecolor rgb '"
             << colour << "' title '" << title << "'";
  };
  add(squares, "#d95f02", "least squares");
  add(robust, "#1b9e77", "loss " + loss);
  commands << '\n';
  picture.Write(commands.str());
}

void Print(const char* name, const Parameters& p) {
  std::printf("%-14s a = %.4f, b = %.4f, c = %.4f\n", name, p[0], p[1], p[2]);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Fits a exp(-b t) + c with a >= 0, 0 <= b <= 20, c >= 0 by least squares and by a robust loss.");
  std::string output = "fit_curve.svg", input, loss = "cauchy";
  double scale = 0.2, noise = 0.1;
  int count = 60;
  app.add_option("output", output, "Picture to write (.svg or .png)")->capture_default_str();
  app.add_option("--input", input, "Points, t and y in a line; without it they are made, every ninth an outlier");
  app.add_option("--loss", loss, "Robust loss")
      ->check(CLI::IsMember(std::vector<std::string>(losses.begin(), losses.end())))
      ->capture_default_str();
  app.add_option("--scale", scale, "Size from which on a residual counts as large")
      ->check(CLI::Range(1e-9, 1e9))
      ->capture_default_str();
  app.add_option("--noise", noise, "Standard deviation of the made points")
      ->check(CLI::Range(0.0, 10.0))
      ->capture_default_str();
  app.add_option("--count", count, "Number of made points")->check(CLI::Range(3, 100000))->capture_default_str();
  CLI11_PARSE(app, argc, argv);
  try {
    const std::vector<Point> points = input.empty() ? MakePoints(count, noise) : ReadPoints(input);
    const auto kind = std::find(losses.begin(), losses.end(), loss) - losses.begin() + QX_LOSS_HUBER;
    const Parameters squares = Fit(points, QX_LOSS_SQUARE, scale);
    const Parameters robust = Fit(points, static_cast<QX_ROBUST_LOSS>(kind), scale);
    Gnuplot picture(output, 900, 600);
    Draw(picture, points, squares, robust, loss);
    picture.Finish();
    if (input.empty()) Print("made with", truth);
    Print("least squares", squares);
    Print(loss.c_str(), robust);
  } catch (const std::exception& error) {
    std::cerr << "fit_curve: " << error.what() << '\n';
    return 1;
  }
}
