#pragma once
// How the pump makes Java event objects. The library's implementation calls
// the static factories of the class the native was called on; tests record.
#include <jni.h>

#include <cstdint>
#include <string>
#include <vector>

namespace vostan {

class JavaEvents {
 public:
  virtual jobject keyEvent(int id, int modifiers, int keyCode, uint16_t character) = 0;
  virtual jobject mouseEvent(int id, int modifiers, int x, int y, int clickCount, bool popup,
                             int rotation) = 0;
  virtual jobject applicationEvent(int id) = 0;
  virtual jobject dropTargetEvent(int id, int keyState, int x, int y, jobject files) = 0;
  // `text` null makes a null string; `attributes` null a null array, else one
  // entry per unit of text.
  virtual jobject inputMethodEvent(int id, const char16_t* text, int length,
                                   const int32_t* attributes, int committedCount, int caret) = 0;
  // Leave an exception pending for Java to see when the native returns.
  virtual void throwOutOfMemory() = 0;
  virtual void throwInternal() = 0;
  // A new java.io.File[] of the paths, held as a global reference.
  virtual jobject newFileArray(const std::vector<std::string>& paths) = 0;
  virtual jobject newGlobalRef(jobject) = 0;
  virtual void deleteGlobalRef(jobject) = 0;

 protected:
  ~JavaEvents() = default;
};

// The factories of the WinConsole class, through JNI.
class JniEvents final : public JavaEvents {
 public:
  JniEvents(JNIEnv* env, jclass cls) : env_(env), cls_(cls) {}
  jobject keyEvent(int id, int modifiers, int keyCode, uint16_t character) override;
  jobject mouseEvent(int id, int modifiers, int x, int y, int clickCount, bool popup,
                     int rotation) override;
  jobject applicationEvent(int id) override;
  jobject dropTargetEvent(int id, int keyState, int x, int y, jobject files) override;
  jobject inputMethodEvent(int id, const char16_t* text, int length, const int32_t* attributes,
                           int committedCount, int caret) override;
  void throwOutOfMemory() override;
  void throwInternal() override;
  jobject newFileArray(const std::vector<std::string>& paths) override;
  jobject newGlobalRef(jobject o) override { return env_->NewGlobalRef(o); }
  void deleteGlobalRef(jobject o) override { env_->DeleteGlobalRef(o); }

 private:
  jobject checked(jobject result);
  JNIEnv* env_;
  jclass cls_;
};

}  // namespace vostan
