#include "media/VideoFileWriter.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <iostream>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

namespace lumivane {
namespace {

namespace fs = std::filesystem;

struct Rgb {
  int r, g, b;
};

std::ostream& operator<<(std::ostream& os, const Rgb& c) { return os << "(" << c.r << "," << c.g << "," << c.b << ")"; }

// Distinct, saturated enough that a frame shown out of order or in the wrong matrix is obvious.
constexpr std::array<Rgb, 6> kPalette = {
    {{220, 30, 30}, {30, 200, 60}, {40, 60, 220}, {235, 235, 235}, {20, 20, 20}, {240, 210, 40}}};
constexpr Rgb kBottomColour = {200, 40, 200};
// Lossy coding of flat colour, plus RGB -> YUV -> RGB rounding.
constexpr int kTolerance = 14;

// A frame as the render device hands it over: rows `stride` bytes apart, top row at `top`.
struct SourceFrame {
  int width = 0;
  int height = 0;
  std::ptrdiff_t stride = 0;
  std::vector<std::uint8_t> bytes;

  SourceFrame(int w, int h, std::ptrdiff_t rowStride) : width(w), height(h), stride(rowStride) {
    const std::size_t rowBytes = static_cast<std::size_t>(rowStride < 0 ? -rowStride : rowStride);
    bytes.assign(rowBytes * static_cast<std::size_t>(h), 0xEE);  // padding bytes stay 0xEE
  }
  std::uint8_t* Top() { return stride >= 0 ? bytes.data() : bytes.data() + bytes.size() + stride; }
  void FillRows(int from, int to, Rgb c) {
    for (int y = from; y < to; ++y) {
      std::uint8_t* row = Top() + static_cast<std::ptrdiff_t>(y) * stride;
      for (int x = 0; x < width; ++x) {
        row[x * 4 + 0] = static_cast<std::uint8_t>(c.r);
        row[x * 4 + 1] = static_cast<std::uint8_t>(c.g);
        row[x * 4 + 2] = static_cast<std::uint8_t>(c.b);
        row[x * 4 + 3] = 255;
      }
    }
  }
  void Fill(Rgb c) { FillRows(0, height, c); }
};

// What a player would see: every decoded frame as RGBA, with where its timestamp puts it.
struct DecodedVideo {
  std::string container;
  AVCodecID codec = AV_CODEC_ID_NONE;
  int width = 0;
  int height = 0;
  double frameRate = 0;
  std::vector<std::vector<std::uint8_t>> frames;
  std::vector<double> seconds;

