#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>
#include <qx/transforms/projective_3d_transform.h>
#include <qx/vectors/vector3.h>

#include <cstdint>

/// Parallel view: the image of a point is where the line through it along the projection direction meets the view
/// plane.
///
/// With the projection direction zero or along the normal the view is orthographic, otherwise oblique. The view plane
/// lies at the distance d from the PRP and the window's centre where the line from the PRP along the direction meets
/// it. The window has the unit of the scene, and each side is at least 0.5: for a smaller part of the scene, or for
/// pixels, scale the scene or the coordinates that come out.
///
///     CQXParallel3DTransform<double> view;
///     view.LookAt({0, 10, 0}, {0, 0, 0}, {0, 0, -1});
///     view.SetViewWindow(20, 15);
///     view.Initialize();
///
/// The homogeneous coordinate w is 1. z is 0 on the front and 1 on the back plane; where the view volume is not used it
/// is the distance from the view plane along the normal.
template <qxReal T>
class QX_API CQXParallel3DTransform : public CQXProjective3DTransform<T> {
  using Base = CQXBase3DTransform<T>;
  using View = CQXProjective3DTransform<T>;

 public:
  using View::View;
  CQXParallel3DTransform() noexcept = default;
  CQXParallel3DTransform(const CQXParallel3DTransform& other) noexcept = default;

  ~CQXParallel3DTransform() override;

  /// Copies the matrix alone; the camera and the ready flag stay.
  CQXParallel3DTransform& operator=(const Base& other) noexcept override;
  /// Copies everything; a view of another kind leaves this one not ready.
  CQXParallel3DTransform& operator=(const View& other) noexcept override;
  /// Copies everything.
  CQXParallel3DTransform& operator=(const CQXParallel3DTransform& other) noexcept;
  /// QX_TRANSFORM_PARALLEL.
  [[nodiscard]] qxTransformType GetTypeOfTransform() const noexcept override;

  /// @return 1; 0 when the view volume is used and the front plane is not before the back plane, or as
  /// CQXProjective3DTransform::FindViewFrame() says: the object is not ready then.
  std::int32_t Initialize() override;
};

extern template class QX_API CQXParallel3DTransform<float>;
extern template class QX_API CQXParallel3DTransform<double>;
