#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace lumivane {

// Writes rendered frames to a video file. Conversion and encoding run on a worker thread behind a
// queue of a few frames, so the owner (the headless runner, or the UI thread while recording) only
// pays for one copy per frame unless the encoder falls behind. Use from one thread.
class VideoFileWriter {
 public:
  VideoFileWriter();
  ~VideoFileWriter();  // closes (finishes the file) if still open
  VideoFileWriter(const VideoFileWriter&) = delete;
  VideoFileWriter& operator=(const VideoFileWriter&) = delete;

  // Opens `path` for frames of width x height at `fps`. The container follows the name's ending:
  // .mp4 and .mkv get H.264 (libx264 when present, else the best H.264 or MPEG-4 ASP encoder
  // available), .avi gets MPEG-4 ASP or MJPEG. False with a one-line reason when it cannot;
  // then nothing is left on disk.
  bool Open(const std::string& path, int width, int height, double fps, std::string& error);
  // Hands over one frame (RGBA, top row first at `top`, rows `stride` bytes apart, may be negative).
  // Copies what it needs before returning and allocates nothing once the first few frames are in;
  // blocks only while the queue is full. False once the writer has failed (the reason stays for Close).
  bool WriteFrame(const std::uint8_t* top, std::ptrdiff_t stride);
  // Drains the queue, flushes the encoder, writes the trailer and closes. The file is written under a
  // temporary name beside the target and renamed into place only when everything succeeded, so a
  // failed or interrupted run never leaves a half-written video under the target name. Blocks until
  // the queued frames are encoded.
  bool Close(std::string& error);
  bool IsOpen() const;
  // The encoder the last successful Open settled on ("libx264", "mpeg4", ...); empty before
  // the first and after a failed one.
  const std::string& EncoderName() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace lumivane
