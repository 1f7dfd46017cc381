#include "run_servers.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <vector>

#include "bridge/page_file.h"
#include "environment.h"
#include "judge.h"
#include "simulator/device/trusted_folder.h"
#include "tools/process/exit_status.h"
#include "tools/process/process.h"

namespace fs = std::filesystem;

namespace tools {
namespace {

// Beside this program.
std::string besides(const char* name) {
    std::error_code problem;
    return fs::read_symlink("/proc/self/exe", problem).replace_filename(name);
}

std::vector<std::string> panelCommand(const PanelOptions& options) {
    std::vector<std::string> words = {besides("tavsim-panel"), "--port",
                                      std::to_string(options.port)};
    if (!options.tiles.empty()) {
        words.insert(words.end(), {"--tiles", options.tiles});
    }
    return words;
}

std::vector<std::string> panelCommand(const RunRequest& request, const std::string& root) {
    std::vector<std::string> words = panelCommand(request.panelOptions);
    std::error_code problem;
    const std::string header = recordingHeader(request, fs::current_path(problem));
    words.insert(words.end(), {"--", root, header, "--device", request.device});
    if (!request.page.empty()) {
        words.insert(words.end(), {"--page", request.page});
    }
    if (request.plugin) {
        words.emplace_back("--plugin");
    }
    words.emplace_back("--");
    words.insert(words.end(), request.command.begin(), request.command.end());
    return words;
}

std::vector<std::string> pageCommand(const RunRequest& request, const std::string& root) {
    return {besides("tav-page"), std::string("--socket=") + root + tavsim::kPageSocket,
            absolutePath(request.page)};
}

}  // namespace

int runPanel(const PanelOptions& options) {
    const std::vector<std::string> words = panelCommand(options);
    return complain(words[0] + ": " + std::strerror(execute(words[0], words)), kCannotStart);
}

bool RunServers::start(const RunRequest& request, const std::string& root) {
    return (!request.panel || m_panel.start(panelCommand(request, root), "device")) &&
           (!bridge::isDocument(request.page) || m_page.start(pageCommand(request, root), "page"));
}

std::string RunServers::ended() {
    return m_panel.hasEnded() ? "panel" : m_page.hasEnded() ? "page" : "";
}

void RunServers::end(const std::string& how) {
    m_panel.end(how);
    m_page.end(how);
}

}  // namespace tools
