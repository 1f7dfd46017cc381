/* Finds the quickest way through a land of water, woods and rocks, as a plug-in of a web page. The
 * page has the controls. The application searches, draws into the page, and is drawn upon there.
 *
 *     tavsim run --page index.html pathfinder
 *     tav-page FOLDER
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "SDL.h"
#include "tav.h"

#define COLUMNS 64
#define ROWS 44
#define CELLS (COLUMNS * ROWS)
#define SIZE 10 /* pixels of a cell */
#define STEP 16 /* milliseconds */
#define NOWHERE (-1)

enum terrain { WATER, SAND, MEADOW, FOREST, ROCK, TERRAINS };
static const char *const terrains[TERRAINS] = {"water", "sand", "meadow", "forest", "rock"};
static const int slowness[TERRAINS] = {0, 2, 1, 3, 6};
static const Uint8 colors[TERRAINS][3] = {
    {62, 124, 177}, {222, 203, 150}, {150, 190, 106}, {72, 130, 84}, {140, 132, 128}};

enum method { ASTAR, DIJKSTRA, GREEDY, METHODS };
static const char *const methods[METHODS] = {"astar", "dijkstra", "greedy"};

static SDL_Surface *screen;
static int land[CELLS], start, goal, brush = FOREST;
static enum method method;
static int way[CELLS];    /* tenths of a minute from the start, or NOWHERE */
static int before[CELLS]; /* the cell that the way comes from */
static int is_known[CELLS], known, cells_a_step;
static int is_wanted, is_over, is_changed;

static double height(unsigned seed, int x, int y)
{
    unsigned mixed = seed * 2654435761u ^ (unsigned)x * 374761393u ^ (unsigned)y * 668265263u;

    mixed = (mixed ^ mixed >> 13) * 1274126177u;
    return ((mixed ^ mixed >> 16) & 0xffff) / 65535.0;
}

/* Between the points of a grid whose heights are random. */
static double smooth_height(unsigned seed, int column, int row, int grid)
{
    int x = column / grid, y = row / grid;
    double right = (double)(column % grid) / grid, down = (double)(row % grid) / grid;

    right = right * right * (3 - 2 * right);
    down = down * down * (3 - 2 * down);
    return (height(seed, x, y) * (1 - right) + height(seed, x + 1, y) * right) * (1 - down) +
           (height(seed, x, y + 1) * (1 - right) + height(seed, x + 1, y + 1) * right) * down;
}

static void make_land(unsigned seed)
{
    static const double tops[] = {0.40, 0.45, 0.58, 0.70, 2.0};
    int cell;

    for (cell = 0; cell < CELLS; ++cell) {
        int column = cell % COLUMNS, row = cell / COLUMNS;
        double level = 0.7 * smooth_height(seed, column, row, 13) +
                       0.3 * smooth_height(seed + 1, column, row, 5);
        for (land[cell] = WATER; level > tops[land[cell]]; ++land[cell]) {}
    }
    start = 3 * COLUMNS + 3;
    goal = CELLS - 3 * COLUMNS - 4;
    land[start] = land[goal] = MEADOW;
}

/* The quickest way to the goal that there could be. */
static int guess(int cell)
{
    int across = abs(cell % COLUMNS - goal % COLUMNS), down = abs(cell / COLUMNS - goal / COLUMNS);

    return 10 * abs(across - down) + 14 * (across < down ? across : down);
}

static int next_cell(void)
{
    int cell, best = NOWHERE, least = 0;

    for (cell = 0; cell < CELLS; ++cell) {
        if (way[cell] != NOWHERE && !is_known[cell]) {
            int rank = (method == GREEDY ? 0 : way[cell]) + (method == DIJKSTRA ? 0 : guess(cell));
            if (best == NOWHERE || rank < least) {
                best = cell;
                least = rank;
            }
        }
    }
    return best;
}

static void look_around(int cell)
{
    int right, down;

    for (down = -1; down <= 1; ++down) {
        for (right = -1; right <= 1; ++right) {
            int column = cell % COLUMNS + right, row = cell / COLUMNS + down;
            int next = row * COLUMNS + column, longer;
            if (column < 0 || column >= COLUMNS || row < 0 || row >= ROWS || land[next] == WATER) {
                continue;
            }
            longer = way[cell] + (right && down ? 14 : 10) * slowness[land[next]];
            if (way[next] == NOWHERE || (!is_known[next] && longer < way[next])) {
                way[next] = longer;
                before[next] = cell;
            }
        }
    }
}

static void tell(const char *function, int first, int second)
{
    char texts[2][16];
    const char *arguments[2] = {texts[0], texts[1]};

    snprintf(texts[0], sizeof texts[0], "%d", first);
    snprintf(texts[1], sizeof texts[1], "%d", second);
    TAV_CallJS(function, arguments, 2);
}

static void search(int cells)
{
    int cell = NOWHERE;

    while (cells-- > 0 && !is_known[goal] && (cell = next_cell()) != NOWHERE) {
        is_known[cell] = 1;
        ++known;
        look_around(cell);
    }
    is_over = is_known[goal] || cell == NOWHERE;
    is_changed = 1;
    tell("progress", known, CELLS);
    if (is_over) {
        tell("found", is_known[goal] ? way[goal] / 10 : NOWHERE, known);
    }
}

