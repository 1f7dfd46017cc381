/* The picture, with every instrument in its place. */
#ifndef INSTRUMENTS_PANELS_H
#define INSTRUMENTS_PANELS_H

#include "layout.h"

void draw(SDL_Surface *screen, const struct Layout *layout);

#endif
