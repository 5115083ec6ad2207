#include "shell/BackgroundsWindow.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QIntValidator>
#include <QLineEdit>
#include <QListWidget>
#include <QPixmap>
#include <QPushButton>
#include <QVBoxLayout>

#include "forms/BackgroundsForm.h"
#include "shell/FormBuilder.h"
#include "shell/PictureTiles.h"
#include "shell/WidgetBinding.h"

namespace lumivane {

namespace {

QIcon GreyTile() {
  QImage tile(BackgroundsWindow::kThumbWidth, BackgroundsWindow::kThumbHeight, QImage::Format_RGB32);
  tile.fill(QColor(128, 128, 128));
  return QIcon(QPixmap::fromImage(tile));
}

std::vector<std::string> ListFiles(const std::string& folder) {
  std::vector<std::string> files;
  const QFileInfoList entries =
      QDir(QString::fromStdString(folder)).entryInfoList(QDir::Files, QDir::Name | QDir::IgnoreCase);
  files.reserve(static_cast<std::size_t>(entries.size()));
  for (const QFileInfo& entry : entries) files.push_back(entry.absoluteFilePath().toStdString());
  return files;
}

}  // namespace

BackgroundsWindow::BackgroundsWindow(BackgroundsForm& form, QWidget* parent) : QWidget(parent), form_(form) {
  setObjectName(ToQString(BackgroundsForm::kFormName));
  setWindowTitle(tr("Backgrounds"));
  setWindowFlag(Qt::Tool);
  ControlModel& m = form.Model();
  const BackgroundsForm::Controls& c = form.C();
  FormBuilder b(m);

  auto* columns = new QHBoxLayout(this);
  auto* left = new QVBoxLayout;
  columns->addLayout(left, 1);

  list_ = new QListWidget(this);
  list_->setViewMode(QListView::IconMode);
  list_->setIconSize(QSize(kThumbWidth, kThumbHeight));
  list_->setGridSize(QSize(kThumbWidth + 24, kThumbHeight + 3 * fontMetrics().lineSpacing() + 8));
  list_->setResizeMode(QListView::Adjust);
  list_->setMovement(QListView::Static);
  list_->setWordWrap(true);
  list_->setUniformItemSizes(true);
  list_->setMinimumSize(4 * (kThumbWidth + 24) + 24, 2 * (kThumbHeight + 3 * fontMetrics().lineSpacing() + 8));
  WidgetBinding::Bind(m, c.ListBackgrounds, list_);
  // Observed after the binding, so each refill it makes is dressed again at once.
  listObserver_ = m.Observe(c.ListBackgrounds, [this](const ControlEvent& e) {
    if (e.change == ChangeKind::Items || e.change == ChangeKind::Properties) DressItems();
  });
  // A click on the row that is already current changes no row; a double click sends it again.
  connect(list_, &QListWidget::itemDoubleClicked, this, [this](QListWidgetItem* item) {
    form_.Model().SelectItem(form_.C().ListBackgrounds, list_->row(item) + 1, Origin::Widget);
  });
  left->addWidget(list_, 1);

  left->addLayout(b.Rows(this, {
      Field::Line({c.cmdLoadBackground, c.cmdLoadBackGroundFolder, c.cmdPlay, c.cmdSendBackgroundToOutput}),
      Field::Line(
          {c.cmdDeletebackGroundImage, c.cmdResetBackGroundImages, c.cmdEraseBackgroundOtput, Field::Stretch()}),
      Field::Line({c.chkComputeAspectRatio, c.chkImageFadeIn, c.chkImageFadeOut, Field::Stretch()}),
      Field::Group(tr("Feedback"), {Field::Line({c.cmdFeedBack, c.chkHoldBackground, Field::Stretch()}),
                                    c.SliderRecordFramesPerSecond}),
      Field::Group(tr("Mask"), {Field::Line({c.cmdEnableMask, c.cmdLockMask, c.cmdLoadMask, c.lblMaskFileName})}),
  }));
  // Before the click reaches the form, which removes what the model holds as selected.
  connect(b.Made<QPushButton>(c.cmdDeletebackGroundImage), &QPushButton::pressed, this, [this] { StoreSelection(); });

  columns->addLayout(b.Rows(this, {
      Field::Group(tr("Look"), {c.picBackGroundColor, c.piCFilterColor, c.sliderRandomBackgroundFilterColor,
                                c.txtTimerInterval, c.chkHoldBackgroundTimer,
                                c.SliderBackGroundPositionRandomX, c.SliderBackGroundPositionRandomY,
                                c.chkBackGroundPositionUniform,
                                c.SliderBackgroundSizeRandomX, c.SliderBackgroundSizeRandomY,
                                c.chkBackGroundSizeUniform,
                                c.SliderBackgroundTileX, c.SliderBackgroundTileY, c.chkRandomizeTiling,
                                c.SliderBackGroundOffsetX, c.SliderBackGroundOffsetY, c.chkRandomizeOffset}),
      Field::Group(tr("Output"), {c.SliderFadeOut, c.chkInvertOutput}),
      Field::Stretch(),
  }));
  auto* interval = b.Made<QLineEdit>(c.txtTimerInterval);
  interval->setValidator(new QIntValidator(0, 24 * 3600 * 1000, interval));

  const QString filter = PictureDialogFilter();
  form.ChooseFiles = [this, filter] {
    const QStringList files = QFileDialog::getOpenFileNames(this, tr("Load Images"), PictureFolder, filter);
    std::vector<std::string> chosen;
    chosen.reserve(static_cast<std::size_t>(files.size()));
    for (const QString& f : files) chosen.push_back(f.toStdString());
    if (!files.isEmpty()) Remember(files.first());
    return chosen;
  };
  form.ChooseFolder = [this] {
    const QString folder = QFileDialog::getExistingDirectory(this, tr("Load Folder"), PictureFolder);
    if (!folder.isEmpty()) PictureFolder = folder;
    return folder.toStdString();
  };
  form.ChooseMaskFile = [this, filter] {
    const QString file = QFileDialog::getOpenFileName(this, tr("Load Mask"), PictureFolder, filter);
    if (!file.isEmpty()) Remember(file);
    return file.toStdString();
  };
  // The application may know better (a listing it already holds); the plain one holds no window.
  if (!form.ListFolder) form.ListFolder = ListFiles;
  form.ListChanged = [this] { MakeThumbnails(); };

  DressItems();
  MakeThumbnails();
}

BackgroundsWindow::~BackgroundsWindow() {
  form_.Model().Disconnect(form_.C().ListBackgrounds, listObserver_);
  form_.ChooseFiles = nullptr;
  form_.ChooseFolder = nullptr;
  form_.ChooseMaskFile = nullptr;
  form_.ListChanged = nullptr;
}

void BackgroundsWindow::Remember(const QString& chosenFile) { PictureFolder = QFileInfo(chosenFile).absolutePath(); }

void BackgroundsWindow::MakeThumbnails() {
  QSet<QString> listed;
  for (const BackgroundItem& item : form_.Items()) listed.insert(QString::fromStdString(item.FileName));
  // Thumbnails of pictures no longer listed go: a long show would keep every one it ever had.
  for (auto it = thumbnails_.begin(); it != thumbnails_.end();) {
    if (listed.contains(it.key())) ++it;
    else it = thumbnails_.erase(it);
  }
  for (const QString& file : listed) {
    if (thumbnails_.contains(file) || decoding_.contains(file)) continue;
    decoding_.insert(file);
    DecodeTileAsync(this, file, QSize(kThumbWidth, kThumbHeight),
                    [this, file](const QImage& tile) { Thumbnail(file, tile); });
  }
}

void BackgroundsWindow::Thumbnail(const QString& file, const QImage& tile) {
  decoding_.remove(file);
  const std::string name = file.toStdString();
  const auto& items = form_.Items();
  bool listed = false;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (items[i].FileName != name) continue;
    if (!listed) thumbnails_.insert(file, tile.isNull() ? GreyTile() : QIcon(QPixmap::fromImage(tile)));
    listed = true;
    if (QListWidgetItem* item = list_->item(static_cast<int>(i))) item->setIcon(thumbnails_.value(file));
  }
}

