/* The headers in the hands of a strict C89 compiler: records, enumerations, and functions of C that
 * the library calls. */
#include "tav.h"
#include "tavsim.h"

int useFromC(int *percent);

static void onStatus(TAV_ServiceParameters *parameters, void *userData)
{
    if (parameters->reply != NULL) {
        *(int *)userData = TAV_GetParamInt(parameters, "percent");
    }
}

static void onEcho(TAV_JSParameters *parameters)
{
    if (parameters->count > 0) {
        TAV_JSReply(parameters, TAV_GetJSParamString(parameters, 0));
    }
}

int useFromC(int *percent)
{
    TAV_CompassReading reading;
    TAV_OSVersion version;
    int errors = TAV_Init(0);

    errors += TAV_EnableCompass(SDL_TRUE);
    errors += TAV_GetCompass(&reading);
    errors += TAV_GetOSVersion(&version);
    errors += TAV_SetOrientation(TAV_ORIENTATION_LEFT);
    errors += TAV_RegisterJSHandler("echo", onEcho);
    errors +=
        TAV_ServiceCallWithCallback("vire://com.example/status", "{}", onStatus, percent, SDL_TRUE);
    return errors == TAV_NOERROR ? reading.intValue + version.major : -errors;
}
