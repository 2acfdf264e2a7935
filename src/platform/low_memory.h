#pragma once
// Objects whose address Java keeps in an `int` (the console, texture entries,
// windows) live in the low 2 GB, so that the address survives the round trip
// through a 32-bit Java value on a 64-bit process.
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

namespace vostan::platform {

// Memory from a MAP_32BIT region that is never given back. Aborts with a
// message when no low memory is left: a silent truncation would be worse.
void* lowAlloc(std::size_t size, std::size_t align = alignof(std::max_align_t));

template <class T, class... Args>
T* lowNew(Args&&... args) {
  return new (lowAlloc(sizeof(T), alignof(T))) T(std::forward<Args>(args)...);
}

// The handle Java keeps for an object made by lowAlloc.
int32_t toHandle32(const void* p);

template <class T>
T* fromHandle32(int32_t handle) {
  return reinterpret_cast<T*>(static_cast<uintptr_t>(static_cast<uint32_t>(handle)));
}

}  // namespace vostan::platform
