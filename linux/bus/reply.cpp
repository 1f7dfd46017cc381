#include "linux/bus/reply.h"

#include <utility>

#include "base/json/writer.h"
#include "platform/htracker.h"

namespace tavlinux {

std::string failure(const std::string& text) {
    HTracker_funcTrack("tav_e", "HKSCaller", "%s", text.c_str());
    return base::JsonWriter()
        .beginObject()
        .member("returnValue", false)
        .member("errorCode", -1)
        .member("errorText", text)
        .endObject()
        .take();
}

std::string failure(const GError* problem) {
    char* name = g_dbus_error_get_remote_error(problem);
    GError* plain = g_error_copy(problem);
    g_dbus_error_strip_remote_error(plain);
    const std::string prefix = name != nullptr ? std::string(name) + ": " : "";
    std::string reply = failure(prefix + plain->message);
    g_error_free(plain);
    g_free(name);
    return reply;
}

std::function<void(GVariant*, const GError*)> doneOrFailure(Answer answer) {
    return [answer = std::move(answer)](const GVariant* result, const GError* problem) {
        answer(result != nullptr ? kDone : failure(problem));
    };
}

}  // namespace tavlinux
