#include "render/SceneNode.h"

namespace lumivane {

SceneNode* SceneNode::AddChild() {
  children_.push_back(std::make_unique<SceneNode>());
  return children_.back().get();
}

void SceneNode::Update(const Matrix& parent) {
  parentWorld_ = parent;
  world_ = local_ * parent;
  for (auto& child : children_) child->Update(world_);
}

void SceneNode::UpdateFrames() { Update(Matrix::Identity()); }

void SceneNode::Merge(int combine, const Matrix& m) {
  switch (combine) {
    case kBefore: local_ = m * local_; break;
    case kAfter: local_ = local_ * m; break;
    default: local_ = m; break;
  }
  // A node's world matrix follows its local one at once; its children at the next UpdateFrames.
  world_ = local_ * parentWorld_;
}

void SceneNode::AddRotationXYZ(int combine, float x, float y, float z) {
  Merge(combine, Matrix::RotationYawPitchRoll(y, x, z));
}

void SceneNode::AddScale(int combine, float x, float y, float z) { Merge(combine, Matrix::Scaling(x, y, z)); }

void SceneNode::AddTranslation(int combine, float x, float y, float z) {
  Merge(combine, Matrix::Translation(x, y, z));
}

}  // namespace lumivane
