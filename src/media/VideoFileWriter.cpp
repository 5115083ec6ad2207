#include "media/VideoFileWriter.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <mutex>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace lumivane {

namespace {

// Frames in flight between the owner and the worker: enough to ride out an uneven encoder, few
// enough that a 4K recording holds a bounded amount of memory.
constexpr int kPoolSize = 3;
constexpr int kMaxSide = 16384;

enum class Container { kMp4, kMkv, kAvi };

std::string AvError(int code) {
  char text[AV_ERROR_MAX_STRING_SIZE] = {};
  if (av_strerror(code, text, sizeof text) < 0) return "error " + std::to_string(code);
  return text;
}

bool ContainerOf(const std::string& path, Container& container) {
  std::string ext = std::filesystem::path(path).extension().string();
  std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (ext == ".mp4") container = Container::kMp4;
  else if (ext == ".mkv") container = Container::kMkv;
  else if (ext == ".avi") container = Container::kAvi;
  else return false;
  return true;
}

const char* MuxerName(Container container) {
  switch (container) {
    case Container::kMp4: return "mp4";
    case Container::kMkv: return "matroska";
    case Container::kAvi: return "avi";
  }
  return "";
}

// A hidden name beside the target (so the rename stays on one file system), unique to this writer.
std::string TemporaryNameBeside(const std::string& target) {
  static std::atomic<unsigned> counter{0};
  const std::filesystem::path path(target);
  const std::string name = "." + path.filename().string() + ".part-" + std::to_string(::getpid()) + "-" +
                           std::to_string(counter.fetch_add(1));
  return (path.parent_path() / name).string();
}

// JPEG's own full-range 4:2:0 for MJPEG, the ordinary limited-range 4:2:0 for the others: the two
// layouts players take everywhere.
AVPixelFormat PixelFormatFor(const AVCodec* codec) {
  const AVPixelFormat wanted = codec->id == AV_CODEC_ID_MJPEG ? AV_PIX_FMT_YUVJ420P : AV_PIX_FMT_YUV420P;
  if (codec->pix_fmts == nullptr) return wanted;
  for (const AVPixelFormat* f = codec->pix_fmts; *f != AV_PIX_FMT_NONE; ++f)
    if (*f == wanted) return wanted;
  return AV_PIX_FMT_NONE;
}

bool IsHardware(const AVCodec* codec) {
  return (codec->capabilities & AV_CODEC_CAP_HARDWARE) != 0 || avcodec_get_hw_config(codec, 0) != nullptr;
}

// The encoders to try, best first. Any may fail to open (a hardware one without its device), so
// Open walks the list until one does.
std::vector<const AVCodec*> EncoderCandidates(Container container) {
  std::vector<const AVCodec*> out;
  auto add = [&out](const AVCodec* codec) {
    if (codec == nullptr || !av_codec_is_encoder(codec)) return;
    if ((codec->capabilities & AV_CODEC_CAP_EXPERIMENTAL) != 0) return;
    if (PixelFormatFor(codec) == AV_PIX_FMT_NONE) return;
    if (std::find(out.begin(), out.end(), codec) == out.end()) out.push_back(codec);
  };
  if (container != Container::kAvi) {
    add(avcodec_find_encoder_by_name("libx264"));
    std::vector<const AVCodec*> software, hardware;
    void* it = nullptr;
    while (const AVCodec* codec = av_codec_iterate(&it)) {
      if (codec->id != AV_CODEC_ID_H264 || !av_codec_is_encoder(codec)) continue;
      (IsHardware(codec) ? hardware : software).push_back(codec);
    }
    for (const AVCodec* codec : software) add(codec);
    for (const AVCodec* codec : hardware) add(codec);
  }
  add(avcodec_find_encoder_by_name("mpeg4"));
  add(avcodec_find_encoder_by_name("libxvid"));
  if (container == Container::kAvi) add(avcodec_find_encoder_by_name("mjpeg"));
  return out;
}

// FFmpeg's informational lines (encoder banners, the MP4 muxer's second pass) would land on the
// runner's output; failures reach the caller as reasons anyway. A level the program chose stays.
void QuietLibraryLog() {
  static std::once_flag once;
  std::call_once(once, [] {
    if (av_log_get_level() == AV_LOG_INFO) av_log_set_level(AV_LOG_ERROR);
  });
}

// Players that find no colour tags guess BT.709 for HD sizes and BT.601 below; converting by the
// same rule keeps the colours right even where a container drops the tags.
bool UsesBt709(int width, int height) { return width >= 1280 || height > 576; }

// A fixed-capacity ring of pool slots: the queues must not allocate per frame.
class SlotRing {
 public:
  bool Empty() const { return count_ == 0; }
  void Push(int slot) {
    slots_[(head_ + count_) % kPoolSize] = slot;
    ++count_;
  }
  int Pop() {
    const int slot = slots_[head_];
    head_ = (head_ + 1) % kPoolSize;
    --count_;
    return slot;
  }
  void Clear() { head_ = count_ = 0; }

