// A camera's flight through twelve keys: the path with its velocity and its frames, drawn from above, and the speeds.

#include <qx/interpolation/interpolation.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <map>
#include <numbers>
#include <string>
#include <vector>

#include "svg_picture.h"
#include <CLI/CLI.hpp>

namespace {

using I = CQXInterpolation;
using Vector = CQXVector3<double>;
using Quaternion = CQXQuaternion<double>;

constexpr std::int32_t n = 12;
/// Seconds; the keys are not at equal distances.
const double nodes[n] = {0, 1, 1.8, 3, 3.9, 5, 6.2, 7, 7.9, 9, 10.2, 11};
const Vector places[n] = {{0, 0, 1}, {3, -1, 1}, {6, 0, 2},  {8, 3, 3},  {7, 6, 3},  {4, 7, 2},
                          {1, 6, 1}, {0, 8, 1},  {3, 10, 2}, {7, 10, 3}, {10, 8, 2}, {11, 4, 1}};
/// Heading about Z and bank about the way ahead, in degrees.
const double headings[n] = {-20, 0, 30, 80, 130, 170, 150, 70, 20, -10, -60, -90};
const double banks[n] = {0, 10, 25, 30, 25, 10, -25, -30, -10, 10, 20, 0};

struct Path {
  explicit Path(qxSlopes rule, qxEnds ends) {
    for (std::size_t i = 0; i < std::size(places); ++i) {
      rotations[i].SetByEulerAngles(banks[i], 0, headings[i], QX_ROTATIONS_XYZ);
    }
    isFound = I::FindSlopes(rule, ends, n, nodes, places, velocities) != 0 &&
              I::FindAngularVelocities(ends, n, nodes, rotations, angularVelocities) != 0;
  }
  Vector PlaceAt(double t) const { return I::CurveAt(n, nodes, places, velocities, t); }
  Vector VelocityAt(double t) const { return I::CurveAt(n, nodes, places, velocities, t, 1); }
  Quaternion RotationAt(double t) const { return I::RotationAt(n, nodes, rotations, angularVelocities, t); }
  /// Degrees a second, over a short time.
  double TurningAt(double t) const {
    const double dt = 1e-4;
    const double start = std::min(t, nodes[n - 1] - dt);
    const Quaternion way = RotationAt(start).InvertUnit() * RotationAt(start + dt);
    return 2 * std::asin(std::min(1.0, std::hypot(way.x, way.y, way.z))) / dt * 180 / std::numbers::pi;
  }

  Vector velocities[n], angularVelocities[n];  // zero, which clamped ends keep: at rest
  Quaternion rotations[n];
  bool isFound;
};

/// From above: y points up in the picture.
SvgPicture::Point FromAbove(const Vector& p) { return {40 + 40 * p.X(), 440 - 40 * p.Y()}; }

void DrawPath(const Path& path, SvgPicture& picture) {
  std::vector<SvgPicture::Point> line;
  for (double t = nodes[0]; t <= nodes[n - 1]; t += 0.02) line.push_back(FromAbove(path.PlaceAt(t)));
  picture.Polyline(line, "#444444", 2);
  for (double t = nodes[0]; t <= nodes[n - 1]; t += 0.2) {
    const Vector p = path.PlaceAt(t);
    picture.Line(FromAbove(p), FromAbove(p + path.VelocityAt(t) * 0.2), "#1f78b4");
    const CQXMatrix3<double> frame = path.RotationAt(t).GetMatrix();
    picture.Line(FromAbove(p - frame.ColVector(1) * 0.3), FromAbove(p + frame.ColVector(1) * 0.3), "#e31a1c");
  }
  for (const Vector& p : places) {
    const auto [x, y] = FromAbove(p);
    picture.Polygon({{x - 4, y - 4}, {x + 4, y - 4}, {x + 4, y + 4}, {x - 4, y + 4}}, "#ffd92f", "black");
  }
}

/// A curve over the time, from 0 at the bottom to @p top.
template <typename Function>
void DrawGraph(const std::string& title, double top, Function value, SvgPicture& picture) {
  picture.Text(0, -6, title);
  picture.Polygon({{0, 0}, {440, 0}, {440, 150}, {0, 150}}, "#f8f8ff", "black");
  for (const double node : nodes) picture.Line({node * 40, 0}, {node * 40, 150}, "#cccccc");
  std::vector<SvgPicture::Point> line;
  for (double t = nodes[0]; t <= nodes[n - 1]; t += 0.02) {
    line.emplace_back(t * 40, 150 - 150 * std::min(1.0, value(t) / top));
  }
  picture.Polyline(line, "#1f78b4", 2);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Draws a path through twelve keys of place and rotation, with its velocity.");
  std::string output = "path.svg";
  qxSlopes rule = QX_SLOPES_SPLINE;
  bool startsAtRest = false;
  app.add_option("output", output, "the picture to write, SVG")->capture_default_str();
  const std::map<std::string, qxSlopes> rules = {
      {"spline", QX_SLOPES_SPLINE}, {"catmull-rom", QX_SLOPES_CATMULL_ROM}, {"monotone", QX_SLOPES_MONOTONE}};
  app.add_option("--rule", rule, "spline, catmull-rom or monotone")->transform(CLI::CheckedTransformer(rules));
  app.add_flag("--rest", startsAtRest, "start and end at rest");
  CLI11_PARSE(app, argc, argv);

  const Path path(rule, startsAtRest ? QX_ENDS_CLAMPED : QX_ENDS_NATURAL);
  if (!path.isFound) {
    std::fprintf(stderr, "no path\n");
    return 1;
  }
  std::printf("  time     x      y      z   speed  acceleration  turning\n");
  for (double t = nodes[0]; t <= nodes[n - 1]; t += 0.5) {
    const Vector p = path.PlaceAt(t);
    const double acceleration = I::CurveAt(n, nodes, places, path.velocities, t, 2).Length();
    std::printf("%6.1f %6.2f %6.2f %6.2f  %6.2f  %12.2f  %7.1f\n", t, p.X(), p.Y(), p.Z(), path.VelocityAt(t).Length(),
                acceleration, path.TurningAt(t));
  }
  SvgPicture picture(990, 500);
  DrawPath(path, picture);
  picture.MoveTo(520, 40);
  DrawGraph(
      "speed, to 8 units a second", 8, [&](double t) { return path.VelocityAt(t).Length(); }, picture);
  picture.MoveTo(520, 250);
  DrawGraph(
      "turning, to 180 degrees a second", 180, [&](double t) { return path.TurningAt(t); }, picture);
  try {
    picture.Write(output);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  std::printf("%s\n", output.c_str());
  return 0;
}
