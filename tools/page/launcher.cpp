#include "launcher.h"

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <utility>

#include "base/child.h"
#include "complain.h"
#include "tools/process/exit_status.h"

namespace fs = std::filesystem;

namespace page {
namespace {

constexpr char kSocketVariable[] = "TAV_PAGE_SOCKET";
constexpr char kPlaceOfLink[] = "{}";
constexpr guint kSecond = 1000;  // milliseconds
constexpr guint kLongestStart = 10 * kSecond;
constexpr guint kFirstPage = 60 * kSecond;
constexpr guint kGrace = 5 * kSecond;

constexpr char kWhatToDo[] =
    " A plug-in calls TAV_JSRegistrationComplete when its methods are registered.";
constexpr char kOtherBrowser[] =
    "; name another with --browser COMMAND, or open the link yourself with --browser true";

// Nobody else can look into it. Empty where none can be made.
std::string makeSocketFolder() {
    for (const char* parent : {g_get_user_runtime_dir(), g_get_tmp_dir()}) {
        std::string path = std::string(parent) + "/tav-page-XXXXXX";
        if (g_mkdtemp(path.data()) != nullptr) {
            return path;
        }
    }
    return {};
}

void removeFolder(const std::string& folder) {
    std::error_code problem;
    fs::remove_all(folder, problem);
}

// The words of the command, with the link in its place, or behind them where they have none.
std::vector<std::string> browserWords(const std::string& command, const std::string& link) {
    std::vector<std::string> words;
    gchar** parsed = nullptr;
    if (g_shell_parse_argv(command.c_str(), nullptr, &parsed, nullptr) == FALSE) {
        return words;
    }
    bool hasPlace = false;
    for (gchar** word = parsed; *word != nullptr; ++word) {
        std::string& last = words.emplace_back(*word);
        if (const size_t place = last.find(kPlaceOfLink); place != std::string::npos) {
            last.replace(place, std::strlen(kPlaceOfLink), link);
            hasPlace = true;
        }
    }
    g_strfreev(parsed);
    if (!hasPlace) {
        words.push_back(link);
    }
    return words;
}

// In the browser's process: the keyboard that interrupts this one does not end it.
void leaveTerminal(gpointer signals) {
    setsid();
    static_cast<const tools::Signals*>(signals)->restore();
}

}  // namespace

Launcher::Launcher(LaunchOptions options)
    : m_options(std::move(options)),
      m_requests(m_signals.openDescriptor()),
      m_environment(g_get_environ()),
      m_folder(makeSocketFolder()),
      m_serverOptions{m_options.folder, m_options.application.main, m_options.application.hosts,
                      m_folder + "/socket", m_options.port},
      m_server(m_serverOptions,
               {[this] { onApplication(); }, [this](size_t count) { onPages(count); }}),
      m_loop(g_main_loop_new(nullptr, FALSE)) {
}

Launcher::~Launcher() {
    g_main_loop_unref(m_loop);
    g_strfreev(m_environment);
    removeFolder(m_folder);
}

int Launcher::run() {
    if (m_folder.empty()) {
        return complain(std::string(g_get_tmp_dir()) + ": no folder for the socket can be made");
    }
    const tools::Guard guard([this] {
        m_members.kill();
        removeFolder(m_folder);
    });
    std::string error;
    if (!m_server.start(&error)) {
        return complain(error);
    }
    if (!startProgram()) {
        return tools::kBadSetup;
    }
    m_signal.onReady(m_requests.number(), G_IO_IN, [this] { onSignal(); });
    m_limit.after(kLongestStart, [this] {
        fail(m_options.application.program + ": has not become a plug-in within 10 seconds." +
             kWhatToDo);
    });
    g_main_loop_run(m_loop);
    return m_status;
}

bool Launcher::startProgram() {
    setenv(kSocketVariable, m_serverOptions.socket.c_str(), 1);
    tools::drawInPage(m_options.folder + "/" + m_options.application.main);
    std::vector<std::string> words = {m_options.folder + "/" + m_options.application.program};
    words.insert(words.end(), m_options.arguments.begin(), m_options.arguments.end());
    const int problem = m_program.start(words[0], words, m_signals);
    if (problem != 0) {
        complain(words[0] + ": cannot be started: " + std::strerror(problem));
    }
    return problem == 0;
}

void Launcher::onApplication() {
    if (std::exchange(m_isPlugin, true) || m_isAsked) {
        return;
    }
    std::printf("%s\n", m_server.link().c_str());
    std::fflush(stdout);
    m_limit.after(kFirstPage, [this] {
        complain("no browser has opened the page within 60 seconds, so the program is ended");
        askToEnd();
    });
    startBrowser();
}

void Launcher::startBrowser() {
    const std::vector<std::string> words = browserWords(m_options.browser, m_server.link());
    GError* error = nullptr;
    if (words.size() < 2) {
        fail("--browser: is no command: " + m_options.browser);
    } else if (g_spawn_async(
                   nullptr, base::pointersTo(words).data(), m_environment,
                   static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD),
                   leaveTerminal, const_cast<tools::Signals*>(&m_signals), &m_browser,
                   &error) == FALSE) {
        fail(std::string("no browser: ") + error->message + kOtherBrowser);
        g_error_free(error);
    }
}

void Launcher::onPages(size_t count) {
    if (m_isAsked) {
        return;
    }
    m_hadPage = m_hadPage || count > 0;
    if (count > 0) {
        m_limit.stop();
    } else if (m_hadPage) {
        m_limit.after(static_cast<guint>(m_options.linger) * kSecond, [this] {
            complain("no page has been open for " + std::to_string(m_options.linger) +
                     " seconds, so the program is ended");
            askToEnd();
        });
    }
}

void Launcher::onSignal() {
    for (int signal = 0;
         (signal = m_signals.take(std::chrono::steady_clock::now()).si_signo) != 0;) {
        if (signal != SIGCHLD) {
            askToEnd();
        }
    }
    int status = 0;
    if (m_browser > 0 && waitpid(m_browser, &status, WNOHANG) == m_browser) {
        m_browser = 0;
        if (status != 0 && !m_hadPage && !m_isAsked) {
            fail("no browser: " + m_options.browser + " has failed" + kOtherBrowser);
        }
    }
    if (m_program.hasEnded()) {
        onEnd();
    }
}

void Launcher::askToEnd() {
    if (std::exchange(m_isAsked, true)) {
        return;
    }
    m_program.send(SIGTERM);
    m_program.send(SIGCONT);  // for a stopped process
    m_limit.after(kGrace, [this] {
        complain(m_options.application.program + ": does not end, and is killed");
        m_program.send(SIGKILL);
    });
}

void Launcher::onEnd() {
    const std::string how = tools::howEnded(m_program.status());
    if (!m_isAsked && !m_isPlugin) {
        fail(m_options.application.program + ": has not become a plug-in. " + how + kWhatToDo);
    } else if (!m_isAsked && WIFSIGNALED(m_program.status())) {
        complain(how);
    }
    m_limit.stop();
    m_isAsked = true;
    m_status = m_status != 0 ? m_status : tools::exitStatus(m_program.status());
    m_members.kill();
    m_server.end(how, [this] { g_main_loop_quit(m_loop); });
}

void Launcher::fail(const std::string& why) {
    m_status = complain(why);
    askToEnd();
}

}  // namespace page
