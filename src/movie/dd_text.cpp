// Fonts, static text and edit text: the block readers and the placed texts,
// which draw one render per glyph.
#include "movie/dd_text.h"

#include <cstring>
#include <initializer_list>

namespace {

constexpr ddColor kTextBlack = 0xFF000000u;

ddFont* asFont(ddCharacter* c) {
  return c && c->type == ddCharacterFont ? reinterpret_cast<ddFont*>(c) : nullptr;
}

void fontDestroy(ddCharacter* c) {
  ddFont* f = reinterpret_cast<ddFont*>(c);
  for (int32_t i = 0; i < f->glyphCount; i++) ddShape_destroy(f->glyphs[i]);
  ddFree(f->glyphs);
  ddFree(f->advances);
  ddFree(f->name);
  ddFree(f);
}

// A field of n bits where n may exceed 32: the low 32 bits are kept.
uint32_t readWide(ddStream* s, int n) {
  while (n > 32) {
    int take = n - 32 > 32 ? 32 : n - 32;
    ddStream_readBits(s, take);
    n -= take;
  }
  return ddStream_readBits(s, n);
}

int32_t readWideSigned(ddStream* s, int n) {
  if (n <= 32) return ddStream_readSBits(s, n);
  return int32_t(readWide(s, n));
}

ddFixed twipsToFixed(int32_t v) {
  return ddFixed_fromTwips(v);
}

// Fonts' layout values: twips to 1/1024 pixel.
ddFixed layoutValue(ddStream* s) {
  return ddStream_readS16(s) * 1024 / 20;
}

ddTextRecord* newRecord() {
  ddTextRecord* r = static_cast<ddTextRecord*>(ddCalloc(1, sizeof(ddTextRecord)));
  r->color = kTextBlack;
  r->height = 1024;
  return r;
}

void appendGlyph(ddTextRecord* r, int32_t glyph, ddFixed advance) {
  if (r->glyphCount == r->capacity) {
    r->capacity = r->capacity ? r->capacity * 2 : 16;
    r->glyphIds =
        static_cast<int32_t*>(ddRealloc(r->glyphIds, size_t(r->capacity) * sizeof(int32_t)));
    r->advances =
        static_cast<ddFixed*>(ddRealloc(r->advances, size_t(r->capacity) * sizeof(ddFixed)));
  }
  r->glyphIds[r->glyphCount] = glyph;
  r->advances[r->glyphCount] = advance;
  r->glyphCount++;
  r->width = ddWrap(int64_t(r->width) + advance);
}

void textDestroy(ddCharacter* c) {
  ddTextCharacter* t = reinterpret_cast<ddTextCharacter*>(c);
  for (ddTextRecord *r = t->records, *next; r; r = next) {
    next = r->next;
    ddFree(r->glyphIds);
    ddFree(r->advances);
    ddFree(r);
  }
  ddFree(t);
}

void editTextDestroy(ddCharacter* c) {
  ddEditTextCharacter* t = reinterpret_cast<ddEditTextCharacter*>(c);
  ddFree(t->text);
  ddFree(t->variable);
  ddFree(t);
}

[[noreturn]] void notAFont() {
  ddFatal("Selected character isn't a font!\n");
}

// Glyph lists of placed texts

void addEntry(ddGlyphEntry** entries, int32_t* count, const ddShapeInstanceOps* ops,
              const ddShape* shape, ddColor colour, int32_t height, ddFixed x, ddFixed y) {
  // Grown in powers of two: the count is a power of two exactly when full.
  if ((*count & (*count - 1)) == 0)
    *entries = static_cast<ddGlyphEntry*>(
        ddRealloc(*entries, size_t(*count ? *count * 2 : 1) * sizeof(ddGlyphEntry)));
  ddGlyphEntry& e = (*entries)[(*count)++];
  e.shape = shape;
  e.render = nullptr;
  if (ops->createRender) {
    e.render = ops->createRender(const_cast<ddShape*>(shape));
    ops->setTextColor(e.render, colour);
  }
  e.height = height;
  e.x = x;
  e.y = y;
}

void freeEntries(const ddShapeInstanceOps* ops, ddGlyphEntry* entries, int32_t count) {
  for (int32_t i = 0; i < count; i++)
    if (entries[i].render) ops->destroyRender(entries[i].render);
  ddFree(entries);
}

// The glyph square under the text's height, at (x, y).
ddMatrix glyphMatrix(int32_t height, ddFixed x, ddFixed y) {
  return ddMatrix{height, 0, 0, height, x, y};
}

// Brings every glyph to its matrix under `m` and gives the union of their
// bounds. Without renders the glyphs' boxes stand in.
ddRect updateGlyphs(const ddShapeInstanceOps* ops, ddGlyphEntry* entries, int32_t count,
                    ddRectList* dirty, const ddMatrix& m, ddMatrix (*place)(const ddGlyphEntry&)) {
  ddRect bounds = ddRect_empty();
  for (int32_t i = 0; i < count; i++) {
    ddMatrix gm = ddMatrix_concat(m, place(entries[i]));
    ddRect b = entries[i].render ? ops->updateRender(entries[i].render, dirty, gm)
                                 : ddShape_boxUnder(entries[i].shape, gm);
    bounds = ddRect_union(bounds, b);
  }
  return bounds;
}

void drawGlyphs(const ddShapeInstanceOps* ops, ddGlyphEntry* entries, int32_t count,
                ddSurface* surface, const ddMatrix& m, const ddCxform& cx, const ddRect& clip,
                ddMatrix (*place)(const ddGlyphEntry&)) {
  for (int32_t i = 0; i < count; i++)
    if (entries[i].render)
      ops->drawRender(entries[i].render, surface, ddMatrix_concat(m, place(entries[i])), cx, clip);
}

// Box-only updates have no render to report changes: the whole box moves.
void boxDirty(ddInstance* self, ddRectList* dirty, const ddRect& now, bool boxes) {
  if (boxes && dirty && (std::memcmp(&now, &self->bounds, sizeof now) != 0)) {
    ddRectList_add(dirty, self->bounds);
    ddRectList_add(dirty, now);
  }
  self->bounds = now;
}

// Static text

typedef ddMatrix (*Placement)(const ddGlyphEntry& e);

// Static and edit text begin alike: the head, then the glyphs.
ddGlyphList* glyphsOf(ddInstance* self) {
  return &reinterpret_cast<ddTextInstance*>(self)->glyphs;
}

void updateGlyphList(ddInstance* self, ddRectList* dirty, const ddMatrix* parent, Placement place) {
  ddGlyphList* g = glyphsOf(self);
  ddMatrix m = ddMatrix_concat(*parent, self->matrix);
  ddRect now = updateGlyphs(g->ops, g->entries, g->count, dirty, m, place);
  boxDirty(self, dirty, now, !g->ops->createRender);
}

void drawGlyphList(ddInstance* self, ddSurface* surface, const ddMatrix* parent,
                   const ddCxform* parentCxform, const ddRect* clip, Placement place) {
  ddGlyphList* g = glyphsOf(self);
  ddMatrix m = ddMatrix_concat(*parent, self->matrix);
  ddCxform cx = ddCxform_concat(*parentCxform, self->cxform);
  drawGlyphs(g->ops, g->entries, g->count, surface, m, cx, *clip, place);
}

// Static text

ddMatrix textPlace(const ddGlyphEntry& e) {
  return glyphMatrix(e.height, e.x, e.y);
}

void textUpdate(ddInstance* self, ddRectList* dirty, const ddMatrix* parent) {
  updateGlyphList(self, dirty, parent, textPlace);
}

void textDraw(ddInstance* self, ddSurface* surface, ddRectList*, const ddMatrix* parent,
              const ddCxform* parentCxform, const ddRect* clip) {
  drawGlyphList(self, surface, parent, parentCxform, clip, textPlace);
}

void textInstanceDestroy(ddInstance* self) {
  ddGlyphList* g = glyphsOf(self);
  freeEntries(g->ops, g->entries, g->count);
  ddFree(self);
}

// A zeroed text instance of type T, its renders to come from the current table.
template <typename T>
T* newGlyphInstance(int32_t type, ddCharacter* character, decltype(ddInstance::update) update,
                    decltype(ddInstance::draw) draw, decltype(ddInstance::destroy) destroy) {
  T* t = static_cast<T*>(ddCalloc(1, sizeof(T)));
  ddInstance_init(&t->head, type, character);
  t->head.update = update;
  t->head.draw = draw;
  t->head.destroy = destroy;
  t->glyphs.ops = ddShapeInstance_ops();
  return t;
}

ddInstance* textInstantiate(ddMovie*, ddCharacter* character) {
  ddTextCharacter* c = reinterpret_cast<ddTextCharacter*>(character);
  ddTextInstance* t = newGlyphInstance<ddTextInstance>(ddCharacterText, character, textUpdate,
                                                       textDraw, textInstanceDestroy);
  ddGlyphList* g = &t->glyphs;
  for (const ddTextRecord* r = c->records; r; r = r->next) {
    if (!r->font) continue;
    ddFixed pen = r->x;
    for (int32_t k = 0; k < r->glyphCount; k++) {
      int32_t index = r->glyphIds[k];
      // An index past the font, or an empty glyph, draws nothing.
      const ddShape* shape =
          index >= 0 && index < r->font->glyphCount ? r->font->glyphs[index] : nullptr;
      if (shape) addEntry(&g->entries, &g->count, g->ops, shape, r->color, r->height, pen, r->y);
      pen = ddWrap(int64_t(pen) + r->advances[k]);
    }
  }
  return &t->head;
}

// Edit text

ddMatrix editPlace(const ddGlyphEntry& e) {
  // 38/1024 of the height puts the baseline at about 0.74 of it.
  return glyphMatrix(e.height, ddMulShift(e.x, e.height), ddWrap(int64_t(e.height) * 38));
}

void layOut(ddEditTextInstance* t) {
  ddGlyphList* g = &t->glyphs;
  freeEntries(g->ops, g->entries, g->count);
  g->entries = nullptr;
  g->count = 0;
  const ddEditTextCharacter* c = t->character;
  const ddFont* font = c->font;
  ddFixed pen = 0;
  for (const char* p = t->text; *p; p++) {
    int32_t index = font->codeTable[uint8_t(*p)];
    if (index < 0 || index >= font->glyphCount) continue;
    const ddShape* shape = font->glyphs[index];
    if (!shape) continue;
    addEntry(&g->entries, &g->count, g->ops, shape, c->color, c->height, pen, 0);
    ddFixed advance = font->advances[index];
    if (advance == 0 && !ddRect_isEmpty(shape->bounds))
      advance = ddWrap(int64_t(shape->bounds.xMax) - shape->bounds.xMin);
    pen = ddWrap(int64_t(pen) + advance);
  }
  t->dirty = 0;
}

void editTextUpdate(ddInstance* self, ddRectList* dirty, const ddMatrix* parent) {
  ddEditTextInstance* t = reinterpret_cast<ddEditTextInstance*>(self);
  if (t->dirty) layOut(t);
  updateGlyphList(self, dirty, parent, editPlace);
}

void editTextDraw(ddInstance* self, ddSurface* surface, ddRectList*, const ddMatrix* parent,
                  const ddCxform* parentCxform, const ddRect* clip) {
  drawGlyphList(self, surface, parent, parentCxform, clip, editPlace);
}

void editTextInstanceDestroy(ddInstance* self) {
  ddEditTextInstance* t = reinterpret_cast<ddEditTextInstance*>(self);
  freeEntries(t->glyphs.ops, t->glyphs.entries, t->glyphs.count);
  ddFree(t->text);
  ddFree(t);
}

ddInstance* editTextInstantiate(ddMovie*, ddCharacter* character) {
  ddEditTextCharacter* c = reinterpret_cast<ddEditTextCharacter*>(character);
  ddEditTextInstance* t = newGlyphInstance<ddEditTextInstance>(
      ddCharacterEditText, character, editTextUpdate, editTextDraw, editTextInstanceDestroy);
  t->character = c;
  t->text = ddStrdup(c->text ? c->text : "");
  t->dirty = 1;
  return &t->head;
}

}  // namespace

