#include "render/ImageLoader.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace lumivane {

struct ImageLoader::Shared {
  struct Job {
    std::uint64_t ticket;
    std::string file;
    int width, height;
    TextureFormat format;
    ImageFilter filter;
    std::uint32_t colorKey;
  };
  mutable std::mutex mutex;
  std::condition_variable finished;
  std::deque<Job> queue;
  std::deque<Result> done;
  bool working = false;    // a worker thread runs
  bool abandoned = false;  // the loader is gone: stop after the decode under way

  // The worker: decodes until the queue is empty, then ends. A new request starts a new one.
  static void Work(std::shared_ptr<Shared> self) {
    std::unique_lock lock(self->mutex);
    while (!self->queue.empty() && !self->abandoned) {
      Job job = std::move(self->queue.front());
      self->queue.pop_front();
      lock.unlock();
      Result result;
      result.Ticket = job.ticket;
      result.Ok = DecodeTextureImage(job.file, job.width, job.height, job.format, job.filter, job.colorKey,
                                     result.Image, result.Error);
      lock.lock();
      self->done.push_back(std::move(result));
      self->finished.notify_all();
    }
    self->working = false;
    self->finished.notify_all();
  }
};

ImageLoader::ImageLoader() : shared_(std::make_shared<Shared>()) {}

ImageLoader::~ImageLoader() {
  std::lock_guard lock(shared_->mutex);
  shared_->abandoned = true;
  shared_->queue.clear();
}

std::uint64_t ImageLoader::Request(const std::string& file, int width, int height, TextureFormat format,
                                   ImageFilter filter, std::uint32_t colorKey) {
  const std::uint64_t ticket = nextTicket_++;
  std::lock_guard lock(shared_->mutex);
  shared_->queue.push_back(Shared::Job{ticket, file, width, height, format, filter, colorKey});
  if (!shared_->working) {
    shared_->working = true;
    try {
      std::thread(&Shared::Work, shared_).detach();
    } catch (const std::system_error&) {
      // No thread to be had: decode here rather than never.
      shared_->working = false;
      Shared::Job job = std::move(shared_->queue.back());
      shared_->queue.pop_back();
      Result result;
      result.Ticket = ticket;
      result.Ok = DecodeTextureImage(job.file, job.width, job.height, job.format, job.filter, job.colorKey,
                                     result.Image, result.Error);
      shared_->done.push_back(std::move(result));
    }
  }
  return ticket;
}

bool ImageLoader::Take(Result& out) {
  std::lock_guard lock(shared_->mutex);
  if (shared_->done.empty()) return false;
  out = std::move(shared_->done.front());
  shared_->done.pop_front();
  return true;
}

void ImageLoader::WaitAll() {
  std::unique_lock lock(shared_->mutex);
  shared_->finished.wait(lock, [this] { return shared_->queue.empty() && !shared_->working; });
}

std::size_t ImageLoader::Pending() const {
  std::lock_guard lock(shared_->mutex);
  return shared_->queue.size() + shared_->done.size() + (shared_->working ? 1 : 0);
}

}  // namespace lumivane
