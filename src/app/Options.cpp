#include "app/Options.h"

#include <charconv>
#include <cmath>

#include "core/Numbers.h"

namespace lumivane {

namespace {

bool ParseUnsigned(const std::string& text, std::uint64_t& out) {
  const auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), out);
  return !text.empty() && ec == std::errc() && ptr == text.data() + text.size();
}

bool ParseSize(const std::string& text, int& width, int& height) {
  const auto x = text.find('x');
  if (x == std::string::npos) return false;
  std::uint64_t w = 0, h = 0;
  if (!ParseUnsigned(text.substr(0, x), w) || !ParseUnsigned(text.substr(x + 1), h)) return false;
  constexpr std::uint64_t kMax = 16384;  // the largest texture a GL 4.5 driver must support
  if (w == 0 || h == 0 || w > kMax || h > kMax) return false;
  width = static_cast<int>(w);
  height = static_cast<int>(h);
  return true;
}

}  // namespace

std::int64_t AppOptions::FrameCount() const {
  return frames >= 0 ? frames : static_cast<std::int64_t>(std::ceil(fps));
}

const char* UsageText() {
  return "Usage: lumivane [OPTIONS] [PLAYLIST;PRESET;MONITOR;PLAYBACK;ONTOP]\n"
         "       lumivane --headless SHOW.xml [HEADLESS OPTIONS]\n"
         "\n"
         "Options:\n"
         "  --help              show this help and exit\n"
         "  --version           show the version and exit\n"
         "  --app-folder DIR    keep shows and settings in DIR instead of the user's data folder\n"
         "  --log FILE          write skipped failures to FILE\n"
         "\n"
         "Positional fields, separated by \";\" (any trailing ones may be left out):\n"
         "  PLAYLIST            a playlist to load\n"
         "  PRESET              the number of the preset to start with\n"
         "  MONITOR             the output monitor, from 1\n"
         "  PLAYBACK            a number starts playback (1 = full screen), WxH starts it at that size\n"
         "  ONTOP               1 keeps the output on top\n"
         "\n"
         "Headless options:\n"
         "  --frames N          frames to play (default: one second's worth)\n"
         "  --fps F             frames per second of the virtual clock (default 60)\n"
         "  --seed S            seed of the random source (default 0)\n"
         "  --size WxH          back buffer size (default 1280x720)\n"
         "  --out PATTERN       frame_%05d.png for PNG frames, NAME.avi/.mp4/.mkv for video, - to read\n"
         "                      every frame back and discard it\n"
         "  --text-log FILE     one line per drawn text per frame\n"
         "  --midi FILE         recorded MIDI input played against the virtual clock\n"
         "  --audio FILE        recorded audio input played against the virtual clock\n"
         "  --stats             print frame-time figures at the end\n";
}

ParsedOptions ParseOptions(const std::vector<std::string>& args) {
  ParsedOptions result;
  AppOptions& o = result.options;
  std::vector<std::string> positional;
  bool headlessOnlyUsed = false;
  std::string headlessOnlyName;

  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    auto value = [&](std::string& into) {
      if (i + 1 >= args.size()) {
        result.error = a + " needs a value";
        return false;
      }
      into = args[++i];
      return true;
    };
    auto headlessOnly = [&] {
      headlessOnlyUsed = true;
      if (headlessOnlyName.empty()) headlessOnlyName = a;
    };
    std::string v;
    if (a == "--help" || a == "-h") {
      o.help = true;
    } else if (a == "--version") {
      o.version = true;
    } else if (a == "--app-folder") {
      if (!value(o.appFolder)) return result;
    } else if (a == "--log") {
      if (!value(o.logFile)) return result;
    } else if (a == "--headless") {
      if (!value(o.showFile)) return result;
      o.headless = true;
    } else if (a == "--frames") {
      headlessOnly();
      std::uint64_t n = 0;
      if (!value(v)) return result;
      if (!ParseUnsigned(v, n) || n > static_cast<std::uint64_t>(INT64_MAX)) {
        result.error = "--frames wants a whole number of frames, not \"" + v + "\"";
        return result;
      }
      o.frames = static_cast<std::int64_t>(n);
    } else if (a == "--fps") {
      headlessOnly();
      if (!value(v)) return result;
      const auto f = ParseNumber(v);
      if (!f || !(*f > 0.0) || *f > 100000.0) {
        result.error = "--fps wants a rate above 0 and at most 100000, not \"" + v + "\"";
        return result;
      }
      o.fps = *f;
    } else if (a == "--seed") {
      headlessOnly();
      if (!value(v)) return result;
      if (!ParseUnsigned(v, o.seed)) {
        result.error = "--seed wants a whole number from 0, not \"" + v + "\"";
        return result;
      }
    } else if (a == "--size") {
      headlessOnly();
      if (!value(v)) return result;
      if (!ParseSize(v, o.width, o.height)) {
        result.error = "--size wants WIDTHxHEIGHT, each 1 to 16384, not \"" + v + "\"";
        return result;
      }
    } else if (a == "--out") {
      headlessOnly();
      if (!value(o.out)) return result;
    } else if (a == "--text-log") {
      headlessOnly();
      if (!value(o.textLog)) return result;
    } else if (a == "--midi") {
      headlessOnly();
      if (!value(o.midi)) return result;
    } else if (a == "--audio") {
      headlessOnly();
      if (!value(o.audio)) return result;
    } else if (a == "--stats") {
      headlessOnly();
      o.stats = true;
    } else if (a.size() > 1 && a[0] == '-' && a[1] == '-') {
      result.error = "unknown option " + a + " (try --help)";
      return result;
    } else {
      positional.push_back(a);
    }
  }

  if (headlessOnlyUsed && !o.headless) {
    result.error = headlessOnlyName + " only applies to --headless SHOW.xml";
    return result;
  }
  if (o.headless && !positional.empty()) {
    result.error = "--headless plays a show file; the positional command line is for the windowed program";
    return result;
  }
  for (std::size_t i = 0; i < positional.size(); ++i) {
    if (i > 0) o.commandLine += ' ';
    o.commandLine += positional[i];
  }
  return result;
}

}  // namespace lumivane