ddFont* ddFont_create(int32_t glyphCount) {
  ddFont* f = static_cast<ddFont*>(ddCalloc(1, sizeof(ddFont)));
  f->head.type = ddCharacterFont;
  f->head.destroy = fontDestroy;
  f->glyphCount = glyphCount > 0 ? glyphCount : 0;
  f->glyphs = static_cast<ddShape**>(ddCalloc(size_t(f->glyphCount) + 1, sizeof(ddShape*)));
  f->advances = static_cast<ddFixed*>(ddCalloc(size_t(f->glyphCount) + 1, sizeof(ddFixed)));
  f->codeTableSize = 256;
  for (int32_t& g : f->codeTable) g = -1;
  return f;
}

int ddStream_readGlyphRecord(ddStream* s, ddShape* shape, int fillBits, int lineBits) {
  if (ddStream_readBits(s, 1)) {
    int32_t cx, cy;
    if (ddStream_readEdge(s, &cx, &cy))
      ddShape_lineTo(shape, twipsToFixed(s->curX), twipsToFixed(s->curY));
    else
      ddShape_curveTo(shape, twipsToFixed(cx), twipsToFixed(cy), twipsToFixed(s->curX),
                      twipsToFixed(s->curY));
    return 1;
  }
  // New styles have no place in a glyph: the record ends here.
  if (ddStream_readBits(s, 1)) return 1;
  uint32_t flags = ddStream_readBits(s, 4);
  if (flags == 0) return 0;
  if (flags & 1) {
    int w = int(ddStream_readBits(s, 5));
    s->curX = ddStream_readSBits(s, w);
    s->curY = ddStream_readSBits(s, w);
    ddShape_moveTo(shape, twipsToFixed(s->curX), twipsToFixed(s->curY));
  }
  // Glyphs have one paint, index 0, whatever style they name.
  for (int32_t type : {ddRecordFill0, ddRecordFill1}) {
    if (!(flags & (type == ddRecordFill0 ? 2 : 4))) continue;
    ddStream_readBits(s, fillBits);
    ddShapeRecord* r = ddShape_addRecord(shape);
    *r = ddShapeRecord{type, {0, 0, 0, 0}};
  }
  if (flags & 8) {
    ddStream_readBits(s, lineBits);
    ddShapeRecord* r = ddShape_addRecord(shape);
    *r = ddShapeRecord{ddRecordLine, {0, 0, 0, 0}};
  }
  return 1;
}

