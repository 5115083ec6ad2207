#include "shell/StageTheme.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QSettings>
#include <QStyle>
#include <QTemporaryDir>

namespace lumivane {
namespace {

class StageThemeTest : public ::testing::Test {
 protected:
  QTemporaryDir dir;
  QSettings settings{dir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat};
};

TEST_F(StageThemeTest, TheFactorySchemeIsDarkAndStoredColoursAreReadInProgramOrder) {
  const QPalette factory = StagePalette(ReadColourScheme(settings));
  EXPECT_EQ(factory.color(QPalette::Window), QColor(0x25, 0x25, 0x25));
  EXPECT_EQ(factory.color(QPalette::Base), QColor(Qt::black));
  EXPECT_EQ(factory.color(QPalette::Text), QColor(0x02, 0xE0, 0xE1));       // stored 0xE1E002
  EXPECT_EQ(factory.color(QPalette::Highlight), QColor(0xF2, 0xE0, 0x00));  // stored 0x00E0F2
  EXPECT_LT(factory.color(QPalette::Window).lightness(), factory.color(QPalette::WindowText).lightness());

  settings.setValue(QStringLiteral("UIColors/UIBackColor"), 0x102030);  // blue 0x10, green 0x20, red 0x30
  settings.setValue(QStringLiteral("UIColors/UIButtonBackColor"), 0x0000FF);
  const UiColourScheme stored = ReadColourScheme(settings);
  EXPECT_EQ(stored.Back, QColor(0x30, 0x20, 0x10));
  EXPECT_EQ(stored.ButtonBack, QColor(0xFF, 0, 0));
  EXPECT_EQ(stored.Fore, QColor(0x98, 0x98, 0x98));  // not stored: the factory colour

  // Classic buttons take the system's colours even when others are stored.
  settings.setValue(QStringLiteral("UIColors/UIClassic"), 1);
  const UiColourScheme classic = ReadColourScheme(settings);
  EXPECT_EQ(classic.ButtonBack, QApplication::style()->standardPalette().color(QPalette::Button));
  EXPECT_EQ(classic.Back, QColor(0x30, 0x20, 0x10));
}

TEST_F(StageThemeTest, TheLightChoiceIsKeptAndAppliedToTheWholeApplication) {
  EXPECT_FALSE(LightThemeChosen(settings));
  const UiColourScheme scheme = ReadColourScheme(settings);
  ApplyTheme(false, scheme);
  EXPECT_EQ(QApplication::palette().color(QPalette::Window), QColor(0x25, 0x25, 0x25));

  ChooseLightTheme(settings, true);
  EXPECT_TRUE(LightThemeChosen(settings));
  ApplyTheme(LightThemeChosen(settings), scheme);
  EXPECT_EQ(QApplication::palette().color(QPalette::Window),
            QApplication::style()->standardPalette().color(QPalette::Window));
  EXPECT_GT(QApplication::palette().color(QPalette::Window).lightness(), 128);
}

}  // namespace
}  // namespace lumivane
