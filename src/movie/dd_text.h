// Fonts, static text and edit text. Text is drawn as one render per glyph
// under a small matrix, each with one solid paint in the text's colour; a pen
// moves along one line and there is no other layout.
#pragma once

#include "movie/dd_display.h"

struct ddFont {
  ddCharacter head;
  int32_t glyphCount;
  ddShape** glyphs;   // owned; an entry may be absent
  ddFixed* advances;  // 0 unless the font block had layout data
  ddFixed ascent, descent, leading;
  char* name;  // owned, may be absent
  int32_t codeTableSize;
  int32_t codeTable[256];  // character code to glyph index, -1 for none
};

struct ddTextRecord {
  ddTextRecord* next;
  ddFont* font;  // not owned, may be absent
  ddColor color;
  int32_t height;  // raw twips: a scale against the 1024-unit glyph square
  ddFixed x, y;    // pen start
  ddFixed width;   // where the pen stands after the advances
  int32_t glyphCount;
  int32_t* glyphIds;  // owned
  ddFixed* advances;  // owned
  int32_t capacity;   // of the two arrays
};

struct ddTextCharacter {
  ddCharacter head;
  ddTextRecord *records, *tail;  // records in file order
  ddRect bounds;
  ddMatrix matrix;  // as read; instances do not apply it
};

struct ddEditTextCharacter {
  ddCharacter head;
  ddRect bounds;
  int32_t flags;
  int32_t align;
  ddColor color;
  ddFont* font;
  int32_t height;  // raw twips
  int32_t maxLength;
  char* text;      // owned, may be absent
  char* variable;  // owned
  int32_t leftMargin, rightMargin, leading, indent;
};

// One glyph of a placed text: its render (absent without a rasteriser), the
// shape it draws, and where.
struct ddGlyphEntry {
  ddRender* render;
  const ddShape* shape;
  int32_t height;
  ddFixed x, y;
};

// The glyphs of a placed text, drawn with the renders of one table.
struct ddGlyphList {
  const ddShapeInstanceOps* ops;  // the table its renders were made with
  int32_t count;
  ddGlyphEntry* entries;
};

struct ddTextInstance {
  ddInstance head;
  ddGlyphList glyphs;
};

// Shares its first two fields with ddTextInstance.
struct ddEditTextInstance {
  ddInstance head;
  ddGlyphList glyphs;  // x holds the pen offset, y is unused
  ddEditTextCharacter* character;
  char* text;     // copy of the initial text, or empty
  uint8_t dirty;  // lay out again at the next update
};

ddFont* ddFont_create(int32_t glyphCount);
// One glyph record into `shape`; 0 at the end of the glyph.
int ddStream_readGlyphRecord(ddStream* s, ddShape* shape, int fillBits, int lineBits);

// Blocks 10, 48, 13, 62, 11 and 33, 37.
void ddStream_readFontBlock(ddStream* s, ddTimeline* timeline, int32_t length);
void ddStream_readFont2Block(ddStream* s, ddTimeline* timeline, int32_t length);
void ddStream_readFontInfoBlock(ddStream* s, ddTimeline* timeline, int32_t length);
void ddStream_readFontInfo2Block(ddStream* s, ddTimeline* timeline, int32_t length);
void ddStream_readTextBlock(ddStream* s, ddTimeline* timeline, int blockType, int32_t length);
void ddStream_readEditTextBlock(ddStream* s, ddTimeline* timeline, int32_t length);
