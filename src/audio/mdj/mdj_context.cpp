#include "audio/mdj/mdj_context.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>

namespace vostan {

namespace snd = platform::sound;

// The five wake-ups of the mixer thread: one per quarter of the stream and
// one for commands. Each is an auto-reset event; a wait takes the lowest one
// set, so that a due quarter goes before a command. Notifications hold it by
// a shared pointer, so a late one after shutdown only touches this.
struct MDJSoundContext::Wake {
  static constexpr int kCommand = 4;

  std::mutex m;
  std::condition_variable wakeUp;
  std::condition_variable idle;
  uint32_t pending[5] = {};  // signals since the last wait took the event
  uint64_t signalled = 0;    // all signals given
  uint64_t handled = 0;      // signals whose work is done
  uint64_t quarters = 0;
  bool started = false;  // the stream plays
  bool quit = false;

  void signal(int index) {
    {
      std::lock_guard<std::mutex> lock(m);
      if (quit) return;
      ++pending[index];
      ++signalled;
    }
    wakeUp.notify_one();
  }
  // Waits for any of the first `count` events; the index, and in `taken` the
  // signals it stood for. -1 once told to quit.
  int wait(int count, uint32_t* taken) {
    std::unique_lock<std::mutex> lock(m);
    int index = -1;
    wakeUp.wait(lock, [&] {
      if (quit) return true;
      for (int i = 0; i < count; ++i) {
        if (pending[i]) {
          index = i;
          return true;
        }
      }
      return false;
    });
    if (quit) return -1;
    *taken = pending[index];
    pending[index] = 0;
    return index;
  }
  void done(uint32_t taken, bool quarter) {
    {
      std::lock_guard<std::mutex> lock(m);
      handled += taken;
      if (quarter) ++quarters;
    }
    idle.notify_all();
  }
};

MDJSoundContext::MDJSoundContext()
    : wake(std::make_shared<Wake>()),
      mixer(std::make_unique<MDJMixer>()),
      streamRing(std::make_unique<float[]>(kRingFloats)) {
  for (auto& b : mixBlock) b = std::make_unique<float[]>(kQuarterFrames);
}

std::unique_ptr<MDJSoundContext> MDJSoundContext::start(snd::Device& device) {
  std::unique_ptr<MDJSoundContext> context(new MDJSoundContext);
  snd::BufferDesc desc;
  desc.flags = snd::kGetCurrentPosition2 | snd::kGlobalFocus | snd::kCtrlPositionNotify |
               snd::kCtrlVolume | snd::kCtrlPan | snd::kCtrlFrequency;
  desc.bytes = kStreamBytes;
  desc.format = snd::WaveFormat{2, 44100, 16};
  if (snd::failed(device.createBuffer(desc, &context->streamBuffer))) return nullptr;
  const uint32_t offsets[4] = {0, kQuarterBytes, 2 * kQuarterBytes, 3 * kQuarterBytes};
  std::shared_ptr<Wake> wake = context->wake;
  auto notify = [wake](int index) {
    if (index >= 0 && index < 4) wake->signal(index);
  };
  if (snd::failed(context->streamBuffer->setNotificationPositions(offsets, 4, notify))) {
    return nullptr;
  }
  context->thread = std::thread([c = context.get()] { c->threadMain(); });
  // Back once the stream plays, so that the first wake-up can't be missed.
  std::unique_lock<std::mutex> lock(wake->m);
  wake->idle.wait(lock, [&] { return wake->started; });
  return context;
}

MDJSoundContext::~MDJSoundContext() {
  shutdown();
}

void MDJSoundContext::shutdown() {
  std::lock_guard<std::mutex> once(shutdownLock);
  if (stopped) return;
  stopped = true;
  {
    std::lock_guard<std::mutex> lock(wake->m);
    wake->quit = true;
  }
  wake->wakeUp.notify_all();
  wake->idle.notify_all();
  if (thread.joinable()) thread.join();
  if (streamBuffer) {
    // Stopped first: notifications may be set only on a stopped buffer.
    streamBuffer->stop();
    streamBuffer->setNotificationPositions(nullptr, 0, nullptr);
    streamBuffer.reset();
  }
  std::lock_guard<std::recursive_mutex> lock(mixLock);
  controllers.clear();
  releaseSongs();
}

bool MDJSoundContext::running() const {
  std::lock_guard<std::mutex> lock(wake->m);
  return !wake->quit;
}

void MDJSoundContext::releaseSongs() {
  if (pendingSong) pendingSong->release();
  if (previousSong) previousSong->release();
  pendingSong = previousSong = nullptr;
}

bool MDJSoundContext::postEvent(std::unique_ptr<MDJEvent> event) {
  if (!running()) return false;
  {
    std::lock_guard<std::mutex> lock(eventLock);
    // A thread that can't keep up with a thousand commands is stuck opening
    // a file; losing the command is better than holding the caller.
    if (events.size() >= kEventCapacity) {
      printf("music command %d dropped: %zu commands wait\n", event->kind, events.size());
      return false;
    }
    events.push_back(std::move(event));
  }
  wake->signal(Wake::kCommand);
  return true;
}

std::unique_ptr<MDJEvent> MDJSoundContext::takeEvent() {
  std::lock_guard<std::mutex> lock(eventLock);
  if (events.empty()) return nullptr;
  std::unique_ptr<MDJEvent> event = std::move(events.front());
  events.pop_front();
  return event;
}

bool MDJSoundContext::postSong(const char* path) {
  auto event = std::make_unique<MDJEvent>();
  event->kind = eventKindSong;
  if (path) {
    const size_t n = strlen(path);
    event->path = std::make_unique<char[]>(n + 1);
    std::memcpy(event->path.get(), path, n + 1);
  }
  return postEvent(std::move(event));
}

bool MDJSoundContext::postTrick(int32_t trick) {
  auto event = std::make_unique<MDJEvent>();
  event->kind = eventKindTrick;
  event->trick = trick;
  return postEvent(std::move(event));
}

void MDJSoundContext::handleEvent(MDJEvent& event) {
  if (event.kind == eventKindSong) {
    if (!event.path) return;
    // Opening may take long; no lock is held meanwhile.
    auto* song = new MDJSong;
    if (!song->openFile(event.path.get())) {
      // The song reports what it refused itself; a file it couldn't read is
      // reported here.
      const MDJSong::Failure why = song->failure();
      if (why == MDJSong::Failure::cannotOpen || why == MDJSong::Failure::notVorbis) {
        printf("music: song %s not opened: %s\n", event.path.get(), describeFailure(why));
      }
      song->release();
      return;
    }
    if (pendingSong) {
      if (previousSong) previousSong->release();
      previousSong = pendingSong;
    }
    pendingSong = song;
    return;
  }
  if (event.kind != eventKindTrick) return;
  std::lock_guard<std::recursive_mutex> lock(mixLock);
  std::unique_ptr<MDJController> c = createController(*mixer, event.trick, pendingSong);
  // The controller holds its own reference.
  releaseSongs();
  if (c && !controllers.push(std::move(c))) {
    printf("music: trick %d dropped: %d changes already wait\n", event.trick,
           MDJControllerQueue::kCapacity);
  }
  controllers.run(*mixer, 0);
}

void MDJSoundContext::threadMain() {
  void* p1 = nullptr;
  void* p2 = nullptr;
  uint32_t n1 = 0, n2 = 0;
  if (!snd::failed(streamBuffer->lock(0, kStreamBytes, &p1, &n1, &p2, &n2))) {
    if (p1) std::memset(p1, 0, n1);
    if (p2) std::memset(p2, 0, n2);
    streamBuffer->unlock(p1, n1, p2, n2);
  }
  streamBuffer->setCurrentPosition(0);
  streamBuffer->play(true);
  {
    std::lock_guard<std::mutex> lock(wake->m);
    wake->started = true;
  }
  wake->idle.notify_all();

  // The first notification comes as the cursor leaves a quarter of the
  // silence just written; there is nothing to catch up.
  uint32_t taken = 0;
  if (wake->wait(4, &taken) < 0) return;
  wake->done(taken, false);

  for (;;) {
    const int index = wake->wait(5, &taken);
    if (index < 0) return;
    if (index == Wake::kCommand) {
      while (std::unique_ptr<MDJEvent> event = takeEvent()) {
        // Out of memory for a song loses that command, not the thread.
        try {
          handleEvent(*event);
        } catch (const std::bad_alloc&) {
          printf("music: no memory for command %d\n", event->kind);
        }
      }
      wake->done(taken, false);
      continue;
    }
    // The play cursor has just left the quarter before the position.
    mixQuarter(index == 0 ? 3 : index - 1);
    wake->done(taken, true);
  }
}

void MDJSoundContext::mixQuarter(int32_t quarter) {
  void* p1 = nullptr;
  void* p2 = nullptr;
  uint32_t n1 = 0, n2 = 0;
  if (snd::failed(streamBuffer->lock(quarter * kQuarterBytes, kQuarterBytes, &p1, &n1, &p2, &n2)) ||
      !p1) {
    return;
  }
  const int32_t frames = std::min<int32_t>(kQuarterFrames, static_cast<int32_t>(n1 / 4));
  float* left = mixBlock[0].get();
  float* right = mixBlock[1].get();
  {
    std::lock_guard<std::recursive_mutex> lock(mixLock);
    int32_t done = 0;
    // While a controller runs, it gets a say every control step.
    while (!controllers.empty() && done < frames) {
      controllers.run(*mixer, kControlStep);
      const int32_t n = std::min(kControlStep, frames - done);
      float* at[2] = {left + done, right + done};
      mixer->render(at, n);
      done += n;
    }
    if (done < frames) {
      float* at[2] = {left + done, right + done};
      mixer->render(at, frames - done);
    }
    for (int32_t i = 0; i < frames && readPos != writeIndex; ++i) {
      left[i] += streamRing[readPos];
      right[i] += streamRing[readPos + 1];
      readPos = (readPos + 2) % kRingFloats;
    }
  }
  auto* out = static_cast<int16_t*>(p1);
  for (int32_t i = 0; i < frames; ++i) {
    out[2 * i] = toStreamSample(left[i]);
    out[2 * i + 1] = toStreamSample(right[i]);
  }
  {
    std::lock_guard<std::mutex> lock(tapLock);
    if (tap) tap(out, frames);
  }
  streamBuffer->unlock(p1, n1, p2, n2);
}

int32_t MDJSoundContext::streamSize() {
  std::lock_guard<std::recursive_mutex> lock(mixLock);
  return (writeIndex < readPos ? writeIndex + kRingFloats : writeIndex) - readPos;
}

bool MDJSoundContext::writeStream(const float* data, int32_t count) {
  if (!data || count <= 0 || count % 2 != 0 || count > kRingFloats) return false;
  std::lock_guard<std::recursive_mutex> lock(mixLock);
  const int32_t tail = kRingFloats - writeIndex;
  if (count >= tail) {
    std::memcpy(streamRing.get() + writeIndex, data, sizeof(float) * tail);
    std::memcpy(streamRing.get(), data + tail, sizeof(float) * (count - tail));
    writeIndex = count - tail;
  } else {
    std::memcpy(streamRing.get() + writeIndex, data, sizeof(float) * count);
    writeIndex += count;
  }
  return true;
}

void MDJSoundContext::setTap(Tap next) {
  std::lock_guard<std::mutex> lock(tapLock);
  tap = std::move(next);
}

bool MDJSoundContext::waitIdle(std::chrono::milliseconds timeout) {
  std::unique_lock<std::mutex> lock(wake->m);
  return wake->idle.wait_for(lock, timeout, [&] {
    return wake->quit || wake->handled == wake->signalled;
  }) && !wake->quit;
}

uint64_t MDJSoundContext::quartersMixed() const {
  std::lock_guard<std::mutex> lock(wake->m);
  return wake->quarters;
}

}  // namespace vostan
