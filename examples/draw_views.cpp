// Draws one scene from four places, through perspective and parallel views, and picks what lies under a point of each.

#include <qx/transforms/parallel_3d_transform.h>
#include <qx/transforms/perspective_3d_transform.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "svg_picture.h"
#include <CLI/CLI.hpp>

namespace {

using Vector = CQXVector3<double>;
using Point = CQXVector2<double>;
using View = CQXProjective3DTransform<double>;

constexpr double width = 400, height = 300;

/// A block along the axes; z points up.
struct Block {
  std::string name, colour;
  Vector lo, hi;
};

const std::vector<Block> scene = {{"tower", "#d95f02", {-1, -1, 0}, {1, 1, 5}},
                                  {"house", "#1b9e77", {2, -3, 0}, {5, -1, 2}},
                                  {"wall", "#7570b3", {-5, 2, 0}, {4, 2.4, 1.2}},
                                  {"stone", "#e7298a", {-4, -3, 0}, {-3, -2, 1}}};

struct Face {
  Vector corners[4], normal;
  const Block* block;
};

/// The six faces of all blocks, corners in order around each.
std::vector<Face> FacesOf(const std::vector<Block>& blocks) {
  std::vector<Face> faces;
  for (const Block& block : blocks) {
    for (std::int32_t axis = 0; axis < 3; ++axis) {
      for (const bool isHigh : {false, true}) {
        Face face{{}, {}, &block};
        face.normal[axis] = isHigh ? 1 : -1;
        const std::int32_t u = (axis + 1) % 3, v = (axis + 2) % 3;
        for (std::int32_t k = 0; k < 4; ++k) {
          Vector& corner = face.corners[k];
          corner[axis] = (isHigh ? block.hi : block.lo)[axis];
          corner[u] = (k == 1 || k == 2 ? block.hi : block.lo)[u];
          corner[v] = (k >= 2 ? block.hi : block.lo)[v];
        }
        faces.push_back(face);
      }
    }
  }
  return faces;
}

/// Pixels in a unit of the view's window.
double ScaleOf(const View& view) {
  double w, h;
  view.GetViewWindowSizes(w, h);
  return width / w;
}

SvgPicture::Point InPixels(const View& view, const Point& q) { return {q.X() * ScaleOf(view), q.Y() * ScaleOf(view)}; }

void DrawLine(const View& view, const Vector& a, const Vector& b, const std::string& colour, SvgPicture& picture) {
  Point p, q;
  if (view.ProjectClippedSegment(a, b, p, q) == QX_LOCATION_OUTSIDE) return;
  picture.Line(InPixels(view, p), InPixels(view, q), colour);
}

/// Draws a face as two triangles, each clipped, and its outline.
void DrawFace(const View& view, const Face& face, SvgPicture& picture) {
  for (const std::int32_t second : {1, 2}) {
    const Vector triangle[] = {face.corners[0], face.corners[second], face.corners[second + 1]};
    Point polygon[16];
    std::int32_t count;
    if (view.ProjectClippedTriangle(triangle, polygon, count) == QX_LOCATION_OUTSIDE) continue;
    std::vector<SvgPicture::Point> points;
    for (std::int32_t i = 0; i < count; ++i) points.push_back(InPixels(view, polygon[i]));
    picture.Polygon(points, face.block->colour, face.block->colour);
  }
  for (std::int32_t k = 0; k < 4; ++k) DrawLine(view, face.corners[k], face.corners[(k + 1) % 4], "#222222", picture);
}

void DrawScene(const View& view, SvgPicture& picture) {
  for (int i = -6; i <= 6; ++i) {
    DrawLine(view, Vector(i, -6, 0), Vector(i, 6, 0), "#cccccc", picture);
    DrawLine(view, Vector(-6, i, 0), Vector(6, i, 0), "#cccccc", picture);
  }
  // The far faces first; those that look away from the viewer are hidden by the rest of their block.
  Vector start, direction;
  view.FindPickingRay(Point(width, height) / (2 * ScaleOf(view)), start, direction);
  const bool isCentral = view.GetTypeOfTransform() == QX_TRANSFORM_PERSPECTIVE;
  const auto depth = [&](const Face& face) { return (face.corners[0] + face.corners[2]).Dot(direction); };
  std::vector<Face> faces = FacesOf(scene);
  std::erase_if(faces, [&](const Face& face) {
    return face.normal.Dot(isCentral ? face.corners[0] - view.GetPRP() : direction) >= 0;
  });
  std::sort(faces.begin(), faces.end(), [&](const Face& a, const Face& b) { return depth(a) > depth(b); });
  for (const Face& face : faces) DrawFace(view, face, picture);
}

/// The first block along a ray, by the slabs between its pairs of faces; null when there is none.
const Block* FindHit(const Vector& start, const Vector& direction, Vector& hit) {
  const Block* found = nullptr;
  double nearest = std::numeric_limits<double>::infinity();
  for (const Block& block : scene) {
    double in = 0, out = nearest;
    for (std::int32_t axis = 0; axis < 3; ++axis) {
      const double a = (block.lo[axis] - start[axis]) / direction[axis];
      const double b = (block.hi[axis] - start[axis]) / direction[axis];
      in = std::max(in, std::min(a, b));
      out = std::min(out, std::max(a, b));
    }
    if (in > out) continue;
    nearest = in;
    found = &block;
  }
  if (found != nullptr) hit = start + direction * nearest;
  return found;
}

void Pick(const View& view, const Point& pixel, SvgPicture& picture) {
  Vector start, direction, hit;
  const Point q = pixel / ScaleOf(view);
  if (view.FindPickingRay(q, start, direction) == 0) return;
  const Block* block = FindHit(start, direction, hit);
  std::string what = block != nullptr ? block->name : "ground";
  if (block == nullptr && view.UnprojectToPlane(q, {0, 0, 1, 0}, hit) == 0) what = "sky";
  std::printf("  (%.0f, %.0f)  %-7s", pixel.X(), pixel.Y(), what.c_str());
  if (what != "sky") std::printf("at %6.2f %6.2f %6.2f", hit.X(), hit.Y(), hit.Z());
  std::printf("\n");
  const double x = pixel.X(), y = pixel.Y();
  picture.Line({x - 6, y}, {x + 6, y}, "black", 2);
  picture.Line({x, y - 6}, {x, y + 6}, "black", 2);
  picture.Text(x + 8, y - 4, what);
}

struct NamedView {
  std::string name;
  std::unique_ptr<View> view;
};

std::unique_ptr<View> Perspective(const Vector& eye, const Vector& target, double angleInDegrees) {
  auto view = std::make_unique<CQXPerspective3DTransform<double>>();
  view->LookAt(eye, target, {0, 0, 1});
  view->SetFieldOfView(angleInDegrees, width / height, height);
  view->SetViewVolumeDepths(0.5, 60);
  return view;
}

std::unique_ptr<View> Parallel(const Vector& eye, const Vector& target, const Vector& up, const Vector& direction) {
  auto view = std::make_unique<CQXParallel3DTransform<double>>();
  view->LookAt(eye, target, up);
  view->SetProjectionDirection(direction);
  view->SetViewWindow(16, 12);
  view->SetViewVolumeDistances(0, 60);
  return view;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Draws a scene from four places and picks what lies under one point of each picture.");
  std::string output = "views.svg";
  double x = 200, y = 150;
  app.add_option("output", output, "the picture to write, SVG")->capture_default_str();
  app.add_option("--x", x, "column of the point to pick, in pixels")->capture_default_str()->check(CLI::Range(0, 400));
  app.add_option("--y", y, "row of the point to pick, in pixels")->capture_default_str()->check(CLI::Range(0, 300));
  CLI11_PARSE(app, argc, argv);

  NamedView views[] = {{"perspective, from the street", Perspective({9, -12, 2}, {0, 0, 1.5}, 40)},
                       {"perspective, wide, from above", Perspective({-5, -6, 9}, {0, 0, 1}, 70)},
                       {"parallel, plan", Parallel({0, 0, 20}, {0, 0, 0}, {0, 1, 0}, {})},
                       {"parallel, oblique", Parallel({-8, -20, 8}, {-8, 0, 8}, {0, 0, 1}, {0.4, 1, -0.3})}};
  SvgPicture picture(2 * width + 30, 2 * height + 70);
  try {
    for (int i = 0; i < 4; ++i) {
      View& view = *views[i].view;
      if (view.Initialize() == 0) throw std::runtime_error(views[i].name + ": no view");
      picture.MoveTo(10 + (i % 2) * (width + 10), 30 + (i / 2) * (height + 30));
      picture.Text(0, -8, views[i].name);
      picture.Polygon({{0, 0}, {width, 0}, {width, height}, {0, height}}, "#f8f8ff", "black");
      std::printf("%s\n", views[i].name.c_str());
      DrawScene(view, picture);
      Pick(view, {x, y}, picture);
    }
    picture.Write(output);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  std::printf("%s\n", output.c_str());
  return 0;
}
