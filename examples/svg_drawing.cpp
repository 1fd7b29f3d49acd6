#include "svg_drawing.h"

#include <fstream>
#include <stdexcept>

namespace {

std::string Number(double x) {
  std::string text = std::to_string(x);
  return text.substr(0, text.find('.') + 3);
}

std::string Attribute(const std::string& name, const std::string& value) { return " " + name + "=\"" + value + "\""; }

}  // namespace

SvgDrawing::SvgDrawing(double width, double height)
    : m_elements("<svg xmlns=\"http://www.w3.org/2000/svg\"" + Attribute("width", Number(width)) +
                 Attribute("height", Number(height)) + ">\n<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n") {}

void SvgDrawing::AddPolyline(const std::vector<Point>& points, const std::string& colour, double lineWidth) {
  std::string places;
  for (const Point& p : points) places += Number(p.X()) + "," + Number(p.Y()) + " ";
  m_elements += "<polyline fill=\"none\"" + Attribute("stroke", colour) + Attribute("stroke-width", Number(lineWidth)) +
                Attribute("points", places) + "/>\n";
}

void SvgDrawing::AddRectangle(Point corner, double width, double height, const std::string& colour) {
  const Point opposite = corner + Point(width, height);
  AddPolyline({corner, {opposite.X(), corner.Y()}, opposite, {corner.X(), opposite.Y()}, corner}, colour, 1);
}

void SvgDrawing::AddDot(Point centre, double radius, const std::string& colour) {
  m_elements += "<circle" + Attribute("cx", Number(centre.X())) + Attribute("cy", Number(centre.Y())) +
                Attribute("r", Number(radius)) + Attribute("fill", colour) + "/>\n";
}

void SvgDrawing::AddText(Point start, const std::string& text, double size) {
  m_elements += "<text font-family=\"sans-serif\"" + Attribute("x", Number(start.X())) +
                Attribute("y", Number(start.Y())) + Attribute("font-size", Number(size)) + ">" + text + "</text>\n";
}

void SvgDrawing::Write(const std::string& path) const {
  std::ofstream file(path);
  file << m_elements << "</svg>\n";
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path);
}
