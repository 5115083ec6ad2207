#include "shell/EffectsWindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QTimer>

#include "support/QtWait.h"

#include "forms/EffectsForm.h"

namespace lumivane {
namespace {

using test::WaitUntil;

QImage Filled(QSize size, QColor colour) {
  QImage image(size, QImage::Format_RGB32);
  image.fill(colour);
  return image;
}

class EffectsWindowTest : public ::testing::Test {
 protected:
  ControlModel model;
  EffectsForm form{model};
  const EffectsForm::Controls& c = form.C();
  QTemporaryDir dir;
  std::unique_ptr<EffectsWindow> window;
  int grabs = 0;

  template <class W>
  W* Find(const char* name) { return test::Child<W>(*window, name); }

  void SetUp() override {
    ASSERT_TRUE(dir.isValid());
    window = std::make_unique<EffectsWindow>(form);
    window->show();
    QApplication::processEvents();
  }
  void TearDown() override { test::CloseWindow(window); }

  void GrabGreen() {
    window->GrabEffect = [this] {
      ++grabs;
      return Filled(QSize(64, 36), Qt::green);
    };
  }
  std::string WritePicture(QColor colour) {
    const QString path = dir.filePath(QStringLiteral("effect.png"));
    EXPECT_TRUE(Filled(QSize(320, 180), colour).save(path, "PNG"));
    return path.toStdString();
  }
  QColor PreviewMiddle() const {
    const QImage shown = window->Preview()->pixmap().toImage();
    return shown.isNull() ? QColor() : shown.pixelColor(shown.width() / 2, shown.height() / 2);
  }
};

TEST_F(EffectsWindowTest, AHandOnTheWidgetsReachesTheControls) {
  EXPECT_EQ(window->windowTitle(), "Effects");
  auto* source = Find<QComboBox>("cboSourceBlend");
  auto* target = Find<QComboBox>("cboTargetBlend");
  Find<QPushButton>("cmdEffectBlending2")->click();
  EXPECT_EQ(source->currentText(), "DEST_COLOR");
  EXPECT_EQ(target->currentText(), "SRC_COLOR");
  model.SetText(c.cboSourceBlend, "SRC_ALPHA");  // a blend only a show file names still shows
  EXPECT_EQ(source->currentText(), "SRC_ALPHA");

  Find<QSlider>("SliderEffectTime")->setValue(2500);
  EXPECT_EQ(ControlModel::Value(c.SliderEffectTime), 2500);
  EXPECT_EQ(Find<QLabel>("SliderEffectTimeValue")->text(), "2500");
}

TEST_F(EffectsWindowTest, ThePreviewShowsTheFileOrElseTheCapture) {
  GrabGreen();
  form.SetEffectFile(WritePicture(Qt::blue));
  ASSERT_TRUE(WaitUntil([&] { return PreviewMiddle() == QColor(Qt::blue); }));
  EXPECT_EQ(window->Preview()->pixmap().size(), QSize(160, 90));
  EXPECT_EQ(grabs, 0);

  form.ClearEffectTexture();
  EXPECT_EQ(PreviewMiddle(), QColor(Qt::green));

  // A decode that comes back late never covers a later picture.
  form.SetEffectFile(WritePicture(Qt::blue));
  form.ClearEffectTexture();
  QThreadPool::globalInstance()->waitForDone();
  QApplication::processEvents();
  EXPECT_EQ(PreviewMiddle(), QColor(Qt::green));

  window->GrabEffect = nullptr;
  form.ClearEffectTexture();
  EXPECT_TRUE(window->Preview()->pixmap().isNull());
}

TEST_F(EffectsWindowTest, TheCaptureTimerRunsOnlyWhileShownAndCapturing) {
  auto* timer = Find<QTimer>("TimerEffectCapture");
  EXPECT_EQ(timer->interval(), 500);
  EXPECT_FALSE(timer->isActive());
  Find<QCheckBox>("chkCaptureEffect")->click();
  EXPECT_TRUE(timer->isActive());
  window->hide();
  EXPECT_FALSE(timer->isActive());
  window->show();
  EXPECT_TRUE(timer->isActive());
  model.SetValue(c.chkCaptureEffect, 0);  // a show or a controller unticks it
  EXPECT_FALSE(timer->isActive());

  GrabGreen();
  timer->setInterval(5);
  model.SetValue(c.chkCaptureEffect, 1);
  ASSERT_TRUE(WaitUntil([&] { return grabs >= 2; }));
  EXPECT_EQ(PreviewMiddle(), QColor(Qt::green));
}

}  // namespace
}  // namespace lumivane
