// The page's side of what it and the device say to each other; it knows nothing of the engine.
//
// It keeps what its callers may not: messages while they are put together and read, and the text
// that was read last. So it stays whole, and nothing leaks, when the engine jumps out of a caller.
#ifndef TAV_SIMULATOR_PAGE_CONVERSATION_H
#define TAV_SIMULATOR_PAGE_CONVERSATION_H

#include <cstddef>

#include "simulator/page/page_message.h"

namespace tavsim {

// A text in the engine's encoding, with a zero behind it, that belongs to someone else. Null when
// there are no bytes.
struct EngineText {
    const char* bytes;
    size_t length;
};

// Where the page's end of the connection is.
constexpr int kPageSocket = 3;

// A message to the device: first its kind, then its items, and off it goes. One that was begun and
// left is forgotten.
void beginMessage(PageMessageKind kind);
void addBool(bool value);
void addInt(int value);
void addText(EngineText text);
void sendMessage();

// Waits for the next message from the device. These and sendMessage end the process when the
// device is gone.
PageMessageKind receiveMessage();

// Sends the message and receives the answer.
void askDevice();

// The items of the message that was received, in their order. After a failure all that follow fail.
bool readBool();        // false on failure
int readInt();          // 0 on failure
EngineText readText();  // null on failure; valid until the next
bool hasReadFailed();

}  // namespace tavsim

#endif
