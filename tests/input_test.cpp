// What the user does: keys, texts, touches and the window, as the application sees it.
#include <cstdio>

#include "device_test.h"
#include "simulator/control/commands.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr int kWidth = 480;
constexpr int kHeight = 320;

class InputTest : public tavtest::EventTest {
protected:
    void SetUp() override {
        EventTest::SetUp();
        SDL_SetVideoMode(kWidth, kHeight, 16, SDL_SWSURFACE);
        events();
    }

    void TearDown() override {
        SDL_SetEventFilter(nullptr);
        EventTest::TearDown();
    }

    static std::string command(const std::string& line) { return tavsim::carryOut(line).error; }

    static std::string textOf(const SDL_Event& event) {
        char text[100];
        const SDL_keysym& key = event.key.keysym;
        switch (event.type) {
        case SDL_KEYDOWN:
        case SDL_KEYUP:
            std::snprintf(text, sizeof text, "%c%s mod %x unicode %x",
                          event.type == SDL_KEYDOWN ? '+' : '-', SDL_GetKeyName(key.sym), key.mod,
                          key.unicode);
            return text;
        case SDL_MOUSEMOTION:
            std::snprintf(text, sizeof text, "to %d,%d by %d,%d with %d", event.motion.x,
                          event.motion.y, event.motion.xrel, event.motion.yrel, event.motion.state);
            return text;
        case SDL_MOUSEBUTTONDOWN:
        case SDL_MOUSEBUTTONUP:
            std::snprintf(text, sizeof text, "%s %d at %d,%d", event.button.state ? "down" : "up",
                          event.button.button, event.button.x, event.button.y);
            return text;
        case SDL_ACTIVEEVENT:
            std::snprintf(text, sizeof text, "gain %d of %d", event.active.gain,
                          event.active.state);
            return text;
        default:
            return "event " + std::to_string(event.type);
        }
    }

    // Takes all events off the queue.
    static std::vector<std::string> events() {
        std::vector<std::string> texts;
        for (SDL_Event event; SDL_PollEvent(&event) != 0;) {
            texts.push_back(textOf(event));
        }
        return texts;
    }

    static std::vector<std::string> eventsOf(const std::string& line) {
        EXPECT_EQ(command(line), "") << line;
        return events();
    }

    // Where the mouse is, and its buttons.
    static std::vector<int> mouse(Uint8 (*ask)(int* x, int* y) = SDL_GetMouseState) {
        int x = -1;
        int y = -1;
        const int buttons = ask(&x, &y);
        EXPECT_EQ(ask == SDL_GetMouseState ? ask(nullptr, nullptr) : buttons, buttons);
        return {x, y, buttons};
    }
};

TEST_F(InputTest, KeysArriveAsFromAKeyboard) {
    const Uint8* keys = SDL_GetKeyState(nullptr);
    EXPECT_THAT(eventsOf("key tap left"),
                ElementsAre("+left mod 0 unicode 0", "-left mod 0 unicode 0"));
    EXPECT_THAT(eventsOf("key down a"), ElementsAre("+a mod 0 unicode 0"));
    EXPECT_EQ(keys[SDLK_a], SDL_PRESSED);
    EXPECT_THAT(eventsOf("key up a"), ElementsAre("-a mod 0 unicode 0"));
    EXPECT_EQ(keys[SDLK_a], SDL_RELEASED);
    SDL_EnableUNICODE(1);
    const struct {
        const char* held;
        const char* key;
        const char* unicode;
    } rows[] = {
        {"", "a", "61"},
        {"", "return", "d"},
        {"", "backspace", "8"},
        {"", "f1", "0"},
        {"", "[7]", "0"},
        {"", "enter", "d"},
        {"", "world 73", "e9"},
        {"", "'", "27"},
        {"left shift", "a", "41"},
        {"left shift", "2", "40"},
        {"right shift", "'", "22"},
        {"left ctrl", "c", "3"},
        {"caps lock", "a", "41"},
        {"caps lock", "2", "32"},
        {"numlock", "[7]", "37"},
    };
    for (const auto& row : rows) {
        const std::string held = row.held;
        if (!held.empty()) {
            eventsOf("key down " + held);
        }
        EXPECT_THAT(eventsOf(std::string("key tap ") + row.key),
                    ElementsAre(HasSubstr(std::string("unicode ") + row.unicode), HasSubstr("-")))
            << held << " " << row.key;
        if (!held.empty()) {
            EXPECT_NE(SDL_GetModState(), KMOD_NONE) << held;
            eventsOf((held.ends_with("lock") ? "key tap " : "key up ") + held);
        }
        EXPECT_EQ(SDL_GetModState(), KMOD_NONE) << held;
    }
}

