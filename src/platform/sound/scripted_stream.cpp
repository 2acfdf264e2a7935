#include "platform/sound/scripted_stream.h"

#include <algorithm>
#include <utility>

namespace vostan::platform::sound {

ScriptedStream::ScriptedStream(const BufferDesc& desc, std::shared_ptr<StreamJournal> journal)
    : data_(desc.bytes, 0),
      flags_(desc.flags),
      rate_(desc.format.rate),
      journal_(std::move(journal)) {
  if (journal_) {
    std::lock_guard<std::mutex> lock(journal_->mutex);
    ++journal_->made;
  }
}

ScriptedStream::~ScriptedStream() {
  if (!journal_) return;
  std::lock_guard<std::mutex> lock(journal_->mutex);
  ++journal_->released;
  journal_->playingAtRelease = playing_;
  journal_->notificationAtRelease = static_cast<bool>(notify_);
}

void ScriptedStream::advance(uint32_t bytes) {
  std::vector<int> passed;
  NotifyFn notify;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!playing_ || data_.empty()) return;
    const auto size = static_cast<uint64_t>(data_.size());
    const uint64_t from = cursor_;
    const uint64_t to = from + bytes;
    // Positions are passed in the order the cursor meets them, lap by lap.
    std::vector<std::pair<uint64_t, int>> met;
    for (uint64_t base = 0; base <= to; base += size) {
      for (size_t i = 0; i < positions_.size(); ++i) {
        const uint64_t p = base + positions_[i];
        if (p > from && p <= to) met.emplace_back(p, static_cast<int>(i));
      }
    }
    std::sort(met.begin(), met.end());
    for (auto& m : met) passed.push_back(m.second);
    cursor_ = static_cast<uint32_t>(to % size);
    notify = notify_;
  }
  if (notify) {
    for (int i : passed) notify(i);
  }
}

std::vector<uint8_t> ScriptedStream::read(uint32_t offset, uint32_t bytes) {
  std::lock_guard<std::mutex> lock(mutex_);
  std::vector<uint8_t> out(bytes);
  for (uint32_t i = 0; i < bytes && !data_.empty(); ++i)
    out[i] = data_[(offset + i) % data_.size()];
  return out;
}

bool ScriptedStream::isPlaying() {
  std::lock_guard<std::mutex> lock(mutex_);
  return playing_;
}

bool ScriptedStream::hasNotification() {
  std::lock_guard<std::mutex> lock(mutex_);
  return static_cast<bool>(notify_);
}

int ScriptedStream::lockCount() {
  std::lock_guard<std::mutex> lock(mutex_);
  return locks_;
}

Result ScriptedStream::lock(uint32_t offset, uint32_t bytes, void** p1, uint32_t* n1, void** p2,
                            uint32_t* n2) {
  std::lock_guard<std::mutex> lock(mutex_);
  const auto size = static_cast<uint32_t>(data_.size());
  if (offset >= size || bytes > size) return err::kInvalidParam;
  ++locks_;
  *p1 = data_.data() + offset;
  *n1 = std::min(bytes, size - offset);
  if (p2) *p2 = bytes > *n1 ? data_.data() : nullptr;
  if (n2) *n2 = bytes - *n1;
  return err::kOk;
}

Result ScriptedStream::unlock(void*, uint32_t, void*, uint32_t) {
  return err::kOk;
}

Result ScriptedStream::getCurrentPosition(uint32_t* play, uint32_t* write) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (play) *play = cursor_;
  if (write) *write = cursor_;
  return err::kOk;
}

Result ScriptedStream::setCurrentPosition(uint32_t byteOffset) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (byteOffset >= data_.size()) return err::kInvalidParam;
  cursor_ = byteOffset;
  return err::kOk;
}

Result ScriptedStream::play(bool) {
  std::lock_guard<std::mutex> lock(mutex_);
  playing_ = true;
  return err::kOk;
}

Result ScriptedStream::stop() {
  std::lock_guard<std::mutex> lock(mutex_);
  playing_ = false;
  return err::kOk;
}

Result ScriptedStream::getStatus(uint32_t* status) {
  std::lock_guard<std::mutex> lock(mutex_);
  *status = playing_ ? kStatusPlaying | kStatusLooping : 0;
  return err::kOk;
}

Result ScriptedStream::getVolume(int32_t* v) {
  *v = 0;
  return err::kOk;
}

Result ScriptedStream::getPan(int32_t* p) {
  *p = 0;
  return err::kOk;
}

Result ScriptedStream::getFrequency(uint32_t* hz) {
  *hz = rate_;
  return err::kOk;
}

Result ScriptedStream::setNotificationPositions(const uint32_t* offsets, int count,
                                                NotifyFn notify) {
  if (!(flags_ & kCtrlPositionNotify)) return err::kControlUnavail;
  if (count > 0 && failed(notifyFault)) return notifyFault;
  std::lock_guard<std::mutex> lock(mutex_);
  if (playing_) return err::kInvalidCall;
  for (int i = 0; i < count; ++i) {
    if (offsets[i] >= data_.size()) return err::kInvalidParam;
  }
  positions_.assign(offsets, offsets + count);
  notify_ = std::move(notify);
  return err::kOk;
}

Result ScriptedStreamDevice::createBuffer(const BufferDesc& desc, std::unique_ptr<Buffer>* out) {
  if (failed(createFault)) return createFault;
  if (!(desc.flags & kCtrlPositionNotify) || desc.bytes == 0) return err::kUnsupported;
  auto stream = std::make_unique<ScriptedStream>(desc, journal);
  stream->notifyFault = notifyFault;
  lastStream = stream.get();
  *out = std::move(stream);
  return err::kOk;
}

}  // namespace vostan::platform::sound
