/* An application that starts and ends, with the library (WITH_LIBTAV) and without. Prints its
 * memory in KiB, in all and the part that no other process shares. */
#include <stdio.h>

#include "SDL.h"
#ifdef WITH_LIBTAV
#include "tav.h"
#endif

static long memory(const char *kind)
{
    FILE *file = fopen("/proc/self/smaps_rollup", "r");
    char line[128];
    long sum = 0;
    long value;
    char name[32];

    while (file != NULL && fgets(line, sizeof line, file) != NULL) {
        if (sscanf(line, "%31s %ld", name, &value) == 2 && SDL_strstr(name, kind) == name) {
            sum += value;
        }
    }
    if (file != NULL) {
        fclose(file);
    }
    return sum;
}

int main(void)
{
    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        return 1;
    }
#ifdef WITH_LIBTAV
    if (TAV_Init(0) != TAV_NOERROR) {
        return 1;
    }
#endif
    printf("{\"resident_kib\": %ld, \"unshared_kib\": %ld}\n", memory("Rss:"), memory("Private_"));
#ifdef WITH_LIBTAV
    TAV_Quit();
#endif
    SDL_Quit();
    return 0;
}
