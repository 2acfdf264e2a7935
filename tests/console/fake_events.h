#pragma once
// Java events as records: each made event gets a fake reference that the test
// can look up, and global references are counted.
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "console/java_events.h"

namespace vostan::test {

struct EventRecord {
  int id = 0, modifiers = 0, x = 0, y = 0, clickCount = 0, rotation = 0, keyCode = 0;
  bool popup = false;
  uint16_t character = 0;
  jobject files = nullptr;
  // Input method events: null text and null attributes are told apart from empty ones.
  bool hasText = false, hasAttributes = false;
  std::u16string text;
  std::vector<int32_t> attributes;
  int committedCount = 0, caret = 0;
};

class FakeEvents : public JavaEvents {
 public:
  std::vector<EventRecord> made;
  std::set<uintptr_t> globals;
  std::vector<uintptr_t> deleted;
  std::vector<std::vector<std::string>> fileArrays;
  int outOfMemoryThrown = 0, internalThrown = 0;

  jobject keyEvent(int id, int modifiers, int keyCode, uint16_t character) override {
    EventRecord r;
    r.id = id, r.modifiers = modifiers, r.keyCode = keyCode, r.character = character;
    return add(r);
  }
  jobject mouseEvent(int id, int modifiers, int x, int y, int count, bool popup,
                     int rotation) override {
    EventRecord r;
    r.id = id, r.modifiers = modifiers, r.x = x, r.y = y, r.clickCount = count, r.popup = popup;
    r.rotation = rotation;
    return add(r);
  }
  jobject applicationEvent(int id) override {
    EventRecord r;
    r.id = id;
    return add(r);
  }
  jobject dropTargetEvent(int id, int keyState, int x, int y, jobject files) override {
    EventRecord r;
    r.id = id, r.modifiers = keyState, r.x = x, r.y = y, r.files = files;
    return add(r);
  }
  jobject inputMethodEvent(int id, const char16_t* text, int length, const int32_t* attributes,
                           int committedCount, int caret) override {
    EventRecord r;
    r.id = id, r.committedCount = committedCount, r.caret = caret;
    r.hasText = text != nullptr;
    if (text) r.text.assign(text, static_cast<std::size_t>(length));
    r.hasAttributes = text && attributes;
    if (r.hasAttributes) r.attributes.assign(attributes, attributes + length);
    return add(r);
  }
  void throwOutOfMemory() override { ++outOfMemoryThrown; }
  void throwInternal() override { ++internalThrown; }
  // File arrays are numbered apart from events, tagged in bit 41, and held as globals.
  jobject newFileArray(const std::vector<std::string>& paths) override {
    fileArrays.push_back(paths);
    const uintptr_t g = fileArrays.size() | (uintptr_t(1) << 41);
    globals.insert(g);
    return reinterpret_cast<jobject>(g);
  }
  const std::vector<std::string>& filesOf(jobject array) const {
    return fileArrays.at((reinterpret_cast<uintptr_t>(array) & 0xFFFFFFFF) - 1);
  }
  // A global reference refers to the same record, tagged in the high bits.
  jobject newGlobalRef(jobject o) override {
    const uintptr_t g = reinterpret_cast<uintptr_t>(o) | (uintptr_t(1) << 40);
    globals.insert(g);
    return reinterpret_cast<jobject>(g);
  }
  void deleteGlobalRef(jobject o) override {
    deleted.push_back(reinterpret_cast<uintptr_t>(o));
    globals.erase(reinterpret_cast<uintptr_t>(o));
  }

  const EventRecord& of(jobject o) const {
    return made.at((reinterpret_cast<uintptr_t>(o) & 0xFFFFFFFF) - 1);
  }

 private:
  jobject add(const EventRecord& r) {
    made.push_back(r);
    return reinterpret_cast<jobject>(static_cast<uintptr_t>(made.size()));
  }
};

}  // namespace vostan::test
