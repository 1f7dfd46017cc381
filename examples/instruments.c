/* Instruments: a compass, the position and the last reply of a service, in a window of the device's
 * own size. Keys and touches switch the sensors and ask for actions; their names are on the screen.
 *
 *     tavsim run --device cinnabar instruments
 *
 * Without a display, look at a picture of it:
 *
 *     SDL_VIDEODRIVER=dummy tavsim run --virtual-time instruments --frames 60 --screenshot it.bmp
 */
#include <math.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "SDL.h"
#include "SDL_gfxPrimitives.h"
#include "SDL_rotozoom.h"
#include "tav.h"

#define FRAME 20 /* milliseconds */

/* Colours as SDL_gfx takes them: red, green, blue, opacity. */
#define BACKGROUND 0x0b1118ff
#define PANEL 0x151f2aff
#define BEZEL 0x243443ff
#define FACE 0x101923ff
#define WHITE 0xf2f6f9ff
#define GREY 0x8b9dadff
#define DIM 0x41525fff
#define TEAL 0x3fd0b6ff
#define RED 0xff6655ff

/* The font has 8 x 8 pixels a letter, and is drawn narrower than it is high. */
#define LETTER 8
#define LETTER_WIDTH 0.66
#define DEGREE "\xf8"

static struct {
    char name[64], language[64];
    int compass_on, location_on, keyboard_on, orientation;
    int has_heading, has_fix;
    double heading;
    TAV_Location fix;
    char reply[512];
    char message[192]; /* what became of the last action */
    int failed;
    int running;
    int changed; /* since the last drawing */
} app;

static SDL_Surface *screen;

/* ---- What the application asks of the device ---- */

/* Says how an action ended: with what it did, or with the failure's message. */
static void report(const char *action, const char *done, int code)
{
    const char *why = TAV_GetError();

    app.failed = code != TAV_NOERROR;
    snprintf(app.message, sizeof app.message, "%s: %s", action,
             !app.failed    ? done
             : *why != '\0' ? why
                            : "refused");
    app.changed = 1;
}

static void toggle_compass(void)
{
    int code;

    SDL_ClearError(); /* a refused compass sets no message */
    code = TAV_EnableCompass(app.compass_on ? SDL_FALSE : SDL_TRUE);
    if (code == TAV_NOERROR) {
        app.compass_on = !app.compass_on;
    }
    report("compass", app.compass_on ? "on" : "off", code);
}

static void toggle_location(void)
{
    int code = TAV_EnableLocationTracking(app.location_on ? SDL_FALSE : SDL_TRUE);

    if (code == TAV_NOERROR) {
        app.location_on = !app.location_on;
    }
    report("location", app.location_on ? "on" : "off", code);
}

static void vibrate(void)
{
    report("vibrate", "half a second", TAV_Vibrate(100, 500));
}

static void toggle_keyboard(void)
{
    int code = TAV_SetKeyboardState(app.keyboard_on ? SDL_FALSE : SDL_TRUE);

    if (code == TAV_NOERROR) {
        app.keyboard_on = !app.keyboard_on;
    }
    report("keyboard", app.keyboard_on ? "shown" : "hidden", code);
}

static void turn_screen(void)
{
    static const char *const names[] = {"bottom", "right", "top", "left"};
    int next = (app.orientation + 1) % 4;
    int code = TAV_SetOrientation((TAV_Orientation)next);

    if (code == TAV_NOERROR) {
        app.orientation = next;
    }
    report("screen", names[app.orientation], code);
}

static void on_battery(TAV_ServiceParameters *parameters, void *user_data)
{
    const char *json = TAV_GetParamJson(parameters);

    (void)user_data;
    snprintf(app.reply, sizeof app.reply, "%s", json != NULL ? json : "(no text)");
    app.changed = 1;
}

static void ask_battery(void)
{
    report("battery", "asked",
           TAV_ServiceCallWithCallback("vire://com.vire.battery/status", "{}", on_battery, NULL,
                                       SDL_TRUE));
}

static void minimize(void)
{
    report("window", "minimized", TAV_Minimize());
}

static void quit(void)
{
    app.running = 0;
}

