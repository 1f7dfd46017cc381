/* The functions that the device's build of SDL adds to SDL 1.2.
 *
 * Each switch takes an SDL_bool's value as it is, in full, and answers non-zero when the request
 * was accepted, 0 when it was refused. */
#ifndef TAV_PLATFORM_SDL_NIMBO_H
#define TAV_PLATFORM_SDL_NIMBO_H

#include "SDL.h"
#include "visibility.h"

#ifdef __cplusplus
extern "C" {
#endif

/* True when the application runs as a plug-in component inside a web application. */
TAV_PLATFORM_API SDL_bool SDL_NimboHookIsComponent(void);

/* Turns the screen: "bottom", "right", "top" or "left". */
TAV_PLATFORM_API int SDL_NimboHookSetOrientation(const char* orientation);

TAV_PLATFORM_API int SDL_NimboHookSetGesturesEnable(int enable);
TAV_PLATFORM_API int SDL_NimboHookBannerMessagesEnable(int enable);
TAV_PLATFORM_API int SDL_NimboHookCustomPauseUiEnable(int enable);
TAV_PLATFORM_API int SDL_NimboHookScreenTimeoutEnable(int enable);

#ifdef __cplusplus
}
#endif

#endif
