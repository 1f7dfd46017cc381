// The user's input as the application sees it: keys, text, touches and the window.
#include <cstdio>

#include "simulator/control/commands.h"
#include "transcript.h"

namespace {

class InputTest : public tavtest::TranscriptTest {
protected:
    void SetUp() override {
        TranscriptTest::SetUp();
        SDL_SetVideoMode(480, 320, 16, SDL_SWSURFACE);
        userEvents();
    }

    void TearDown() override {
        SDL_SetEventFilter(nullptr);
        TranscriptTest::TearDown();
    }

    static std::string textOf(const SDL_Event& event) {
        const bool isPressed = event.type == SDL_KEYDOWN || event.type == SDL_MOUSEBUTTONDOWN;
        const SDL_keysym& key = event.key.keysym;
        switch (event.type) {
        case SDL_KEYDOWN:
        case SDL_KEYUP:
            return join(isPressed ? '+' : '-', SDL_GetKeyName(key.sym), std::hex, " mod ", key.mod,
                        " unicode ", key.unicode);
        case SDL_MOUSEMOTION:
            return join("to ", event.motion.x, ',', event.motion.y, " by ", event.motion.xrel, ',',
                        event.motion.yrel, " with ", +event.motion.state);
        case SDL_MOUSEBUTTONDOWN:
        case SDL_MOUSEBUTTONUP:
            return join(isPressed ? "down " : "up ", +event.button.button, " at ", event.button.x,
                        ',', event.button.y);
        case SDL_ACTIVEEVENT:
            return join("gain ", +event.active.gain, " of ", +event.active.state);
        default:
            return join("event ", +event.type);
        }
    }

    // The events in the queue, and SDL's state of the mouse and the keys.
    static std::string arrived() {
        std::string text;
        for (SDL_Event event; SDL_PollEvent(&event) != 0;) {
            text += textOf(event) + "; ";
        }
        int x = -1, y = -1;
        const int buttons = SDL_GetMouseState(&x, &y);
        EXPECT_EQ(SDL_GetMouseState(nullptr, nullptr), buttons);
        text += join("mouse ", x, ',', y, ' ', buttons, " keys");
        int count = 0;
        const Uint8* keys = SDL_GetKeyState(&count);
        for (int key = 0; key < count; ++key) {
            text += keys[key] != SDL_RELEASED ? " " + std::to_string(key) : "";
        }
        SDL_ClearError();  // some builds of SDL set an error when there is no keyboard any more
        return join(text, " mod ", SDL_GetModState());
    }

    void give(const std::vector<std::string>& lines) {
        for (const std::string& line : lines) {
            show(line, [&] {
                const std::string error = tavsim::carryOut(line).error;
                return error.empty() ? arrived() : error + " -> " + arrived();
            });
        }
    }
};

TEST_F(InputTest, Keys) {
    give({"key tap left", "key down a", "key up a"});
    SDL_EnableUNICODE(1);
    give(
        split("key tap a|key tap return|key tap backspace|key tap f1|key tap [7]|key tap enter|"
              "key tap world 73|key tap '|key down left shift|key tap a|key tap 2|"
              "key up left shift|key down right shift|key tap '|key up right shift|"
              "key down left ctrl|key tap c|key up left ctrl|key down caps lock|key tap a|"
              "key tap 2|text Ab|key tap caps lock|key down numlock|key tap [7]|key tap numlock|"
              "text \xc3\xa9 \xe2\x82\xac"));
    SDL_EnableUNICODE(0);
    give({"text A1"});
    SDL_EventState(SDL_KEYUP, SDL_IGNORE);
    give({"key tap a"});
    SDL_EventState(SDL_KEYUP, SDL_ENABLE);
    SDL_SetEventFilter([](const SDL_Event* event) { return event->type == SDL_QUIT ? 0 : 1; });
    give({"quit"});
}

TEST_F(InputTest, Touches) {
    const auto relative = [] {
        int x = 0, y = 0;
        SDL_GetRelativeMouseState(&x, &y);
        return join(x, ',', y);
    };
    give({"touch down 100 50", "touch move 90 60", "touch move 90 60", "touch up 90 60"});
    CALL(relative());
    CALL(relative());
    give({"tap 479 319"});
    SDL_WarpMouse(7, 8);
    userEvents();
    CALL(arrived());  // the real mouse has moved
    give({"drag 0 0 100 200", "touch move 0 0", "drag 0 0 40 80 40ms", "tap 5 5"});

    // A drag takes time. What does not fit into a full queue comes later.
    device.advance(20);
    CALL(arrived());
    SDL_Event other{};
    other.type = SDL_USEREVENT;
    while (SDL_PushEvent(&other) == 0) {}
    device.advance(20);
    userEvents();
    CALL(arrived());
    device.advance(20);
    CALL(arrived());
    give({"tap 5 5"});
}

TEST_F(InputTest, TheWindowComesAndGoes) {
    const int shown = SDL_GetAppState();
    give({"key down left ctrl", "window minimize"});
    EXPECT_EQ(SDL_GetAppState() & (SDL_APPACTIVE | SDL_APPINPUTFOCUS), 0);
    give({"window restore"});
    EXPECT_EQ(SDL_GetAppState(), shown);
}

TEST_F(InputTest, WhatCannotBeIsOneErrorAndDoesNothing) {
    give(seedLines("commands", "malformed_input"));
    SDL_QuitSubSystem(SDL_INIT_VIDEO);
    give({"key tap a", "text a", "quit", "window minimize", "tap 0 0"});
}

}  // namespace
