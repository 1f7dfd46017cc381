#include <cstdio>
#include <cstring>

#include "core/buffer.h"
#include "core/handles.h"
#include "core/report.h"
#include "core/status.h"
#include "platform/napp.h"
#include "tav.h"

namespace {

using tav::checkBuffer;
using tav::convertFromNAppError;

constexpr char kUniqueIdFile[] = "/proc/nduid";
constexpr int kUniqueIdMinimumLength = 64;
constexpr char kCallingPath[] = "./";
constexpr int kGestureBack = SDLK_ESCAPE;
constexpr int kGestureForward = SDLK_WORLD_69;
constexpr int kGestureArea = SDLK_WORLD_71;

using File = tav::Owner<std::FILE, std::fclose>;

}  // namespace

int TAV_GetUniqueID(char* buffer, int bufferLength) {
    HTracker_funcTrack("tav_f", __func__, "%p, %d", static_cast<void*>(buffer), bufferLength);
    if (const int error = checkBuffer(__func__, buffer, bufferLength, tav::LengthMessage::Invalid);
        error != TAV_NOERROR) {
        return error;
    }
    if (bufferLength < kUniqueIdMinimumLength) {
        return TAV_FAIL(__func__, TAV_STRINGTOOSMALL, "buffer must be at least 64 bytes in length");
    }
    buffer[0] = '\0';
    const File file(std::fopen(kUniqueIdFile, "rb"));
    if (file == nullptr) {
        return TAV_FAIL(__func__, TAV_EDATAACCESS, "could not access ID file");
    }
    std::size_t length =
        std::fread(buffer, 1, static_cast<std::size_t>(bufferLength) - 1, file.get());
    buffer[length] = '\0';
    if (length == 0) {
        return TAV_FAIL(__func__, TAV_EDATAACCESS, "could not read ID file");
    }
    if (buffer[length - 1] == '\n') {
        buffer[length - 1] = '\0';
    }
    return TAV_NOERROR;
}

int TAV_GetCallingPath(char* buffer, int bufferLength) {
    HTracker_funcTrack("tav_f", __func__, "%p, %d", static_cast<void*>(buffer), bufferLength);
    if (const int error = checkBuffer(__func__, buffer, bufferLength, tav::LengthMessage::Invalid);
        error != TAV_NOERROR) {
        return error;
    }
    if (bufferLength < static_cast<int>(sizeof kCallingPath)) {
        return TAV_FAIL(__func__, TAV_STRINGTOOSMALL,
                        "buffer too small. Required length 3, buffer length %d", bufferLength);
    }
    std::memcpy(buffer, kCallingPath, sizeof kCallingPath);
    return TAV_NOERROR;
}

int TAV_GetDataFilePath(const char* dataFileName, char* buffer, int bufferLength) {
    HTracker_funcTrack("tav_f", __func__, "%s, %p, %d", dataFileName, static_cast<void*>(buffer),
                       bufferLength);
    if (const int error = checkBuffer(__func__, buffer, bufferLength); error != TAV_NOERROR) {
        return error;
    }
    if (dataFileName == nullptr) {
        return TAV_FAIL(__func__, TAV_INVALIDINPUT, "dataFileName is NULL");
    }
    return convertFromNAppError(NApp_GetDataFilePath(dataFileName, buffer, bufferLength));
}

int TAV_GetAppinfoValue(const char* name, char* buffer, int bufferLength) {
    HTracker_funcTrack("tav_f", __func__, "%s, %p, %d", name, static_cast<void*>(buffer),
                       bufferLength);
    if (const int error = checkBuffer(__func__, buffer, bufferLength); error != TAV_NOERROR) {
        return error;
    }
    if (name == nullptr) {
        return TAV_FAIL(__func__, TAV_INVALIDINPUT, "name is NULL");
    }
    if (*name == '\0') {
        return TAV_FAIL(__func__, TAV_INVALIDINPUT, "name must not be blank");
    }
    return convertFromNAppError(NApp_GetAppinfoValue(name, buffer, bufferLength));
}

const char* TAV_GetKeyName(int key) {
    HTracker_funcTrack("tav_f", __func__, "%d", key);
    switch (key) {
    case kGestureBack:
        return "Gesture back";
    case kGestureForward:
        return "Gesture forward";
    case kGestureArea:
        return "Gesture area";
    default:
        return SDL_GetKeyName(static_cast<SDLKey>(key));
    }
}