static const struct Action {
    SDLKey key;
    const char *letter, *label;
    void (*act)(void);
    const int *is_on;
} actions[] = {
    {SDLK_c, "C", "compass", toggle_compass, &app.compass_on},
    {SDLK_l, "L", "location", toggle_location, &app.location_on},
    {SDLK_b, "B", "battery", ask_battery, NULL},
    {SDLK_v, "V", "vibrate", vibrate, NULL},
    {SDLK_k, "K", "keyboard", toggle_keyboard, &app.keyboard_on},
    {SDLK_o, "O", "turn", turn_screen, NULL},
    {SDLK_m, "M", "minimize", minimize, NULL},
    {SDLK_q, "Q", "quit", quit, NULL},
};

#define ACTION_COUNT ((int)(sizeof actions / sizeof *actions))

/* ---- Layout: the screen is cut into pieces ---- */

static struct {
    int text; /* height of small text; everything else is a multiple of it */
    SDL_Rect header, dial, position, speed, altitude, reply;
    SDL_Rect keys[ACTION_COUNT];
} layout;

static SDL_Rect rectangle(int x, int y, int width, int height)
{
    SDL_Rect made = {(Sint16)x, (Sint16)y, (Uint16)width, (Uint16)height};
    return made;
}

/* Each cut takes a piece off the rest, and a gap with it. */
static SDL_Rect cut_top(SDL_Rect *rest, int height, int gap)
{
    SDL_Rect piece = rectangle(rest->x, rest->y, rest->w, height);
    *rest = rectangle(rest->x, rest->y + height + gap, rest->w, rest->h - height - gap);
    return piece;
}

static SDL_Rect cut_bottom(SDL_Rect *rest, int height, int gap)
{
    SDL_Rect piece = rectangle(rest->x, rest->y + rest->h - height, rest->w, height);
    *rest = rectangle(rest->x, rest->y, rest->w, rest->h - height - gap);
    return piece;
}

static SDL_Rect cut_left(SDL_Rect *rest, int width, int gap)
{
    SDL_Rect piece = rectangle(rest->x, rest->y, width, rest->h);
    *rest = rectangle(rest->x + width + gap, rest->y, rest->w - width - gap, rest->h);
    return piece;
}

static void lay_out_keys(SDL_Rect area, int rows, int gap)
{
    int columns = ACTION_COUNT / rows;
    int width = area.w + gap;
    int height = area.h + gap;
    int i;

    for (i = 0; i < ACTION_COUNT; ++i) {
        int column = i % columns, row = i / columns;
        int left = width * column / columns, right = width * (column + 1) / columns;
        int top = height * row / rows, bottom = height * (row + 1) / rows;
        layout.keys[i] =
            rectangle(area.x + left, area.y + top, right - left - gap, bottom - top - gap);
    }
}

static void lay_out_upright(SDL_Rect rest, int gap)
{
    SDL_Rect facts;

    layout.reply = cut_bottom(&rest, layout.text * 62 / 10, gap);
    facts = cut_bottom(&rest, layout.text * 54 / 10, gap);
    layout.header = cut_top(&rest, 3 * layout.text, gap);
    layout.position = cut_left(&facts, facts.w * 2 / 5, gap);
    layout.speed = cut_left(&facts, (facts.w - gap) / 2, gap);
    layout.altitude = facts;
    layout.dial = rest;
}

static void lay_out_wide(SDL_Rect rest, int gap)
{
    SDL_Rect facts;

    layout.dial = cut_left(&rest, rest.w * 3 / 5, 2 * gap);
    layout.header = cut_top(&rest, layout.text * 34 / 10, gap);
    layout.position = cut_top(&rest, rest.h / 3, gap);
    facts = cut_top(&rest, rest.h / 3, gap);
    layout.speed = cut_left(&facts, (facts.w - gap) / 2, gap);
    layout.altitude = facts;
    layout.reply = rest;
}

static void lay_out(int width, int height)
{
    int is_wide = width > height;
    int text = is_wide ? width / 52 : width / 32;
    int gap = text * 3 / 5;
    SDL_Rect rest = rectangle(text, text, width - 2 * text, height - 2 * text);

    layout.text = text;
    if (is_wide) {
        lay_out_keys(cut_bottom(&rest, 4 * text, 2 * gap), 1, gap);
        lay_out_wide(rest, gap);
    } else {
        lay_out_keys(cut_bottom(&rest, 6 * text + gap, gap), 2, gap);
        lay_out_upright(rest, gap);
    }
}

/* ---- Lettering ---- */

static int text_width(int length, double size)
{
    return (int)(length * size * LETTER_WIDTH);
}

