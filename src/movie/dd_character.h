// Characters (the movie's definitions), the dictionary, and parsed shapes.
#pragma once

#include "movie/dd_stream.h"
#include "movie/dd_surface.h"

struct ddCharacter;
struct ddInstance;
struct ddMovie;
struct ddTimeline;

enum ddCharacterType {
  ddCharacterShape = 0,
  ddCharacterMorph = 1,
  ddCharacterBitmap = 2,
  ddCharacterText = 4,
  ddCharacterFont = 5,
  ddCharacterTimeline = 6,
  ddCharacterEditText = 7,
};

// Common head of every definition.
struct ddCharacter {
  int32_t type;
  // Makes a display object of this character; absent for what cannot be placed.
  ddInstance* (*instantiate)(ddMovie* movie, ddCharacter* character);
  // Frees the definition and all it owns.
  void (*destroy)(ddCharacter* character);
};

// Characters by 16-bit id, one table for the whole movie (sprites share it).
struct ddDictionary {
  int32_t count;
  ddCharacter** entries;
  // Characters whose id was later given to another. Placements may still
  // point at them, so they live as long as the dictionary.
  int32_t retiredCount;
  ddCharacter** retired;
};

ddDictionary* ddDictionary_create();
// Destroys every character it holds.
void ddDictionary_destroy(ddDictionary* dictionary);
void ddDictionary_put(ddTimeline* timeline, int32_t id, ddCharacter* character);
ddCharacter* ddDictionary_get(const ddTimeline* timeline, int32_t id);

// Parsed shapes.

enum ddShapeRecordType {
  ddRecordEnd = 0,
  ddRecordMove = 1,
  ddRecordFill0 = 2,
  ddRecordFill1 = 3,
  ddRecordLine = 4,
  ddRecordGroup = 5,
  ddRecordLineTo = 8,
  ddRecordCurveTo = 9,
};

struct ddShapeRecord {
  int32_t type;
  int32_t data[4];
};

struct ddGradientStop {
  uint16_t pos;  // ratio * 256
  uint8_t red, green, blue, alpha;
  int32_t dRed, dGreen, dBlue, dAlpha;  // change per unit of pos, 16 fraction bits
};

struct ddGradient {
  ddGradientStop* stops;
  int32_t count;
  int32_t cursor;  // stop of the last lookup; a cache only
};

enum ddFillKind {
  ddFillSolid = 1,
  ddFillRadial = 2,
  ddFillLinear = 3,
  ddFillClippedBitmap = 4,
  ddFillTiledBitmap = 5,
};

struct ddFill {
  int32_t kind;
  union {
    ddColor color;         // solid
    ddGradient* gradient;  // radial, linear: owned
    ddSurface* bitmap;     // bitmaps: not owned
  } data;
  ddMatrix matrix;
};

struct ddShape {
  ddFill* fills;
  int32_t fillCount;
  ddShapeRecord* records;
  int32_t recordCount;
  int32_t lineWidth;  // raw twips, last selected while reading
  ddRect bounds;
  uint8_t hasCurves;
  int32_t fillCapacity;
  int32_t recordCapacity;
};

struct ddLineStyle {
  int32_t width;  // raw twips
  ddColor color;
};

struct ddLineArray {
  int32_t count;
  ddLineStyle* styles;
};

struct ddShapeCharacter {
  ddCharacter head;
  ddShape* shape;
};

struct ddBitmapCharacter {
  ddCharacter head;
  ddSurface* surface;
};

ddShape* ddShape_create();
void ddShape_destroy(ddShape* shape);
ddShapeRecord* ddShape_addRecord(ddShape* shape);
void ddShape_moveTo(ddShape* shape, ddFixed x, ddFixed y);
void ddShape_lineTo(ddShape* shape, ddFixed x, ddFixed y);
void ddShape_curveTo(ddShape* shape, ddFixed cx, ddFixed cy, ddFixed ax, ddFixed ay);
void ddShape_addFill(ddShape* shape, const ddFill& fill);
void ddShape_finish(ddShape* shape);

ddGradient* ddGradient_create();
void ddGradient_destroy(ddGradient* gradient);
void ddGradient_addStop(ddGradient* gradient, int ratio, ddColor colour);
// Writes stop `index` with a ratio (0 to 255) and a colour, and the deltas
// that lead to it in the stop before.
void ddGradient_writeStop(ddGradient* gradient, int32_t index, int ratio, ddColor colour);
ddColor ddGradient_colorAt(ddGradient* gradient, int32_t pos);

void ddLineArray_destroy(ddLineArray* lines);

// Style arrays. `secondShape` and `secondLines` take the end values of
// morph styles (blockType 46) and are unused otherwise.
void ddStream_readFillArray(ddStream* s, ddTimeline* timeline, int blockType, ddShape* shape,
                            ddShape* secondShape);
ddLineArray* ddStream_readLineArray(ddStream* s, int blockType, ddLineArray** secondLines);

// An edge record after its leading 1 bit: moves the stream's pen (twips) and,
// for a curve, gives the control point in twips. True for a straight edge.
bool ddStream_readEdge(ddStream* s, int32_t* cx, int32_t* cy);

ddShapeCharacter* ddShapeCharacter_create(ddShape* shape);
// Blocks 2, 22 and 32.
void ddStream_readShapeBlock(ddStream* s, ddTimeline* timeline, int blockType, int32_t length);
