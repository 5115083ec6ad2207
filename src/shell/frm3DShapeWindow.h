#pragma once

#include <QString>
#include <QWidget>

namespace lumivane {

class frm3DShape;

// The shape editor as the operator sees it: one check box per shape, each over its frame of
// sliders (with their values beside them), the custom mesh's controls and the text box picture;
// each a view of frm3DShape's controls. The window answers the form's questions for files.
class frm3DShapeWindow final : public QWidget {
  Q_OBJECT

 public:
  explicit frm3DShapeWindow(frm3DShape& form, QWidget* parent = nullptr);
  ~frm3DShapeWindow() override;

  // Where the mesh file dialog opens; the working folder when empty.
  QString MeshFolder;
  // Where the text box picture dialog opens.
  QString PictureFolder;

 private:
  frm3DShape& form_;
};

}  // namespace lumivane
