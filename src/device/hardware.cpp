#include "device/hardware.h"

#include <cstring>

#include "core/report.h"
#include "platform/hhardware.h"
#include "platform/napp.h"
#include "tav.h"

namespace tav {

Sint32 g_hardwareType = kUnknownHardware;

}  // namespace tav

namespace {

using tav::kUnknownHardware;

struct Model {
    Sint32 id;
    const char* machine;
    TAV_ScreenMetrics screen;
};

constexpr Model kModels[] = {
    {101, "harrow", {320, 480, 213, 183, 1.164}},     {102, "harrow+", {320, 480, 213, 183, 1.164}},
    {201, "quern", {320, 400, 190, 190, 1.0}},        {301, "tamarisk", {320, 400, 190, 190, 1.0}},
    {401, "marshlight", {320, 480, 213, 183, 1.164}}, {501, "cinnabar", {480, 800, 260, 260, 1.0}},
    {601, "ember", {1024, 768, 132, 132, 1.0}},       {701, "fern", {1024, 768, 182, 182, 1.0}},
};

const char* machineName() {
    const char* spoofed = NApp_GetPortabilityValue("final_spoofing");
    return spoofed != nullptr ? spoofed : HHardware_getMachine();
}

Sint32 doGetHardwareID() {
    HTracker_funcTrack("tav_f", __func__, "--");
    const char* name = machineName();
    if (name == nullptr) {
        return kUnknownHardware;
    }
    for (const Model& model : kModels) {
        if (std::strcmp(name, model.machine) == 0) {
            return model.id;
        }
    }
    return kUnknownHardware;
}

int getDeviceScreenMetrics(Sint32 hardwareId, TAV_ScreenMetrics* metrics) {
    for (const Model& model : kModels) {
        if (model.id == hardwareId) {
            *metrics = model.screen;
            return TAV_NOERROR;
        }
    }
    HTracker_funcTrack("tav_1", __func__, "returning unknown hardware");
    *metrics = {};
    return TAV_FAIL(__func__, TAV_EOTHER, "unknown hardware");
}

}  // namespace

int TAV_GetHardwareID(void) {
    HTracker_funcTrack("tav_f", __func__, "--");
    if (tav::g_hardwareType == kUnknownHardware) {
        tav::g_hardwareType = doGetHardwareID();
    }
    return tav::g_hardwareType;
}

const char* TAV_GetHardware(void) {
    HTracker_funcTrack("tav_f", __func__, "--");
    switch (TAV_GetHardwareID()) {
    case 101:
    case 102:
        return "zon";
    case 201:
        return "lute";
    default:
        return "unknown";
    }
}

int TAV_GetScreenMetrics(TAV_ScreenMetrics* outMetrics) {
    HTracker_funcTrack("tav_f", __func__, "(NON-HAL) %p", static_cast<void*>(outMetrics));
    if (outMetrics == nullptr) {
        return TAV_FAIL(__func__, TAV_INVALIDINPUT, "outMetrics must not be NULL");
    }
    return getDeviceScreenMetrics(TAV_GetHardwareID(), outMetrics);
}