TEST_F(InputTest, TextsAreTypedKeyByKey) {
    EXPECT_THAT(
        eventsOf("text A1"),
        ElementsAre("+left shift mod 0 unicode 0", "+a mod 1 unicode 0", "-a mod 1 unicode 0",
                    "-left shift mod 0 unicode 0", "+1 mod 0 unicode 0", "-1 mod 0 unicode 0"));
    SDL_EnableUNICODE(1);
    EXPECT_THAT(eventsOf("text \xc3\xa9 \xe2\x82\xac"),
                ElementsAre("+world 73 mod 0 unicode e9", "-world 73 mod 0 unicode 0",
                            "+space mod 0 unicode 20", "-space mod 0 unicode 0",
                            "+unknown key mod 0 unicode 20ac", "-unknown key mod 0 unicode 0"));
    eventsOf("key down caps lock");
    EXPECT_THAT(eventsOf("text Ab")[0], "+a mod 2000 unicode 41");
    eventsOf("key down caps lock");
}

TEST_F(InputTest, TouchesArriveAsThoseOfAMouse) {
    EXPECT_THAT(eventsOf("touch down 100 50"),
                ElementsAre("to 100,50 by 100,50 with 0", "down 1 at 100,50"));
    EXPECT_THAT(mouse(), ElementsAre(100, 50, 1));
    EXPECT_THAT(eventsOf("touch move 90 60"), ElementsAre("to 90,60 by -10,10 with 1"));
    EXPECT_THAT(eventsOf("touch move 90 60"), IsEmpty());
    EXPECT_THAT(eventsOf("touch up 90 60"), ElementsAre("up 1 at 90,60"));
    EXPECT_THAT(mouse(), ElementsAre(90, 60, 0));
    EXPECT_THAT(mouse(SDL_GetRelativeMouseState), ElementsAre(90, 60, 0));
    EXPECT_THAT(mouse(SDL_GetRelativeMouseState), ElementsAre(0, 0, 0));
    EXPECT_THAT(eventsOf("tap 479 319"), ElementsAre("to 479,319 by 389,259 with 0",
                                                     "down 1 at 479,319", "up 1 at 479,319"));
    SDL_WarpMouse(7, 8);
    EXPECT_THAT(mouse(), ElementsAre(7, 8, 0)) << "the real mouse has moved";
    events();
    EXPECT_THAT(eventsOf("drag 0 0 100 200").size(), 13);

    // A drag takes its time, and what does not fit into the queue comes later.
    eventsOf("touch move 0 0");
    EXPECT_THAT(eventsOf("drag 0 0 40 80 40ms"), ElementsAre("down 1 at 0,0"));
    EXPECT_EQ(command("tap 5 5"), "tap: a drag is under way");
    device.advance(20);
    EXPECT_THAT(events(), ElementsAre("to 20,40 by 20,40 with 1"));
    SDL_Event other{};
    other.type = SDL_USEREVENT;
    while (SDL_PushEvent(&other) == 0) {}
    device.advance(20);
    EXPECT_THAT(mouse(), ElementsAre(20, 40, 1));
    events();
    device.advance(20);
    EXPECT_THAT(events(), ElementsAre("to 40,80 by 20,40 with 1", "up 1 at 40,80"));
    EXPECT_EQ(command("tap 5 5"), "");
}

