#include <stdio.h>

#include "hunt.h"

/* "1 of 3" */
static void progress(TAV_JSParameters *parameters)
{
    char text[16];

    snprintf(text, sizeof text, "%d of %d", hunt.found, CACHE_COUNT);
    TAV_JSReply(parameters, text);
}

/* The name of the n-th cache, from 1, once it is found. */
static void cache(TAV_JSParameters *parameters)
{
    int number = TAV_GetJSParamInt(parameters, 0);

    if (number < 1 || number > CACHE_COUNT) {
        TAV_JSException(parameters, "there is no such cache");
    } else if (number > hunt.found) {
        TAV_JSException(parameters, "not found yet");
    } else {
        TAV_JSReply(parameters, caches[number - 1].name);
    }
}

void connect_page(void)
{
    if (!TAV_IsPlugin()) {
        return;
    }
    TAV_RegisterJSHandler("progress", progress);
    TAV_RegisterJSHandler("cache", cache);
    if (TAV_JSRegistrationComplete() != TAV_NOERROR) {
        fprintf(stderr, "page: %s\n", TAV_GetError());
    }
}

void tell_page(const char *cache)
{
    char number[12];
    const char *arguments[2] = {cache, number};

    snprintf(number, sizeof number, "%d", hunt.found);
    if (TAV_IsPlugin() && TAV_CallJS("found", arguments, 2) != TAV_NOERROR) {
        fprintf(stderr, "page: %s\n", TAV_GetError());
    }
}
