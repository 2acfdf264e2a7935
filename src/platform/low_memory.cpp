#include "platform/low_memory.h"

#include <sys/mman.h>

#include <cstdio>
#include <cstdlib>
#include <mutex>

#if defined(__SANITIZE_ADDRESS__)
#define VOSTAN_LSAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VOSTAN_LSAN 1
#endif
#endif
#ifdef VOSTAN_LSAN
#include <sanitizer/lsan_interface.h>
#endif

namespace vostan::platform {
namespace {

constexpr std::size_t kChunk = 64u << 20;  // reserved per mapping, touched lazily

std::mutex lowMutex;
uintptr_t chunkNext = 0;
uintptr_t chunkEnd = 0;

[[noreturn]] void outOfLowMemory(std::size_t size) {
  std::fprintf(stderr, "vostan: no memory below 2 GB for %zu bytes\n", size);
  std::abort();
}

}  // namespace

void* lowAlloc(std::size_t size, std::size_t align) {
  std::lock_guard<std::mutex> lock(lowMutex);
  uintptr_t p = (chunkNext + align - 1) & ~(uintptr_t(align) - 1);
  if (chunkNext == 0 || p + size > chunkEnd) {
    std::size_t want = size + align > kChunk ? size + align : kChunk;
    void* m =
        mmap(nullptr, want, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_32BIT, -1, 0);
    if (m == MAP_FAILED) outOfLowMemory(size);
#ifdef VOSTAN_LSAN
    // What these objects point to is alive: let the leak checker see it.
    __lsan_register_root_region(m, want);
#endif
    chunkNext = reinterpret_cast<uintptr_t>(m);
    chunkEnd = chunkNext + want;
    if (chunkEnd > 0x80000000u) outOfLowMemory(size);
    p = (chunkNext + align - 1) & ~(uintptr_t(align) - 1);
  }
  chunkNext = p + size;
  return reinterpret_cast<void*>(p);
}

int32_t toHandle32(const void* p) {
  auto v = reinterpret_cast<uintptr_t>(p);
  if (v >= 0x80000000u) {
    std::fprintf(stderr, "vostan: handle %p does not fit in 31 bits\n", p);
    std::abort();
  }
  return static_cast<int32_t>(v);
}

}  // namespace vostan::platform
