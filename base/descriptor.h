// A file descriptor in a process that is not ours alone.
#ifndef TAV_BASE_DESCRIPTOR_H
#define TAV_BASE_DESCRIPTOR_H

#include <sys/types.h>

#include <optional>

namespace base {

// What stands behind a descriptor.
struct FileIdentity {
    dev_t device;
    ino64_t inode;
    bool operator==(const FileIdentity&) const = default;
};

// Nothing when the number is no descriptor.
std::optional<FileIdentity> identityOf(int number);

// Owns a descriptor, at a high number, where it is in nobody's way. A program may still close all
// descriptors that it finds and be given the number for a file of its own: whoever uses the number
// asks first whether it is still ours.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number);  // takes it over; negative for none
    ~Descriptor() { close(); }
    Descriptor(Descriptor&& other) noexcept { *this = static_cast<Descriptor&&>(other); }
    Descriptor& operator=(Descriptor&& other) noexcept;
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return m_number; }

    // What it was opened for, also when it is lost.
    const std::optional<FileIdentity>& identity() const { return m_identity; }

    // Whether there is one, and the number still stands for what it stood for.
    bool isOurs() const;

    // Leaves alone what is not ours any more.
    void close();

private:
    int m_number = -1;
    std::optional<FileIdentity> m_identity;
};

}  // namespace base

#endif
