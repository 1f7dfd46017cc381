#include "bridge/page_input.h"

#include <optional>
#include <utility>

#include "front/mouse.h"
#include "input/events.h"
#include "input/keyboard.h"

namespace bridge {
namespace {

// In bytes. More does not fit into SDL's queue of events.
constexpr size_t kLongestText = 512;

}  // namespace

bool PageInput::touch(std::string_view action, const input::Point& point) {
    std::string refusal;
    input::Finger finger;
    if (action == "up") {
        touchUp(point);
    } else if (action == "down") {
        if (input::canPress(finger, point, &refusal)) {
            finger.press(point);
            m_isTouching = true;
        }
    } else if (action == "move") {
        if (input::canMove(point, &refusal)) {
            finger.moveTo(point);
        }
    } else {
        return false;
    }
    input::sendOrDrop(finger.events());
    return true;
}

// A finger may leave the surface before it is taken away.
void PageInput::touchUp(const input::Point& point) {
    std::string refusal;
    input::Finger finger;
    if (!std::exchange(m_isTouching, false) || !finger.isDown()) {
        return;
    }
    const front::Mouse mouse = front::mouseNow();
    finger.release(input::canMove(point, &refusal) ? point : input::Point{mouse.x, mouse.y});
    input::sendOrDrop(finger.events());
}

// A key that is held is not pressed again: SDL takes no repetitions from a keyboard.
void PageInput::key(bool isPressed, std::string_view name) {
    std::string unknown;
    const std::optional<SDLKey> key = input::keyNamed(name, &unknown);
    if (!key) {
        return;
    }
    input::KeyStrokes strokes;
    if (isPressed && m_pressed.insert(*key).second) {
        strokes.press(*key);
    } else if (!isPressed && m_pressed.erase(*key) > 0) {
        strokes.release(*key);
    }
    input::sendOrDrop(strokes.events());
}

void PageInput::type(const std::string& text) {
    input::KeyStrokes strokes;
    std::string refusal;
    if (text.size() <= kLongestText && strokes.type(text, &refusal)) {
        input::sendOrDrop(strokes.events());
    }
}

void PageInput::release() {
    const front::Mouse mouse = front::mouseNow();
    touchUp({mouse.x, mouse.y});
    input::KeyStrokes strokes;
    for (const SDLKey held : std::exchange(m_pressed, {})) {
        strokes.release(held);
    }
    input::sendOrDrop(strokes.events());
}

}  // namespace bridge
