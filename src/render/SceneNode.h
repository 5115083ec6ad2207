#pragma once

#include <memory>
#include <vector>

#include "render/Matrix.h"

namespace lumivane {

// A node of the small scene graph 3D texts are placed with: a local matrix, and children whose
// world matrices follow from it. Each text has a root frame with one text frame below it.
class SceneNode {
 public:
  // How a new matrix merges into the local one: 0 new x local, 1 local x new, 2 replaces it.
  enum Combine { kBefore = 0, kAfter = 1, kReplace = 2 };

  SceneNode* AddChild();
  // Recomputes the world matrices down the tree, from the identity at this node's parent.
  void UpdateFrames();
  const Matrix& GetUpdatedMatrix() const { return world_; }
  void SetMatrix(const Matrix& m) { Merge(kReplace, m); }
  const Matrix& GetMatrix() const { return local_; }

  // Yaw y, pitch x, roll z, in radians.
  void AddRotationXYZ(int combine, float x, float y, float z);
  void AddScale(int combine, float x, float y, float z);
  void AddTranslation(int combine, float x, float y, float z);

 private:
  void Merge(int combine, const Matrix& m);
  void Update(const Matrix& parent);

  Matrix local_;
  Matrix world_;
  Matrix parentWorld_;  // as the last UpdateFrames left it
  std::vector<std::unique_ptr<SceneNode>> children_;
};

}  // namespace lumivane
