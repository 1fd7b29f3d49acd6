// Draws Bezier curves of the degrees 2 to 5 with their control points, and the polylines that stay within three
// tolerances of them; then what the simplification of a noisy line keeps.

#include <qx/geometry/geometry.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <exception>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "svg_drawing.h"

namespace {

using Vector = CQXVector2<double>;
using Line = std::vector<Vector>;

constexpr double panelWidth = 260;
constexpr double panelHeight = 200;
constexpr double margin = 30;
constexpr std::array<double, 3> tolerances = {10, 2, 0.25};

const std::array<Line, 4> curves = {{{{10, 190}, {130, 0}, {250, 190}},
                                     {{10, 150}, {90, 0}, {170, 200}, {250, 50}},
                                     {{40, 190}, {260, 130}, {130, 0}, {0, 130}, {220, 190}},
                                     {{10, 20}, {250, 0}, {250, 200}, {10, 200}, {10, 60}, {190, 120}}}};

std::int32_t Count(const Line& line) { return static_cast<std::int32_t>(line.size()); }

Line Moved(Line line, const Vector& by) {
  for (Vector& p : line) p += by;
  return line;
}

void DrawCurve(const Line& controls, double tolerance, const Vector& corner, SvgDrawing& drawing) {
  const std::int32_t segmentsNb = CQXGeometry::CountBezierSegments(Count(controls), controls.data(), tolerance);
  Line polyline(static_cast<std::size_t>(segmentsNb) + 1), fine(401);
  CQXGeometry::BezierPolyline(Count(controls), controls.data(), segmentsNb, polyline.data());
  CQXGeometry::BezierPolyline(Count(controls), controls.data(), 400, fine.data());
  drawing.AddPolyline(Moved(controls, corner), "#cccccc", 0.8);
  drawing.AddPolyline(Moved(fine, corner), "#9ab8e0", 4);
  drawing.AddPolyline(Moved(polyline, corner), "#c03028", 1);
  for (const Vector& p : polyline) drawing.AddDot(p + corner, 2, "#c03028");
  std::ostringstream text;
  text << "degree " << controls.size() - 1 << ", tolerance " << tolerance << ": " << segmentsNb
       << (segmentsNb == 1 ? " segment" : " segments");
  drawing.AddText(corner + Vector(0, -12), text.str(), 13);
}

/// A sine with a saw tooth upon it, as a digitiser would hand it over.
void DrawSimplification(double tolerance, const Vector& corner, SvgDrawing& drawing) {
  Line line, simple(261);
  for (int x = 0; x <= 260; ++x) line.emplace_back(x, 100 + 70 * std::sin(0.05 * x) + 1.5 * (x % 3 - 1));
  std::int32_t m = 0;
  CQXGeometry::SimplifyPolyline(Count(line), line.data(), tolerance, m, simple.data());
  simple.resize(static_cast<std::size_t>(m));
  drawing.AddPolyline(Moved(line, corner), "#9ab8e0", 3);
  drawing.AddPolyline(Moved(simple, corner), "#c03028", 1);
  for (const Vector& p : simple) drawing.AddDot(p + corner, 2, "#c03028");
  std::ostringstream text;
  text << line.size() << " points simplified, tolerance " << tolerance << ": " << m;
  drawing.AddText(corner + Vector(0, -12), text.str(), 13);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: bezier_curves PICTURE.svg\n";
    return 2;
  }
  try {
    const auto corner = [](std::size_t column, std::size_t row) {
      return Vector(margin + static_cast<double>(column) * (panelWidth + margin),
                    2 * margin + static_cast<double>(row) * (panelHeight + 2 * margin));
    };
    const Vector size = corner(tolerances.size(), curves.size() + 1);
    SvgDrawing drawing(size.X(), size.Y());
    for (std::size_t k = 0; k < tolerances.size(); ++k) {
      for (std::size_t i = 0; i < curves.size(); ++i) DrawCurve(curves[i], tolerances[k], corner(k, i), drawing);
      DrawSimplification(tolerances[k], corner(k, curves.size()), drawing);
    }
    drawing.Write(argv[1]);
  } catch (const std::exception& e) {
    std::cerr << "bezier_curves: " << e.what() << '\n';
    return 1;
  }
}