TEST_F(InputTest, TheWindowComesAndGoes) {
    eventsOf("key down left ctrl");
    const int shown = SDL_GetAppState();
    EXPECT_THAT(eventsOf("window minimize"),
                ElementsAre("-left ctrl mod 0 unicode 0", "gain 0 of 6"));
    EXPECT_EQ(SDL_GetAppState() & (SDL_APPACTIVE | SDL_APPINPUTFOCUS), 0);
    EXPECT_EQ(SDL_GetModState(), KMOD_NONE);
    EXPECT_THAT(device.journal().back(), HasSubstr(R"("what":"window","outcome":"minimized")"));
    EXPECT_THAT(eventsOf("window restore"), ElementsAre("gain 1 of 6"));
    EXPECT_EQ(SDL_GetAppState(), shown);
}

TEST_F(InputTest, WhatTheApplicationIgnoresGoesNoFurther) {
    SDL_EventState(SDL_KEYUP, SDL_IGNORE);
    EXPECT_THAT(eventsOf("key tap a"), ElementsAre("+a mod 0 unicode 0"));
    SDL_EventState(SDL_KEYUP, SDL_ENABLE);
    SDL_SetEventFilter([](const SDL_Event* event) { return event->type == SDL_QUIT ? 0 : 1; });
    EXPECT_THAT(eventsOf("quit"), IsEmpty());
}

TEST_F(InputTest, WhatCannotBeIsOneErrorAndDoesNothing) {
    const std::string longText = "text " + std::string(64, 'x');
    const struct {
        std::string line;
        const char* reason;
    } rows[] = {
        {"key", "usage: key down|up|tap NAME"},
        {"key press a", "usage: key "},
        {"key tap", "usage: key "},
        {"key tap retrun", R"(key: no key "retrun"; did you mean "return"?)"},
        {"key tap unknown key", "key: no key \"unknown key\""},
        {"text", "usage: text TEXT"},
        {"text \xff", "text: the text is no UTF-8"},
        {"text a\x01", "text: SDL's key events cannot carry U+0001"},
        {"text a\xf0\x9f\x98\x80", "text: SDL's key events cannot carry U+1F600"},
        {longText,
         "text: the application's event queue has room for 127 more events, and this "
         "takes 128"},
        {"touch 1 2", "usage: touch down|move|up X Y"},
        {"touch up 1 2", "touch: nothing touches the screen"},
        {"tap 480 0", "tap: 480 0 is not on the application's surface, which is 480 x 320"},
        {"tap 0 -1", "tap: 0 -1 is not on"},
        {"drag 0 0 5", "usage: drag X Y X Y [TIME]"},
        {"drag 0 0 5 5 1", "usage: drag"},
        {"drag 0 0 5 400", "drag: 5 400 is not on"},
        {"window shut", "usage: window minimize|restore"},
    };
    for (const auto& row : rows) {
        EXPECT_THAT(command(row.line), StartsWith(row.reason)) << row.line;
        EXPECT_THAT(events(), IsEmpty()) << row.line;
    }
    EXPECT_THAT(eventsOf("touch down 1 1").size(), 2);
    EXPECT_EQ(command("tap 2 2"), "tap: the screen is touched already");
    eventsOf("touch up 1 1");
    SDL_QuitSubSystem(SDL_INIT_VIDEO);
    for (const char* line : {"key tap a", "text a", "quit", "window minimize"}) {
        EXPECT_THAT(command(line), HasSubstr(": the application has no event queue")) << line;
    }
    EXPECT_EQ(command("tap 0 0"), "tap: the application has no surface");
}

}  // namespace
