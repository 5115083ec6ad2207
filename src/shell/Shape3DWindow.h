#pragma once

#include <QString>
#include <QWidget>

namespace lumivane {

class Shape3DForm;

// The shape editor as the operator sees it: one check box per shape, each over its frame of
// sliders (with their values beside them), the custom mesh's controls and the text box picture;
// each a view of Shape3DForm's controls. The window answers the form's questions for files.
class Shape3DWindow final : public QWidget {
  Q_OBJECT

 public:
  explicit Shape3DWindow(Shape3DForm& form, QWidget* parent = nullptr);
  ~Shape3DWindow() override;

  // Where the mesh file dialog opens; the working folder when empty.
  QString MeshFolder;
  // Where the text box picture dialog opens.
  QString PictureFolder;

 private:
  Shape3DForm& form_;
};

}  // namespace lumivane
