/* The compass: a dial that turns below its pointer, with a rose and the heading in the middle. */
#ifndef INSTRUMENTS_ROSE_H
#define INSTRUMENTS_ROSE_H

#include "SDL.h"

struct Compass {
    int is_on;
    int has_heading;
    double heading; /* degrees, 0 or more and less than 360 */
};

void draw_compass(SDL_Surface *screen, SDL_Rect area, const struct Compass *compass);

#endif
