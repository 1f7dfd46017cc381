#include "simulator/input/touch.h"

#include <algorithm>
#include <optional>

#include "input/events.h"
#include "simulator/input/origin.h"
#include "simulator/time/queue.h"

namespace tavsim {
namespace {

constexpr Milliseconds kDragStep = 20;
constexpr int kMovesAtOnce = 10;  // of a drag without a duration

struct Drag {
    Point from;
    Point to;
    Milliseconds begin;
    Milliseconds time;
};

std::optional<Drag> g_drag;

bool isFree(std::string* error) {
    if (g_drag) {
        *error = "a drag is under way";
    }
    return !g_drag;
}

bool sendOwn(const input::Finger& finger, std::string* error) {
    return input::sendEvents(finger.events(), noteOwnEvent, error);
}

Point pointOf(const Drag& drag, double share) {
    const auto between = [share](int from, int to) {
        return from + static_cast<int>(share * (to - from));
    };
    return {between(drag.from.x, drag.to.x), between(drag.from.y, drag.to.y)};
}

void dragOn();

void scheduleDrag() {
    const Milliseconds end = after(g_drag->begin, g_drag->time);
    schedule(now() < end ? std::min(after(now(), kDragStep), end) : after(now(), kDragStep),
             "input", dragOn);
}

// If the queue has no room for a step, it is done later.
void dragOn() {
    const Drag drag = *g_drag;
    const double share =
        std::min(1.0, static_cast<double>(now() - drag.begin) / static_cast<double>(drag.time));
    input::Finger finger;
    if (share < 1.0) {
        finger.moveTo(pointOf(drag, share));
    } else {
        finger.release(drag.to);
    }
    std::string error;
    const bool isSent = sendOwn(finger, &error);
    if ((isSent && share >= 1.0) || !input::queueRoom()) {
        g_drag.reset();
        return;
    }
    scheduleDrag();
}

}  // namespace

bool touchDown(const Point& point, std::string* error) {
    input::Finger finger;
    if (!isFree(error) || !input::canPress(finger, point, error)) {
        return false;
    }
    finger.press(point);
    return sendOwn(finger, error);
}

bool touchMove(const Point& point, std::string* error) {
    if (!isFree(error) || !input::canMove(point, error)) {
        return false;
    }
    input::Finger finger;
    finger.moveTo(point);
    return sendOwn(finger, error);
}

bool touchUp(const Point& point, std::string* error) {
    input::Finger finger;
    if (!isFree(error) || !input::canRelease(finger, point, error)) {
        return false;
    }
    finger.release(point);
    return sendOwn(finger, error);
}

bool tapScreen(const Point& point, std::string* error) {
    input::Finger finger;
    if (!isFree(error) || !input::canPress(finger, point, error)) {
        return false;
    }
    finger.press(point);
    finger.release(point);
    return sendOwn(finger, error);
}

bool dragFinger(const Point& from, const Point& to, Milliseconds time, std::string* error) {
    input::Finger finger;
    if (!isFree(error) || !input::canPress(finger, from, error) || !input::canMove(to, error)) {
        return false;
    }
    const Drag drag = {from, to, now(), time};
    finger.press(from);
    if (time == 0) {
        for (int move = 1; move < kMovesAtOnce; ++move) {
            finger.moveTo(pointOf(drag, static_cast<double>(move) / kMovesAtOnce));
        }
        finger.release(to);
    }
    if (!sendOwn(finger, error)) {
        return false;
    }
    if (time > 0) {
        g_drag = drag;
        scheduleDrag();
    }
    return true;
}

void stopDrag() {
    g_drag.reset();
}

}  // namespace tavsim
