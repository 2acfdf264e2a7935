#pragma once
// Heap allocations made by the calling thread, counted by wrapping malloc.
#include <cstdint>

extern "C" uint64_t vostan_thread_mallocs();
