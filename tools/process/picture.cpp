#include "tools/process/picture.h"

#include <cstdlib>

#include "base/file.h"

namespace tools {
namespace {

constexpr char kElement[] = "<tav-plugin";
constexpr size_t kLargestPage = 16 << 20;
constexpr int kOnlyUnset = 0;

}  // namespace

void drawInPage(const std::string& page) {
    std::string error;
    if (base::readFile(page, kLargestPage, &error).value_or("").find(kElement) !=
        std::string::npos) {
        setenv("SDL_VIDEODRIVER", "dummy", kOnlyUnset);
    }
}

}  // namespace tools