  Rgb At(std::size_t frame, int x, int y) const {
    const std::uint8_t* p = frames[frame].data() + (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                                                    static_cast<std::size_t>(x)) * 4;
    return {p[0], p[1], p[2]};
  }
};

struct FormatCloser {
  void operator()(AVFormatContext* c) const { avformat_close_input(&c); }
};
struct CodecFreer {
  void operator()(AVCodecContext* c) const { avcodec_free_context(&c); }
};
struct FrameFreer {
  void operator()(AVFrame* f) const { av_frame_free(&f); }
};
struct PacketFreer {
  void operator()(AVPacket* p) const { av_packet_free(&p); }
};

std::vector<std::uint8_t> ToRgba(const AVFrame& frame) {
  const auto format = static_cast<AVPixelFormat>(frame.format);
  SwsContext* sws = sws_getContext(frame.width, frame.height, format, frame.width, frame.height, AV_PIX_FMT_RGBA,
                                   SWS_BILINEAR, nullptr, nullptr, nullptr);
  if (sws == nullptr) return {};
  // Untagged streams get the players' guess by size.
  int matrix = frame.width >= 1280 || frame.height > 576 ? SWS_CS_ITU709 : SWS_CS_ITU601;
  if (frame.colorspace == AVCOL_SPC_BT709) matrix = SWS_CS_ITU709;
  if (frame.colorspace == AVCOL_SPC_SMPTE170M || frame.colorspace == AVCOL_SPC_BT470BG) matrix = SWS_CS_ITU601;
  const bool full = frame.color_range == AVCOL_RANGE_JPEG || format == AV_PIX_FMT_YUVJ420P;
  sws_setColorspaceDetails(sws, sws_getCoefficients(matrix), full ? 1 : 0, sws_getCoefficients(SWS_CS_DEFAULT), 1, 0,
                           1 << 16, 1 << 16);
  std::vector<std::uint8_t> rgba(static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height) * 4);
  std::uint8_t* planes[1] = {rgba.data()};
  const int strides[1] = {frame.width * 4};
  sws_scale(sws, frame.data, frame.linesize, 0, frame.height, planes, strides);
  sws_freeContext(sws);
  return rgba;
}

::testing::AssertionResult ReadVideo(const fs::path& path, DecodedVideo& out) {
  AVFormatContext* raw = nullptr;
  if (avformat_open_input(&raw, path.c_str(), nullptr, nullptr) < 0)
    return ::testing::AssertionFailure() << "libavformat cannot open " << path;
  std::unique_ptr<AVFormatContext, FormatCloser> format(raw);
  if (avformat_find_stream_info(format.get(), nullptr) < 0) return ::testing::AssertionFailure() << "no stream info";
  const AVCodec* codec = nullptr;
  const int index = av_find_best_stream(format.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
  if (index < 0 || codec == nullptr) return ::testing::AssertionFailure() << "no video stream in " << path;
  const AVStream* stream = format->streams[index];
  std::unique_ptr<AVCodecContext, CodecFreer> decoder(avcodec_alloc_context3(codec));
  avcodec_parameters_to_context(decoder.get(), stream->codecpar);
  if (avcodec_open2(decoder.get(), codec, nullptr) < 0) return ::testing::AssertionFailure() << "no decoder";

  out = {};
  out.container = format->iformat->name;
  out.codec = stream->codecpar->codec_id;
  out.width = stream->codecpar->width;
  out.height = stream->codecpar->height;
  out.frameRate = av_q2d(stream->avg_frame_rate.num != 0 ? stream->avg_frame_rate : stream->r_frame_rate);

  std::unique_ptr<AVPacket, PacketFreer> packet(av_packet_alloc());
  std::unique_ptr<AVFrame, FrameFreer> frame(av_frame_alloc());
  auto drain = [&] {
    while (avcodec_receive_frame(decoder.get(), frame.get()) >= 0) {
      out.frames.push_back(ToRgba(*frame));
      out.seconds.push_back(static_cast<double>(frame->best_effort_timestamp) * av_q2d(stream->time_base));
      av_frame_unref(frame.get());
    }
  };
  while (av_read_frame(format.get(), packet.get()) >= 0) {
    if (packet->stream_index == index) avcodec_send_packet(decoder.get(), packet.get());
    av_packet_unref(packet.get());
    drain();
  }
  avcodec_send_packet(decoder.get(), nullptr);
  drain();
  return ::testing::AssertionSuccess();
}

::testing::AssertionResult Near(Rgb actual, Rgb expected) {
  if (std::abs(actual.r - expected.r) <= kTolerance && std::abs(actual.g - expected.g) <= kTolerance &&
      std::abs(actual.b - expected.b) <= kTolerance)
    return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << actual << " is not close to " << expected;
}

std::vector<std::string> Listing(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename().string());
  return names;
}

class VideoFileWriterTest : public ::testing::Test {
 protected:
  void SetUp() override {
    static std::atomic<int> counter{0};
    folder_ = fs::temp_directory_path() /
              ("lumivane_media_test_" + std::to_string(::getpid()) + "_" + std::to_string(counter++));
    fs::create_directories(folder_);
  }
  void TearDown() override {
    std::error_code ec;
    fs::remove_all(folder_, ec);
  }

  // Writes `count` solid frames from one reused buffer (so a writer that kept the caller's pointer
  // would show later colours), odd frames through padded rows.
  void WriteSolidFrames(VideoFileWriter& writer, int width, int height, int count) {
    SourceFrame tight(width, height, width * 4);
    SourceFrame padded(width, height, width * 4 + 32);
    for (int k = 0; k < count; ++k) {
      SourceFrame& source = k % 2 == 0 ? tight : padded;
      source.Fill(kPalette[static_cast<std::size_t>(k) % kPalette.size()]);
      ASSERT_TRUE(writer.WriteFrame(source.Top(), source.stride)) << "frame " << k;
      source.Fill({0, 0, 0});
    }
  }

