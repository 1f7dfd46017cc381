// Services for tests, and what they were asked.
#ifndef TAV_TESTS_SERVICES_H
#define TAV_TESTS_SERVICES_H

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "SDL.h"
#include "simulator/interface/device.h"
#include "tav.h"

namespace tavtest {

// A URI and a payload.
using Request = std::pair<std::string, std::string>;
using Requests = std::vector<Request>;

// A service that keeps each request and gives each the same reply.
inline tavsim::Service keepingService(Requests& requests, tavsim::Reply reply = "{}") {
    tavsim::Service service;
    service.compute = [&requests, reply](const std::string& uri, const std::string& payload) {
        requests.emplace_back(uri, payload);
        return reply;
    };
    return service;
}

// A service with these replies; where `every` is set, a subscription gets them over and over.
inline tavsim::Service repliesOf(std::vector<tavsim::Reply> replies, int delay = 0, int every = 0) {
    return {std::move(replies), every != 0, delay, every, false, {}};
}

// The options with which the requests of the journal went out: true in the library's name, false in
// the application's.
inline std::set<bool> optionsSent(const tavsim::Device& device) {
    std::set<bool> options;
    for (const std::string& line : device.journal()) {
        if (line.find("\"option\":") != std::string::npos) {
            options.insert(line.find("\"option\":true") != std::string::npos);
        }
    }
    return options;
}

// What a purchase request came to: the text of its record, which is released, or the error.
template <typename Record>
std::string take(Record* record, const char* (*text)(const Record*), void (*release)(Record*)) {
    if (record == nullptr) {
        return std::string("null: ") + SDL_GetError();
    }
    const std::string json = text(record);
    release(record);
    return json;
}

inline std::string take(TAV_ItemCollection* items) {
    return take(items, TAV_GetItemCollectionJSON, TAV_FreeItemCollection);
}

inline std::string take(TAV_ItemReceipt* receipt) {
    return take(receipt, TAV_GetItemReceiptJSON, TAV_FreeItemReceipt);
}

inline std::string take(TAV_ItemInfo* info) {
    return take(info, TAV_GetItemJSON, TAV_FreeItemInfo);
}

}  // namespace tavtest

#endif
