#pragma once

#include <QHash>
#include <QIcon>
#include <QImage>
#include <QSet>
#include <QString>
#include <QWidget>

#include "core/ControlModel.h"

class QListWidget;

namespace lumivane {

class BackgroundsForm;

// The background window as the operator sees it: the picture list as thumbnails with their
// sizes, playback and sending, feedback, the mask, the look of the background layer and the
// output stage; each a view of BackgroundsForm' controls. The window answers the form's questions
// for files and folders.
class BackgroundsWindow final : public QWidget {
  Q_OBJECT

 public:
  explicit BackgroundsWindow(BackgroundsForm& form, QWidget* parent = nullptr);
  ~BackgroundsWindow() override;

  // Where the picture and mask dialogs open; each choice moves it to the chosen folder.
  QString PictureFolder;

  static constexpr int kThumbWidth = 96, kThumbHeight = 54;

  QListWidget* Pictures() const noexcept { return list_; }

 private:
  // Starts a thumbnail for each listed picture that has none, and forgets those of pictures gone.
  void MakeThumbnails();
  void Thumbnail(const QString& file, const QImage& tile);
  // Puts names, sizes and thumbnails on the list's items; the binding refills them bare.
  void DressItems();
  // Writes the list's selection into the model's item flags, which a removal reads: the binding
  // writes only the current row.
  void StoreSelection();
  void Remember(const QString& chosenFile);

  BackgroundsForm& form_;
  QListWidget* list_ = nullptr;
  ListenerId listObserver_ = 0;
  // Made thumbnails by file name, so a refill of the list decodes nothing again.
  QHash<QString, QIcon> thumbnails_;
  QSet<QString> decoding_;
};

}  // namespace lumivane
