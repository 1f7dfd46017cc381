// Commands that look at what the application shows.
#include "simulator/control/command.h"
#include "simulator/screen/screen.h"

namespace tavsim {
namespace {

// Beside the stored picture.
std::string differencePath(const std::string& path) {
    constexpr std::string_view kEnding = ".png";
    return path.substr(0, path.size() - (path.ends_with(kEnding) ? kEnding.size() : 0)) +
           ".difference.png";
}

std::string inWords(const Difference& found, const Picture& screen) {
    return std::to_string(found.pixels) + " of " +
           std::to_string(static_cast<long>(screen.width) * screen.height) +
           " pixels differ, by up to " + std::to_string(found.greatest);
}

CommandResult comparedWith(const Picture& screen, const Picture& stored, const std::string& path,
                           int tolerance) {
    const Difference found = difference(stored, screen, tolerance);
    if (found.pixels == 0) {
        return {};
    }
    const std::string shown = differencePath(path);
    std::string error;
    const bool isShown = writePng(comparison(stored, screen, tolerance), shown, &error);
    return failed("picture: " + path + ": " + inWords(found, screen) +
                  (isShown ? "; see " + shown : "; " + error));
}

CommandResult screenshot(Words words) {
    std::string error;
    const std::optional<Picture> screen = screenPicture(&error);
    const bool isDone = screen && writePng(*screen, pathOf(words.rest()), &error);
    return isDone ? CommandResult() : failed("screenshot: " + error);
}

CommandResult picture(Words words) {
    int tolerance = 0;
    const std::string file(words.restBeforeNumber(&tolerance));
    const std::string path = pathOf(file);
    std::string error;
    const std::optional<Picture> screen = screenPicture(&error);
    if (!screen) {
        return failed("picture: " + error);
    }
    const std::optional<Picture> stored = readPng(path, screen->width, screen->height, &error);
    if (!stored) {
        const bool isMissing = error.ends_with("no such file");
        return failed("picture: " + error +
                      (isMissing ? "; `screenshot " + file + "` makes it" : ""));
    }
    return comparedWith(*screen, *stored, path, tolerance);
}

constexpr Command kScreenCommands[] = {
    {"screenshot", "FILE", "Store the application's surface as a PNG.", screenshot},
    {"picture", "FILE [TOLERANCE]",
     "Compare the application's surface with a PNG; a channel may differ by so much, of 255.",
     picture},
};

}  // namespace

std::span<const Command> screenCommands() {
    return kScreenCommands;
}

}  // namespace tavsim
