#pragma once

#include <QColor>
#include <QPalette>

class QSettings;

namespace lumivane {

// The windows' colours. Stages are dark: a bright window blinds the operator and the audience, so
// the dark scheme of the settings' "UIColors" section is the default and the platform's light one
// a choice of the View menu.
struct UiColourScheme {
  bool Classic = false;  // the system's colours for buttons
  QColor Back, Border, Fore, ButtonBack, ButtonFore, ButtonPress, InputBack, InputFore;
};

// The scheme the settings hold; a key that is missing gives its factory colour. Colours are stored
// as numbers in program order (0x00BBGGRR).
UiColourScheme ReadColourScheme(const QSettings& settings);
QPalette StagePalette(const UiColourScheme& scheme);

// Whether the operator chose the light windows (View > Light Windows), kept in the settings.
bool LightThemeChosen(const QSettings& settings);
void ChooseLightTheme(QSettings& settings, bool light);

// Restyles every window of the application now: the dark scheme, or the style's own palette.
void ApplyTheme(bool light, const UiColourScheme& scheme);

}  // namespace lumivane
