#include "run_servers.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>

#include "base/application_folder.h"
#include "base/child.h"
#include "base/message_socket.h"
#include "bridge/page_file.h"
#include "environment.h"
#include "judge.h"
#include "simulator/device/trusted_folder.h"
#include "tools/process/exit_status.h"
#include "tools/process/process.h"

namespace fs = std::filesystem;

namespace tools {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLongestEnd(3);

// Without its line feed. Empty where the other end is closed before that.
std::string readLine(int file) {
    std::string line;
    char character = 0;
    ssize_t count = 0;
    while ((count = read(file, &character, 1)) > 0 || (count < 0 && errno == EINTR)) {
        if (count > 0 && character == '\n') {
            return line;
        }
        line.append(count > 0 ? 1 : 0, character);
    }
    return {};
}

std::vector<std::string> panelCommand(const PanelOptions& options) {
    std::vector<std::string> words = {base::besideExecutable("tavsim-panel"), "--port",
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
    return {base::besideExecutable("tav-page"),
            std::string("--socket=") + root + tavsim::kPageSocket, absolutePath(request.page)};
}

}  // namespace

int runPanel(const PanelOptions& options) {
    const std::vector<std::string> words = panelCommand(options);
    return complain(words[0] + ": " + std::strerror(execute(words[0], words)), kCannotStart);
}

bool ServerProcess::start(const std::vector<std::string>& words, const std::string& subject) {
    int input[2];
    int output[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, input) != 0) {
        complain(words[0] + ": " + std::strerror(errno));
        return false;
    }
    m_input = base::Descriptor(input[0]);
    base::Descriptor itsInput(input[1]);
    if (pipe2(output, O_CLOEXEC) != 0) {
        complain(words[0] + ": " + std::strerror(errno));
        return false;
    }
    const base::Descriptor link(output[0]);
    base::Descriptor itsOutput(output[1]);
    m_id = base::startProgram([&] {
        // Out of the keyboard's reach, and so that it can say that this process was killed.
        setpgid(0, 0);
        prctl(PR_SET_PDEATHSIG, 0);
        base::setStandardStreams(itsInput.number(), itsOutput.number(), -1);
        m_signals.restore();
        execute(words[0], words);
    });
    if (m_id < 0) {
        m_id = 0;
        complain(words[0] + ": " + std::strerror(errno));
        return false;
    }
    itsInput.close();
    itsOutput.close();
    const std::string address = readLine(link.number());
    if (!address.empty()) {
        complain("the " + subject + " is at " + address);
    }
    return !address.empty();
}

bool ServerProcess::hasEnded() {
    m_hasEnded = m_hasEnded || (m_id != 0 && waitpid(m_id, nullptr, WNOHANG) == m_id);
    return m_hasEnded;
}

void ServerProcess::end(const std::string& how) {
    if (m_id == 0 || hasEnded()) {
        return;
    }
    size_t sent = 0;
    if (!how.empty()) {
        base::sendNow(m_input.number(), how + "\n", &sent);
    }
    m_input.close();
    const Clock::time_point limit = Clock::now() + kLongestEnd;
    while (!hasEnded() && Clock::now() < limit) {
        m_signals.take(limit);
    }
    if (!m_hasEnded) {
        kill(m_id, SIGKILL);
        waitpid(m_id, nullptr, 0);
        m_hasEnded = true;
    }
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
