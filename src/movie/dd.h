// The dd movie library: a reader and player of SWF vector movies.
#pragma once

#include "movie/dd_base.h"
#include "movie/dd_character.h"
#include "movie/dd_display.h"
#include "movie/dd_morph.h"
#include "movie/dd_movie.h"
#include "movie/dd_stream.h"
#include "movie/dd_surface.h"
#include "movie/dd_text.h"
#include "movie/dd_timeline.h"
