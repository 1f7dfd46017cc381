// setTimeout, setInterval, clearTimeout and clearInterval. The script's functions are kept here;
// the device's clock says when they are due.
#include "simulator/page/script.h"

namespace tavsim {
namespace {

// Timers by number: [interval or kOnce, function, arguments…].
constexpr char kTimers[] = "timers";
constexpr duk_uarridx_t kInterval = 0;
constexpr duk_uarridx_t kFunction = 1;

constexpr int kOnce = 0;
constexpr int kShortestDelay = 1;  // so that the clock always moves on between a script's timers

// The limit of pending timers: a script that sets them without end would use up the application's
// memory.
constexpr int kMostTimers = 20'000;

enum Repetition { kOneShot, kRepeating };

int g_lastTimer = 0;
int g_pendingTimers = 0;

void tellDevice(int timer, int delay) {
    ++g_pendingTimers;
    beginMessage(bridge::MessageKind::SetTimer);
    addInt(timer);
    addInt(delay);
    sendMessage();
}

// setTimeout, setInterval(function, delay, arguments…); the magic number is the repetition.
duk_ret_t setTimer(duk_context* engine) {
    duk_require_function(engine, 0);
    if (g_pendingTimers == kMostTimers) {
        return throwError(engine, DUK_ERR_RANGE_ERROR, "too many timers");
    }
    const int asked = duk_get_top(engine) > 1 ? duk_to_int(engine, 1) : 0;
    const int delay = asked < kShortestDelay ? kShortestDelay : asked;
    const int timer = ++g_lastTimer;

    const duk_idx_t arguments = duk_get_top(engine);
    pushHidden(engine, kTimers);
    duk_push_bare_array(engine);
    duk_push_int(engine, duk_get_current_magic(engine) == kRepeating ? delay : kOnce);
    duk_put_prop_index(engine, -2, kInterval);
    duk_dup(engine, 0);
    duk_put_prop_index(engine, -2, kFunction);
    for (duk_idx_t argument = 2; argument < arguments; ++argument) {
        duk_dup(engine, argument);
        duk_put_prop_index(engine, -2, static_cast<duk_uarridx_t>(argument));
    }
    duk_put_prop_index(engine, -2, static_cast<duk_uarridx_t>(timer));

    tellDevice(timer, delay);
    duk_push_int(engine, timer);
    return 1;
}

// clearTimeout, clearInterval. The timer still falls due on the device, but has no function then.
duk_ret_t clearTimer(duk_context* engine) {
    pushHidden(engine, kTimers);
    duk_dup(engine, 0);
    duk_del_prop(engine, -2);
    return 0;
}

constexpr Function kFunctions[] = {
    {"setTimeout", setTimer, DUK_VARARGS, kOneShot},
    {"setInterval", setTimer, DUK_VARARGS, kRepeating},
    {"clearTimeout", clearTimer, 1, 0},
    {"clearInterval", clearTimer, 1, 0},
};

}  // namespace

void addTimers(duk_context* engine) {
    addFunctions(engine, kFunctions);
}

void runTimer(duk_context* engine) {
    --g_pendingTimers;
    const int timer = readInt();
    const auto key = static_cast<duk_uarridx_t>(timer);
    pushHidden(engine, kTimers);
    if (!duk_get_prop_index(engine, -1, key)) {
        return;
    }
    const duk_idx_t parts = duk_get_top_index(engine);
    duk_get_prop_index(engine, parts, kInterval);
    const int interval = duk_get_int(engine, -1);
    if (interval == kOnce) {
        duk_del_prop_index(engine, parts - 1, key);
    } else {
        tellDevice(timer, interval);
    }
    const auto count = static_cast<duk_uarridx_t>(duk_get_length(engine, parts));
    for (duk_uarridx_t part = kFunction; part < count; ++part) {
        duk_require_stack(engine, 1);
        duk_get_prop_index(engine, parts, part);
    }
    duk_call(engine, static_cast<duk_idx_t>(count - kFunction - 1));
}

}  // namespace tavsim
