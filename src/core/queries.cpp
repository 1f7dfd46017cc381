#include "SDL.h"
#include "platform/htracker.h"
#include "platform/sdl_nimbo.h"
#include "tav.h"

namespace {

constexpr int kKobVersion = 300;

}  // namespace

const char* TAV_GetError(void) {
    HTracker_funcTrack("tav_f", __func__, "--");
    return SDL_GetError();
}

SDL_bool TAV_IsPlugin(void) {
    HTracker_funcTrack("tav_f", __func__, "--");
    return SDL_NimboHookIsComponent();
}

int TAV_GetKOBVersion(void) {
    HTracker_funcTrack("tav_f", __func__, "--");
    return kKobVersion;
}