/* In large the font would show its pixels. So the letters are enlarged smoothly, which blurs them,
 * and then the blur is narrowed to a pixel: what is left are smooth outlines. */
static void sharpen(SDL_Surface *letters, double scale, Uint32 color)
{
    int x, y;

    for (y = 0; y < letters->h; ++y) {
        Uint32 *row = (Uint32 *)((Uint8 *)letters->pixels + y * letters->pitch);
        for (x = 0; x < letters->w; ++x) {
            double cover = ((row[x] >> 24) - 127.5) * scale + 127.5;
            Uint32 opacity = cover < 0 ? 0 : cover > 255 ? 255 : (Uint32)cover;
            row[x] = (color & 0xffffff00) | opacity;
        }
    }
}

static SDL_Surface *letter(const char *text, double size, Uint32 color)
{
    double scale = size / LETTER;
    SDL_Surface *small = SDL_CreateRGBSurface(SDL_SWSURFACE, LETTER * (int)strlen(text), LETTER, 32,
                                              0xff000000, 0x00ff0000, 0x0000ff00, 0x000000ff);
    SDL_Surface *large;

    stringColor(small, 0, 0, text, 0xffffffff);
    large = zoomSurface(small, scale * LETTER_WIDTH, scale, SMOOTHING_ON);
    SDL_FreeSurface(small);
    sharpen(large, scale, color);
    return large;
}

static void put_centered(SDL_Surface *surface, int x, int y)
{
    SDL_Rect place = rectangle(x - surface->w / 2, y - surface->h / 2, surface->w, surface->h);

    SDL_BlitSurface(surface, NULL, screen, &place);
    SDL_FreeSurface(surface);
}

static void text_at(int x, int y, double size, Uint32 color, const char *text)
{
    SDL_Surface *letters;
    SDL_Rect place = rectangle(x, y, 0, 0);

    if (*text == '\0') {
        return;
    }
    letters = letter(text, size, color);
    SDL_BlitSurface(letters, NULL, screen, &place);
    SDL_FreeSurface(letters);
}

static void text_right(int x, int y, double size, Uint32 color, const char *text)
{
    text_at(x - text_width((int)strlen(text), size), y, size, color, text);
}

static void text_centered(int x, int y, double size, Uint32 color, const char *text)
{
    if (*text != '\0') {
        put_centered(letter(text, size, color), x, y);
    }
}

/* How much of a text goes into a line: up to a comma, if there is one. */
static int line_length(const char *text, int most)
{
    int length = (int)strlen(text);

    if (length <= most) {
        return length;
    }
    for (length = most; length > 0; --length) {
        if (text[length - 1] == ',') {
            return length;
        }
    }
    return most;
}

/* A text in as many lines as there is room for; dots stand for the rest. */
static void text_in(SDL_Rect area, double size, Uint32 color, const char *text)
{
    char line[128];
    int most = (int)(area.w / (size * LETTER_WIDTH));
    int bottom = area.y + area.h;
    int y;

    most = most < (int)sizeof line ? most : (int)sizeof line - 1;
    for (y = area.y; *text != '\0' && y + size <= bottom; y += (int)(size * 1.4)) {
        int length = line_length(text, most);
        int is_cut = text[length] != '\0' && y + size * 2.4 > bottom;
        snprintf(line, sizeof line, "%.*s%s", is_cut ? most - 3 : length, text,
                 is_cut ? "..." : "");
        text_at(area.x, y, size, color, line);
        text += length;
    }
}

/* ---- The compass ---- */

static struct {
    int x, y, radius;
} dial;

/* The point at a bearing and at a distance from the centre, in parts of the radius. */
static void place(double bearing, double distance, Sint16 *x, Sint16 *y)
{
    double angle = (bearing - app.heading) * M_PI / 180.0;

    *x = (Sint16)lround(dial.x + sin(angle) * distance * dial.radius);
    *y = (Sint16)lround(dial.y - cos(angle) * distance * dial.radius);
}

static void disc(double distance, Uint32 color)
{
    Sint16 radius = (Sint16)(distance * dial.radius);

    filledCircleColor(screen, (Sint16)dial.x, (Sint16)dial.y, radius, color);
    aacircleColor(screen, (Sint16)dial.x, (Sint16)dial.y, radius, color);
}

