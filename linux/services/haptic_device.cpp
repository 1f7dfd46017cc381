#include "linux/services/haptic_device.h"

#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <filesystem>
#include <string>
#include <utility>

namespace fs = std::filesystem;

namespace tavlinux {
namespace {

constexpr char kDevices[] = "/dev/input";
constexpr int64_t kLongestEffect = 0x7fff;

bool canRumble(int device) {
    unsigned char bits[FF_MAX / CHAR_BIT + 1] = {};
    const bool answered = ioctl(device, EVIOCGBIT(EV_FF, sizeof bits), bits) >= 0;
    return answered && (bits[FF_RUMBLE / CHAR_BIT] >> (FF_RUMBLE % CHAR_BIT) & 1) != 0;
}

int openMotor() {
    std::error_code problem;
    for (fs::directory_iterator at(kDevices, problem), end; !problem && at != end;
         at.increment(problem)) {
        if (!at->path().filename().string().starts_with("event")) {
            continue;
        }
        const int device = open(at->path().c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        if (device >= 0 && canRumble(device)) {
            return device;
        }
        if (device >= 0) {
            close(device);
        }
    }
    return -1;
}

}  // namespace

bool runMotor(int64_t period, int64_t duration) {
    // An effect lasts no longer than its device is open, so it stays open until the next.
    static int motor = -1;
    if (motor >= 0) {
        close(std::exchange(motor, -1));
    }
    motor = openMotor();
    if (motor < 0) {
        return false;
    }
    const int64_t length =
        std::min(period >= 2 ? std::min(period, duration) : duration, kLongestEffect);
    ff_effect effect = {};
    effect.type = FF_RUMBLE;
    effect.id = -1;
    effect.u.rumble.strong_magnitude = USHRT_MAX;
    effect.u.rumble.weak_magnitude = USHRT_MAX;
    effect.replay.length = static_cast<__u16>(period >= 2 ? (length + 1) / 2 : length);
    effect.replay.delay = static_cast<__u16>(length - effect.replay.length);
    if (ioctl(motor, EVIOCSFF, &effect) < 0) {
        return false;
    }
    input_event play = {};
    play.type = EV_FF;
    play.code = static_cast<__u16>(effect.id);
    play.value = static_cast<__s32>(std::max<int64_t>(1, duration / std::max<int64_t>(1, length)));
    return write(motor, &play, sizeof play) == static_cast<ssize_t>(sizeof play);
}

}  // namespace tavlinux
