#include "linux/bus/reply.h"

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
    g_autofree char* name = g_dbus_error_get_remote_error(problem);
    g_autoptr(GError) plain = g_error_copy(problem);
    g_dbus_error_strip_remote_error(plain);
    const std::string prefix = name != nullptr ? std::string(name) + ": " : "";
    return failure(prefix + plain->message);
}

}  // namespace tavlinux
