// What the application shows, stored and compared.
#include <filesystem>
#include <fstream>

#include "device_test.h"
#include "simulator/control/commands.h"

namespace {

using testing::HasSubstr;

constexpr int kWidth = 40;
constexpr int kHeight = 30;

class ScreenTest : public tavtest::EventTest {
protected:
    std::string command(const std::string& line) const {
        return tavsim::carryOut(line, device.root() + "/data").error;
    }

    bool isThere(const std::string& name) const {
        return std::filesystem::exists(device.root() + "/data/" + name);
    }

    static SDL_Surface* open(int width, int height, int bits) {
        SDL_Surface* surface = SDL_SetVideoMode(width, height, bits, SDL_SWSURFACE);
        SDL_Color colors[] = {{0, 0, 0, 0}, {0, 0, 255, 0}, {255, 0, 0, 0}};
        SDL_SetColors(surface, colors, 0, 3);
        return surface;
    }

    // A picture with that left edge: plain, with a corner and a reddish pixel.
    static void paint(SDL_Surface* surface, int left, Uint8 plain, SDL_Color corner, Uint8 red) {
        const auto fill = [surface](SDL_Rect rect, Uint8 r, Uint8 g, Uint8 b) {
            SDL_FillRect(surface, &rect, SDL_MapRGB(surface->format, r, g, b));
        };
        const auto x = static_cast<Sint16>(left);
        fill({x, 0, kWidth, kHeight}, plain, plain, plain);
        fill({x, 0, 7, 5}, corner.r, corner.g, corner.b);
        fill({static_cast<Sint16>(x + 20), 15, 1, 1}, red, 0, 0);
    }

    static void show(int bits, Uint8 red) {
        paint(open(kWidth, kHeight, bits), 0, 0, {0, 0, 255, 0}, red);
    }
};

TEST_F(ScreenTest, IsTheSameInEveryPixelFormat) {
    show(32, 255);
    EXPECT_EQ(
        command("picture a b.png 2"),
        "picture: " + device.root() + "/data/a b.png: no such file; `screenshot a b.png` makes it");
    EXPECT_EQ(command("screenshot a b.png"), "");
    for (const int bits : {8, 16, 24, 32}) {
        show(bits, 255);
        EXPECT_EQ(command("picture a b.png"), "") << bits;
    }
    SDL_LockSurface(SDL_GetVideoSurface());
    EXPECT_EQ(command("picture a b.png"), "");
    SDL_UnlockSurface(SDL_GetVideoSurface());
    EXPECT_FALSE(isThere("a b.difference.png"));
}

TEST_F(ScreenTest, WhatDiffersIsShown) {
    show(32, 200);
    EXPECT_EQ(command("screenshot screen.png"), "");
    show(32, 210);
    EXPECT_EQ(command("picture screen.png 10"), "");
    const std::string stored = device.root() + "/data/screen";
    EXPECT_EQ(command("picture screen.png 9"),
              "picture: " + stored + ".png: 1 of 1200 pixels differ, by up to 10; see " + stored +
                  ".difference.png");
    SDL_Surface* three = open(3 * kWidth, kHeight, 32);
    paint(three, 0, 0, {0, 0, 255, 0}, 200);
    paint(three, kWidth, 0, {0, 0, 255, 0}, 210);
    paint(three, 2 * kWidth, 192, {213, 213, 213, 0}, 255);
    EXPECT_EQ(command("picture screen.difference.png"), "");
}

TEST_F(ScreenTest, WhatCannotBeIsOneError) {
    EXPECT_EQ(command("screenshot a.png"), "screenshot: the application has no surface");
    EXPECT_EQ(command("picture a.png"), "picture: the application has no surface");
    show(32, 255);
    EXPECT_EQ(command("screenshot small.png"), "");
    const std::string small = device.root() + "/data/small.png";
    std::ofstream(device.root() + "/data/text.png") << "text";
    std::filesystem::copy(small, device.root() + "/data/cut.png");
    std::filesystem::resize_file(device.root() + "/data/cut.png",
                                 std::filesystem::file_size(small) / 2);
    open(kWidth, kHeight + 1, 32);
    const struct {
        const char* line;
        const char* reason;
    } rows[] = {
        {"screenshot", "usage: screenshot FILE"},
        {"screenshot no/where.png", "no/where.png: cannot be written"},
        {"picture", "usage: picture FILE [TOLERANCE]"},
        {"picture small.png 256", "the tolerance is from 0 to 255"},
        {"picture small.png", "small.png: is 40 x 30, and not 40 x 31"},
        {"picture text.png", "text.png: no PNG: "},
    };
    for (const auto& row : rows) {
        EXPECT_THAT(command(row.line), HasSubstr(row.reason)) << row.line;
    }
    show(32, 255);
    EXPECT_THAT(command("picture cut.png"), HasSubstr("cut.png: no whole PNG: "));
    EXPECT_THAT(command("screenshot ."), HasSubstr(": cannot be written"));
    for (const auto& entry : std::filesystem::directory_iterator(device.root() + "/data")) {
        EXPECT_NE(entry.path().extension(), ".part");
    }
}

}  // namespace
