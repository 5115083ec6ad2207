// Building the solid of an extruded text: outlines, tessellation and walls, as a text's mesh is
// rebuilt when its string or font changes.
#include <benchmark/benchmark.h>

#include <string>

#include "render/TextMesh.h"

namespace lumivane {
namespace {

void BM_BuildTextMesh(benchmark::State& state, const char* fontName, std::string text, bool bold = false) {
  const TextFont font{fontName, 24, bold};
  std::size_t triangles = 0;
  for (auto _ : state) {
    const MeshData mesh = BuildTextMesh(font, text, 0.001f, 0.2f);
    triangles = mesh.FaceCount();
    benchmark::DoNotOptimize(mesh.Indices.data());
  }
  state.counters["triangles"] = static_cast<double>(triangles);
}
// Twenty characters: capitals, lower case with curves, and digits as a counter shows them.
BENCHMARK_CAPTURE(BM_BuildTextMesh, sans_words_20, "DejaVu Sans", std::string("Lumivane Live Visual"))
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_BuildTextMesh, serif_20, "DejaVu Serif", std::string("QUARTZ GLYPHS 8@&%O!"))
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_BuildTextMesh, digits_20, "DejaVu Sans Mono", std::string("01234567890123456789"))
    ->Unit(benchmark::kMillisecond);
// One text of the extruded frame-rate benchmark's show: twelve bold letters and digits.
BENCHMARK_CAPTURE(BM_BuildTextMesh, bold_12, "DejaVu Sans", std::string("0000000A1B2C"), true)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace lumivane
