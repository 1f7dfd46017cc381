// A page in a browser.
#pragma once

#include <libsoup/soup.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "devices.h"
#include "frames.h"
#include "player.h"
#include "questions.h"
#include "watch.h"

namespace panel {

// What the panel was started with.
struct Options {
    int port = 0;                      // 0: any
    std::string tiles;                 // a tile server's address for the map; may be empty
    std::string run;                   // root folder of a run's device; empty: all devices
    std::string header;                // of that run's recording
    std::vector<std::string> command;  // of `tavsim run`, for that run's device and program
};

// What all browsers share.
struct Common {
    const Options& options;
    const Devices& devices;
    Player& player;
};

// Serves one WebSocket.
class Browser {
public:
    Browser(SoupWebsocketConnection* socket, const Common& common,
            std::function<void(Browser*)> onGone);
    ~Browser();
    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;

    void send(const std::string& text);

    // There is no more to come.
    void close(gushort code, const char* reason);

private:
    using Clock = std::chrono::steady_clock;

    struct Request;

    static void onMessage(SoupWebsocketConnection* socket, gint type, GBytes* message,
                          gpointer self) noexcept;
    static void onClosed(SoupWebsocketConnection* socket, gpointer self) noexcept;

    bool isTooFast();
    void take(const std::string& message);
    void open(const std::string& root);
    void ask(const std::string& line, int number);
    void track(const Request& request);
    void play(const Request& request);
    void refuse(const std::string& why);
    void answer(int number, bool isDone, const std::string& text);
    void sendPicture(const std::string& picture);
    bool isReady() const;
    bool isOpen() const;

    SoupWebsocketConnection* m_socket;
    const Common& m_common;
    std::function<void(Browser*)> m_onGone;
    std::string m_root;  // of the device that is shown; empty: none
    std::unique_ptr<Questions> m_questions;
    std::unique_ptr<Watch> m_watch;
    std::unique_ptr<Frames> m_frames;
    Clock::time_point m_second;  // in which messages are counted
    int m_messages = 0;
};

}  // namespace panel