static void triangle(const Sint16 *x, const Sint16 *y, Uint32 color)
{
    filledTrigonColor(screen, x[0], y[0], x[1], y[1], x[2], y[2], color);
    aatrigonColor(screen, x[0], y[0], x[1], y[1], x[2], y[2], color);
}

static void tick(double bearing, double from, double half_width, Uint32 color)
{
    Sint16 x[4], y[4];

    place(bearing - half_width, from, &x[0], &y[0]);
    place(bearing + half_width, from, &x[1], &y[1]);
    place(bearing + half_width, 0.93, &x[2], &y[2]);
    place(bearing - half_width, 0.93, &x[3], &y[3]);
    filledPolygonColor(screen, x, y, 4, color);
    aapolygonColor(screen, x, y, 4, color);
}

/* A letter of the scale, turned with it. */
static void mark(double bearing, double size, Uint32 color, const char *text)
{
    SDL_Surface *upright = letter(text, size, color);
    Sint16 x, y;

    place(bearing, 0.70, &x, &y);
    put_centered(rotozoomSurface(upright, app.heading - bearing, 1.0, SMOOTHING_ON), x, y);
    SDL_FreeSurface(upright);
}

static void draw_scale(void)
{
    static const char *const winds[] = {"N", "E", "S", "W"};
    char number[4];
    int bearing;

    for (bearing = 0; bearing < 360; bearing += 5) {
        if (bearing % 30 == 0) {
            tick(bearing, 0.83, 0.3, WHITE);
        } else {
            tick(bearing, bearing % 10 == 0 ? 0.87 : 0.90, 0.1, GREY);
        }
    }
    for (bearing = 0; bearing < 360; bearing += 30) {
        if (bearing % 90 == 0) {
            mark(bearing, dial.radius * 0.17, bearing == 0 ? RED : WHITE, winds[bearing / 90]);
        } else {
            snprintf(number, sizeof number, "%d", bearing);
            mark(bearing, dial.radius * 0.10, GREY, number);
        }
    }
}

/* One ray of the rose: a light and a dark half. */
static void ray(double bearing, double length, Uint32 light, Uint32 dark)
{
    Sint16 x[3], y[3];

    place(bearing, length, &x[0], &y[0]);
    place(bearing, 0.1, &x[1], &y[1]);
    place(bearing - 45, 0.28, &x[2], &y[2]);
    triangle(x, y, light);
    place(bearing + 45, 0.28, &x[2], &y[2]);
    triangle(x, y, dark);
}

static void draw_rose(void)
{
    int bearing;

    for (bearing = 45; bearing < 360; bearing += 90) {
        ray(bearing, 0.46, 0x2c3d4cff, 0x22303cff);
    }
    for (bearing = 0; bearing < 360; bearing += 90) {
        ray(bearing, 0.6, bearing == 0 ? RED : 0x5a6f81ff, bearing == 0 ? 0xb8463bff : 0x3d4f5eff);
    }
}

static void draw_heading(void)
{
    static const char *const winds[] = {"N", "NE", "E", "SE", "S", "SW", "W", "NW"};
    char degrees[16] = "---";
    const char *wind = "";

    disc(0.32, BEZEL);
    disc(0.30, FACE);
    if (app.has_heading) {
        snprintf(degrees, sizeof degrees, "%03d" DEGREE, (int)lround(app.heading) % 360);
        wind = winds[(int)lround(app.heading / 45.0) % 8];
    }
    text_centered(dial.x, dial.y - dial.radius / 20, dial.radius * 0.18,
                  app.compass_on ? WHITE : GREY, degrees);
    text_centered(dial.x, dial.y + dial.radius * 3 / 20, dial.radius * 0.1,
                  app.compass_on ? TEAL : GREY, app.compass_on ? wind : "off");
}

/* The pointer stands still at the top; the scale turns below it. */
static void draw_pointer(void)
{
    int half = dial.radius / 16;
    int top = dial.y - dial.radius;
    Sint16 x[3] = {(Sint16)(dial.x - half), (Sint16)(dial.x + half), (Sint16)dial.x};
    Sint16 y[3] = {(Sint16)top, (Sint16)top, (Sint16)(top + 2 * half)};

    triangle(x, y, TEAL);
}

static void draw_compass(void)
{
    SDL_Rect area = layout.dial;

    dial.x = area.x + area.w / 2;
    dial.y = area.y + area.h / 2;
    dial.radius = (area.w < area.h ? area.w : area.h) / 2 - 1;
    disc(1.0, BEZEL);
    disc(0.97, FACE);
    draw_scale();
    draw_rose();
    draw_heading();
    draw_pointer();
}

