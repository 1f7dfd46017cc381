// Plays scenarios.
#pragma once

#include <gio/gio.h>

#include <functional>
#include <string>
#include <vector>

namespace panel {

// Runs the program of this panel's run again, on a device of its own, in virtual time. One scenario
// after the other.
class Player {
public:
    using OnEnd = std::function<void(int status, const std::string& output)>;

    // The words of `tavsim run` for the same device and program.
    explicit Player(std::vector<std::string> command) : m_command(std::move(command)) {}
    ~Player() { stop(nullptr); }
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    // Stores the text in the folder and runs it. Empty, or why it cannot be played. The owner is
    // who can stop it.
    std::string play(const std::string& scenario, const std::string& folder, const void* owner,
                     OnEnd onEnd);

    // Stops the owner's scenario, or any where that is null.
    void stop(const void* owner);

private:
    static void onOutput(GObject* stream, GAsyncResult* result, gpointer self) noexcept;
    static void onEnd(GObject* process, GAsyncResult* result, gpointer self) noexcept;

    bool start();
    void read();
    void clear();

    std::vector<std::string> m_command;
    std::string m_file;
    const void* m_owner = nullptr;
    OnEnd m_onEnd;
    std::string m_output;
    GSubprocess* m_process = nullptr;
    GCancellable* m_cancellable = nullptr;
};

}  // namespace panel