namespace {

// The glyphs of a font block, glyph i from `offsets[i]` to `offsets[i + 1]`
// bytes past the offset table. A DefineFont glyph ends where its bytes do; a
// DefineFont2 glyph aligns after its field widths, ends at its end record,
// and the rest of its bytes are passed.
void readGlyphs(ddStream* s, ddFont* font, const int64_t* offsets, bool font2) {
  const int64_t base = int64_t(s->pos);
  s->curX = s->curY = 0;
  for (int32_t i = 0; i < font->glyphCount; i++) {
    ddStream_align(s);
    int fillBits = int(ddStream_readBits(s, 4));
    int lineBits = int(ddStream_readBits(s, 4));
    if (font2) ddStream_align(s);
    // An empty glyph stays absent: DefineFont looks at the glyph's end here,
    // DefineFont2 at its start.
    if (int64_t(s->pos) == base + offsets[font2 ? i : i + 1]) continue;
    const int64_t end = base + offsets[i + 1];
    ddShape* shape = ddShape_create();
    while (int64_t(s->pos) < end && !ddStream_exhausted(s))
      if (!ddStream_readGlyphRecord(s, shape, fillBits, lineBits) && font2) break;
    font->glyphs[i] = shape;
    if (!font2) continue;
    ddStream_align(s);
    if (int64_t(s->pos) < end) ddStream_skip(s, end - int64_t(s->pos));
  }
}

}  // namespace