/* ---- The other instruments ---- */

static void panel(SDL_Rect area, Uint32 color)
{
    roundedBoxColor(screen, area.x, area.y, (Sint16)(area.x + area.w - 1),
                    (Sint16)(area.y + area.h - 1), (Sint16)(layout.text / 2), color);
}

static SDL_Rect titled_panel(SDL_Rect area, const char *title)
{
    int text = layout.text;

    panel(area, PANEL);
    text_at(area.x + text * 4 / 5, area.y + text * 4 / 5, text * 0.85, GREY, title);
    return rectangle(area.x + text * 4 / 5, area.y + text * 11 / 5, area.w - text * 8 / 5,
                     area.h - text * 27 / 10);
}

static void draw_header(void)
{
    SDL_Rect area = layout.header;
    int text = layout.text;

    text_at(area.x, area.y, text * 1.7, WHITE, app.name);
    text_right(area.x + area.w, area.y, text, TEAL, app.language);
    text_in(rectangle(area.x, area.y + text * 21 / 10, area.w, text), text, app.failed ? RED : GREY,
            app.message);
}

/* One or two lines under a title, as large as there is room. */
static void draw_fact(SDL_Rect area, const char *title, const char *first, const char *second)
{
    SDL_Rect inside = titled_panel(area, title);
    int is_double = *second != '\0';
    double by_height = inside.h / (is_double ? 2.4 : 1.5);
    double by_width = inside.w / (LETTER_WIDTH * (is_double ? 10 : 8));
    double size = by_width < by_height ? by_width : by_height;
    Uint32 color = app.location_on ? WHITE : GREY;

    text_at(inside.x, inside.y, size, color, first);
    text_at(inside.x, inside.y + (int)(size * 1.35), size, color, second);
}

static void draw_facts(void)
{
    char latitude[24] = "--", longitude[24] = "", speed[24] = "--", altitude[24] = "--";

    if (app.has_fix) {
        const TAV_Location *fix = &app.fix;
        snprintf(latitude, sizeof latitude, "%.4f %c", fabs(fix->latitude),
                 fix->latitude < 0 ? 'S' : 'N');
        snprintf(longitude, sizeof longitude, "%.4f %c", fabs(fix->longitude),
                 fix->longitude < 0 ? 'W' : 'E');
        snprintf(speed, sizeof speed, "%.1f m/s", fix->velocity);
        snprintf(altitude, sizeof altitude, "%.0f m", fix->altitude);
    }
    draw_fact(layout.position, "POSITION", latitude, longitude);
    draw_fact(layout.speed, "SPEED", speed, "");
    draw_fact(layout.altitude, "ALTITUDE", altitude, "");
}

static void draw_reply(void)
{
    SDL_Rect inside = titled_panel(layout.reply, "LAST REPLY");
    double size = inside.h > 6 * layout.text ? layout.text * 1.2 : layout.text * 0.9;

    text_in(inside, size, WHITE, app.reply);
}

static void draw_keys(void)
{
    int text = layout.text;
    int i;

    for (i = 0; i < ACTION_COUNT; ++i) {
        SDL_Rect key = layout.keys[i];
        int is_on = actions[i].is_on != NULL && *actions[i].is_on;
        int middle = key.x + key.w / 2;
        panel(key, is_on ? 0x1d4a48ff : PANEL);
        text_centered(middle, key.y + key.h / 3, text * 1.2, is_on ? TEAL : WHITE,
                      actions[i].letter);
        text_centered(middle, key.y + key.h * 3 / 4, text * 0.9, is_on ? TEAL : GREY,
                      actions[i].label);
    }
}

static void draw(void)
{
    boxColor(screen, 0, 0, (Sint16)(screen->w - 1), (Sint16)(screen->h - 1), BACKGROUND);
    draw_header();
    draw_compass();
    draw_facts();
    draw_reply();
    draw_keys();
    SDL_Flip(screen);
    app.changed = 0;
}

/* ---- Events ---- */

/* A failure ends the tracking; once it is switched off, it can be switched on again. */
static void on_location_failure(void)
{
    TAV_Location none;

    report("location", "", TAV_GetLocation(&none));
    TAV_EnableLocationTracking(SDL_FALSE);
    app.location_on = 0;
}

