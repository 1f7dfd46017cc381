// The answer to a request that has to wait.
#pragma once

#include <libsoup/soup.h>

#include <string>

namespace page {

// The request waits until the answer is given. When the page has gone meanwhile, that does nothing.
class Reply {
public:
    explicit Reply(SoupServerMessage* request);
    ~Reply();
    Reply(const Reply&) = delete;
    Reply& operator=(const Reply&) = delete;

    // Once.
    void give(unsigned status, const std::string& json);

private:
    static void onFinished(SoupServerMessage* request, gpointer self) noexcept;

    void forget();

    SoupServerMessage* m_request;
};

// Answers a request at once.
void giveJson(SoupServerMessage* request, unsigned status, const std::string& json);

// The JSON of a call that came to nothing, for a reason of the server's.
std::string errorJson(const std::string& reason);

}  // namespace page