void ddStream_readFontBlock(ddStream* s, ddTimeline* timeline, int32_t length) {
  int32_t id = ddStream_readU16(s);
  int32_t first = ddStream_readU16(s);
  int32_t count = first / 2;
  ddFont* font = ddFont_create(count);
  // Glyph starts counted from the end of the offset table; the last glyph
  // ends with the block.
  int64_t* offsets = static_cast<int64_t*>(ddMalloc(size_t(count + 1) * sizeof(int64_t)));
  offsets[0] = 0;
  for (int32_t i = 1; i < count; i++) offsets[i] = int64_t(ddStream_readU16(s)) - first;
  if (count > 0) offsets[count] = int64_t(length) - (2 * int64_t(count) + 2);
  readGlyphs(s, font, offsets, false);
  ddFree(offsets);
  ddDictionary_put(timeline, id, &font->head);
}

void ddStream_readFont2Block(ddStream* s, ddTimeline* timeline, int32_t) {
  int32_t id = ddStream_readU16(s);
  uint32_t flags = ddStream_readU8(s);
  ddStream_readU8(s);  // language
  ddStream_skip(s, ddStream_readU8(s));
  int32_t count = ddStream_readU16(s);
  ddFont* font = ddFont_create(count);
  const bool wide = flags & 8;
  const int64_t tableSize = wide ? 4 * int64_t(count) + 4 : 2 * int64_t(count) + 2;
  int64_t* offsets = static_cast<int64_t*>(ddMalloc(size_t(count + 1) * sizeof(int64_t)));
  for (int32_t i = 0; i <= count; i++)
    offsets[i] = int64_t(wide ? ddStream_readU32(s) : ddStream_readU16(s)) - tableSize;
  readGlyphs(s, font, offsets, true);
  ddFree(offsets);
  ddDictionary_put(timeline, id, &font->head);
  const bool wideCodes = flags & 4;
  auto code = [&] { return wideCodes ? ddStream_readU16(s) : ddStream_readU8(s); };
  for (int32_t i = 0; i < count; i++) {
    uint32_t c = code();
    if (c < 256) font->codeTable[c] = i;
  }
  if (!(flags & 128)) return;
  font->ascent = layoutValue(s);
  font->descent = layoutValue(s);
  font->leading = layoutValue(s);
  for (int32_t i = 0; i < count; i++) font->advances[i] = layoutValue(s);
  for (int32_t i = 0; i < count && !ddStream_exhausted(s); i++) ddStream_readRect(s);
  // Kerning is read past and has no effect.
  int32_t kernings = ddStream_readU16(s);
  for (int32_t i = 0; i < kernings && !ddStream_exhausted(s); i++) {
    code();
    code();
    ddStream_readS16(s);
  }
}

