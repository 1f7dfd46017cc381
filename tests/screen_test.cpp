// What the application shows, stored and compared.
#include "transcript.h"

namespace {

constexpr int kWidth = 40;
constexpr int kHeight = 30;

class ScreenTest : public tavtest::TranscriptTest {
protected:
    void command(const std::string& line) { give({line}, path("/data")); }

    static SDL_Surface* open(int width, int height, int bits) {
        SDL_Surface* surface = SDL_SetVideoMode(width, height, bits, SDL_SWSURFACE);
        SDL_Color colors[] = {{0, 0, 0, 0}, {0, 0, 255, 0}, {255, 0, 0, 0}};
        SDL_SetColors(surface, colors, 0, 3);
        return surface;
    }

    // Paints a picture from the left edge on: a plain ground, a corner and a reddish pixel.
    static void paint(SDL_Surface* surface, int left, Uint8 plain, SDL_Color corner, Uint8 red) {
        const auto fill = [surface](SDL_Rect rect, Uint8 r, Uint8 g, Uint8 b) {
            SDL_FillRect(surface, &rect, SDL_MapRGB(surface->format, r, g, b));
        };
        const auto x = static_cast<Sint16>(left);
        fill({x, 0, kWidth, kHeight}, plain, plain, plain);
        fill({x, 0, 7, 5}, corner.r, corner.g, corner.b);
        fill({static_cast<Sint16>(x + 20), 15, 1, 1}, red, 0, 0);
    }

    static void display(int bits, Uint8 red) {
        paint(open(kWidth, kHeight, bits), 0, 0, {0, 0, 255, 0}, red);
    }
};

TEST_F(ScreenTest, IsTheSameInEveryPixelFormat) {
    display(32, 255);
    command("picture a b.png 2");
    command("screenshot a b.png");
    for (const int bits : {8, 16, 24, 32}) {
        display(bits, 255);
        command("picture a b.png");
    }
    SDL_LockSurface(SDL_GetVideoSurface());
    command("picture a b.png");
    SDL_UnlockSurface(SDL_GetVideoSurface());
    EXPECT_FALSE(std::filesystem::exists(path("/data/a b.difference.png")));
}

TEST_F(ScreenTest, WhatDiffersIsShown) {
    display(32, 200);
    command("screenshot screen.png");
    display(32, 210);
    command("picture screen.png 10");
    command("picture screen.png 9");
    SDL_Surface* three = open(3 * kWidth, kHeight, 32);
    paint(three, 0, 0, {0, 0, 255, 0}, 200);
    paint(three, kWidth, 0, {0, 0, 255, 0}, 210);
    paint(three, 2 * kWidth, 192, {213, 213, 213, 0}, 255);
    command("picture screen.difference.png");
}

TEST_F(ScreenTest, WhatCannotBeIsOneError) {
    command("screenshot a.png");
    command("picture a.png");
    display(32, 255);
    command("screenshot small.png");
    const std::string small = read("/data/small.png");
    write("/data/text.png", "text");
    write("/data/cut.png", small.substr(0, small.size() / 2));
    open(kWidth, kHeight + 1, 32);
    give({"screenshot", "screenshot no/where.png", "picture", "picture small.png 256",
          "picture small.png", "picture text.png"},
         path("/data"));
    display(32, 255);
    command("picture cut.png");
    command("screenshot .");
    for (const auto& entry : std::filesystem::directory_iterator(path("/data"))) {
        EXPECT_NE(entry.path().extension(), ".part");
    }
}

}  // namespace
