#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>
#include <qx/transforms/projective_3d_transform.h>
#include <qx/vectors/vector3.h>

#include <cstdint>

/// Perspective view: the image of a point is where the line from the eye (the PRP) to it meets the view plane.
///
/// The distance to the plane d, the window and the volume share the unit of the scene; only their ratios matter for the
/// picture, so W and H may as well be numbers of pixels (SetFieldOfView() finds the distance that goes with them). A
/// projection direction other than zero goes from the eye to the centre of the window, which is then off the axis.
///
///     CQXPerspective3DTransform<double> view;
///     view.LookAt({4, 3, 8}, {0, 0, 0}, {0, 1, 0});
///     view.SetFieldOfView(45, 4.0 / 3, 480);
///     view.SetViewVolumeDepths(1, 100);
///     if (view.Initialize() != 0 && view.ProjectPoint(point, pixel) != 0) { ... }
///
/// The homogeneous coordinate w is the depth of a point, its distance from the eye along the normal. Divided by it, z
/// is 0 on the front and 1 on the back plane; where the view volume is not used, 0 on the view plane and 1 at infinity.
template <qxReal T>
class QX_API CQXPerspective3DTransform : public CQXProjective3DTransform<T> {
  using Base = CQXBase3DTransform<T>;
  using View = CQXProjective3DTransform<T>;

 public:
  using View::View;
  CQXPerspective3DTransform() noexcept = default;
  CQXPerspective3DTransform(const CQXPerspective3DTransform& other) noexcept = default;

  ~CQXPerspective3DTransform() override;

  /// Copies the matrix alone; the camera and the ready flag stay.
  CQXPerspective3DTransform& operator=(const Base& other) noexcept override;
  /// Copies everything; a view of another kind leaves this one not ready.
  CQXPerspective3DTransform& operator=(const View& other) noexcept override;
  /// Copies everything.
  CQXPerspective3DTransform& operator=(const CQXPerspective3DTransform& other) noexcept;
  /// QX_TRANSFORM_PERSPECTIVE.
  [[nodiscard]] qxTransformType GetTypeOfTransform() const noexcept override;

  /// @return 1; 0 when the distance to the plane is not positive and finite, the view volume is used and its planes do
  /// not lie before the eye in their order, or as CQXProjective3DTransform::FindViewFrame() says: the object is not
  /// ready then.
  std::int32_t Initialize() override;

  /// Sets the window to @p aspect times @p windowHeight by @p windowHeight and the distance to the plane so that the
  /// height is seen under the given angle; for a window on the axis.
  /// @param verticalAngleInDegrees above 0 and below 180; others give a distance that Initialize() refuses
  void SetFieldOfView(T verticalAngleInDegrees, T aspect, T windowHeight) noexcept;
  /// The angle in degrees under which the height of a window on the axis is seen, and width / height.
  void GetFieldOfView(T& verticalAngleInDegrees, T& aspect) const noexcept;
  /// SetViewVolumeDistances() by depths, which are measured from the eye; it uses the distance to the plane that was
  /// set before.
  void SetViewVolumeDepths(T frontDepth, T backDepth) noexcept;
  /// A window off the axis, in the view plane at @p distance from the eye: it reaches from @p left to @p right and from
  /// @p bottom up to @p top, counted from where the axis meets the plane. Uses the normal and the view-up vector that
  /// were set before.
  /// @return 1; 0 when these are zero or parallel, and nothing is changed.
  std::int32_t SetOffAxisWindow(T left, T right, T bottom, T top, T distance) noexcept;
};

extern template class QX_API CQXPerspective3DTransform<float>;
extern template class QX_API CQXPerspective3DTransform<double>;
