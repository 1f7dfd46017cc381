#include "linux/services/vibration.h"

#include <algorithm>

#include "linux/application/application.h"
#include "linux/bus/connection.h"
#include "linux/services/haptic_device.h"
#include "linux/services/members.h"

namespace tavlinux {
namespace {

constexpr char kService[] = "org.sigxcpu.Feedback";
constexpr char kPath[] = "/org/sigxcpu/Feedback";
constexpr char kNoMotor[] = "there is nothing that vibrates";
constexpr int64_t kMostPulses = 100;  // feedbackd takes no patterns of any length
constexpr int64_t kLongest = G_MAXINT32;

// Strengths with durations.
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

// An event that vibrates in every theme, with what would sound left out.
GVariant* event(int64_t duration) {
    GVariantBuilder hints;
    g_variant_builder_init(&hints, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&hints, "{sv}", "profile", g_variant_new_string("quiet"));
    return g_variant_new("(ssa{sv}i)", applicationId().c_str(), "phone-incoming-call", &hints,
                         static_cast<gint>((duration + 999) / 1000));
}

void answerWithMotor(int64_t period, int64_t duration, const Answer& answer) {
    answer(runMotor(period, duration) ? kDone : failure(kNoMotor));
}

}  // namespace

Dispatched vibrate(const simdjson::dom::object& request, const Answer& answer) {
    const int64_t period = std::clamp<int64_t>(integerMember(request, "period"), 0, kLongest);
    const int64_t duration = std::clamp<int64_t>(integerMember(request, "duration"), 0, kLongest);
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
            // An older feedbackd plays events, and no patterns.
            call({Bus::Session, kService, kPath, kService, "TriggerFeedback"}, event(duration),
                 afterEvent);
        }
    };
    const Method haptic{Bus::Session, kService, kPath, "org.sigxcpu.Feedback.Haptic", "Vibrate"};
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
