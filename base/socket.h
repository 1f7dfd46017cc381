// What a socket takes, or has, without waiting.
#ifndef TAV_BASE_SOCKET_H
#define TAV_BASE_SOCKET_H

#include <cstddef>
#include <string>

namespace base {

// Memory for what comes is allocated in such steps.
inline constexpr size_t kReceiveStep = size_t{64} * 1024;

// Sends what the other end takes of the bytes behind the first `sent`, and counts it there. False
// when it will take nothing more.
bool sendNow(int socket, const std::string& bytes, size_t* sent);

enum class Received { Some, NothingYet, End };

// Appends what is there, at most so many bytes.
Received receiveNow(int socket, size_t most, std::string* bytes);

}  // namespace base

#endif
