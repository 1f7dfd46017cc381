/* A tour of everything that libtav offers, in pages of answers. Nothing is drawn; SDL is there for
 * its event queue, through which replies and readings arrive. */
#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include "SDL.h"
#include "tav.h"

#define SECOND 1000
#define STEP 10 /* milliseconds between two polls of the event queue */

static void row(const char *name, const char *format, ...)
{
    va_list arguments;
    printf("  %-26s ", name);
    va_start(arguments, format);
    vprintf(format, arguments);
    va_end(arguments);
    printf("\n");
}

/* A row with the value that a call gave, or with its error. */
static void text(const char *name, int code, const char *value)
{
    if (code == TAV_NOERROR) {
        row(name, "%s", value);
    } else {
        row(name, "error %d: %s", code, TAV_GetError());
    }
}

static void outcome(const char *name, int code)
{
    text(name, code, "ok");
}

/* Handles events for so long, and passes user events to the handler. */
static void handle_events(int milliseconds, void (*handler)(const SDL_UserEvent *))
{
    Uint32 end = SDL_GetTicks() + (Uint32)milliseconds;
    SDL_Event event;

    for (; SDL_GetTicks() <= end; SDL_Delay(STEP)) {
        while (SDL_PollEvent(&event)) {
            if (event.type == SDL_USEREVENT && handler != NULL) {
                handler(&event.user);
            }
        }
    }
}

static void show_hardware(void)
{
    TAV_ScreenMetrics screen;
    int code;

    puts("\nHardware");
    row("version", "%d", TAV_GetKOBVersion());
    row("plug-in", "%s", TAV_IsPlugin() ? "yes" : "no");
    row("hardware id", "%d", TAV_GetHardwareID());
    row("product name", "%s", TAV_GetHardware());
    code = TAV_GetScreenMetrics(&screen);
    if (code == TAV_NOERROR) {
        row("screen", "%d x %d pixels", screen.widthPixels, screen.heightPixels);
        row("density", "%d x %d dpi, ratio %.3f", screen.horizontalDpi, screen.verticalDpi,
            screen.dpiRatio);
    } else {
        outcome("screen", code);
    }
}

static void show_identity(void)
{
    char buffer[256];
    TAV_OSVersion version;
    int code;

    puts("\nIdentity and settings");
    text("device name", TAV_GetDeviceName(buffer, sizeof buffer), buffer);
    text("country code", TAV_GetRegionCountryCode(buffer, sizeof buffer), buffer);
    text("country", TAV_GetRegionCountryName(buffer, sizeof buffer), buffer);
    text("language", TAV_GetLanguage(buffer, sizeof buffer), buffer);
    text("unique id", TAV_GetUniqueID(buffer, sizeof buffer), buffer);
    text("system", TAV_GetOSVersion(&version), version.versionText);
    row("system version", "%d, %d, %d", version.major, version.minor, version.revision);
    text("application id", TAV_GetAppinfoValue("id", buffer, sizeof buffer), buffer);
    text("calling path", TAV_GetCallingPath(buffer, sizeof buffer), buffer);
    code = TAV_GetDataFilePath("scores.txt", buffer, sizeof buffer);
    text("data file", code, code == TAV_NOERROR ? strrchr(buffer, '/') + 1 : "");
    row("key 27", "%s", TAV_GetKeyName(27));
    row("key 229", "%s", TAV_GetKeyName(229));
    outcome("name in 4 bytes", TAV_GetDeviceName(buffer, 4));
}

static void show_network(void)
{
    TAV_NetInfo info;
    int code;

    puts("\nNetwork");
    code = TAV_GetNetInfo("lo", &info);
    if (code == TAV_NOERROR) {
        const unsigned char *address = (const unsigned char *)&info.address;
        const unsigned char *mask = (const unsigned char *)&info.netmask;
        row("lo", "%d.%d.%d.%d", address[0], address[1], address[2], address[3]);
        row("netmask", "%d.%d.%d.%d", mask[0], mask[1], mask[2], mask[3]);
    } else {
        outcome("lo", code);
    }
    outcome("no such interface", TAV_GetNetInfo("nowhere0", &info));
}

