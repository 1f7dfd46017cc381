// Services for tests, and the outcomes of purchase requests.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "SDL.h"
#include "simulator/interface/device.h"
#include "tav.h"

namespace tavtest {

// A service with these replies. Where `every` is set, a subscription gets them repeatedly.
inline tavsim::Service repliesOf(std::vector<tavsim::Reply> replies, int delay = 0, int every = 0) {
    return {std::move(replies), every != 0, delay, every, false, {}};
}

// The outcome of a purchase request: the text of its record, which is released, or the error.
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
