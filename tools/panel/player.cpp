#include "player.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <utility>

#include "base/application_folder.h"
#include "base/child.h"
#include "base/file.h"

namespace panel {
namespace {

constexpr size_t kMostOutput = 1 << 20;
constexpr gsize kAtOnce = 64 << 10;

void endWithPanel(gpointer) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
}

}  // namespace

std::string Player::play(const std::string& scenario, const std::string& folder, const void* owner,
                         OnEnd onEnd) {
    if (m_command.empty()) {
        return "scenarios are played only in the panel of a run";
    }
    if (m_process != nullptr) {
        return "another scenario is being played";
    }
    m_file = folder + "/panel.scenario";
    unlink(m_file.c_str());  // of a panel that was killed
    if (!base::createFile(m_file, scenario)) {
        return m_file + ": cannot be written";
    }
    if (!start()) {
        clear();
        return "tavsim cannot be started";
    }
    m_owner = owner;
    m_onEnd = std::move(onEnd);
    return {};
}

void Player::stop(const void* owner) {
    if (m_process != nullptr && (owner == nullptr || owner == m_owner)) {
        g_cancellable_cancel(m_cancellable);
        g_subprocess_force_exit(m_process);
        clear();
    }
}

bool Player::start() {
    std::vector<std::string> words = {base::besideExecutable("tavsim"), "run", "--virtual-time",
                                      "--scenario", m_file};
    words.insert(words.end(), m_command.begin(), m_command.end());
    g_autoptr(GSubprocessLauncher) launcher =
        g_subprocess_launcher_new(static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                                                                G_SUBPROCESS_FLAGS_STDERR_MERGE));
    g_subprocess_launcher_set_child_setup(launcher, endWithPanel, nullptr, nullptr);
    m_process = g_subprocess_launcher_spawnv(launcher, base::pointersTo(words).data(), nullptr);
    if (m_process == nullptr) {
        return false;
    }
    m_cancellable = g_cancellable_new();
    m_output.clear();
    read();
    return true;
}

void Player::read() {
    g_input_stream_read_bytes_async(g_subprocess_get_stdout_pipe(m_process), kAtOnce,
                                    G_PRIORITY_DEFAULT, m_cancellable, onOutput, this);
}

void Player::onOutput(GObject* stream, GAsyncResult* result, gpointer self) noexcept {
    g_autoptr(GError) problem = nullptr;
    g_autoptr(GBytes) bytes =
        g_input_stream_read_bytes_finish(G_INPUT_STREAM(stream), result, &problem);
    if (g_error_matches(problem, G_IO_ERROR, G_IO_ERROR_CANCELLED)) {
        return;  // there may be no player any more
    }
    auto* const player = static_cast<Player*>(self);
    gsize size = 0;
    const void* const data = bytes != nullptr ? g_bytes_get_data(bytes, &size) : nullptr;
    if (size == 0) {
        g_subprocess_wait_async(player->m_process, player->m_cancellable, onEnd, self);
        return;
    }
    const size_t room = kMostOutput - player->m_output.size();
    player->m_output.append(static_cast<const char*>(data), std::min<size_t>(size, room));
    player->read();
}

void Player::onEnd(GObject* process, GAsyncResult* result, gpointer self) noexcept {
    g_autoptr(GError) problem = nullptr;
    if (g_subprocess_wait_finish(G_SUBPROCESS(process), result, &problem) == 0) {
        return;
    }
    auto* const player = static_cast<Player*>(self);
    const bool hasExited = g_subprocess_get_if_exited(player->m_process) != 0;
    const int status = hasExited ? g_subprocess_get_exit_status(player->m_process) : -1;
    const OnEnd tell = std::move(player->m_onEnd);
    player->clear();
    tell(status, player->m_output);
}

void Player::clear() {
    unlink(m_file.c_str());
    g_clear_object(&m_process);
    g_clear_object(&m_cancellable);
    m_owner = nullptr;
    m_onEnd = nullptr;
}

}  // namespace panel
