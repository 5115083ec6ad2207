#pragma once

#include <QImage>
#include <QObject>
#include <QSize>
#include <QString>
#include <functional>

// Pictures for the form windows (thumbnails, previews): decoded off the UI thread and fitted to a
// tile.
namespace lumivane {

// What picture dialogs offer: the kinds the engine reads, then any file.
QString PictureDialogFilter();

// Decodes a picture on the global thread pool, scaled to fit `box` and centred on a transparent
// tile of exactly that size. `done` runs on the UI thread, with a null image when the file cannot
// be read, unless `receiver` is gone by then.
void DecodeTileAsync(QObject* receiver, const QString& file, QSize box, std::function<void(const QImage&)> done);
// The same fitting for a picture already in memory (a null image stays null).
QImage FitTile(const QImage& picture, QSize box);

}  // namespace lumivane
