#include "graphics/effect_text.h"

#include <cstring>

namespace vostan {

// Row vectors times matrices, as the rest of the layer writes its matrices:
// a matrix arrives row by row and is read by GLSL as columns, so mul(p, m)
// is m * p.
const char kEffectText[] = R"GLSL(
#define mul(a, b) ((b) * (a))

uniform mat4 mat;
uniform mat4x3 mvmat;
uniform mat4 texgenmat;
uniform vec4 unicolor = vec4(1.0, 1.0, 1.0, 1.0);
uniform vec4 shadowcolor = vec4(0.4, 0.4, 0.4, 1.0);
const vec4 whitecolor = vec4(1.0, 1.0, 1.0, 1.0);
uniform mat4x3 skinmat[29];

#pragma texture tex
#pragma texture texshadow
uniform sampler2D samtex;
uniform sampler2D samshadow;
#pragma sampler samtex - s0
#pragma sampler samshadow texshadow s1 MinFilter=POINT MagFilter=POINT AddressU=Clamp AddressV=Clamp

struct v { vec4 p; vec4 c; vec2 uv; };
struct v2 { vec4 p; vec4 d; };
struct v3 { vec4 p; vec4 c; vec2 uv; vec4 d; };
struct v4 { vec4 p; vec4 c; vec4 d; };

#ifdef VERTEX
#define VARYING out
#else
#define VARYING in
#endif
SHADE VARYING vec4 vColor;
VARYING vec2 vTexCoord;
VARYING vec4 vDepth;

#ifdef VERTEX
void emit(v o) { gl_Position = o.p; vColor = o.c; vTexCoord = o.uv; vDepth = vec4(0.0); }
void emit(v2 o) { gl_Position = o.p; vColor = vec4(1.0); vTexCoord = vec2(0.0); vDepth = o.d; }
void emit(v3 o) { gl_Position = o.p; vColor = o.c; vTexCoord = o.uv; vDepth = o.d; }
void emit(v4 o) { gl_Position = o.p; vColor = o.c; vTexCoord = vec2(0.0); vDepth = o.d; }
#else
v in_v() { v o; o.p = gl_FragCoord; o.c = vColor; o.uv = vTexCoord; return o; }
v2 in_v2() { v2 o; o.p = gl_FragCoord; o.d = vDepth; return o; }
v3 in_v3() { v3 o; o.p = gl_FragCoord; o.c = vColor; o.uv = vTexCoord; o.d = vDepth; return o; }
v4 in_v4() { v4 o; o.p = gl_FragCoord; o.c = vColor; o.d = vDepth; return o; }
#endif

// Each weight holds a bone index in its integer part and the bone's share
// in its fraction; the shares are used as they are.
vec4 skining(vec4 p, vec4 w) {
  vec4 ww = fract(w);
  vec3 r = mul(p, skinmat[int(w.x)]) * ww.x + mul(p, skinmat[int(w.y)]) * ww.y +
           mul(p, skinmat[int(w.z)]) * ww.z + mul(p, skinmat[int(w.w)]) * ww.w;
  return vec4(r, 1.0);
}

v vs1(vec4 p, vec2 uv) {
  v o;
  o.p = mul(p, mat);
  o.uv = uv;
  o.c = unicolor;
  return o;
}
v vs1w(vec4 p, vec2 uv, vec4 w) { return vs1(skining(p, w), uv); }

// Vertex colours arrive with red and blue crossed.
v vs2(vec4 p, vec4 c, vec2 uv) {
  v o;
  o.p = mul(p, mat);
  o.uv = uv;
  o.c = unicolor * c.zyxw;
  return o;
}
v vs2w(vec4 p, vec4 c, vec2 uv, vec4 w) { return vs2(skining(p, w), c, uv); }

v vsmix1(vec4 p) {
  v o;
  vec4 ep = vec4(mul(p, mvmat), 1.0);
  o.p = mul(p, mat);
  o.uv = mul(ep, texgenmat).xy;
  o.c = unicolor;
  return o;
}
v vsmix1w(vec4 p, vec4 w) { return vsmix1(skining(p, w)); }

v2 vsdepth1(vec4 p) {
  v2 o;
  vec4 sp = mul(p, mat);
  o.p = sp;
  o.d = sp;
  return o;
}
v2 vsdepth1w(vec4 p, vec4 w) { return vsdepth1(skining(p, w)); }

v3 vsshadow1(vec4 p, vec2 uv) {
  v3 o;
  vec4 ep = vec4(mul(p, mvmat), 1.0);
  o.p = mul(p, mat);
  o.uv = uv;
  o.d = mul(ep, texgenmat);
  o.d.z = o.d.z / o.d.w;
  o.c = unicolor;
  return o;
}
v3 vsshadow1w(vec4 p, vec2 uv, vec4 w) { return vsshadow1(skining(p, w), uv); }

v3 vsshadow2(vec4 p, vec4 c, vec2 uv) {
  v3 o = vsshadow1(p, uv);
  o.c = unicolor * c.zyxw;
  return o;
}

// No colour stream reads as zero and comes out white.
v4 vsdepth2(vec4 p, vec4 c, vec2 uv) {
  v4 o;
  vec4 sp = mul(p, mat);
  o.p = sp;
  o.c = mix(c, vec4(1.0), equal(c, vec4(0.0)));
  o.d = vec4(uv.x, uv.y, sp.z, sp.w);
  return o;
}
v4 vsdepth2w(vec4 p, vec4 c, vec2 uv, vec4 w) { return vsdepth2(skining(p, w), c, uv); }

vec4 psdepth1(v2 i) { return vec4(i.d.z / i.d.w); }

vec4 psshadow1(v3 i) {
  float dop = textureProj(samshadow, i.d).x;
  vec4 dif = i.c * (dop < i.d.z ? shadowcolor : whitecolor);
  return dif * texture(samtex, i.uv);
}

vec4 psdepth2(v4 i) {
  vec4 k = texture(samtex, i.d.xy) * i.c;
  return vec4(i.d.z / i.d.w, 0.0, 0.0, k.w);
}

vec4 psdepth3(v4 i) {
  vec4 k = texture(samtex, i.d.xy) * i.c;
  return vec4(i.d.z / i.d.w, 0.0, 0.0, (k.x + k.y + k.z) * k.w);
}

// Image filters (imposter effects): a screen quad through the filters below.
v vsimposter(vec4 p, vec4 c, vec2 uv) {
  v o;
  o.p = mul(p, mat);
  o.uv = uv;
  o.c = c;
  return o;
}

const vec2 b0 = vec2(-1.0, -1.0) / 1024.0;
const vec2 b1 = vec2(1.0, -1.0) / 1024.0;
const vec2 b2 = vec2(-1.0, 1.0) / 1024.0;
const vec2 b3 = vec2(1.0, 1.0) / 1024.0;
const vec2 b4 = vec2(-1.0, -2.0) / 1024.0;
const vec2 b5 = vec2(1.0, -2.0) / 1024.0;
const vec2 b6 = vec2(-1.0, 2.0) / 1024.0;
const vec2 b7 = vec2(1.0, 2.0) / 1024.0;
const vec2 b8 = vec2(-2.0, -1.0) / 1024.0;
const vec2 b9 = vec2(2.0, -1.0) / 1024.0;
const vec2 b10 = vec2(-2.0, 1.0) / 1024.0;
const vec2 b11 = vec2(2.0, 1.0) / 1024.0;

const vec2 bb0 = vec2(-1.0, -1.0) / 256.0;
const vec2 bb1 = vec2(1.0, -1.0) / 256.0;
const vec2 bb2 = vec2(-1.0, 1.0) / 256.0;
const vec2 bb3 = vec2(1.0, 1.0) / 256.0;
const vec2 bb4 = vec2(-1.0, -5.0) / 256.0;
const vec2 bb5 = vec2(1.0, -5.0) / 256.0;
const vec2 bb6 = vec2(-1.0, -3.0) / 256.0;
const vec2 bb7 = vec2(1.0, -3.0) / 256.0;
const vec2 bb8 = vec2(-1.0, 3.0) / 256.0;
const vec2 bb9 = vec2(1.0, 3.0) / 256.0;
const vec2 bb10 = vec2(-1.0, 5.0) / 256.0;
const vec2 bb11 = vec2(1.0, 5.0) / 256.0;

vec4 psblur(v i) {
  vec4 s = texture(samtex, i.uv + b0) + texture(samtex, i.uv + b1) +
           texture(samtex, i.uv + b2) + texture(samtex, i.uv + b3) +
           texture(samtex, i.uv + b4) + texture(samtex, i.uv + b5) +
           texture(samtex, i.uv + b6) + texture(samtex, i.uv + b7) +
           texture(samtex, i.uv + b8) + texture(samtex, i.uv + b9) +
           texture(samtex, i.uv + b10) + texture(samtex, i.uv + b11);
  return s * 0.08333;
}

// Depth of field: shadowcolor.x is the depth in focus, shadowcolor.y the scale.
vec4 psdof(v i) {
  float d = texture(samshadow, i.uv).x;
  float dz = (d - shadowcolor.x) * shadowcolor.y * 255.0;
  dz = dz * dz;
  return vec4(texture(samtex, i.uv).xyz, dz);
}

// Only what lies above about 0.707 in a channel survives.
vec4 texb(vec4 ic, sampler2D s, vec2 uv) {
  vec4 k = texture(s, uv);
  return clamp((k * k * 2.0 - 1.0) * ic, 0.0, 1.0);
}

vec4 psbloom1(v i) {
  vec4 s = texb(i.c, samtex, i.uv + b0) + texb(i.c, samtex, i.uv + b1) +
           texb(i.c, samtex, i.uv + b2) + texb(i.c, samtex, i.uv + b3);
  return s * 0.25;
}

vec4 psbloom2(v i) {
  vec4 s = texture(samtex, i.uv + bb0) + texture(samtex, i.uv + bb1) +
           texture(samtex, i.uv + bb2) + texture(samtex, i.uv + bb3) +
           texture(samtex, i.uv + bb4) + texture(samtex, i.uv + bb5) +
           texture(samtex, i.uv + bb6) + texture(samtex, i.uv + bb7) +
           texture(samtex, i.uv + bb8) + texture(samtex, i.uv + bb9) +
           texture(samtex, i.uv + bb10) + texture(samtex, i.uv + bb11);
  return s * (0.08333 * 0.3333);
}

#pragma technique tec1 vs1 -
#pragma technique tec1w vs1w -
#pragma technique tec2 vs2 -
#pragma technique tec2w vs2w -
#pragma technique tecmix1 vsmix1 -
#pragma technique tecmix1w vsmix1w -
#pragma technique tecdepth1 vsdepth1 psdepth1
#pragma technique tecdepth1w vsdepth1w psdepth1
#pragma technique tecshadow1 vsshadow1 psshadow1
#pragma technique tecshadow1w vsshadow1w psshadow1
#pragma technique tecshadow2 vsshadow2 psshadow1
#pragma technique tecdepth2 vsdepth2 psdepth2
#pragma technique tecdepth2w vsdepth2w psdepth2
#pragma technique tecdepth3 vsdepth2 psdepth3
#pragma technique tecdepth3w vsdepth2w psdepth3
#pragma technique tecblur vsimposter psblur
#pragma technique tecdof vsimposter psdof
#pragma technique tecbloom1 vsimposter psbloom1
#pragma technique tecbloom2 vsimposter psbloom2
)GLSL";

const std::size_t kEffectTextLength = sizeof kEffectText - 1;

}  // namespace vostan
