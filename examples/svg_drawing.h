#pragma once

#include <qx/vectors/vector2.h>

#include <string>
#include <vector>

/// Lines, dots and words in an SVG picture; x goes to the right and y downwards, in pixels.
class SvgDrawing {
 public:
  using Point = CQXVector2<double>;

  /// A white picture.
  SvgDrawing(double width, double height);

  void AddPolyline(const std::vector<Point>& points, const std::string& colour, double lineWidth);
  void AddRectangle(Point corner, double width, double height, const std::string& colour);
  void AddDot(Point centre, double radius, const std::string& colour);
  void AddText(Point start, const std::string& text, double size);

  /// @throws std::runtime_error with one line that names the file.
  void Write(const std::string& path) const;

 private:
  std::string m_elements;
};
