#include "render/ImageLoader.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include <sys/resource.h>
#include <unistd.h>

namespace lumivane {

namespace {

// A tenth of an ordinary thread's share of a busy processor.
constexpr int kNice = 10;

}  // namespace

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
  std::condition_variable finished;  // a decode is done
  std::condition_variable wake;      // work was asked for, or the loader is gone
  std::deque<Job> queue;
  std::deque<Result> done;
  bool working = false;    // a decode is under way
  bool abandoned = false;  // the loader is gone: stop after the decode under way

  // The worker, started with the loader and waiting for work: starting a thread at a send would
  // cost the frame that sends. It runs at a low priority, so the frame's threads come first while
  // they draw, yet it still gets a share when a show keeps every core busy (at the idle class it
  // would never decode there). It ends once the loader is gone.
  static void Work(std::shared_ptr<Shared> self) {
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), kNice);
    std::unique_lock lock(self->mutex);
    for (;;) {
      self->wake.wait(lock, [&] { return !self->queue.empty() || self->abandoned; });
      if (self->abandoned) break;
      Job job = std::move(self->queue.front());
      self->queue.pop_front();
      self->working = true;
      lock.unlock();
      Result result;
      result.Ticket = job.ticket;
      result.Ok = DecodeTextureImage(job.file, job.width, job.height, job.format, job.filter, job.colorKey,
                                     result.Image, result.Error);
      lock.lock();
      self->working = false;
      self->done.push_back(std::move(result));
      self->finished.notify_all();
    }
    self->working = false;
    self->finished.notify_all();
  }
};

ImageLoader::ImageLoader() : shared_(std::make_shared<Shared>()) {
  try {
    std::thread(&Shared::Work, shared_).detach();
    threaded_ = true;
  } catch (const std::system_error&) {
    // No thread to be had: requests are decoded where they are made.
  }
}

ImageLoader::~ImageLoader() {
  std::lock_guard lock(shared_->mutex);
  shared_->abandoned = true;
  shared_->queue.clear();
  shared_->wake.notify_all();
}

std::uint64_t ImageLoader::Request(const std::string& file, int width, int height, TextureFormat format,
                                   ImageFilter filter, std::uint32_t colorKey) {
  const std::uint64_t ticket = nextTicket_++;
  if (!threaded_) {
    Result result;
    result.Ticket = ticket;
    result.Ok = DecodeTextureImage(file, width, height, format, filter, colorKey, result.Image, result.Error);
    std::lock_guard lock(shared_->mutex);
    shared_->done.push_back(std::move(result));
    return ticket;
  }
  std::lock_guard lock(shared_->mutex);
  shared_->queue.push_back(Shared::Job{ticket, file, width, height, format, filter, colorKey});
  shared_->wake.notify_one();
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

}  // namespace lumivane
