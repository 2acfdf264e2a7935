#include "audio/audio_manager.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace vostan {

namespace snd = platform::sound;

void describeResult(int32_t result) {
  const char* text = nullptr;
  switch (static_cast<uint32_t>(result)) {
    case 0:
      text = "SUCCEEDED\n";
      break;
    case 0x0878000A:
      text = "DS_NO_VIRTUALIZATION\n";
      break;
    case 0x8878000A:
      text = "DSERR_ALLOCATED\n";
      break;
    case 0x8878001E:
      text = "DSERR_CONTROLUNAVAIL\n";
      break;
    case 0x80070057:
      text = "DSERR_INVALIDPARAM\n";
      break;
    case 0x88780032:
      text = "DSERR_INVALIDCALL \n";
      break;
    case 0x80004005:
      text = "DSERR_GENERIC\n";
      break;
    case 0x88780046:
      text = "DSERR_PRIOLEVELNEEDED\n";
      break;
    case 0x88780064:
      text = "DSERR_BADFORMAT\n";
      break;
    case 0x887800B4:
      text = "DSERR_BUFFERTOOSMALL\n";
      break;
    case 0x887800BE:
      text = "DSERR_DS8_REQUIRED\n";
      break;
    case 0x88780096:
      text = "DSERR_BUFFERLOST\n";
      break;
    case 0x887800AA:
      text = "DSERR_UNINITIALIZED\n";
      break;
    case 0x80004002:
      text = "DSERR_NOINTERFACE\n";
      break;
    case 0x80070005:
      text = "DSERR_ACCESSDENIED\n";
      break;
    case 0x80004001:
      text = "DSERR_UNSUPPORTED\n";
      break;
    case 0x8007000E:
      text = "DSERR_OUTOFMEMORY\n";
      break;
    case 0x88780078:
      text = "DSERR_NODRIVER\n";
      break;
    case 0x88780082:
      text = "DSERR_ALREADYINITIALIZED\n";
      break;
    case 0x887800A0:
      text = "DSERR_OTHERAPPHASPRIO\n";
      break;
    case 0x88781161:
      text = "DSERR_OBJECTNOTFOUND\n";
      break;
  }
  if (text)
    std::fputs(text, stdout);
  else
    std::printf("unknown %d\n", result);
  std::fflush(stdout);
}

namespace {

// Managers not yet shut down, for the exit handler.
struct OpenManagers {
  std::mutex mutex;
  std::vector<AudioManager*> list;
};
OpenManagers& openManagers() {
  static OpenManagers* managers = new OpenManagers;  // outlives every exit handler
  return *managers;
}

void forget(AudioManager* audio) {
  OpenManagers& m = openManagers();
  std::lock_guard<std::mutex> lock(m.mutex);
  m.list.erase(std::remove(m.list.begin(), m.list.end(), audio), m.list.end());
}

}  // namespace

void shutdownAllAudio() {
  for (;;) {
    AudioManager* audio = nullptr;
    {
      OpenManagers& m = openManagers();
      std::lock_guard<std::mutex> lock(m.mutex);
      if (m.list.empty()) return;
      audio = m.list.back();
    }
    audio->shutdown();
  }
}

AudioManager::AudioManager() {
  OpenManagers& m = openManagers();
  std::lock_guard<std::mutex> lock(m.mutex);
  m.list.push_back(this);
}

AudioManager::~AudioManager() {
  shutdown();
}

void AudioManager::shutdown() {
  if (closed) return;
  closed = true;
  forget(this);
  stopDeviceUsers();
  if (directSound) directSound->close();
}

