// Shared fixture of the movie tests: sinks that record warnings and turn
// fatal errors into exceptions, tracked memory, and a few inspection helpers.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "movie/dd.h"
#include "swf_writer.h"

struct FatalError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

class MovieTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Opens and runs the opening step; fails the test if the parse fails.
  ddMovie* open(const swf::Bytes& file, int width = 550, int height = 400);
  // A stream over `file` with the header and blocks parsed; -1 or 0 in `result`.
  ddStream* parse(const swf::Bytes& file, int* result = nullptr);
  // A stream positioned at the start of `bytes`, for the value readers.
  ddStream* streamOver(const swf::Bytes& bytes);

  static std::vector<std::string>& warnings();

 public:
  static std::vector<std::string>& warningsStore();

 protected:
  std::vector<std::unique_ptr<swf::Bytes>> files_;
  std::vector<ddMovie*> movies_;
  std::vector<ddStream*> streams_;
  bool fatal_ = false;

 private:
  ddSink oldWarn_ = nullptr, oldFatal_ = nullptr;
};

// The placements of a frame as (depth, character) pairs.
std::vector<ddPlacement*> placements(const ddTimeline* t, int frame);
ddInstance* instanceAt(ddClip* clip, int depth);
std::vector<ddInstance*> instances(ddClip* clip);
// DefineShape of a square `size` twips wide with one red fill on its fill1 side.
swf::Bytes squareShape(int id, int type = 2, int size = 100);