 private:
  std::array<int, kPoolSize> slots_{};
  int head_ = 0;
  int count_ = 0;
};

}  // namespace

struct VideoFileWriter::Impl {
  // Set up by Open; afterwards the worker owns the encoding side until Close joins it.
  AVFormatContext* format = nullptr;
  AVCodecContext* encoder = nullptr;
  AVStream* stream = nullptr;
  SwsContext* scaler = nullptr;
  AVFrame* frame = nullptr;
  AVPacket* packet = nullptr;
  int width = 0;
  int height = 0;
  std::int64_t nextPts = 0;
  std::string target;
  std::string temporary;
  std::string encoderName;
  bool open = false;

  // The pool: a slot is in `freeSlots`, in `readySlots`, or held by exactly one of the two threads.
  std::array<std::unique_ptr<std::uint8_t[]>, kPoolSize> buffers;
  std::mutex mutex;
  std::condition_variable slotFreed;
  std::condition_variable frameReady;
  SlotRing freeSlots;
  SlotRing readySlots;
  bool closing = false;
  bool failed = false;
  std::string failure;
  std::thread worker;

  std::size_t RowBytes() const { return static_cast<std::size_t>(width) * 4; }

  void Fail(const std::string& reason) {
    {
      std::lock_guard<std::mutex> lock(mutex);
      if (!failed) failure = reason;
      failed = true;
    }
    slotFreed.notify_all();
    frameReady.notify_all();
  }

  bool OpenEncoder(Container container, double fps, std::string& error);
  bool Convert(int slot, std::string& error);
  bool Encode(const AVFrame* input, std::string& error);
  void Run();
  bool Finish(std::string& error);
  void Release();
};

bool VideoFileWriter::Impl::OpenEncoder(Container container, double fps, std::string& error) {
  const AVRational rate = av_d2q(fps, 65535);  // MPEG-4 ASP caps the time base at 16 bits
  const bool bt709 = UsesBt709(width, height);
  std::string reasons;
  for (const AVCodec* codec : EncoderCandidates(container)) {
    AVCodecContext* c = avcodec_alloc_context3(codec);
    if (c == nullptr) {
      error = "out of memory for the video encoder";
      return false;
    }
    c->width = width;
    c->height = height;
    c->pix_fmt = PixelFormatFor(codec);
    c->time_base = av_inv_q(rate);
    c->framerate = rate;
    c->sample_aspect_ratio = AVRational{1, 1};
    c->color_range = codec->id == AV_CODEC_ID_MJPEG ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    c->colorspace = codec->id == AV_CODEC_ID_MJPEG || !bt709 ? AVCOL_SPC_SMPTE170M : AVCOL_SPC_BT709;
    c->color_primaries = AVCOL_PRI_BT709;  // the renderer draws sRGB
    c->color_trc = AVCOL_TRC_IEC61966_2_1;
    if ((format->oformat->flags & AVFMT_GLOBALHEADER) != 0) c->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    // AVI has no separate decode times, so frames must not be reordered.
    if (container == Container::kAvi) c->max_b_frames = 0;

    AVDictionary* options = nullptr;
    if (std::strcmp(codec->name, "libx264") == 0) {
      av_dict_set(&options, "preset", "veryfast", 0);
      av_dict_set(&options, "crf", "18", 0);
    } else if (codec->id == AV_CODEC_ID_H264) {
      c->bit_rate = static_cast<std::int64_t>(0.15 * width * height * std::min(fps, 120.0));
    } else {
      // Fixed quantiser: near-transparent for rendered graphics, no rate guess needed.
      c->flags |= AV_CODEC_FLAG_QSCALE;
      c->global_quality = FF_QP2LAMBDA * 3;
    }
    const int r = avcodec_open2(c, codec, &options);
    av_dict_free(&options);
    if (r >= 0) {
      encoder = c;
      encoderName = codec->name;
      return true;
    }
    reasons += std::string(reasons.empty() ? "" : ", ") + codec->name + " (" + AvError(r) + ")";
    avcodec_free_context(&c);
  }
  error = reasons.empty() ? "no H.264, MPEG-4 or MJPEG encoder is available in this FFmpeg"
                          : "no video encoder would open: " + reasons;
  return false;
}

