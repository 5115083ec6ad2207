// Loading and saving a show of 500 texts, through the same path as the program.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

#include "core/Clock.h"
#include "core/ControlModel.h"
#include "core/EngineContext.h"
#include "forms/MsgBox.h"
#include "core/RandomSource.h"
#include "core/TextEngine.h"
#include "forms/MainForm.h"
#include "persistence/ShowFile.h"

namespace lumivane {
namespace {

class QuietMsgBox final : public MsgBox {
 public:
  int Show(std::string_view, int) override { return No; }
};

struct Program {
  FakeClock clock{1000};
  SeededRandom random{1};
  EngineContext context{clock, random};
  ControlModel model;
  TextEngine text{context};
  QuietMsgBox msg;
  MainForm form{model, text, msg};
  ShowFile show{form};
};

std::string MakeShow(int texts) {
  Program p;
  for (int i = 0; i < texts; ++i) {
    TextObject t = NewTextObject(TextFont{"DejaVu Sans", 12});
    t.TextType = i % 3 == 0 ? "CustomInput" : "Counter";
    t.Words = StringList({"first line", "second line", "third"});
    t.WordCount = 3;
    t.CurrentText = "text " + std::to_string(i);
    t.Left = i % 400;
    t.Right = t.Left + 120;
    p.text.TextAppend(t);
  }
  const std::string path = "/tmp/lumivane_bench_show.xml";
  std::string error;
  p.show.EngineFileSave(path, error);
  return path;
}

void BM_LoadShow500(benchmark::State& state) {
  const std::string path = MakeShow(500);
  Program p;
  std::string error;
  for (auto _ : state) benchmark::DoNotOptimize(p.show.EngineFileLoad(path, error));
  std::remove(path.c_str());
}
BENCHMARK(BM_LoadShow500)->Unit(benchmark::kMillisecond);

void BM_SaveShow500(benchmark::State& state) {
  const std::string path = MakeShow(500);
  Program p;
  std::string error;
  p.show.EngineFileLoad(path, error);
  for (auto _ : state) benchmark::DoNotOptimize(p.show.EngineFileSave(path, error));
  std::remove(path.c_str());
}
BENCHMARK(BM_SaveShow500)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lumivane
