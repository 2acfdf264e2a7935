// Input methods: the console's input context, its candidate list, and the
// composition handler that turns the context's composition into Java events
// in the active mode. Compositions come as UTF-16, so positions are units of
// the text and need no mapping from bytes.
#include <algorithm>
#include <new>
#include <string>
#include <vector>

#include "console/java_events.h"
#include "console/win_console.h"
#include "platform/win32_defs.h"

namespace vostan {

using platform::windowSystem;

namespace {

constexpr int kInputMethodEvent = 1100;

std::u16string readText(platform::InputContext context, uint32_t kind) {
  auto& ws = windowSystem();
  const int32_t bytes = ws.immGetCompositionString(context, kind, nullptr, 0);
  if (bytes <= 0) return {};
  std::u16string text(static_cast<std::size_t>(bytes) / sizeof(char16_t), u'\0');
  ws.immGetCompositionString(context, kind, text.data(),
                             static_cast<uint32_t>(text.size() * sizeof(char16_t)));
  return text;
}

std::vector<uint8_t> readBytes(platform::InputContext context, uint32_t kind) {
  auto& ws = windowSystem();
  const int32_t bytes = ws.immGetCompositionString(context, kind, nullptr, 0);
  if (bytes <= 0) return {};
  std::vector<uint8_t> data(static_cast<std::size_t>(bytes));
  ws.immGetCompositionString(context, kind, data.data(), static_cast<uint32_t>(data.size()));
  return data;
}

// Runs of equal attributes: boundaries[i] starts run i, a last boundary closes
// the list. Only attribute data of the text's own length makes runs.
struct AttributeRuns {
  std::vector<int32_t> boundaries;
  std::vector<uint8_t> attributes;
};

AttributeRuns attributeRuns(const std::u16string& text, const std::vector<uint8_t>& attributes) {
  AttributeRuns runs;
  if (text.empty() || attributes.size() != text.size()) return runs;
  runs.boundaries.push_back(0);
  runs.attributes.push_back(attributes[0]);
  for (std::size_t i = 1; i < attributes.size(); ++i) {
    if (attributes[i] == runs.attributes.back()) continue;
    runs.boundaries.push_back(static_cast<int32_t>(i));
    runs.attributes.push_back(attributes[i]);
  }
  runs.boundaries.push_back(static_cast<int32_t>(text.size()));
  return runs;
}

}  // namespace

void WinConsole::makeInputContext() {
  auto& ws = windowSystem();
  inputContext = ws.immCreateContext();
  ws.immAssociateContext(window, inputMethodsEnabled ? inputContext : 0);
}

void WinConsole::destroyInputContext() {
  auto& ws = windowSystem();
  if (inputContext) ws.immDestroyContext(inputContext);
  ws.immAssociateContext(window, 0);
  inputContext = 0;
}

void WinConsole::inputContextMessage(uintptr_t attach) {
  auto& ws = windowSystem();
  if (attach) {
    ws.immAssociateContext(window, inputContext);
  } else {
    ws.immCancelComposition(inputContext);
    ws.immAssociateContext(window, 0);
  }
}

void WinConsole::placeCandidates(uint32_t lists) {
  // Below and right of the point Java gave, in both modes.
  for (uint32_t index = 0; index < 32; ++index) {
    if (lists & (1u << index))
      windowSystem().immSetCandidateWindow(inputContext, index, {candidateX + 3, candidateY + 32});
  }
}

jobject WinConsole::compositionEvent(JavaEvents& events, uint32_t changes) {
  // Passive modes leave the composition to the system, which types the result.
  if (inputMethodMode != 2) return nullptr;
  try {
    std::u16string committed, composed;
    std::vector<uint8_t> attributes;
    int32_t caret = 0;
    if (changes & win::GCS_RESULT_BITS) committed = readText(inputContext, win::GCS_RESULTSTR);
    if (changes & win::GCS_COMPOSITION_BITS) {
      composed = readText(inputContext, win::GCS_COMPSTR);
      attributes = readBytes(inputContext, win::GCS_COMPATTR);
      const int32_t cursor =
          windowSystem().immGetCompositionString(inputContext, win::GCS_CURSORPOS, nullptr, 0);
      if (!composed.empty())
        caret = std::clamp<int32_t>(cursor, 0, static_cast<int32_t>(composed.size()));
    }
    const AttributeRuns runs = attributeRuns(composed, attributes);

    if (committed.empty() && composed.empty())
      return events.inputMethodEvent(kInputMethodEvent, nullptr, 0, nullptr, 0, 0);
    const int32_t committedCount = static_cast<int32_t>(committed.size());
    const std::u16string text = committed + composed;
    // Committed text reads as converted, ahead of the composition's own runs.
    std::vector<int32_t> boundaries, kinds;
    if (committedCount > 0 && !composed.empty()) {
      boundaries.push_back(0);
      kinds.push_back(win::ATTR_CONVERTED);
    }
    for (std::size_t i = 0; i < runs.attributes.size(); ++i) {
      boundaries.push_back(runs.boundaries[i] + committedCount);
      kinds.push_back(runs.attributes[i]);
    }
    if (kinds.empty())
      return events.inputMethodEvent(kInputMethodEvent, text.data(), static_cast<int>(text.size()),
                                     nullptr, committedCount, caret);
    // The composition's last boundary closes the list; without runs of its own
    // the committed run ends with the committed text.
    boundaries.push_back(runs.attributes.empty() ? committedCount
                                                 : static_cast<int32_t>(text.size()));
    std::vector<int32_t> perUnit(text.size(), 0);
    for (std::size_t run = 0; run < kinds.size(); ++run) {
      for (int32_t i = boundaries[run]; i < boundaries[run + 1]; ++i)
        perUnit[static_cast<std::size_t>(i)] = kinds[run];
    }
    return events.inputMethodEvent(kInputMethodEvent, text.data(), static_cast<int>(text.size()),
                                   perUnit.data(), committedCount, caret);
  } catch (const std::bad_alloc&) {
    events.throwOutOfMemory();
  } catch (...) {
    events.throwInternal();
  }
  return nullptr;
}

}  // namespace vostan
