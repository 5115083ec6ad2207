#include "shell/BackgroundsWindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QListWidget>
#include <QMouseEvent>
#include <QPushButton>
#include <QSlider>
#include <QTemporaryDir>
#include <QThreadPool>

#include "forms/BackgroundsForm.h"
#include "forms/MainForm.h"
#include "shell/FormBuilder.h"
#include "support/EngineFixture.h"
#include "support/QtWait.h"
#include "support/FakeMsgBox.h"
#include "support/RecordingLayerOutput.h"

namespace lumivane {
namespace {

using test::WaitUntil;

void Click(QWidget* w) {
  QMouseEvent press(QEvent::MouseButtonPress, QPointF(2, 2), w->mapToGlobal(QPointF(2, 2)), Qt::LeftButton,
                    Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(w, &press);
}

QColor Middle(const QIcon& icon) {
  const QImage shown =
      icon.pixmap(QSize(BackgroundsWindow::kThumbWidth, BackgroundsWindow::kThumbHeight)).toImage();
  return shown.pixelColor(shown.width() / 2, shown.height() / 2);
}

class BackgroundsWindowTest : public ::testing::Test, protected test::EngineFixture {
 protected:
  ControlModel model;
  test::FakeMsgBox msg;
  MainForm main{model, text, msg};
  BackgroundsForm form{model, msg, main.BackgroundColor};
  const BackgroundsForm::Controls& c = form.C();
  QTemporaryDir dir;
  std::unique_ptr<BackgroundsWindow> window;
  test::RecordingLayerOutput output;
  std::vector<std::string>& sent = output.shown;

  template <class W>
  W* Find(const char* name) { return test::Child<W>(*window, name); }
  QListWidget* List() { return window->Pictures(); }

  // Every picture reads as 640 x 360 without touching the disk.
  void SetUp() override {
    ASSERT_TRUE(dir.isValid());
    form.ReadImageSize = [](const std::string&, std::int32_t& w, std::int32_t& h, std::string&) {
      w = 640;
      h = 360;
      return true;
    };
    form.Output = &output;
    window = std::make_unique<BackgroundsWindow>(form);
    window->show();
    QApplication::processEvents();
  }
  void TearDown() override { test::CloseWindow(window); }

  std::string Path(const char* name) const { return dir.filePath(QString::fromLatin1(name)).toStdString(); }
  std::string WritePicture(const char* name, QColor colour) {
    QImage picture(200, 100, QImage::Format_RGB32);
    picture.fill(colour);
    EXPECT_TRUE(picture.save(QString::fromStdString(Path(name)), "PNG"));
    return Path(name);
  }
  std::string WriteFile(const char* name, const QByteArray& bytes) {
    QFile f(QString::fromStdString(Path(name)));
    EXPECT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(bytes);
    return Path(name);
  }
  bool AllIconsMade() {
    for (int i = 0; i < List()->count(); ++i)
      if (List()->item(i)->icon().isNull()) return false;
    return true;
  }
};

TEST_F(BackgroundsWindowTest, AHandOnTheWidgetsReachesTheControls) {
  EXPECT_EQ(window->windowTitle(), "Backgrounds");
  // Projection mapping is not there yet: its controls have no widget.
  EXPECT_EQ(window->findChild<QComboBox*>("cboToCRS"), nullptr);

  Find<QSlider>("SliderBackgroundTileX")->setValue(5);
  EXPECT_EQ(ControlModel::Value(c.SliderBackgroundTileX), 5);
  EXPECT_EQ(Find<QLabel>("SliderBackgroundTileXValue")->text(), "5");
  auto* feedback = Find<QPushButton>("cmdFeedBack");
  ASSERT_TRUE(feedback->isCheckable());
  feedback->click();
  EXPECT_EQ(ControlModel::Value(c.cmdFeedBack), 1);

  // Swatches start the dialog from the control's colour and write red in the low byte.
  auto* tint = Find<ColourSwatch>("piCFilterColor");
  QColor offered;
  tint->PickColour = [&](const QColor& current) {
    offered = current;
    return QColor(255, 128, 0);
  };
  Click(tint);
  EXPECT_EQ(offered, QColor(255, 255, 255));
  EXPECT_EQ(ControlModel::BackColor(c.piCFilterColor), 0x0080FF);
  auto* clear = Find<ColourSwatch>("picBackGroundColor");
  clear->PickColour = [](const QColor&) { return QColor(); };  // cancelled
  Click(clear);
  EXPECT_EQ(ControlModel::BackColor(main.BackgroundColor), 0);
}

TEST_F(BackgroundsWindowTest, EachPictureShowsItsNameSizeAndThumbnail) {
  const std::string red = WritePicture("red.png", Qt::red);
  const std::string broken = WriteFile("broken.png", "not a picture at all");
  form.LoadBackground({red, broken});

  ASSERT_EQ(List()->count(), 2);
  EXPECT_EQ(List()->item(0)->text(), "red.png\n640 x 360");
  EXPECT_EQ(List()->item(1)->text(), "broken.png\n640 x 360");
  ASSERT_TRUE(WaitUntil([&] { return AllIconsMade(); }));
  EXPECT_EQ(Middle(List()->item(0)->icon()), QColor(Qt::red));
  EXPECT_EQ(Middle(List()->item(1)->icon()), QColor(128, 128, 128));  // a plain grey tile

  // The list is refilled bare by its binding; what was made stays, and is not read again (the
  // file is gone: read again it would be grey).
  ASSERT_TRUE(QFile::remove(QString::fromStdString(red)));
  form.LoadBackground({WritePicture("blue.png", Qt::blue)});
  ASSERT_EQ(List()->count(), 3);
  EXPECT_EQ(List()->item(0)->text(), "red.png\n640 x 360");
  EXPECT_EQ(Middle(List()->item(0)->icon()), QColor(Qt::red));
  model.SetEnabled(c.ListBackgrounds, false);  // a property change refills the widget too
  EXPECT_EQ(Middle(List()->item(0)->icon()), QColor(Qt::red));
  EXPECT_EQ(List()->item(1)->text(), "broken.png\n640 x 360");

  // Closed while the new thumbnail may still be made: the form goes on without the window.
  window.reset();
  QThreadPool::globalInstance()->waitForDone();
  QApplication::processEvents();
  EXPECT_FALSE(form.ListChanged);
  form.LoadBackground({Path("more.jpg")});
  EXPECT_EQ(form.Items().size(), 4u);
}

TEST_F(BackgroundsWindowTest, SelectingSendsAndDeleteRemovesEverySelectedPicture) {
  form.LoadBackground({Path("a.jpg"), Path("b.jpg"), Path("c.jpg")});
  ASSERT_EQ(List()->count(), 3);
  List()->setCurrentRow(1);
  EXPECT_EQ(sent, std::vector<std::string>{Path("b.jpg")});
  // A double click on the current picture sends it again, as no row changes.
  emit List()->itemDoubleClicked(List()->item(1));
  EXPECT_EQ(sent.size(), 2u);

  List()->item(1)->setSelected(false);
  List()->item(0)->setSelected(true);
  List()->item(2)->setSelected(true);
  Find<QPushButton>("cmdDeletebackGroundImage")->click();
  ASSERT_EQ(form.Items().size(), 1u);
  EXPECT_EQ(form.Items()[0].FileName, Path("b.jpg"));
}

TEST_F(BackgroundsWindowTest, AFolderAddsItsPicturesInNameOrder) {
  WriteFile("b.jpg", "x");
  WriteFile("A.JPG", "x");
  WriteFile("notes.txt", "x");
  ASSERT_TRUE(QDir(dir.path()).mkdir("c.jpg"));  // a folder, whatever its name
  form.LoadBackGroundFolder(dir.path().toStdString());
  ASSERT_EQ(form.Items().size(), 2u);
  EXPECT_EQ(form.Items()[0].FileName, Path("A.JPG"));
}

}  // namespace
}  // namespace lumivane
