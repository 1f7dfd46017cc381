// Vibration, by feedbackd or by the motor itself, an input device with force feedback.
#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <utility>

#include "base/file.h"
#include "base/json/text.h"
#include "linux/application/application.h"
#include "linux/bus/connection.h"
#include "linux/services/services.h"

namespace tavlinux {
namespace {

constexpr char kFeedback[] = "org.sigxcpu.Feedback";
constexpr char kFeedbackPath[] = "/org/sigxcpu/Feedback";
constexpr char kNoMotor[] = "there is nothing that vibrates";
constexpr int64_t kMostPulses = 100;  // feedbackd takes no patterns of any length
constexpr int64_t kLongest = G_MAXINT32;
constexpr char kDevices[] = "/dev/input";
constexpr int64_t kLongestEffect = 0x7fff;

int64_t timeMember(const simdjson::dom::object& request, const char* name) {
    const int64_t time = base::memberOf<int64_t>(request, name).value_or(0);
    return std::clamp<int64_t>(time, 0, kLongest);
}

// A list of strengths with durations.
GVariant* pattern(int64_t period, int64_t duration) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a(du)"));
    const int64_t length = std::max(period, duration / kMostPulses);
    if (period < 2) {
        g_variant_builder_add(&builder, "(du)", 1.0, static_cast<guint>(duration));
    }
    for (int64_t at = 0; period >= 2 && at < duration; at += length) {
        const int64_t left = std::min(length, duration - at);
        const int64_t on = std::min(length / 2, left);
        g_variant_builder_add(&builder, "(du)", 1.0, static_cast<guint>(on));
        if (left > on) {
            g_variant_builder_add(&builder, "(du)", 0.0, static_cast<guint>(left - on));
        }
    }
    return g_variant_new("(sa(du))", applicationId().c_str(), &builder);
}

// An event that vibrates in every theme. The quiet profile leaves out its sound.
GVariant* event(int64_t duration) {
    GVariantBuilder hints;
    g_variant_builder_init(&hints, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&hints, "{sv}", "profile", g_variant_new_string("quiet"));
    return g_variant_new("(ssa{sv}i)", applicationId().c_str(), "phone-incoming-call", &hints,
                         static_cast<gint>((duration + 999) / 1000));
}

bool canRumble(int device) {
    unsigned char bits[FF_MAX / CHAR_BIT + 1] = {};
    const bool answered = ioctl(device, EVIOCGBIT(EV_FF, sizeof bits), bits) >= 0;
    return answered && (bits[FF_RUMBLE / CHAR_BIT] >> (FF_RUMBLE % CHAR_BIT) & 1) != 0;
}

int openMotor() {
    for (const std::string& path : base::entriesOf(kDevices)) {
        const bool isEvents = path.find("/event") != std::string::npos;
        const int device = isEvents ? open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC) : -1;
        if (device >= 0 && canRumble(device)) {
            return device;
        }
        if (device >= 0) {
            close(device);
        }
    }
    return -1;
}

// Starts the motor and returns. False when there is none that the user may use.
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

void answerWithMotor(int64_t period, int64_t duration, const Answer& answer) {
    answer(runMotor(period, duration) ? kDone : failure(kNoMotor));
}

}  // namespace

Dispatched vibrate(const simdjson::dom::object& request, const Answer& answer) {
    const int64_t period = timeMember(request, "period");
    const int64_t duration = timeMember(request, "duration");
    const auto afterEvent = [=](const GVariant* result, const GError*) {
        if (result != nullptr) {
            answer(kDone);
        } else {
            answerWithMotor(period, duration, answer);
        }
    };
    const auto afterPattern = [=](GVariant* result, const GError* problem) {
        gboolean vibrates = FALSE;
        if (isOfType(result, "(b)")) {
            g_variant_get(result, "(b)", &vibrates);
        }
        if (vibrates != FALSE) {
            answer(kDone);
        } else if (problem == nullptr || isNobodyThere(problem)) {
            answerWithMotor(period, duration, answer);
        } else {
            // An older feedbackd plays events, but no patterns.
            call({Bus::Session, kFeedback, kFeedbackPath, kFeedback, "TriggerFeedback"},
                 event(duration), afterEvent);
        }
    };
    const Method haptic{Bus::Session, kFeedback, kFeedbackPath, "org.sigxcpu.Feedback.Haptic",
                        "Vibrate"};
    if (call(haptic, pattern(period, duration), afterPattern)) {
        return Stop();
    }
    if (!runMotor(period, duration)) {
        return std::nullopt;
    }
    answer(kDone);
    return Stop();
}

}  // namespace tavlinux
