#include "shell/StageTheme.h"

#include <QApplication>
#include <QSettings>
#include <QStyle>
#include <QStyleFactory>

namespace lumivane {

namespace {

QColor ProgramOrder(const QSettings& settings, const char* key, int factory) {
  bool ok = false;
  const int value = settings.value(QStringLiteral("UIColors/") + QLatin1String(key), factory).toInt(&ok);
  const int v = ok ? value : factory;
  return QColor(v & 0xFF, (v >> 8) & 0xFF, (v >> 16) & 0xFF);
}

const QString kLightThemeKey = QStringLiteral("UIColors/LightTheme");

}  // namespace

UiColourScheme ReadColourScheme(const QSettings& settings) {
  UiColourScheme s;
  s.Classic = settings.value(QStringLiteral("UIColors/UIClassic"), 0).toInt() == 1;
  s.Back = ProgramOrder(settings, "UIBackColor", 0x252525);
  s.Border = ProgramOrder(settings, "UIBorderColor", 0x4A4A4A);
  s.Fore = ProgramOrder(settings, "UIForeColor", 0x989898);
  s.ButtonBack = ProgramOrder(settings, "UIButtonBackColor", 0x3F3F3F);
  s.ButtonFore = ProgramOrder(settings, "UIButtonForeColor", 0xBFBFBF);
  s.ButtonPress = ProgramOrder(settings, "UIButtonPressColor", 0x00E0F2);
  s.InputBack = ProgramOrder(settings, "UIInputBackColor", 0);
  s.InputFore = ProgramOrder(settings, "UIInputForeColor", 0xE1E002);
  if (s.Classic) {
    // Decided once at start, whatever colours are stored for them.
    const QPalette system = QApplication::style()->standardPalette();
    s.ButtonBack = system.color(QPalette::Button);
    s.ButtonFore = system.color(QPalette::ButtonText);
  }
  return s;
}

QPalette StagePalette(const UiColourScheme& s) {
  QPalette p;
  p.setColor(QPalette::Window, s.Back);
  p.setColor(QPalette::WindowText, s.Fore);
  p.setColor(QPalette::Base, s.InputBack);
  p.setColor(QPalette::AlternateBase, s.Back.lighter(115));
  p.setColor(QPalette::Text, s.InputFore);
  p.setColor(QPalette::PlaceholderText, s.Fore.darker(140));
  p.setColor(QPalette::Button, s.ButtonBack);
  p.setColor(QPalette::ButtonText, s.ButtonFore);
  p.setColor(QPalette::BrightText, s.ButtonPress);
  p.setColor(QPalette::Highlight, s.ButtonPress);
  p.setColor(QPalette::HighlightedText, Qt::black);
  p.setColor(QPalette::Link, s.ButtonPress);
  p.setColor(QPalette::ToolTipBase, s.Back);
  p.setColor(QPalette::ToolTipText, s.Fore);
  // The bevels of frames, sliders and buttons come from the border colour.
  p.setColor(QPalette::Light, s.Border.lighter(130));
  p.setColor(QPalette::Midlight, s.Border);
  p.setColor(QPalette::Mid, s.Border.darker(120));
  p.setColor(QPalette::Dark, s.Border.darker(160));
  p.setColor(QPalette::Shadow, Qt::black);
  // What cannot be used now reads dimmer, and never in the input colour.
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
    p.setColor(QPalette::Disabled, role, s.Fore.darker(170));
  p.setColor(QPalette::Disabled, QPalette::Base, s.Back);
  return p;
}

bool LightThemeChosen(const QSettings& settings) { return settings.value(kLightThemeKey, false).toBool(); }

void ChooseLightTheme(QSettings& settings, bool light) { settings.setValue(kLightThemeKey, light); }

void ApplyTheme(bool light, const UiColourScheme& scheme) {
  // Fusion draws every widget from the palette, so the dark colours reach them all.
  if (QStyle* fusion = QStyleFactory::create(QStringLiteral("Fusion"))) QApplication::setStyle(fusion);
  QApplication::setPalette(light ? QApplication::style()->standardPalette() : StagePalette(scheme));
}

}  // namespace lumivane
