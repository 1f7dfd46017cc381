/* Typed items of one message on the host's IPC channel, from the helper library. */
#ifndef TAV_PLATFORM_HDATA_H
#define TAV_PLATFORM_HDATA_H

#include <stddef.h>

#include "visibility.h"

/* Reads the items of a message in the order in which they were written. The bytes belong to the
 * caller and must outlive the reader. A read that meets the end of the message, an item of another
 * type or a damaged one fails; after a failure every further read fails too. */
class TAV_PLATFORM_API HDataReader {
public:
    HDataReader(const void* bytes, size_t size) noexcept;
    ~HDataReader();
    HDataReader(const HDataReader&) = delete;
    HDataReader& operator=(const HDataReader&) = delete;

    /* Copies a string into a buffer of `size` bytes, terminated. A longer string is cut to size - 1
     * bytes; the next read begins after the whole of it. A null string reads as the empty one. A
     * null buffer or a size below 1 is a failure. On failure the buffer holds the empty string. */
    void readStr(char* buffer, int size);

    /* A new terminated string, to be released with delete[]. Null on failure, such as exhausted
     * memory. Null, too, for a null string, which is not a failure. */
    char* allocReadStr();

    /* The value; 0 and false on failure. */
    int readInt();
    bool readBool();

    /* True while no read has failed. */
    bool isSuccessful() const;

private:
    struct Message;
    Message* m_message;
};

/* Builds a message. */
class TAV_PLATFORM_API HDataWriter {
public:
    HDataWriter() noexcept;
    ~HDataWriter();
    HDataWriter(const HDataWriter&) = delete;
    HDataWriter& operator=(const HDataWriter&) = delete;

    void writeInt(int value) noexcept;
    void writeBool(bool value) noexcept;

    /* A null string is allowed and arrives as null. */
    void writeStr(const char* text) noexcept;

    /* The message so far; valid until the next write and no longer than the writer. */
    const void* bytes() const;
    size_t size() const;

private:
    struct Message;
    Message* m_message;
};

#endif
