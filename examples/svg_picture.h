#pragma once

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// A drawing of lines, polygons and words, x to the right and y down, written as an SVG file that every browser shows.
class SvgPicture {
 public:
  using Point = std::pair<double, double>;

  SvgPicture(double width, double height) : m_width(width), m_height(height) {}

  /// Everything drawn from now on is shifted by this much.
  void MoveTo(double x, double y) {
    m_x = x;
    m_y = y;
  }
  void Polygon(const std::vector<Point>& points, const std::string& fill, const std::string& stroke) {
    Shape("polygon", points, fill, stroke, 1);
  }
  void Polyline(const std::vector<Point>& points, const std::string& stroke, double width = 1) {
    Shape("polyline", points, "none", stroke, width);
  }
  void Line(Point a, Point b, const std::string& stroke, double width = 1) { Polyline({a, b}, stroke, width); }
  void Text(double x, double y, const std::string& words) {
    m_shapes << "<text x='" << x + m_x << "' y='" << y + m_y << "' font-family='sans-serif' font-size='13'>" << words
             << "</text>\n";
  }

  /// @throws std::runtime_error with one line that names the file when it cannot be written.
  void Write(const std::string& path) const {
    std::ofstream file(path);
    file << "<svg xmlns='http://www.w3.org/2000/svg' width='" << m_width << "' height='" << m_height
         << "'>\n<rect width='100%' height='100%' fill='white'/>\n"
         << m_shapes.str() << "</svg>\n";
    file.close();
    if (!file) throw std::runtime_error(path + ": cannot be written");
  }

 private:
  void Shape(const char* kind, const std::vector<Point>& points, const std::string& fill, const std::string& stroke,
             double width) {
    m_shapes << '<' << kind << " fill='" << fill << "' stroke='" << stroke << "' stroke-width='" << width
             << "' stroke-linejoin='round' points='";
    for (const auto& [x, y] : points) m_shapes << x + m_x << ',' << y + m_y << ' ';
    m_shapes << "'/>\n";
  }

  double m_width, m_height, m_x = 0, m_y = 0;
  std::ostringstream m_shapes;
};
