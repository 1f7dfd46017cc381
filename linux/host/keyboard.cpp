#include "linux/host/keyboard.h"

#include "linux/bus/connection.h"

namespace tavlinux {

bool showKeyboard(bool visible) {
    constexpr char service[] = "sm.puri.OSK0";
    const Method setVisible{Bus::Session, service, "/sm/puri/OSK0", service, "SetVisible"};
    return callBriefly(setVisible, g_variant_new("(b)", visible ? TRUE : FALSE), "()") != nullptr;
}

}  // namespace tavlinux