bool VideoFileWriter::Impl::Convert(int slot, std::string& error) {
  // The encoder may still hold a reference to the last frame; then this gives us a fresh buffer.
  int r = av_frame_make_writable(frame);
  if (r < 0) {
    error = "could not get a frame buffer for the encoder: " + AvError(r);
    return false;
  }
  const std::uint8_t* const planes[1] = {buffers[static_cast<std::size_t>(slot)].get()};
  const int strides[1] = {width * 4};
  r = sws_scale(scaler, planes, strides, 0, height, frame->data, frame->linesize);
  if (r <= 0) {
    error = "could not convert a frame to " + std::string(av_get_pix_fmt_name(encoder->pix_fmt)) + ": " +
            (r < 0 ? AvError(r) : "no rows came out");
    return false;
  }
  frame->pts = nextPts++;
  return true;
}

// Sends one frame (nullptr: the end) and writes every packet the encoder has ready.
bool VideoFileWriter::Impl::Encode(const AVFrame* input, std::string& error) {
  int r = avcodec_send_frame(encoder, input);
  if (r < 0) {
    error = "the " + encoderName + " encoder refused a frame: " + AvError(r);
    return false;
  }
  for (;;) {
    r = avcodec_receive_packet(encoder, packet);
    if (r == AVERROR(EAGAIN) || r == AVERROR_EOF) return true;
    if (r < 0) {
      error = "the " + encoderName + " encoder failed: " + AvError(r);
      return false;
    }
    av_packet_rescale_ts(packet, encoder->time_base, stream->time_base);
    packet->stream_index = stream->index;
    r = av_interleaved_write_frame(format, packet);
    av_packet_unref(packet);
    if (r < 0) {
      error = "could not write " + target + ": " + AvError(r);
      return false;
    }
  }
}

void VideoFileWriter::Impl::Run() {
  try {
    for (;;) {
      int slot = 0;
      {
        std::unique_lock<std::mutex> lock(mutex);
        frameReady.wait(lock, [this] { return !readySlots.Empty() || closing || failed; });
        if (failed || readySlots.Empty()) return;
        slot = readySlots.Pop();
      }
      std::string error;
      const bool converted = Convert(slot, error);
      {
        // The slot goes back before encoding, so the owner can copy the next frame meanwhile.
        std::lock_guard<std::mutex> lock(mutex);
        freeSlots.Push(slot);
      }
      slotFreed.notify_one();
      if (!converted || !Encode(frame, error)) {
        Fail(error);
        return;
      }
    }
  } catch (const std::exception& e) {
    Fail(std::string("the video encoder stopped: ") + e.what());
  }
}

// After the worker has stopped: the encoder's last packets, the trailer, and the file safely on disk.
bool VideoFileWriter::Impl::Finish(std::string& error) {
  if (!Encode(nullptr, error)) return false;
  int r = av_write_trailer(format);
  if (r < 0) {
    error = "could not finish " + target + ": " + AvError(r);
    return false;
  }
  avio_flush(format->pb);
  r = format->pb->error;
  if (r >= 0) r = avio_closep(&format->pb);
  if (r < 0) {
    error = "could not write " + target + ": " + AvError(r);
    return false;
  }
  const int fd = ::open(temporary.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0 || ::fsync(fd) != 0) {
    error = "could not write " + target + ": " + std::strerror(errno);
    if (fd >= 0) ::close(fd);
    return false;
  }
  ::close(fd);
  std::error_code ec;
  std::filesystem::rename(temporary, target, ec);
  if (ec) {
    error = "could not move the finished video to " + target + ": " + ec.message();
    return false;
  }
  return true;
}

