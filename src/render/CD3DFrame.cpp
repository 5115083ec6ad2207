#include "render/CD3DFrame.h"

namespace lumivane {

CD3DFrame* CD3DFrame::AddChild() {
  children_.push_back(std::make_unique<CD3DFrame>());
  return children_.back().get();
}

void CD3DFrame::Update(const Matrix& parent) {
  parentWorld_ = parent;
  world_ = local_ * parent;
  for (auto& child : children_) child->Update(world_);
}

void CD3DFrame::UpdateFrames() { Update(Matrix::Identity()); }

void CD3DFrame::Merge(int combine, const Matrix& m) {
  switch (combine) {
    case kBefore: local_ = m * local_; break;
    case kAfter: local_ = local_ * m; break;
    default: local_ = m; break;
  }
  // A node's world matrix follows its local one at once; its children at the next UpdateFrames.
  world_ = local_ * parentWorld_;
}

void CD3DFrame::AddRotationXYZ(int combine, float x, float y, float z) {
  Merge(combine, Matrix::RotationYawPitchRoll(y, x, z));
}

void CD3DFrame::AddScale(int combine, float x, float y, float z) { Merge(combine, Matrix::Scaling(x, y, z)); }

void CD3DFrame::AddTranslation(int combine, float x, float y, float z) {
  Merge(combine, Matrix::Translation(x, y, z));
}

}  // namespace lumivane
