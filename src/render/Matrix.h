#pragma once

namespace lumivane {

// A 4x4 matrix for row vectors in a left-handed space: a point p is transformed as p * M, and
// A * B applies A first. m[3][0..2] is the translation.
struct Matrix {
  float m[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

  static Matrix Identity() { return {}; }
  static Matrix Scaling(float x, float y, float z);
  static Matrix Translation(float x, float y, float z);
  // Roll about z, then pitch about x, then yaw about y (radians).
  static Matrix RotationYawPitchRoll(float yaw, float pitch, float roll);
  static Matrix RotationX(float angle);
  static Matrix RotationY(float angle);
  static Matrix RotationZ(float angle);
  static Matrix LookAtLH(const float eye[3], const float at[3], const float up[3]);
  // Depth maps to 0 at the near plane and 1 at the far plane.
  static Matrix PerspectiveFovLH(float fovY, float aspect, float zNear, float zFar);

  friend Matrix operator*(const Matrix& a, const Matrix& b);
  // p * M with w = 1; answers x, y, z, w.
  void Transform(const float p[3], float out[4]) const;
};

}  // namespace lumivane