void VideoFileWriter::Impl::Release() {
  if (format != nullptr && format->pb != nullptr) avio_closep(&format->pb);
  avformat_free_context(format);
  format = nullptr;
  stream = nullptr;
  avcodec_free_context(&encoder);
  sws_freeContext(scaler);
  scaler = nullptr;
  av_frame_free(&frame);
  av_packet_free(&packet);
  for (auto& buffer : buffers) buffer.reset();
  freeSlots.Clear();
  readySlots.Clear();
  closing = false;
  failed = false;
  failure.clear();
  nextPts = 0;
  open = false;
}

VideoFileWriter::VideoFileWriter() : impl_(std::make_unique<Impl>()) {}

VideoFileWriter::~VideoFileWriter() {
  if (IsOpen()) {
    std::string ignored;
    Close(ignored);
  }
}

bool VideoFileWriter::IsOpen() const { return impl_->open; }

const std::string& VideoFileWriter::EncoderName() const { return impl_->encoderName; }

bool VideoFileWriter::Open(const std::string& path, int width, int height, double fps, std::string& error) {
  Impl& d = *impl_;
  QuietLibraryLog();
  if (d.open) {
    error = "a video file is already open (" + d.target + ")";
    return false;
  }
  Container container{};
  if (!ContainerOf(path, container)) {
    error = "cannot write a video file named " + path + ": the name must end in .avi, .mp4 or .mkv";
    return false;
  }
  if (width <= 0 || height <= 0 || width > kMaxSide || height > kMaxSide) {
    error = "cannot write a video of " + std::to_string(width) + "x" + std::to_string(height) + " pixels";
    return false;
  }
  // Every encoder we pick stores colour at half resolution (4:2:0). Refused rather than padded or
  // cropped, so the file never silently differs from the size asked for; the resolutions the main
  // window offers are all even, and --size can be corrected.
  if (width % 2 != 0 || height % 2 != 0) {
    error = "a video of " + std::to_string(width) + "x" + std::to_string(height) +
            " cannot be written: video needs an even width and height";
    return false;
  }
  if (!std::isfinite(fps) || fps <= 0.0 || fps > 1000.0) {
    char rate[32];
    std::snprintf(rate, sizeof rate, "%g", fps);
    error = std::string("cannot write a video at ") + rate + " frames a second";
    return false;
  }

  bool ok = false;
  try {
    d.encoderName.clear();
    d.width = width;
    d.height = height;
    d.target = path;
    d.temporary = TemporaryNameBeside(path);
    ok = [&] {
      const AVOutputFormat* muxer = av_guess_format(MuxerName(container), nullptr, nullptr);
      // The muxer is named by the target, but its URL is the temporary file: the MP4 muxer reopens
      // that URL to move its index to the front.
      int r = muxer == nullptr ? AVERROR_MUXER_NOT_FOUND
                               : avformat_alloc_output_context2(&d.format, muxer, nullptr, d.temporary.c_str());
      if (r < 0) {
        error = std::string("this FFmpeg cannot write ") + MuxerName(container) + " files: " + AvError(r);
        return false;
      }
      if (!d.OpenEncoder(container, fps, error)) return false;
      d.stream = avformat_new_stream(d.format, nullptr);
      if (d.stream == nullptr) {
        error = "out of memory for the video stream";
        return false;
      }
      d.stream->time_base = d.encoder->time_base;
      d.stream->avg_frame_rate = d.encoder->framerate;
      r = avcodec_parameters_from_context(d.stream->codecpar, d.encoder);
      if (r < 0) {
        error = "could not set up the video stream: " + AvError(r);
        return false;
      }
      r = avio_open(&d.format->pb, d.temporary.c_str(), AVIO_FLAG_WRITE);
      if (r < 0) {
        error = "could not create " + path + ": " + AvError(r);
        return false;
      }
      AVDictionary* options = nullptr;
      if (container == Container::kMp4) av_dict_set(&options, "movflags", "+faststart", 0);
      r = avformat_write_header(d.format, &options);
      av_dict_free(&options);
      if (r < 0) {
        error = "could not write the start of " + path + ": " + AvError(r);
        return false;
      }

      d.scaler = sws_getContext(width, height, AV_PIX_FMT_RGBA, width, height, d.encoder->pix_fmt, SWS_BILINEAR,
                                nullptr, nullptr, nullptr);
      if (d.scaler == nullptr) {
        error = std::string("cannot convert RGBA frames to ") + av_get_pix_fmt_name(d.encoder->pix_fmt);
        return false;
      }
      const int matrix = d.encoder->colorspace == AVCOL_SPC_BT709 ? SWS_CS_ITU709 : SWS_CS_ITU601;
      sws_setColorspaceDetails(d.scaler, sws_getCoefficients(SWS_CS_DEFAULT), 1, sws_getCoefficients(matrix),
                               d.encoder->color_range == AVCOL_RANGE_JPEG ? 1 : 0, 0, 1 << 16, 1 << 16);
      d.frame = av_frame_alloc();
      d.packet = av_packet_alloc();
      if (d.frame == nullptr || d.packet == nullptr) {
        error = "out of memory for video frames";
        return false;
      }
      d.frame->format = d.encoder->pix_fmt;
      d.frame->width = width;
      d.frame->height = height;
      d.frame->color_range = d.encoder->color_range;
      d.frame->colorspace = d.encoder->colorspace;
      d.frame->color_primaries = d.encoder->color_primaries;
      d.frame->color_trc = d.encoder->color_trc;
      r = av_frame_get_buffer(d.frame, 0);
      if (r < 0) {
        error = "could not get a frame buffer for the encoder: " + AvError(r);
        return false;
      }
      for (int slot = 0; slot < kPoolSize; ++slot) d.freeSlots.Push(slot);
      d.worker = std::thread([&d] { d.Run(); });
      return true;
    }();
  } catch (const std::exception& e) {
    error = std::string("could not start writing ") + path + ": " + e.what();
    ok = false;
  }
  if (!ok) {
    const bool created = d.format != nullptr && d.format->pb != nullptr;
    d.Release();
    if (created) {
      std::error_code ec;
      std::filesystem::remove(d.temporary, ec);
    }
    return false;
  }
  d.open = true;
  return true;
}