void ddStream_readFontInfoBlock(ddStream* s, ddTimeline* timeline, int32_t length) {
  int32_t id = ddStream_readU16(s);
  int32_t nameLength = ddStream_readU8(s);
  ddFont* font = asFont(ddDictionary_get(timeline, id));
  if (!font) {
    ddWarn("fontInfo found for non-font character");
    return;
  }
  char* name = static_cast<char*>(ddMalloc(size_t(nameLength) + 1));
  for (int32_t i = 0; i < nameLength; i++) name[i] = char(ddStream_readU8(s));
  name[nameLength] = 0;
  ddFree(font->name);
  font->name = name;
  uint32_t flags = ddStream_readU8(s);
  const bool wide = flags & 1;
  int32_t codes = length - nameLength - 4;
  if (wide) codes /= 2;
  for (int32_t i = 0; i < codes && !ddStream_exhausted(s); i++) {
    uint32_t c = wide ? ddStream_readU16(s) : ddStream_readU8(s);
    if (c < 256) font->codeTable[c] = i;
  }
}

void ddStream_readFontInfo2Block(ddStream* s, ddTimeline* timeline, int32_t length) {
  const uint64_t end = s->pos + uint64_t(int64_t(length));
  int32_t id = ddStream_readU16(s);
  ddStream_readU8(s);  // name length
  if (!asFont(ddDictionary_get(timeline, id))) {
    ddWarn("fontInfo found for non-font character");
    return;
  }
  // Name, flags, language and codes: read past, the font stays as it is.
  if (s->pos < end) ddStream_skip(s, int64_t(end - s->pos));
}

