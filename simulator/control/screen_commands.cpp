// Commands that look at what the application shows.
#include <filesystem>
#include <utility>

#include "front/events.h"
#include "screen/screen.h"
#include "simulator/control/command.h"
#include "simulator/screen/picture.h"

namespace fs = std::filesystem;

namespace tavsim {

using screen::Picture;

namespace {

PictureOptions& options() {
    static auto& instance = *new PictureOptions;
    return instance;
}

// Beside the stored picture, unless there is a folder for all.
std::string differencePath(const std::string& path) {
    constexpr std::string_view kEnding = ".png";
    std::string beside =
        path.substr(0, path.size() - (path.ends_with(kEnding) ? kEnding.size() : 0)) +
        ".difference.png";
    if (options().differences.empty()) {
        return beside;
    }
    std::error_code ignored;  // writing says what is wrong
    fs::create_directories(options().differences, ignored);
    return fs::path(options().differences) / fs::path(beside).filename();
}

std::string sizeText(const Picture& picture) {
    return std::to_string(picture.width) + " x " + std::to_string(picture.height);
}

std::string inWords(const Difference& found, const Picture& screen) {
    return std::to_string(found.pixels) + " of " +
           std::to_string(static_cast<long>(screen.width) * screen.height) +
           " pixels differ, by up to " + std::to_string(found.greatest);
}

CommandResult replaced(const Picture& screen, const std::string& path, const std::string& why) {
    std::string error;
    CommandResult result;
    if (writePng(screen, path, &error)) {
        result.output = "picture: " + path + kWrittenAnew + why + "\n";
    } else {
        result.error = "picture: " + error;
    }
    return result;
}

CommandResult comparedWith(const Picture& screen, const Picture& stored, const std::string& path,
                           int tolerance) {
    if (stored.width != screen.width || stored.height != screen.height) {
        const std::string sizes = sizeText(stored) + ", and not " + sizeText(screen);
        return options().update ? replaced(screen, path, "it was " + sizes)
                                : failed("picture: " + path + ": is " + sizes);
    }
    const Difference found = difference(stored, screen, tolerance);
    if (found.pixels == 0) {
        return {};
    }
    if (options().update) {
        return replaced(screen, path, inWords(found, screen));
    }
    const std::string shown = differencePath(path);
    std::string error;
    const bool isShown = writePng(comparison(stored, screen, tolerance), shown, &error);
    return failed("picture: " + path + ": " + inWords(found, screen) +
                  (isShown ? "; see " + shown : "; " + error));
}

CommandResult notSeen(const std::string& error) {
    CommandResult result = failed(error);
    result.isEarly = front::g_areFramesWatched;
    return result;
}

CommandResult screenshot(Words words) {
    std::string error;
    const std::optional<Picture> screen = screen::screenPicture(&error);
    if (!screen) {
        return notSeen("screenshot: " + error);
    }
    return writePng(*screen, pathOf(words.rest()), &error) ? CommandResult()
                                                           : failed("screenshot: " + error);
}

CommandResult picture(Words words) {
    int tolerance = 0;
    const std::string file(words.restBeforeNumber(&tolerance));
    const std::string path = pathOf(file);
    std::string error;
    const std::optional<Picture> screen = screen::screenPicture(&error);
    if (!screen) {
        return notSeen("picture: " + error);
    }
    const std::optional<Picture> stored = readPng(path, &error);
    if (!stored) {
        std::error_code unknown;
        const bool isMissing = !fs::exists(path, unknown);
        if (isMissing && options().update) {
            return replaced(*screen, path, "there was none");
        }
        return failed("picture: " + error +
                      (isMissing ? "; `screenshot " + file + "` makes it" : ""));
    }
    return comparedWith(*screen, *stored, path, tolerance);
}

CommandResult frame(Words /*words*/) {
    CommandResult result = failed("frame: only a connection to the control socket has frames");
    result.isFrame = true;
    return result;
}

constexpr Command kScreenRows[] = {
    {"screenshot", "PNG", "Store what the application shows as a PNG.", screenshot},
    {"picture", "PNG [TOLERANCE]",
     "Compare what the application shows with a PNG; a channel may differ by so much, of 255.",
     picture},
    {"frame", "",
     "For programs that show the device: answer with what has changed on the screen since this\n"
     "      connection was last answered.",
     frame, true},
};

}  // namespace

void setPictureOptions(PictureOptions given) {
    options() = std::move(given);
}

constinit const std::span<const Command> kScreenCommands = kScreenRows;

}  // namespace tavsim
