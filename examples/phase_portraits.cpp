// Draws the phase portrait of every class of systems x' = A x + f in the plane: the states run along the lines, from
// their red ends.

#include <qx/differential/slde2.h>
#include <qx/geometry/geometry.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <exception>
#include <iostream>
#include <numbers>
#include <string>
#include <vector>

#include "svg_drawing.h"

namespace {

using Vector = CQXVector2<double>;
using Matrix = CQXMatrix2<double>;

struct Portrait {
  std::string name;
  Matrix a;
  Vector f;
};

constexpr double panelSize = 240;
constexpr double margin = 30;
constexpr double reach = 2;  ///< states from -reach to reach are drawn

const std::array<Portrait, 12> portraits = {{{"saddle: 1, -1", {1, 0, 0, -1}, {}},
                                             {"stable node: -1, -2", {-1.5, 0.5, 0.5, -1.5}, {}},
                                             {"unstable node: 1, 2", {1.5, 0.5, 0.5, 1.5}, {}},
                                             {"star: -1 twice, two eigenvectors", {-1, 0, 0, -1}, {}},
                                             {"degenerate node: -1 twice, one", {-1, 1, 0, -1}, {}},
                                             {"centre: +-i", {0, 1, -1, 0}, {}},
                                             {"stable focus: -0.3 +- 1.5i", {-0.3, 1.5, -1.5, -0.3}, {}},
                                             {"unstable focus: 0.3 +- 1.5i", {0.3, 1.5, -1.5, 0.3}, {}},
                                             {"line of rest: 0, -1", {0, 0, 1, -1}, {}},
                                             {"shear: 0 twice, one eigenvector", {0, 1, 0, 0}, {}},
                                             {"0, -1 with a forcing", {0, 0, 0, -1}, {0.5, 0}},
                                             {"0 twice with a forcing", {0, 1, 0, 0}, {0, 0.5}}}};

/// The part of a trajectory that is in the panel, up to where it leaves it.
std::vector<Vector> Trajectory(CQXSLDE2<double>& system, const Vector& start, bool isForward) {
  std::vector<Vector> states(150);
  system.CalculateTrajectory(start.X(), start.Y(), static_cast<std::int32_t>(states.size()), states.data(), 0.04,
                             isForward ? 1 : 0);
  std::vector<Vector> drawn = {start};
  for (std::size_t i = 1; i < states.size(); ++i) {
    Vector from, to;
    if (CQXGeometry::ClipSegmentToRectangle(states[i - 1], states[i], Vector(-reach, -reach), Vector(reach, reach),
                                            from, to) == 0) {
      break;
    }
    drawn.push_back(to);
    if ((to - states[i]).NormInf() > 0) break;
  }
  return drawn;
}

void Draw(const Portrait& portrait, const Vector& corner, SvgDrawing& drawing) {
  CQXSLDE2<double> system;
  system.SetTransformation(portrait.a, portrait.f);
  system.CalculateGeneralSolution();
  const auto toPicture = [&](const Vector& p) {
    return corner + Vector(p.X() + reach, reach - p.Y()) * (panelSize / (2 * reach));
  };
  drawing.AddRectangle(corner, panelSize, panelSize, "#888888");
  drawing.AddText(corner + Vector(0, -8), portrait.name, 13);
  constexpr std::int32_t startsNb = 14;
  for (const double radius : {0.6, 1.5}) {
    for (std::int32_t i = 0; i < startsNb; ++i) {
      const double angle = 2 * std::numbers::pi * (i + 0.5 * radius) / startsNb;
      const Vector start(radius * std::cos(angle), radius * std::sin(angle));
      for (const bool isForward : {true, false}) {
        std::vector<Vector> line = Trajectory(system, start, isForward);
        for (Vector& p : line) p = toPicture(p);
        drawing.AddPolyline(line, "#2a5caa", 0.8);
        if (!isForward) drawing.AddDot(line.back(), 1.8, "#c03028");
      }
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: phase_portraits PICTURE.svg\n";
    return 2;
  }
  try {
    constexpr std::size_t columnsNb = 4;
    SvgDrawing drawing(columnsNb * (panelSize + margin) + margin, 3 * (panelSize + margin) + margin);
    for (std::size_t i = 0; i < portraits.size(); ++i) {
      const Vector place(static_cast<double>(i % columnsNb), static_cast<double>(i / columnsNb));
      Draw(portraits[i], Vector(margin, margin) + place * (panelSize + margin), drawing);
    }
    drawing.Write(argv[1]);
  } catch (const std::exception& e) {
    std::cerr << "phase_portraits: " << e.what() << '\n';
    return 1;
  }
}
