#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <string>

class QMainWindow;
class QMenu;

namespace lumivane {

class MainForm;
class MsgBox;
class ShowFile;

// The main window's File menu: new, open, save, save as and the recently used shows, with the
// usual shortcuts, and a question before unsaved changes are dropped. Failures are told in one
// message and change nothing.
class FileMenu final : public QObject {
  Q_OBJECT

 public:
  static constexpr const char* kUnsavedQuestion = "The show has changes that are not saved. Save them first?";

  FileMenu(QMainWindow& window, MainForm& form, ShowFile& show, MsgBox& msgBox, QString showFolder);

  bool New();
  bool Open(const QString& path);
  bool Save();
  bool SaveAs(const QString& path);
  // Asks about unsaved changes; false when the operator's answer means "stop here".
  bool KeepChanges();
  const QString& CurrentPath() const { return current_; }
  QStringList Recent() const;

 private:
  // The save dialog's answer, with ".xml" added when it was left off; empty when cancelled.
  QString AskSavePath();
  // After a load or save: the message on failure, else the path becomes current and recent.
  bool Finish(bool ok, const std::string& error, const QString& path);
  void Remember(const QString& path);
  void RefreshRecent();
  QMainWindow& window_;
  MainForm& form_;
  ShowFile& show_;
  MsgBox& msgBox_;
  QString folder_;
  QString current_;
  QMenu* recentMenu_ = nullptr;
};

}  // namespace lumivane
