// The main of benchmarks that need Qt's application object (fonts, image readers); offscreen, so
// no display is needed.
#include <QGuiApplication>
#include <benchmark/benchmark.h>

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QGuiApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
