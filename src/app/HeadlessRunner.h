#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace lumivane {

struct AppOptions;
class FrameRenderer;
class ControlModel;
class TextEngine;
class MainForm;
class Stage;

// A show played without any window, on the virtual clock and the seeded random source, through
// the same frame path as the output window.
class HeadlessSession {
 public:
  HeadlessSession(const AppOptions& options, std::ostream& err);
  ~HeadlessSession();

  // Reads a show file into the session; false with the reason in one line when it cannot.
  bool LoadShow(const std::string& path, std::string& error);

  // Renders every frame on a device without any display and writes it: PNG files by the printf
  // pattern `out`, a video file when `out` ends in .avi, .mp4 or .mkv, or with "-" reads each frame
  // back and lets it go (for timing).
  bool OpenOutput(const std::string& out, int width, int height, double fps, std::string& error);
  // Delivers the last frame still on its way; false with the reason when a frame was not written.
  bool FinishOutput(std::string& error);

  Stage& GetStage();
  MainForm& Main();
  TextEngine& Text();
  ControlModel& Model();
  FrameRenderer& Renderer();

  // Plays frames 0 to frames-1. With `textLog`, writes one line per drawn text per frame:
  // frame, ms, text index, copy, string, tab-separated, CR LF written as the two characters \n.
  // Answers each frame's wall time in ns when `timeFrames` is set.
  std::vector<std::int64_t> Play(std::int64_t frames, std::ostream* textLog, bool timeFrames);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

// The whole run: checks the options, plays, writes the log and the statistics. Answers the process
// exit code: 0 after the last frame, non-zero after a one-line reason on `err`.
int RunHeadless(const AppOptions& options, std::ostream& out, std::ostream& err);

}  // namespace lumivane