  fs::path folder_;
};

struct ContainerCase {
  const char* name;
  double fps;
  const char* demuxer;  // part of the name libavformat gives what it reads back
};

void PrintTo(const ContainerCase& c, std::ostream* os) { *os << c.name << " at " << c.fps << " fps"; }

class VideoFileWriterContainers : public VideoFileWriterTest, public ::testing::WithParamInterface<ContainerCase> {};

// Every frame arrives, once, in order, at its time, in its colour, the bottom-up one upright; the
// finished file is the only thing left in the folder.
TEST_P(VideoFileWriterContainers, WritesEveryFrameInOrderUprightAndInItsColour) {
  const ContainerCase& c = GetParam();
  constexpr int kWidth = 64, kHeight = 48, kFrames = 30, kBottomUp = 17;
  const fs::path target = folder_ / c.name;

  VideoFileWriter writer;
  std::string error;
  ASSERT_TRUE(writer.Open(target.string(), kWidth, kHeight, c.fps, error)) << error;
  EXPECT_TRUE(writer.IsOpen());
  RecordProperty("encoder", writer.EncoderName());
  std::cout << "[          ] " << c.name << " written with " << writer.EncoderName() << "\n";
  EXPECT_FALSE(fs::exists(target)) << "the target appears only when the file is finished";

  SourceFrame tight(kWidth, kHeight, kWidth * 4);
  SourceFrame padded(kWidth, kHeight, kWidth * 4 + 32);
  SourceFrame bottomUp(kWidth, kHeight, -kWidth * 4);
  for (int k = 0; k < kFrames; ++k) {
    const Rgb colour = kPalette[static_cast<std::size_t>(k) % kPalette.size()];
    SourceFrame& source = k == kBottomUp ? bottomUp : k % 2 == 0 ? tight : padded;
    source.Fill(colour);
    if (k == kBottomUp) source.FillRows(kHeight / 2, kHeight, kBottomColour);
    ASSERT_TRUE(writer.WriteFrame(source.Top(), source.stride)) << "frame " << k;
    source.Fill({0, 0, 0});  // the writer must have copied the frame already
  }
  ASSERT_TRUE(writer.Close(error)) << error;
  EXPECT_FALSE(writer.IsOpen());
  EXPECT_EQ(Listing(folder_), std::vector<std::string>{c.name});

  DecodedVideo video;
  ASSERT_TRUE(ReadVideo(target, video));
  EXPECT_NE(video.container.find(c.demuxer), std::string::npos) << video.container;
  if (std::string(c.name).ends_with(".avi")) {
    EXPECT_TRUE(video.codec == AV_CODEC_ID_MPEG4 || video.codec == AV_CODEC_ID_MJPEG) << avcodec_get_name(video.codec);
  } else if (avcodec_find_encoder_by_name("libx264") != nullptr) {
    EXPECT_EQ(video.codec, AV_CODEC_ID_H264) << avcodec_get_name(video.codec);
  }
  EXPECT_EQ(video.width, kWidth);
  EXPECT_EQ(video.height, kHeight);
  EXPECT_NEAR(video.frameRate, c.fps, 0.01);
  ASSERT_EQ(video.frames.size(), static_cast<std::size_t>(kFrames));
  for (int k = 0; k < kFrames; ++k) {
    const auto i = static_cast<std::size_t>(k);
    const Rgb colour = kPalette[i % kPalette.size()];
    EXPECT_NEAR(video.seconds[i] * c.fps, k, 0.1) << "frame " << k;
    EXPECT_TRUE(Near(video.At(i, kWidth / 2, kHeight / 4), colour)) << "frame " << k << " top";
    EXPECT_TRUE(Near(video.At(i, kWidth / 2, kHeight * 3 / 4), k == kBottomUp ? kBottomColour : colour))
        << "frame " << k << " bottom";
  }
}

INSTANTIATE_TEST_SUITE_P(Containers, VideoFileWriterContainers,
                         ::testing::Values(ContainerCase{"out.mp4", 30.0, "mp4"},
                                           ContainerCase{"out.mkv", 29.97, "matroska"},
                                           ContainerCase{"out.avi", 25.0, "avi"}),
                         [](const auto& info) { return std::string(info.param.name).substr(4); });

// Open refuses what it cannot write with a reason, and leaves nothing behind.
TEST_F(VideoFileWriterTest, OpenRefusesWithAReasonAndLeavesNothingBehind) {
  VideoFileWriter writer;
  std::string error;

  const fs::path missing = folder_ / "no such folder" / "out.mp4";
  EXPECT_FALSE(writer.Open(missing.string(), 64, 48, 30.0, error));
  EXPECT_NE(error.find(missing.string()), std::string::npos) << error;
  EXPECT_EQ(error.find('\n'), std::string::npos) << error;

  error.clear();
  EXPECT_FALSE(writer.Open((folder_ / "odd.mp4").string(), 65, 48, 30.0, error));
  EXPECT_NE(error.find("even width and height"), std::string::npos) << error;
  error.clear();
  EXPECT_FALSE(writer.Open((folder_ / "odd.avi").string(), 64, 47, 30.0, error));
  EXPECT_NE(error.find("even width and height"), std::string::npos) << error;

  for (const char* name : {"out.mov", "out", "out.mp4.txt"}) {
    error.clear();
    EXPECT_FALSE(writer.Open((folder_ / name).string(), 64, 48, 30.0, error)) << name;
    EXPECT_NE(error.find(".mkv"), std::string::npos) << error;  // names the endings it can write
  }
  for (double fps : {0.0, -30.0, std::nan("")}) {
    error.clear();
    EXPECT_FALSE(writer.Open((folder_ / "out.mkv").string(), 64, 48, fps, error)) << fps;
    EXPECT_FALSE(error.empty());
  }
  error.clear();
  EXPECT_FALSE(writer.Open((folder_ / "out.mkv").string(), 0, 48, 30.0, error));
  EXPECT_FALSE(error.empty());

  EXPECT_FALSE(writer.IsOpen());
  EXPECT_TRUE(Listing(folder_).empty());
  EXPECT_FALSE(writer.WriteFrame(std::vector<std::uint8_t>(64 * 48 * 4).data(), 64 * 4));
  EXPECT_FALSE(writer.Close(error));
}

// Stopping before the first frame makes no file (there is no well-formed empty MP4 or Matroska
// file) and says so; a video already under the name stays.
TEST_F(VideoFileWriterTest, ClosingWithoutFramesMakesNoFile) {
  { std::ofstream(folder_ / "kept.mp4") << "an older video"; }
  for (const char* name : {"empty.mkv", "empty.avi", "kept.mp4"}) {
    VideoFileWriter writer;
    std::string error;
    ASSERT_TRUE(writer.Open((folder_ / name).string(), 64, 48, 30.0, error)) << error;
    EXPECT_FALSE(writer.Close(error)) << name;
    EXPECT_NE(error.find("no frames"), std::string::npos) << error;
    EXPECT_FALSE(writer.IsOpen());
  }
  EXPECT_EQ(Listing(folder_), std::vector<std::string>{"kept.mp4"});
  std::ifstream in(folder_ / "kept.mp4");
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "an older video");
}

