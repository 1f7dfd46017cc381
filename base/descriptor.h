// File descriptors in a process that we share with an application.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string_view>

namespace base {

// The file that a descriptor refers to.
struct FileIdentity {
    dev_t device;
    ino64_t inode;
    bool operator==(const FileIdentity&) const = default;
};

// Nothing when the number is not an open descriptor.
std::optional<FileIdentity> identityOf(int number);

// Owns a file descriptor and moves it to a high number, where programs do not expect one. A program
// may still close all descriptors that it finds, and then get the same number for a file of its
// own. So callers check isOurs() before they use the number.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number);  // takes ownership; negative for none
    ~Descriptor() { close(); }
    Descriptor(Descriptor&& other) noexcept { *this = static_cast<Descriptor&&>(other); }
    Descriptor& operator=(Descriptor&& other) noexcept;
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return m_number; }

    // The file that it was opened for, even after the program has closed the descriptor.
    const std::optional<FileIdentity>& identity() const { return m_identity; }

    // Whether there is a descriptor, and its number still refers to the same file.
    bool isOurs() const;

    // Does not close a number that the program uses by now.
    void close();

private:
    int m_number = -1;
    std::optional<FileIdentity> m_identity;
};

// Writes all of the bytes; false, with errno, when that is not possible.
bool writeAll(int file, std::string_view bytes);

}  // namespace base