static void begin(int is_search)
{
    memset(way, NOWHERE, sizeof way); /* each byte of NOWHERE is the same */
    memset(is_known, 0, sizeof is_known);
    way[start] = 0;
    before[start] = NOWHERE;
    known = is_over = 0;
    is_wanted = is_search;
    is_changed = 1;
}

static int choice(TAV_JSParameters *parameters, const char *const *names, int count)
{
    const char *name =
        TAV_GetNumJSParams(parameters) > 0 ? TAV_GetJSParamString(parameters, 0) : "";
    char message[128];
    int index = 0;

    while (index < count && strcmp(name, names[index]) != 0) {
        ++index;
    }
    if (index == count) {
        snprintf(message, sizeof message, "\"%s\" is not known", name);
        TAV_JSException(parameters, message);
    }
    return index;
}

static void on_find(TAV_JSParameters *parameters)
{
    int chosen = choice(parameters, methods, METHODS);

    if (chosen < METHODS) {
        method = chosen;
        cells_a_step =
            TAV_GetNumJSParams(parameters) > 1 ? TAV_GetJSParamInt(parameters, 1) : CELLS;
        begin(1);
    }
}

static void on_brush(TAV_JSParameters *parameters)
{
    int chosen = choice(parameters, terrains, TERRAINS);

    brush = chosen < TERRAINS ? chosen : brush;
}

static void on_land(TAV_JSParameters *parameters)
{
    make_land((unsigned)TAV_GetJSParamInt(parameters, 0));
    begin(0);
}

static void touch(int x, int y, int is_first)
{
    static int *moved; /* the start or the goal, while it is dragged */
    static int old_x, old_y;
    int cell = y / SIZE * COLUMNS + x / SIZE,
        parts = is_first ? 0 : abs(x - old_x) + abs(y - old_y), part;

    if (is_first) {
        moved = cell == start ? &start : cell == goal ? &goal : NULL;
    }
    for (part = 0; !moved && part <= parts; ++part) {
        int at_x = parts ? old_x + (x - old_x) * part / parts : x;
        int at_y = parts ? old_y + (y - old_y) * part / parts : y;
        land[at_y / SIZE * COLUMNS + at_x / SIZE] = brush;
    }
    if (moved && land[cell] != WATER) {
        *moved = cell;
    }
    old_x = x;
    old_y = y;
    begin(is_wanted);
    if (is_wanted) {
        search(CELLS); /* what has been found is found again at once */
    }
}

static void fill(int cell, int size, int red, int green, int blue)
{
    SDL_Rect place = {cell % COLUMNS * SIZE + (SIZE - size) / 2,
                      cell / COLUMNS * SIZE + (SIZE - size) / 2, size, size};

    SDL_FillRect(screen, &place, SDL_MapRGB(screen->format, red, green, blue));
}

static void draw(void)
{
    int cell;

    for (cell = 0; cell < CELLS; ++cell) {
        const Uint8 *color = colors[land[cell]];
        /* What has been looked at is lighter, and what is next is lighter still. */
        int light = !is_wanted || way[cell] == NOWHERE ? 0 : is_known[cell] ? 80 : 150;
        fill(cell, SIZE, color[0] + light * (255 - color[0]) / 255,
             color[1] + light * (235 - color[1]) / 255, color[2] + light * (170 - color[2]) / 255);
    }
    for (cell = is_wanted && is_known[goal] ? goal : NOWHERE; cell != NOWHERE;
         cell = before[cell]) {
        fill(cell, 6, 40, 30, 80);
    }
    fill(start, SIZE + 8, 255, 255, 255);
    fill(start, SIZE + 4, 30, 140, 70);
    fill(goal, SIZE + 8, 255, 255, 255);
    fill(goal, SIZE + 4, 205, 50, 60);
    SDL_Flip(screen);
    is_changed = 0;
}

static int handle_events(void)
{
    SDL_Event event;

    while (SDL_PollEvent(&event)) {
        if (event.type == SDL_QUIT) {
            return 0;
        }
        if (event.type == SDL_MOUSEBUTTONDOWN) {
            touch(event.button.x, event.button.y, 1);
        } else if (event.type == SDL_MOUSEMOTION && event.motion.state) {
            touch(event.motion.x, event.motion.y, 0);
        }
    }
    return 1;
}

int main(int argc, char *argv[])
{
    int is_running = 1;

    (void)argc;
    (void)argv;
    if (SDL_Init(SDL_INIT_VIDEO) != 0 ||
        !(screen = SDL_SetVideoMode(COLUMNS * SIZE, ROWS * SIZE, 32, SDL_SWSURFACE))) {
        fprintf(stderr, "pathfinder: SDL does not start: %s\n", SDL_GetError());
        return 1;
    }
    make_land(3);
    begin(0);
    TAV_Init(0);
    TAV_RegisterJSHandler("find", on_find);
    TAV_RegisterJSHandler("brush", on_brush);
    TAV_RegisterJSHandler("land", on_land);
    if (TAV_JSRegistrationComplete() != TAV_NOERROR) {
        fprintf(stderr, "pathfinder: %s\n", TAV_GetError());
        is_running = 0;
    }
    while (is_running && handle_events()) {
        if (is_wanted && !is_over) {
            search(cells_a_step);
        }
        if (is_changed) {
            draw();
        }
        SDL_Delay(STEP);
    }
    TAV_Quit();
    SDL_Quit();
    return 0;
}
