#include "linux/host/in_front.h"

#include <cstdio>

#include "front/in_front.h"

namespace tavlinux {
namespace {

constexpr char kRemedy[] =
    "tav: this program finds %s before libtav's own, so it would receive no replies, readings or "
    "events, and its requests are refused. Start it with `tavsim run --real`, or link it with the "
    "output of `pkg-config --libs tav` before SDL.\n";

bool look() {
    const char* overtaken = front::firstOvertaken();
    if (overtaken != nullptr) {
        std::fprintf(stderr, kRemedy, overtaken);
    }
    return overtaken == nullptr;
}

}  // namespace

bool isInFront() {
    static const bool result = look();
    return result;
}

}  // namespace tavlinux
