#pragma once
// Native arrays: blocks of vertex data or 16-bit indices that Java fills and
// the draws bind. A record keeps its bytes in system memory until its first
// draw moves them into a device buffer, and back again when the device goes.
#include <cstdint>
#include <mutex>
#include <vector>

#include "platform/gfx/gfx.h"

namespace vostan {

namespace arraykind {
constexpr int32_t kVertex = 32884;    // 3 floats a vertex
constexpr int32_t kNormal = 32885;    // no draw reads it
constexpr int32_t kColor = 32886;     // 4 bytes a vertex
constexpr int32_t kIndex = 32887;     // 16-bit triangle indices
constexpr int32_t kTexCoord = 32888;  // 2 floats a vertex
constexpr int32_t kWeight = 32889;    // 4 floats: bone index plus share
}  // namespace arraykind

struct GLArrayRecord {
  gfx::VertexBuffer* vertexBuffer = nullptr;
  gfx::BufferDesc vertexDesc;
  gfx::IndexBuffer* indexBuffer = nullptr;
  gfx::BufferDesc indexDesc;
  int32_t capacity = 0;
  int32_t kind = 0;
  uint8_t* systemCopy = nullptr;
  // Handed out and not yet back on the free list; Java's handle is checked
  // against it before any use.
  bool live = false;
  // The highest index the array holds, so that a draw can tell it stays
  // inside its vertex arrays. Index arrays only.
  uint16_t maxIndex = 0;

  // Fills the record for `size` bytes of `kind`, copying `data` when given.
  // False when the copy's memory is not there.
  bool init(int32_t kind, int32_t size, const void* data);
  bool isIndex() const { return kind == arraykind::kIndex; }
  // Bytes the record holds now: its size, 0 after dispose.
  uint32_t size() const { return vertexDesc.size; }
  // Whether [offset, offset + count) lies inside the record.
  bool holds(int64_t offset, int64_t count) const;

  gfx::VertexBuffer* vertexBufferOf(gfx::Device* device);
  gfx::IndexBuffer* indexBufferOf(gfx::Device* device);
  void load(gfx::Device* device);
  // Copies into or out of the record; the caller keeps the range inside it.
  void write(const void* source, uint32_t offset, uint32_t count);
  void read(void* destination, uint32_t offset, uint32_t count);
  // Moves a buffer's bytes back to system memory and lets the buffer go.
  void unload();
  void dispose();

 private:
  void rescanIndices();
};

// The copies of GLArray.memcpy. `memory` of `memoryBytes` bytes stands for
// a Java array (null with -1 for none) and its offset counts bytes. A copy
// that would reach outside the record or the memory is refused and touches
// nothing; false then.
bool copyBetweenRecords(GLArrayRecord* from, int32_t fromOffset, GLArrayRecord* to,
                        int32_t toOffset, int32_t size);
bool copyRecordToMemory(GLArrayRecord* from, int32_t fromOffset, uint8_t* memory,
                        int64_t memoryBytes, int32_t memoryOffset, int32_t size);
bool copyMemoryToRecord(const uint8_t* memory, int64_t memoryBytes, int32_t memoryOffset,
                        GLArrayRecord* to, int32_t toOffset, int32_t size);

// The table of records: slots handed out in order, reused last-in first-out
// after a compact. Records live in low memory, so that a handle is an
// address that fits in 32 bits.
class GLArrayTable {
 public:
  static constexpr int kMaxArrays = 15000;
  // Handing out slots past this many runs the deletion list first.
  static constexpr int kCompactThreshold = 9500;
  // Larger records are refused: 16-bit indices reach 65536 vertices of at
  // most 16 bytes, and a device buffer this size is already a great deal.
  static constexpr int32_t kMaxBytes = 64 << 20;

  GLArrayTable();
  ~GLArrayTable();
  GLArrayTable(const GLArrayTable&) = delete;
  GLArrayTable& operator=(const GLArrayTable&) = delete;

  // A fresh or reused record, null when the table is full.
  GLArrayRecord* allocate();
  // A record of `size` bytes of `kind`; with `withData`, the first `size`
  // of the `dataBytes` at `data` copied in (null data: none). Null when the
  // size is negative or above kMaxBytes, the data are shorter, or the table
  // is full.
  GLArrayRecord* create(int32_t kind, int32_t size, bool withData, const void* data,
                        int64_t dataBytes);
  // Takes back a record that allocate() just gave out and nobody has seen.
  void giveBack(GLArrayRecord* record);
  // The live record of a Java handle; null for 0, dead or made-up handles.
  GLArrayRecord* find(int64_t handle) const;
  static int64_t handleOf(const GLArrayRecord* record);

  // Notes a handle for the next compact; the record is not touched. Safe
  // from any thread.
  void noteDelete(int64_t handle);
  // Disposes every noted record and puts it on the free list.
  void compact();
  // Before handing out a slot for data: makes room when the table runs full.
  void compactIfCrowded();

  int count() const { return count_; }
  int freeCount() const { return freeCount_; }
  GLArrayRecord& at(int i) { return records_[i]; }

 private:
  GLArrayRecord* records_;
  int count_ = 0;
  GLArrayRecord** free_;
  int freeCount_ = 0;
  std::mutex pendingLock_;
  std::vector<int64_t> pending_;
};

}  // namespace vostan