bool VideoFileWriter::WriteFrame(const std::uint8_t* top, std::ptrdiff_t stride) {
  Impl& d = *impl_;
  if (!d.open) return false;
  const std::size_t rowBytes = d.RowBytes();
  if (top == nullptr || static_cast<std::size_t>(stride < 0 ? -stride : stride) < rowBytes) {
    d.Fail("a frame was handed over without pixels or with rows shorter than the video's width");
    return false;
  }
  int slot = 0;
  {
    std::unique_lock<std::mutex> lock(d.mutex);
    d.slotFreed.wait(lock, [&d] { return d.failed || !d.freeSlots.Empty(); });
    if (d.failed) return false;
    slot = d.freeSlots.Pop();
  }
  // The pool fills over the first frames; from then on a frame costs one copy and no allocation.
  std::unique_ptr<std::uint8_t[]>& buffer = d.buffers[static_cast<std::size_t>(slot)];
  if (!buffer) buffer = std::make_unique_for_overwrite<std::uint8_t[]>(rowBytes * static_cast<std::size_t>(d.height));
  if (stride == static_cast<std::ptrdiff_t>(rowBytes)) {
    std::memcpy(buffer.get(), top, rowBytes * static_cast<std::size_t>(d.height));
  } else {
    for (int y = 0; y < d.height; ++y)
      std::memcpy(buffer.get() + static_cast<std::size_t>(y) * rowBytes, top + static_cast<std::ptrdiff_t>(y) * stride,
                  rowBytes);
  }
  {
    std::lock_guard<std::mutex> lock(d.mutex);
    d.readySlots.Push(slot);
  }
  d.frameReady.notify_one();
  return true;
}

bool VideoFileWriter::Close(std::string& error) {
  Impl& d = *impl_;
  if (!d.open) {
    error = "no video file is open";
    return false;
  }
  {
    std::lock_guard<std::mutex> lock(d.mutex);
    d.closing = true;
  }
  d.frameReady.notify_all();
  if (d.worker.joinable()) d.worker.join();

  std::string reason;
  bool ok = false;
  if (d.failed) {
    reason = d.failure;
  } else if (d.nextPts == 0) {
    // Refused rather than finished: MP4 and Matroska have no well-formed form without a frame.
    reason = "no frames were written, so " + d.target + " was not made";
  } else {
    try {
      ok = d.Finish(reason);
    } catch (const std::exception& e) {
      reason = std::string("could not finish ") + d.target + ": " + e.what();
    }
  }
  d.Release();
  if (!ok) {
    std::error_code ec;
    std::filesystem::remove(d.temporary, ec);
    error = reason;
  }
  return ok;
}

}  // namespace lumivane
