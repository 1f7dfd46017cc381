#include "reply.h"

#include <utility>

#include "base/json/writer.h"

namespace page {

Reply::Reply(SoupServerMessage* request) : m_request(SOUP_SERVER_MESSAGE(g_object_ref(request))) {
    // Without a status it would be taken for a request for a WebSocket.
    soup_server_message_set_status(m_request, SOUP_STATUS_OK, nullptr);
    soup_server_message_pause(m_request);
    g_signal_connect(m_request, "finished", G_CALLBACK(onFinished), this);
}

Reply::~Reply() {
    forget();
}

void Reply::give(unsigned status, const std::string& json) {
    if (m_request != nullptr) {
        giveJson(m_request, status, json);
        soup_server_message_unpause(m_request);
        forget();
    }
}

void Reply::onFinished(SoupServerMessage*, gpointer self) noexcept {
    static_cast<Reply*>(self)->forget();
}

void Reply::forget() {
    if (SoupServerMessage* const request = std::exchange(m_request, nullptr); request != nullptr) {
        g_signal_handlers_disconnect_by_data(request, this);
        g_object_unref(request);
    }
}

void giveJson(SoupServerMessage* request, unsigned status, const std::string& json) {
    soup_server_message_set_status(request, status, nullptr);
    soup_server_message_set_response(request, "application/json", SOUP_MEMORY_COPY, json.data(),
                                     json.size());
}

std::string errorJson(const std::string& reason) {
    return base::jsonObject("error", reason);
}

}  // namespace page
