// The page's end of the connection with the device. It does not use the JavaScript engine.
//
// It owns the objects that have destructors: messages while they are built and read, and the text
// that was read last. So nothing leaks or is left half done when the engine's longjmp skips a
// caller.
#pragma once

#include <cstddef>

#include "bridge/message.h"

namespace tavsim {

// A NUL-terminated text in the engine's encoding, which is not owned. Null when there are no bytes.
struct EngineText {
    const char* bytes;
    size_t length;
};

// Sets the page's end of the connection.
constexpr int kDeviceSocket = 3;

// A message to the device: begin it with its kind, write its items, then send it. One that is not
// sent is dropped when the next begins.
void beginMessage(bridge::MessageKind kind);
void beginQuestion(bridge::MessageKind kind);  // with its number
void addInt(int value);
void addText(EngineText text);
void sendMessage();

// Waits for the next message from the device. These and sendMessage end the process when the device
// has closed the connection.
bridge::MessageKind receiveMessage();

// Sends the question and receives its answer.
void askDevice();

// Read the items of the received message in order. After a failure all further reads fail.
bool readBool();        // false on failure
int readInt();          // 0 on failure
EngineText readText();  // null on failure; valid until the next
bool hasReadFailed();

}  // namespace tavsim
