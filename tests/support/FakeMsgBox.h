#pragma once

#include <deque>
#include <string>
#include <vector>

#include "forms/MsgBox.h"

namespace lumivane::test {

// Records what the program said and answers from a queue (Yes when the queue is empty).
class FakeMsgBox final : public MsgBox {
 public:
  int Show(std::string_view message, int buttons) override {
    shown.emplace_back(message);
    lastButtons = buttons;
    if (answers.empty()) return buttons == YesNo ? Yes : OK;
    const int a = answers.front();
    answers.pop_front();
    return a;
  }
  std::vector<std::string> shown;
  std::deque<int> answers;
  int lastButtons = -1;
};

}  // namespace lumivane::test