void BackgroundsWindow::DressItems() {
  const Control* control = form_.C().ListBackgrounds.get();
  if (control == nullptr) return;
  const auto& items = form_.Items();
  const int rows = std::min(list_->count(), static_cast<int>(control->ListItems.size()));
  for (int i = 0; i < rows; ++i) {
    const ListItem& shown = control->ListItems[static_cast<std::size_t>(i)];
    QString text = QString::fromStdString(shown.Text);
    // A picture kept from a show without being read has no size to tell.
    if (shown.SubItems.size() >= 2 && shown.SubItems[0] != "0")
      text += QStringLiteral("\n%1 x %2").arg(QString::fromStdString(shown.SubItems[0]),
                                               QString::fromStdString(shown.SubItems[1]));
    QListWidgetItem* item = list_->item(i);
    item->setText(text);
    if (static_cast<std::size_t>(i) >= items.size()) continue;
    const QString file = QString::fromStdString(items[static_cast<std::size_t>(i)].FileName);
    item->setToolTip(file);
    if (const auto found = thumbnails_.constFind(file); found != thumbnails_.cend()) item->setIcon(*found);
  }
}

void BackgroundsWindow::StoreSelection() {
  const Control* control = form_.C().ListBackgrounds.get();
  if (control == nullptr) return;
  std::vector<ListItem> items = control->ListItems;
  bool changed = false;
  for (int i = 0; i < list_->count() && i < static_cast<int>(items.size()); ++i) {
    const bool selected = list_->item(i)->isSelected();
    changed = changed || items[static_cast<std::size_t>(i)].Selected != selected;
    items[static_cast<std::size_t>(i)].Selected = selected;
  }
  if (changed) form_.Model().SetListItems(form_.C().ListBackgrounds, std::move(items));
}

}  // namespace lumivane