static void on_user_event(const SDL_UserEvent *event)
{
    switch (event->code) {
    case TAV_EVENT_COMPASS:
        app.heading = fmod(((const TAV_CompassReading *)event->data1)->doubleValue1, 360.0);
        app.heading += app.heading < 0 ? 360.0 : 0.0;
        app.has_heading = 1;
        break;
    case TAV_EVENT_LOCATION:
        app.fix = *(const TAV_Location *)event->data1;
        app.has_fix = 1;
        break;
    case TAV_EVENT_LOCATION_FAILURE:
        on_location_failure();
        break;
    default:
        break;
    }
    app.changed = 1;
}

static void on_key(SDLKey key)
{
    int i;

    for (i = 0; i < ACTION_COUNT; ++i) {
        if (actions[i].key == (key == SDLK_ESCAPE ? SDLK_q : key)) {
            actions[i].act();
        }
    }
}

static void on_touch(int x, int y)
{
    int i;

    for (i = 0; i < ACTION_COUNT; ++i) {
        SDL_Rect key = layout.keys[i];
        if (x >= key.x && x < key.x + key.w && y >= key.y && y < key.y + key.h) {
            actions[i].act();
        }
    }
}

static void handle_events(void)
{
    SDL_Event event;

    while (SDL_PollEvent(&event)) {
        if (event.type == SDL_USEREVENT) {
            on_user_event(&event.user);
        } else if (event.type == SDL_KEYDOWN) {
            on_key(event.key.keysym.sym);
        } else if (event.type == SDL_MOUSEBUTTONDOWN) {
            on_touch(event.button.x, event.button.y);
        } else if (event.type == SDL_VIDEOEXPOSE) {
            app.changed = 1;
        } else if (event.type == SDL_QUIT) {
            quit();
        }
    }
}

/* ---- Start and end ---- */

static void look_around(void)
{
    if (TAV_GetDeviceName(app.name, sizeof app.name) != TAV_NOERROR) {
        snprintf(app.name, sizeof app.name, "No name");
    }
    if (TAV_GetLanguage(app.language, sizeof app.language) != TAV_NOERROR) {
        snprintf(app.language, sizeof app.language, "no language");
    }
}

static int open_window(void)
{
    TAV_ScreenMetrics metrics;

    if (TAV_GetScreenMetrics(&metrics) != TAV_NOERROR) {
        metrics.widthPixels = 320;
        metrics.heightPixels = 480;
    }
    screen = SDL_SetVideoMode(metrics.widthPixels, metrics.heightPixels, 32, SDL_SWSURFACE);
    SDL_WM_SetCaption("Instruments", NULL);
    lay_out(metrics.widthPixels, metrics.heightPixels);
    return screen != NULL;
}

static void run(int frames)
{
    app.running = 1;
    toggle_compass();
    toggle_location();
    ask_battery();
    while (app.running && frames != 0) {
        handle_events();
        if (app.changed) {
            draw();
        }
        SDL_Delay(FRAME);
        frames -= frames > 0;
    }
}

static int save(const char *file)
{
    if (file == NULL || SDL_SaveBMP(screen, file) == 0) {
        return 0;
    }
    fprintf(stderr, "instruments: %s\n", SDL_GetError());
    return 1;
}

int main(int argc, char *argv[])
{
    const char *screenshot = NULL;
    int frames = -1; /* no limit */
    int status = 1;
    int i;

    for (i = 1; i + 1 < argc && argv[i][0] == '-'; i += 2) {
        if (strcmp(argv[i], "--screenshot") == 0) {
            screenshot = argv[i + 1];
        } else if (strcmp(argv[i], "--frames") == 0 && atoi(argv[i + 1]) > 0) {
            frames = atoi(argv[i + 1]);
        } else {
            break;
        }
    }
    if (i < argc) {
        fprintf(stderr, "usage: instruments [--frames N] [--screenshot FILE.bmp]\n");
        return 2;
    }
    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        fprintf(stderr, "instruments: %s\n", SDL_GetError());
        return 1;
    }
    TAV_Init(0);
    look_around();
    if (open_window()) {
        run(frames);
        status = save(screenshot);
    } else {
        fprintf(stderr, "instruments: %s\n", SDL_GetError());
    }
    TAV_Quit();
    SDL_Quit();
    return status;
}