void ddStream_readTextBlock(ddStream* s, ddTimeline* timeline, int blockType, int32_t length) {
  const uint64_t end = s->pos + uint64_t(int64_t(length));
  int32_t id = ddStream_readU16(s);
  ddTextCharacter* c = static_cast<ddTextCharacter*>(ddCalloc(1, sizeof(ddTextCharacter)));
  c->head.type = ddCharacterText;
  c->head.instantiate = textInstantiate;
  c->head.destroy = textDestroy;
  c->records = c->tail = newRecord();
  c->bounds = ddStream_readRect(s);
  ddStream_align(s);
  c->matrix = ddStream_readMatrix(s);
  // Stored before the records, so that a fatal record leaves nothing unowned.
  ddDictionary_put(timeline, id, &c->head);
  int glyphBits = ddStream_readU8(s);
  int advanceBits = ddStream_readU8(s);
  while (s->pos < end && !ddStream_exhausted(s)) {
    uint32_t b = ddStream_readU8(s);
    if (b == 0) break;
    if (!(b & 0x80)) {
      for (uint32_t k = 0; k < (b & 127); k++) {
        int32_t glyph = int32_t(readWide(s, glyphBits));
        ddFixed advance = twipsToFixed(readWideSigned(s, advanceBits));
        appendGlyph(c->tail, glyph, advance);
      }
      continue;
    }
    if (c->records->glyphCount > 0) {
      // A new style after glyphs continues from where the last run ended.
      ddTextRecord* last = c->tail;
      ddTextRecord* r = newRecord();
      r->font = last->font;
      r->color = last->color;
      r->height = last->height;
      r->x = r->width = last->width;
      r->y = last->y;
      last->next = r;
      c->tail = r;
    }
    ddTextRecord* r = c->tail;
    if (b & 8) {
      ddCharacter* f = ddDictionary_get(timeline, ddStream_readU16(s));
      if (f && f->type != ddCharacterFont) notAFont();
      r->font = asFont(f);
    }
    if (b & 4) r->color = blockType == 33 ? ddStream_readRGBA(s) : ddStream_readRGB(s);
    if (b & 1) r->x = r->width = twipsToFixed(ddStream_readS16(s));
    if (b & 2) r->y = twipsToFixed(ddStream_readS16(s));
    if (b & 8) r->height = ddStream_readU16(s);
  }
}

void ddStream_readEditTextBlock(ddStream* s, ddTimeline* timeline, int32_t length) {
  const uint64_t end = s->pos + uint64_t(int64_t(length));
  int32_t id = ddStream_readU16(s);
  ddRect bounds = ddStream_readRect(s);
  int32_t flags = ddStream_readU16(s);
  ddFont* font = asFont(ddDictionary_get(timeline, ddStream_readU16(s)));
  if (!font) notAFont();
  ddEditTextCharacter* c =
      static_cast<ddEditTextCharacter*>(ddCalloc(1, sizeof(ddEditTextCharacter)));
  c->head.type = ddCharacterEditText;
  c->head.instantiate = editTextInstantiate;
  c->head.destroy = editTextDestroy;
  c->bounds = bounds;
  c->flags = flags;
  c->font = font;
  c->height = ddStream_readU16(s);
  c->color = ddStream_readRGBA(s);
  if (flags & 2) c->maxLength = ddStream_readU16(s);
  c->align = ddStream_readU8(s);
  c->leftMargin = ddStream_readU16(s);
  c->rightMargin = ddStream_readU16(s);
  c->indent = ddStream_readU16(s);
  c->leading = ddStream_readU16(s);
  c->variable = ddStream_readString(s);
  if (s->pos < end) c->text = ddStream_readString(s);
  if (s->pos < end) ddStream_skip(s, int64_t(end - s->pos));
  ddDictionary_put(timeline, id, &c->head);
}
