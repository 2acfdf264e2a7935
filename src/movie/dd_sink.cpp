// The warning and fatal sinks.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "movie/dd_base.h"

namespace {

void printLine(const char* message) {
  std::printf("%s\n", message);
  std::fflush(stdout);
}

void printAndExit(const char* message) {
  printLine(message);
  std::exit(-1);
}

ddSink warnSink = printLine;
ddSink fatalSink = printAndExit;

}  // namespace

ddSink ddSetWarnSink(ddSink sink) {
  ddSink old = warnSink;
  warnSink = sink ? sink : printLine;
  return old;
}

ddSink ddSetFatalSink(ddSink sink) {
  ddSink old = fatalSink;
  fatalSink = sink ? sink : printAndExit;
  return old;
}

void ddWarn(const char* format, ...) {
  char text[512];
  va_list args;
  va_start(args, format);
  std::vsnprintf(text, sizeof text, format, args);
  va_end(args);
  warnSink(text);
}

void ddFatal(const char* format, ...) {
  char text[512];
  va_list args;
  va_start(args, format);
  std::vsnprintf(text, sizeof text, format, args);
  va_end(args);
  fatalSink(text);
  std::exit(-1);
}