// The disk fills up mid-render (a file size limit stands in for it): the writer fails with the
// system's reason, the video that was there before stays whole, and no partial file is left.
TEST_F(VideoFileWriterTest, AFailedWriteLeavesTheTargetAsItWas) {
  const fs::path target = folder_ / "render.mp4";
  { std::ofstream(target) << "the previous render"; }

  VideoFileWriter writer;
  std::string error;
  ASSERT_TRUE(writer.Open(target.string(), 320, 240, 30.0, error)) << error;

  rlimit saved{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &saved), 0);
  const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);  // write() then fails with EFBIG
  rlimit small = saved;
  small.rlim_cur = 16 * 1024;
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);

  // Noise: it does not compress, so the limit is passed within a few frames.
  SourceFrame noise(320, 240, 320 * 4);
  std::uint32_t state = 12345;
  bool refused = false;
  for (int k = 0; k < 60 && !refused; ++k) {
    for (auto& byte : noise.bytes) {
      state = state * 1664525u + 1013904223u;
      byte = static_cast<std::uint8_t>(state >> 24);
    }
    refused = !writer.WriteFrame(noise.Top(), noise.stride);
  }
  const bool closed = writer.Close(error);

  setrlimit(RLIMIT_FSIZE, &saved);
  std::signal(SIGXFSZ, previousHandler);

  EXPECT_FALSE(closed);
  EXPECT_FALSE(writer.IsOpen());
  EXPECT_NE(error.find(target.string()), std::string::npos) << error;
  EXPECT_NE(error.find("too large"), std::string::npos) << error;
  std::ifstream in(target);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "the previous render");
  EXPECT_EQ(Listing(folder_), std::vector<std::string>{"render.mp4"});
}

// A frame with no pixels (or rows narrower than the video) fails the writer instead of reading
// out of bounds; the reason is kept for Close and nothing is left.
TEST_F(VideoFileWriterTest, ABadFrameFailsTheWriterAndKeepsTheReason) {
  const fs::path target = folder_ / "bad.mkv";
  VideoFileWriter writer;
  std::string error;
  ASSERT_TRUE(writer.Open(target.string(), 64, 48, 30.0, error)) << error;
  WriteSolidFrames(writer, 64, 48, 2);
  std::vector<std::uint8_t> narrow(32 * 48 * 4);
  EXPECT_FALSE(writer.WriteFrame(narrow.data(), 32 * 4));
  EXPECT_FALSE(writer.WriteFrame(nullptr, 64 * 4));
  EXPECT_FALSE(writer.Close(error));
  EXPECT_NE(error.find("rows shorter"), std::string::npos) << error;
  EXPECT_TRUE(Listing(folder_).empty());
}

}  // namespace
}  // namespace lumivane
