#include "recording.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "base/json/writer.h"
#include "environment.h"
#include "simulator/device/profile.h"
#include "simulator/scenario/recorder.h"

namespace fs = std::filesystem;

namespace tools {
namespace {

// As the scenario names it, relative to its own folder.
std::string fromRecording(const RunRequest& request, const std::string& file) {
    std::error_code problem;
    const fs::path folder = fs::path(absolutePath(request.record)).parent_path();
    const fs::path path = fs::proximate(absolutePath(file), folder, problem);
    return path.has_parent_path() ? path : fs::path(".") / path;
}

std::string asWord(const std::string& text) {
    const bool isPlain = !text.empty() && text.find('"') == std::string::npos &&
                         std::none_of(text.begin(), text.end(),
                                      [](unsigned char c) { return c <= ' ' || c == 0x7f; });
    return isPlain ? text : "\"" + base::escapedJson(text) + "\"";
}

}  // namespace

bool startRecording(const RunRequest& request, const std::string& root) {
    tavsim::removeRecordingMark(root);
    const bool isFile = tavsim::profilePath(request.device) == request.device;
    std::ofstream file(request.record);
    file << "device " << (isFile ? fromRecording(request, request.device) : request.device)
         << "\nprogram";
    for (size_t n = 0; n < request.command.size(); ++n) {
        const std::string& word = request.command[n];
        const bool isPath = n == 0 && word.find('/') != std::string::npos;
        file << " " << asWord(isPath ? fromRecording(request, word) : word);
    }
    if (!request.page.empty()) {
        file << "\npage " << fromRecording(request, request.page);
    }
    file << "\n";
    return file.flush().good();
}

void endRecording(const RunRequest& request, const std::string& root, int status) {
    tavsim::removeRecordingMark(root);
    if (status != 0) {
        std::ofstream(request.record, std::ios::app) << "expect status " << status << "\n";
    }
}

}  // namespace tools
