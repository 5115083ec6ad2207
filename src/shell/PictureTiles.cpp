#include "shell/PictureTiles.h"

#include <QCoreApplication>
#include <QImageReader>
#include <QMetaObject>
#include <QPainter>
#include <QPointer>
#include <QThreadPool>

#include "forms/BackgroundsForm.h"
#include "shell/WidgetBinding.h"

namespace lumivane {

QString PictureDialogFilter() {
  return ToQString(BackgroundsForm::kImageFilter) + QStringLiteral(";;") + QObject::tr("All files (*)");
}

QImage FitTile(const QImage& picture, QSize box) {
  if (picture.isNull() || box.isEmpty()) return {};
  QImage tile(box, QImage::Format_ARGB32_Premultiplied);
  tile.fill(Qt::transparent);
  const QImage scaled = picture.size() == picture.size().scaled(box, Qt::KeepAspectRatio)
                            ? picture
                            : picture.scaled(box, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  QPainter painter(&tile);
  painter.drawImage((box.width() - scaled.width()) / 2, (box.height() - scaled.height()) / 2, scaled);
  return tile;
}

void DecodeTileAsync(QObject* receiver, const QString& file, QSize box, std::function<void(const QImage&)> done) {
  QPointer<QObject> guard(receiver);
  QThreadPool::globalInstance()->start([guard, file, box, done = std::move(done)]() mutable {
    QImageReader reader(file);
    reader.setAutoTransform(true);
    // Readers that can decode small (JPEG) then never hold the whole picture.
    const QSize size = reader.size();
    if (size.isValid() && !size.isEmpty()) reader.setScaledSize(size.scaled(box, Qt::KeepAspectRatio));
    QImage tile = FitTile(reader.read(), box);
    // The application object outlives the pool (it waits for it), so it carries the result;
    // the receiver is looked at only on the UI thread.
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [guard, tile = std::move(tile), done = std::move(done)] {
          if (guard) done(tile);
        },
        Qt::QueuedConnection);
  });
}

}  // namespace lumivane
