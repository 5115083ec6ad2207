#include "shell/FileMenu.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QMainWindow>
#include <QMenuBar>
#include <QSettings>

#include "forms/MsgBox.h"
#include "forms/MainForm.h"
#include "persistence/ShowFile.h"

namespace lumivane {

namespace {
constexpr const char* kRecentKey = "RecentShows";
constexpr int kRecentCount = 8;
const QString kFilter = QStringLiteral("Lumivane (XML) (*.xml)");
}  // namespace

FileMenu::FileMenu(QMainWindow& window, MainForm& form, ShowFile& show, MsgBox& msgBox, QString showFolder)
    : QObject(nullptr), window_(window), form_(form), show_(show), msgBox_(msgBox), folder_(std::move(showFolder)) {
  QMenu* file = window.menuBar()->addMenu(tr("&File"));
  file->addAction(tr("&New"), QKeySequence::New, this, [this] { New(); });
  file->addAction(tr("&Open..."), QKeySequence::Open, this, [this] {
    if (!KeepChanges()) return;
    const QString path = QFileDialog::getOpenFileName(&window_, tr("Open Show"), folder_, kFilter);
    if (!path.isEmpty()) Open(path);
  });
  recentMenu_ = file->addMenu(tr("Open &Recent"));
  file->addSeparator();
  file->addAction(tr("&Save"), QKeySequence::Save, this, [this] { Save(); });
  file->addAction(tr("Save &As..."), QKeySequence::SaveAs, this, [this] {
    if (const QString path = AskSavePath(); !path.isEmpty()) SaveAs(path);
  });
  file->addSeparator();
  file->addAction(tr("&Quit"), QKeySequence::Quit, &window_, [this] { window_.close(); });
  RefreshRecent();
}

bool FileMenu::KeepChanges() {
  if (!form_.Modified) return true;
  if (msgBox_.Show(kUnsavedQuestion, MsgBox::YesNo) != MsgBox::Yes) return true;  // drop them
  return Save();
}

bool FileMenu::New() {
  if (!KeepChanges()) return false;
  show_.Forget();
  form_.Reset();
  form_.Modified = false;
  current_.clear();
  return true;
}

QString FileMenu::AskSavePath() {
  const QString path = QFileDialog::getSaveFileName(&window_, tr("Save Show"), folder_, kFilter);
  if (path.isEmpty() || path.endsWith(".xml", Qt::CaseInsensitive)) return path;
  return path + ".xml";
}

bool FileMenu::Finish(bool ok, const std::string& error, const QString& path) {
  if (!ok) {
    msgBox_.Show(error, MsgBox::OKOnly);
    return false;
  }
  current_ = path;
  Remember(path);
  return true;
}

bool FileMenu::Open(const QString& path) {
  std::string error;
  const bool ok = show_.EngineFileLoad(path.toStdString(), error);
  return Finish(ok, error, path);
}

bool FileMenu::Save() {
  const QString path = current_.isEmpty() ? AskSavePath() : current_;
  return !path.isEmpty() && SaveAs(path);
}

bool FileMenu::SaveAs(const QString& path) {
  std::string error;
  const bool ok = show_.EngineFileSave(path.toStdString(), error);
  return Finish(ok, error, path);
}

QStringList FileMenu::Recent() const { return QSettings().value(kRecentKey).toStringList(); }

void FileMenu::Remember(const QString& path) {
  QStringList recent = Recent();
  recent.removeAll(path);
  recent.prepend(path);
  while (recent.size() > kRecentCount) recent.removeLast();
  QSettings().setValue(kRecentKey, recent);
  RefreshRecent();
}

void FileMenu::RefreshRecent() {
  recentMenu_->clear();
  for (const QString& path : Recent()) {
    recentMenu_->addAction(QFileInfo(path).fileName(), this, [this, path] {
      if (KeepChanges()) Open(path);
    });
  }
  recentMenu_->setEnabled(!recentMenu_->isEmpty());
}

}  // namespace lumivane