static void on_compass(const SDL_UserEvent *event)
{
    static int readings = 0;
    if (event->code == TAV_EVENT_COMPASS && readings++ % 3 == 0) {
        const TAV_CompassReading *reading = (const TAV_CompassReading *)event->data1;
        row("reading", "%d, %.1f, %.1f", reading->intValue, reading->doubleValue1,
            reading->doubleValue2);
    }
}

static void show_compass(void)
{
    TAV_CompassReading reading;

    puts("\nCompass");
    outcome("before it is enabled", TAV_GetCompass(&reading));
    outcome("enable", TAV_EnableCompass(SDL_TRUE));
    handle_events(SECOND, on_compass);
    if (TAV_GetCompass(&reading) == TAV_NOERROR) {
        row("after a second", "%.1f degrees", reading.doubleValue1);
    }
    outcome("disable", TAV_EnableCompass(SDL_FALSE));
}

static void show_controls(void)
{
    puts("\nWindow, input and screen");
    outcome("show the keyboard", TAV_SetKeyboardState(SDL_TRUE));
    outcome("touch aggression", TAV_SetTouchAggression(1));
    outcome("orientation right", TAV_SetOrientation(TAV_ORIENTATION_RIGHT));
    outcome("gestures", TAV_GesturesEnable(SDL_FALSE));
    outcome("banner messages", TAV_BannerMessagesEnable(SDL_FALSE));
    outcome("own pause screen", TAV_CustomPauseUiEnable(SDL_TRUE));
    outcome("screen time-out", TAV_ScreenTimeoutEnable(SDL_FALSE));
    outcome("minimize", TAV_Minimize());
}

static void on_battery(TAV_ServiceParameters *parameters, void *user_data)
{
    char source[32];

    TAV_GetParamString(parameters, "source", source, sizeof source);
    row("reply", "%s", TAV_GetParamJson(parameters));
    row("as boolean", "charging %s", TAV_GetParamBool(parameters, "charging") ? "yes" : "no");
    row("as integer", "percent %d", TAV_GetParamInt(parameters, "percent"));
    row("as double", "temperature %.1f", TAV_GetParamDouble(parameters, "temperature"));
    row("as string", "source %s", source);
    row("is it there", "voltage %s", TAV_ParamExists(parameters, "voltage") ? "yes" : "no");
    *(int *)user_data = 1;
}

static void on_tick(TAV_ServiceParameters *parameters, void *user_data)
{
    (void)parameters;
    if (++*(int *)user_data == 5) {
        TAV_UnregisterServiceCallback(on_tick);
    }
}

static void show_services(void)
{
    int answered = 0;
    int ticks = 0;

    puts("\nServices");
    outcome("one reply", TAV_ServiceCallWithCallback("vire://com.vire.battery/status", "{}",
                                                     on_battery, &answered, SDL_TRUE));
    handle_events(SECOND / 10, NULL);
    row("answered", "%s", answered ? "yes" : "no");
    outcome("subscription",
            TAV_ServiceCallWithCallback("vire://com.vire.clock/ticks", "{\"subscribe\":true}",
                                        on_tick, &ticks, SDL_FALSE));
    handle_events(7 * SECOND, NULL);
    row("replies in 7 seconds", "%d, then unregistered", ticks);
    outcome("refused", TAV_ServiceCall("vire://com.vire.vault/open", "{}"));
}

static void on_location(const SDL_UserEvent *event)
{
    if (event->code == TAV_EVENT_LOCATION) {
        const TAV_Location *fix = (const TAV_Location *)event->data1;
        row("fix", "%.4f, %.4f, %.1f m", fix->latitude, fix->longitude, fix->altitude);
    } else if (event->code == TAV_EVENT_LOCATION_FAILURE) {
        row("failure event", "error %d", *(const int *)event->data1);
    }
}

