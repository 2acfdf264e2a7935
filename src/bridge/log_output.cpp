// The library's log lines reach the console one line at a time: every write
// the library makes to standard output or error is flushed at once, so a line
// lands in order with what Java prints, also through a pipe. The link routes
// the library's own calls of these functions here (and only the library's);
// the text is passed on unchanged. While the log is switched off they print
// nothing.
#include "bridge/log_output.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>

namespace {
std::atomic<bool> logOn{true};

bool console(FILE* stream) {
  return stream == stdout || stream == stderr;
}
}  // namespace

namespace vostan {
void setLogEnabled(bool on) {
  logOn = on;
}
bool logEnabled() {
  return logOn;
}
}  // namespace vostan

extern "C" {

int __real_vfprintf(FILE* stream, const char* format, va_list args);
int __real_fputs(const char* text, FILE* stream);
int __real_puts(const char* text);
int __real_fputc(int c, FILE* stream);
int __real_putchar(int c);
size_t __real_fwrite(const void* data, size_t size, size_t count, FILE* stream);

#define VOSTAN_PASS(stream, call)      \
  do {                                 \
    if (!console(stream)) return call; \
    if (!logOn) return 0;              \
    auto result = call;                \
    std::fflush(stream);               \
    return result;                     \
  } while (0)

int __wrap_vfprintf(FILE* stream, const char* format, va_list args) {
  VOSTAN_PASS(stream, __real_vfprintf(stream, format, args));
}
int __wrap_vprintf(const char* format, va_list args) {
  VOSTAN_PASS(stdout, __real_vfprintf(stdout, format, args));
}
int __wrap_fprintf(FILE* stream, const char* format, ...) {
  va_list args;
  va_start(args, format);
  const int n = __wrap_vfprintf(stream, format, args);
  va_end(args);
  return n;
}
int __wrap_printf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  const int n = __wrap_vfprintf(stdout, format, args);
  va_end(args);
  return n;
}
int __wrap_fputs(const char* text, FILE* stream) {
  VOSTAN_PASS(stream, __real_fputs(text, stream));
}
int __wrap_puts(const char* text) {
  VOSTAN_PASS(stdout, __real_puts(text));
}
int __wrap_fputc(int c, FILE* stream) {
  VOSTAN_PASS(stream, __real_fputc(c, stream));
}
int __wrap_putchar(int c) {
  VOSTAN_PASS(stdout, __real_putchar(c));
}
size_t __wrap_fwrite(const void* data, size_t size, size_t count, FILE* stream) {
  VOSTAN_PASS(stream, __real_fwrite(data, size, count, stream));
}
}
