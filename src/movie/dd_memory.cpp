// Allocation with a byte count, a live-byte bound and optional tracking.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "movie/dd_base.h"

namespace {

struct alignas(16) Header {
  Header* prev;
  Header* next;
  size_t size;
  bool tracked;
};

size_t liveBytes = 0;
size_t limitBytes = size_t(1) << 30;
size_t softLimitBytes = SIZE_MAX;

struct Budget {
  size_t base = 0;
  const uint64_t* data = nullptr;
  uint64_t factor = 0;
  size_t allowance = 0;
} budget;
bool tracking = false;
Header* trackedHead = nullptr;

void link(Header* h) {
  h->prev = nullptr;
  h->next = trackedHead;
  if (trackedHead) trackedHead->prev = h;
  trackedHead = h;
}

void unlink(Header* h) {
  if (h->prev)
    h->prev->next = h->next;
  else
    trackedHead = h->next;
  if (h->next) h->next->prev = h->prev;
}

void reserve(size_t size) {
  // A budget refuses before the process-wide bound would end the process.
  if (budget.data) {
    const uint64_t allowed = budget.base + budget.factor * *budget.data + budget.allowance;
    if (size > allowed || liveBytes + size > allowed) throw ddOverBudget{};
  }
  if (size > (size_t(1) << 40) || (limitBytes && liveBytes + size > limitBytes))
    ddFatal("Movie needs more memory than allowed (%zu bytes held, %zu asked)", liveBytes, size);
}

}  // namespace

void* ddMalloc(size_t size) {
  reserve(size);
  Header* h = static_cast<Header*>(std::malloc(sizeof(Header) + size));
  if (!h) ddFatal("Out of memory (%zu bytes)", size);
  h->size = size;
  h->tracked = tracking;
  if (tracking) link(h);
  liveBytes += size;
  return h + 1;
}

void* ddCalloc(size_t count, size_t size) {
  if (size && count > (size_t(1) << 40) / size) ddFatal("Out of memory (%zu x %zu)", count, size);
  void* p = ddMalloc(count * size);
  std::memset(p, 0, count * size);
  return p;
}

void* ddRealloc(void* p, size_t size) {
  if (!p) return ddMalloc(size);
  Header* h = static_cast<Header*>(p) - 1;
  if (size > h->size) reserve(size - h->size);
  bool wasTracked = h->tracked;
  if (wasTracked) unlink(h);
  size_t old = h->size;
  Header* n = static_cast<Header*>(std::realloc(h, sizeof(Header) + size));
  if (!n) ddFatal("Out of memory (%zu bytes)", size);
  n->size = size;
  if (wasTracked) link(n);
  liveBytes = liveBytes - old + size;
  return n + 1;
}

void ddFree(void* p) {
  if (!p) return;
  Header* h = static_cast<Header*>(p) - 1;
  if (h->tracked) unlink(h);
  liveBytes -= h->size;
  std::free(h);
}

char* ddStrdup(const char* s) {
  size_t n = std::strlen(s) + 1;
  char* r = static_cast<char*>(ddMalloc(n));
  std::memcpy(r, s, n);
  return r;
}

size_t ddMemory_liveBytes() {
  return liveBytes;
}

void ddMemory_setLimit(size_t bytes) {
  limitBytes = bytes;
}

void ddMemory_setSoftLimit(size_t bytes) {
  softLimitBytes = bytes;
}

bool ddMemory_overSoftLimit() {
  return liveBytes > softLimitBytes;
}

void ddMemory_setBudget(size_t base, const uint64_t* dataBytes, uint64_t factor, size_t allowance) {
  budget = Budget{base, dataBytes, factor, allowance};
}

bool ddMemory_isTracking() {
  return tracking;
}

void ddMemory_setTracking(bool on) {
  tracking = on;
}

void ddMemory_releaseTracked() {
  while (trackedHead) {
    Header* h = trackedHead;
    trackedHead = h->next;
    liveBytes -= h->size;
    std::free(h);
  }
}

void ddMemory_keepTracked() {
  while (trackedHead) {
    Header* h = trackedHead;
    trackedHead = h->next;
    h->tracked = false;
  }
}
