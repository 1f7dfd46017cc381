#include "linux/host/in_front.h"

#include <string>

#include "base/print_line.h"
#include "front/next.h"

namespace tavlinux {
namespace {

constexpr char kRemedy[] =
    " before libtav's own, so it would receive no replies, readings or events, and its requests "
    "are refused. Start it with `tavsim run --real`, or link it with the output of `pkg-config "
    "--libs "
    "tav` before SDL.";

bool look() {
    const char* overtaken = front::firstOvertaken();
    if (overtaken != nullptr) {
        base::printLine(stderr, std::string("tav: this program finds ") + overtaken + kRemedy);
    }
    return overtaken == nullptr;
}

}  // namespace

bool isInFront() {
    static const bool result = look();
    return result;
}

}  // namespace tavlinux
