#include "render/Matrix.h"

#include <cmath>

namespace lumivane {

Matrix Matrix::Scaling(float x, float y, float z) {
  Matrix r;
  r.m[0][0] = x;
  r.m[1][1] = y;
  r.m[2][2] = z;
  return r;
}

Matrix Matrix::Translation(float x, float y, float z) {
  Matrix r;
  r.m[3][0] = x;
  r.m[3][1] = y;
  r.m[3][2] = z;
  return r;
}

Matrix Matrix::RotationX(float angle) {
  const float c = std::cos(angle), s = std::sin(angle);
  Matrix r;
  r.m[1][1] = c;
  r.m[1][2] = s;
  r.m[2][1] = -s;
  r.m[2][2] = c;
  return r;
}

Matrix Matrix::RotationY(float angle) {
  const float c = std::cos(angle), s = std::sin(angle);
  Matrix r;
  r.m[0][0] = c;
  r.m[0][2] = -s;
  r.m[2][0] = s;
  r.m[2][2] = c;
  return r;
}

Matrix Matrix::RotationZ(float angle) {
  const float c = std::cos(angle), s = std::sin(angle);
  Matrix r;
  r.m[0][0] = c;
  r.m[0][1] = s;
  r.m[1][0] = -s;
  r.m[1][1] = c;
  return r;
}

Matrix Matrix::RotationYawPitchRoll(float yaw, float pitch, float roll) {
  return RotationZ(roll) * RotationX(pitch) * RotationY(yaw);
}

namespace {

void Normalize(float v[3]) {
  const float length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
  if (length > 0) {
    v[0] /= length;
    v[1] /= length;
    v[2] /= length;
  }
}

void Cross(const float a[3], const float b[3], float out[3]) {
  out[0] = a[1] * b[2] - a[2] * b[1];
  out[1] = a[2] * b[0] - a[0] * b[2];
  out[2] = a[0] * b[1] - a[1] * b[0];
}

float Dot(const float a[3], const float b[3]) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

}  // namespace

Matrix Matrix::LookAtLH(const float eye[3], const float at[3], const float up[3]) {
  float z[3] = {at[0] - eye[0], at[1] - eye[1], at[2] - eye[2]};
  Normalize(z);
  float x[3];
  Cross(up, z, x);
  Normalize(x);
  float y[3];
  Cross(z, x, y);
  Matrix r;
  for (int i = 0; i < 3; ++i) {
    r.m[i][0] = x[i];
    r.m[i][1] = y[i];
    r.m[i][2] = z[i];
  }
  r.m[3][0] = -Dot(x, eye);
  r.m[3][1] = -Dot(y, eye);
  r.m[3][2] = -Dot(z, eye);
  return r;
}

Matrix Matrix::PerspectiveFovLH(float fovY, float aspect, float zNear, float zFar) {
  const float yScale = 1.0f / std::tan(fovY / 2.0f);
  Matrix r;
  r.m[0][0] = yScale / aspect;
  r.m[1][1] = yScale;
  r.m[2][2] = zFar / (zFar - zNear);
  r.m[2][3] = 1.0f;
  r.m[3][2] = -zNear * zFar / (zFar - zNear);
  r.m[3][3] = 0.0f;
  return r;
}

Matrix operator*(const Matrix& a, const Matrix& b) {
  Matrix r;
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j)
      r.m[i][j] = a.m[i][0] * b.m[0][j] + a.m[i][1] * b.m[1][j] + a.m[i][2] * b.m[2][j] + a.m[i][3] * b.m[3][j];
  return r;
}

void Matrix::Transform(const float p[3], float out[4]) const {
  for (int j = 0; j < 4; ++j) out[j] = p[0] * m[0][j] + p[1] * m[1][j] + p[2] * m[2][j] + m[3][j];
}

}  // namespace lumivane
