// A page in a browser.
#pragma once

#include <libsoup/soup.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "device_frames.h"
#include "devices.h"
#include "player.h"
#include "questions.h"
#include "tools/web/socket.h"
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
    Browser(SoupWebsocketConnection* connection, const Common& common,
            std::function<void(Browser*)> onGone);
    ~Browser();
    Browser(const Browser&) = delete;
    Browser& operator=(const Browser&) = delete;

    void send(const std::string& text) { m_socket.sendText(text); }

    // There is no more to come.
    void close() { m_socket.close(SOUP_WEBSOCKET_CLOSE_GOING_AWAY, nullptr); }

private:
    struct Request;

    void take(const std::string& message);
    void open(const std::string& root);
    void ask(const std::string& line, int number);
    void track(const Request& request);
    void play(const Request& request);
    void refuse(const std::string& why);
    void answer(int number, bool isDone, const std::string& text);

    web::Socket m_socket;
    const Common& m_common;
    std::string m_root;  // of the device that is shown; empty: none
    std::unique_ptr<Questions> m_questions;
    std::unique_ptr<Watch> m_watch;
    std::unique_ptr<DeviceFrames> m_frames;
};

}  // namespace panel
