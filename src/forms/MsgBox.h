#pragma once

#include <string_view>

namespace lumivane {

// The one way to ask or tell the operator. The windowed program shows MessageWindow; the headless
// runner and tests answer without a window.
class MsgBox {
 public:
  enum Buttons : int { OKOnly = 0, YesNo = 4 };
  enum Result : int { OK = 1, Yes = 6, No = 7 };

  virtual ~MsgBox() = default;
  // Shows `message` with the buttons and answers which was chosen.
  virtual int Show(std::string_view message, int buttons = OKOnly) = 0;
};

}  // namespace lumivane
