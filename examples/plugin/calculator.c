/* A calculator that runs as a plug-in of a web page: the page's script calls its methods, and it
 * reports each calculation back to the page. It draws nothing; SDL is there for its event queue,
 * through which the page's calls arrive.
 *
 *     tavsim run --device cinnabar --page page.js calculator       a script without a browser
 *     tavsim run --device cinnabar --page index.html calculator    a page in the browser
 *     tav-page FOLDER                                              the same on this machine itself
 */
#include <stdio.h>
#include <stdlib.h>

#include "SDL.h"
#include "tav.h"

#define STEP 10 /* milliseconds between two polls of the event queue */

static int running = 1;

/* Everything crosses the bridge as text, so the method checks what it is given. */
static int read_number(TAV_JSParameters *parameters, int index, double *number)
{
    const char *text = TAV_GetJSParamString(parameters, index);
    char message[256];
    char *end;

    *number = strtod(text, &end);
    if (end != text && *end == '\0') {
        return 1;
    }
    snprintf(message, sizeof message, "\"%s\" is no number", text);
    TAV_JSException(parameters, message);
    return 0;
}

static int read_operands(TAV_JSParameters *parameters, double *left, double *right)
{
    if (TAV_GetNumJSParams(parameters) != 2) {
        TAV_JSException(parameters, "two numbers are needed");
        return 0;
    }
    return read_number(parameters, 0, left) && read_number(parameters, 1, right);
}

static void finish(TAV_JSParameters *parameters, double left, char operation, double right,
                   double result)
{
    char term[64];
    char text[32];
    const char *report[2];

    snprintf(term, sizeof term, "%.12g %c %.12g", left, operation, right);
    snprintf(text, sizeof text, "%.12g", result);
    report[0] = term;
    report[1] = text;
    if (TAV_CallJS("calculated", report, 2) != TAV_NOERROR) {
        fprintf(stderr, "calculated: %s\n", TAV_GetError());
    }
    TAV_JSReply(parameters, text);
}

static void add(TAV_JSParameters *parameters)
{
    double left, right;

    if (read_operands(parameters, &left, &right)) {
        finish(parameters, left, '+', right, left + right);
    }
}

static void subtract(TAV_JSParameters *parameters)
{
    double left, right;

    if (read_operands(parameters, &left, &right)) {
        finish(parameters, left, '-', right, left - right);
    }
}

static void multiply(TAV_JSParameters *parameters)
{
    double left, right;

    if (read_operands(parameters, &left, &right)) {
        finish(parameters, left, '*', right, left * right);
    }
}

static void divide(TAV_JSParameters *parameters)
{
    double left, right;

    if (!read_operands(parameters, &left, &right)) {
        return;
    }
    if (right == 0.0) {
        TAV_JSException(parameters, "division by zero");
        return;
    }
    finish(parameters, left, '/', right, left / right);
}

static void quit(TAV_JSParameters *parameters)
{
    (void)parameters;
    running = 0;
}

int main(int argc, char *argv[])
{
    char dummy_driver[] = "SDL_VIDEODRIVER=dummy";
    SDL_Event event;

    (void)argc;
    (void)argv;
    SDL_putenv(dummy_driver);
    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        fprintf(stderr, "SDL does not start: %s\n", SDL_GetError());
        return 1;
    }
    TAV_Init(0);
    TAV_RegisterJSHandler("add", add);
    TAV_RegisterJSHandler("subtract", subtract);
    TAV_RegisterJSHandler("multiply", multiply);
    TAV_RegisterJSHandler("divide", divide);
    TAV_RegisterJSHandler("quit", quit);
    if (TAV_JSRegistrationComplete() != TAV_NOERROR) {
        fprintf(stderr, "calculator: %s\n", TAV_GetError());
        TAV_Quit();
        SDL_Quit();
        return 1;
    }
    while (running) {
        while (SDL_PollEvent(&event)) {
            running = running && event.type != SDL_QUIT;
        }
        SDL_Delay(STEP);
    }
    TAV_Quit();
    SDL_Quit();
    return 0;
}