static void show_location(void)
{
    TAV_Location location;

    puts("\nLocation");
    outcome("before it is on", TAV_GetLocation(&location));
    outcome("track", TAV_EnableLocationTracking(SDL_TRUE));
    handle_events(4 * SECOND, on_location);
    outcome("after the failure", TAV_GetLocation(&location));
    outcome("stop tracking", TAV_EnableLocationTracking(SDL_FALSE));
}

static void show_actions(void)
{
    const char *recipients[] = {"ann@example.com", "bob@example.com"};

    puts("\nDevice actions");
    outcome("vibrate", TAV_Vibrate(100, 500));
    outcome("open port 1025", TAV_SetFirewallPortStatus(1025, SDL_TRUE));
    outcome("open port 80", TAV_SetFirewallPortStatus(80, SDL_TRUE));
    outcome("pause other media", TAV_NotifyMusicPlaying(SDL_TRUE));
    outcome("browser", TAV_LaunchBrowser("http://example.com/"));
    outcome("e-mail", TAV_LaunchEmail("Scores", "1. Ann"));
    outcome("e-mail to two", TAV_LaunchEmailTo("Scores", "1. Ann", 2, recipients));
    handle_events(SECOND, NULL);
}

/* The payment service's answer, or why there is none. */
static void answer(const char *name, const char *json)
{
    row(name, json != NULL ? "%s" : "none: %s", json != NULL ? json : TAV_GetError());
}

static void show_receipt(const char *name, TAV_ItemReceipt *receipt)
{
    answer(name, receipt != NULL ? TAV_GetItemReceiptJSON(receipt) : NULL);
    TAV_FreeItemReceipt(receipt);
}

static void show_purchases(void)
{
    TAV_ItemCollection *items = TAV_GetAvailableItems();
    TAV_ItemInfo *item;

    puts("\nPurchases");
    answer("items", items != NULL ? TAV_GetItemCollectionJSON(items) : NULL);
    TAV_FreeItemCollection(items);
    item = TAV_GetItemInfo("extra-levels");
    answer("one item", item != NULL ? TAV_GetItemJSON(item) : NULL);
    TAV_FreeItemInfo(item);
    show_receipt("receipt", TAV_PurchaseItem("extra-levels", 1, NULL));
    show_receipt("the same, asked for later", TAV_GetPendingPurchaseInfo("A-1001"));
    show_receipt("a refused one", TAV_PurchaseItem("gold-skin", 1, "from the tour"));
}

static void on_greet(TAV_JSParameters *parameters)
{
    row("called from the page", "greet(%s)", TAV_GetJSParamString(parameters, 0));
    TAV_JSReply(parameters, "hello from the native side");
}

static void show_bridge(void)
{
    const char *arguments[] = {"a text from the native side"};

    puts("\nJavaScript bridge");
    outcome("call before", TAV_CallJS("show", arguments, 1));
    TAV_RegisterJSHandler("greet", on_greet);
    outcome("register", TAV_JSRegistrationComplete());
    handle_events(SECOND / 10, NULL);
    outcome("call", TAV_CallJS("show", arguments, 1));
    handle_events(SECOND / 10, NULL);
}

int main(int argc, char *argv[])
{
    char dummy_driver[] = "SDL_VIDEODRIVER=dummy";

    (void)argc;
    (void)argv;
    SDL_putenv(dummy_driver);
    if (SDL_Init(SDL_INIT_VIDEO) != 0) {
        fprintf(stderr, "SDL does not start: %s\n", SDL_GetError());
        return 1;
    }
    TAV_Init(0);
    show_hardware();
    show_identity();
    show_network();
    show_compass();
    show_controls();
    show_services();
    show_location();
    show_actions();
    show_purchases();
    show_bridge();
    TAV_Quit();
    SDL_Quit();
    return 0;
}
