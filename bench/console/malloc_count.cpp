// Counts malloc, calloc and realloc of the calling thread. Linked into a
// benchmark (or preloaded into a JVM), it sees the allocations of every
// library in the process, not only those made through operator new.
#include "malloc_count.h"

#include <cstddef>

extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);

static thread_local uint64_t mallocs = 0;

__attribute__((visibility("default"))) uint64_t vostan_thread_mallocs() {
  return mallocs;
}

__attribute__((visibility("default"))) void* malloc(size_t n) {
  ++mallocs;
  return __libc_malloc(n);
}
__attribute__((visibility("default"))) void* calloc(size_t n, size_t m) {
  ++mallocs;
  return __libc_calloc(n, m);
}
__attribute__((visibility("default"))) void* realloc(void* p, size_t n) {
  ++mallocs;
  return __libc_realloc(p, n);
}
}