std::unique_ptr<AudioManager> AudioManager::create(Opener open) {
  auto audio = std::make_unique<AudioManager>();
  snd::Result r = open(&audio->directSound);
  if (snd::failed(r)) {
    std::fputs("m_pDS->DirectSoundCreate8 failed : ", stderr);
    describeResult(r);
    return nullptr;
  }
  // Registered after the sound library has started, so it runs before the
  // library's own teardown: no thread of ours may still use it then.
  static const bool atExit = std::atexit(shutdownAllAudio) == 0;
  (void)atExit;
  snd::BufferDesc desc;
  desc.flags = snd::kPrimaryBuffer | snd::kCtrl3D | snd::kCtrlVolume;
  r = audio->directSound->createBuffer(desc, &audio->primaryBuffer);
  if (snd::failed(r)) {
    std::fputs("CreateSoundBuffer(pDSBPrimary) failed....\n", stdout);
    std::fflush(stdout);
    describeResult(r);
    return nullptr;
  }
  r = audio->directSound->queryListener(*audio->primaryBuffer, &audio->listener);
  if (snd::failed(r)) {
    std::fputs("IID_IDirectSound3DListener8 failed....\n", stdout);
    std::fflush(stdout);
    describeResult(r);
    return nullptr;
  }
  audio->listenerParameters = snd::ListenerParams{};
  audio->listener->getAllParameters(&audio->listenerParameters);
  return audio;
}

int32_t AudioManager::addDeviceUser(std::function<void()> stop) {
  std::lock_guard<std::mutex> lock(usersLock);
  const int32_t id = nextUser++;
  deviceUsers.emplace(id, std::move(stop));
  return id;
}

void AudioManager::removeDeviceUser(int32_t id) {
  std::lock_guard<std::mutex> lock(usersLock);
  deviceUsers.erase(id);
}

void AudioManager::stopDeviceUsers() {
  // Under the lock, so that a user being removed is not stopped half-deleted.
  std::lock_guard<std::mutex> lock(usersLock);
  for (auto& [id, stop] : deviceUsers) stop();
}

void AudioManager::setWindow(uint32_t window) {
  windowHandle = 0;
  if (window == 0) return;
  snd::Result r = directSound->setCooperativeLevel(window, snd::kPriorityLevel);
  if (snd::failed(r)) {
    std::printf("SetCooperativeLevel failed at AudioManager::setWindow().\n");
    describeResult(r);
    return;
  }
  windowHandle = window;
  setPrimaryFormat(2, 44100, 16);
}

int32_t AudioManager::setPrimaryFormat(int channels, int rate, int bits) {
  snd::WaveFormat format;
  format.channels = static_cast<uint16_t>(channels);
  format.rate = static_cast<uint32_t>(rate);
  format.bits = static_cast<uint16_t>(bits);
  snd::Result r = primaryBuffer->setFormat(format);
  return snd::failed(r) ? r : 0;
}

int32_t AudioManager::commit() {
  return listener->commitDeferredSettings();
}

int32_t AudioManager::setListener(const float v[9]) {
  const uint32_t t = directSound->timeMillis();
  snd::ListenerParams& p = listenerParameters;
  if (lastListenerTime != 0) {
    // A product with the elapsed time, not a quotient: the velocity grows with
    // the time since the last call. Games tune their Doppler effect to that.
    const float dt = static_cast<float>(t - lastListenerTime) * 0.001f;
    p.velocity = {(v[0] - p.position.x) * dt, (v[1] - p.position.y) * dt,
                  (v[2] - p.position.z) * dt};
  }
  lastListenerTime = t;
  p.position = {v[0], v[1], v[2]};
  p.front = {v[3], v[4], v[5]};
  p.top = {v[6], v[7], v[8]};
  return listener->setAllParameters(p, snd::Apply::Deferred);
}

void AudioManager::getListener(float v[9]) const {
  const snd::ListenerParams& p = listenerParameters;
  const float values[9] = {p.position.x, p.position.y, p.position.z, p.front.x, p.front.y,
                           p.front.z,    p.top.x,      p.top.y,      p.top.z};
  for (int i = 0; i < 9; ++i) v[i] = values[i];
}

}  // namespace vostan
