#include "app/ApplicationFolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace lumivane {

namespace {

// Where the factory files are: beside the program when installed, else the source tree it was
// built from.
QString FactoryFolder() {
  const QString exe = QCoreApplication::applicationDirPath();
  for (const QString& candidate :
       {exe + "/resources", exe + "/../share/lumivane/resources", QStringLiteral(LUMIVANE_SOURCE_RESOURCES)}) {
    if (QFileInfo(candidate).isDir()) return QDir(candidate).absolutePath();
  }
  return {};
}

}  // namespace

std::string PrepareApplicationFolder(const std::string& requested, std::string& error) {
  QString folder = requested.empty() ? QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)
                                     : QString::fromStdString(requested);
  if (folder.isEmpty()) {
    error = "no user data folder is known on this system (set --app-folder)";
    return {};
  }
  QDir dir(folder);
  if (!dir.mkpath(QStringLiteral("."))) {
    error = "cannot make the folder " + folder.toStdString();
    return {};
  }
  const QString factory = FactoryFolder();
  if (!factory.isEmpty()) {
    QDirIterator it(factory, QDir::Files | QDir::NoDotAndDotDot | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
      const QString source = it.next();
      const QString relative = QDir(factory).relativeFilePath(source);
      if (relative.startsWith(QLatin1Char('.'))) continue;  // .gitkeep and the like
      const QString target = dir.filePath(relative);
      if (QFileInfo::exists(target)) continue;
      dir.mkpath(QFileInfo(relative).path());
      QFile::copy(source, target);
    }
  }
  return dir.absolutePath().toStdString();
}

}  // namespace lumivane
