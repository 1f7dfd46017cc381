#include <cstdio>

#include "core/handles.h"
#include "core/value.h"
#include "platform/htracker.h"
#include "tav.h"

namespace {

// The parsed reply, or null where no value can be read.
tav::HJsonPtr parseReply(const TAV_ServiceParameters* parameters, const char* key) {
    if (parameters == nullptr || key == nullptr || parameters->reply == nullptr) {
        return nullptr;
    }
    return tav::HJsonPtr(HJson_create(parameters->reply));
}

}  // namespace

const char* TAV_GetParamJson(const TAV_ServiceParameters* parameters) {
    HTracker_funcTrack("tav_f", __func__, "%p", parameters);
    return parameters != nullptr ? parameters->reply : nullptr;
}

SDL_bool TAV_GetParamBool(const TAV_ServiceParameters* parameters, const char* key) {
    HTracker_funcTrack("tav_f", __func__, "%p, %s", parameters, key);
    const tav::HJsonPtr json = parseReply(parameters, key);
    return tav::sdlBool(json != nullptr && HJson_getBool(json.get(), key));
}

double TAV_GetParamDouble(const TAV_ServiceParameters* parameters, const char* key) {
    HTracker_funcTrack("tav_f", __func__, "%p, %s", parameters, key);
    const tav::HJsonPtr json = parseReply(parameters, key);
    return json != nullptr ? HJson_getDouble(json.get(), key) : 0.0;
}

int TAV_GetParamInt(const TAV_ServiceParameters* parameters, const char* key) {
    HTracker_funcTrack("tav_f", __func__, "%p, %s", parameters, key);
    const tav::HJsonPtr json = parseReply(parameters, key);
    return json != nullptr ? HJson_getInt(json.get(), key) : 0;
}

void TAV_GetParamString(const TAV_ServiceParameters* parameters, const char* key, char* buffer,
                        int bufferLength) {
    HTracker_funcTrack("tav_f", __func__, "%p, %s, %p, %d", parameters, key, buffer, bufferLength);
    if (parameters == nullptr || buffer == nullptr || bufferLength < 1) {
        return;
    }
    const auto size = static_cast<size_t>(bufferLength);
    buffer[0] = '\0';
    if (parameters->reply == nullptr) {
        return;
    }
    const tav::HStringPtr value(HJson_getValueFromStr(parameters->reply, key));
    if (value == nullptr) {
        HTracker_funcTrack("tav_1", __func__, "couldn't parse");
        return;
    }
    if (value->length >= size) {
        HTracker_funcTrack("tav_1", __func__, "string too small");
        return;
    }
    std::snprintf(buffer, size, "%s", HString_toStr(value.get()));
}

SDL_bool TAV_ParamExists(const TAV_ServiceParameters* parameters, const char* key) {
    HTracker_funcTrack("tav_f", __func__, "%p, %s", parameters, key);
    const tav::HJsonPtr json = parseReply(parameters, key);
    return tav::sdlBool(json != nullptr && HJson_valueExists(json.get(), key));
}
