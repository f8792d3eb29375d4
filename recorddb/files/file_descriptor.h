#ifndef RECORDDB_FILES_FILE_DESCRIPTOR_H
#define RECORDDB_FILES_FILE_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace recorddb {

// Owns an open file descriptor, or none.
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number) : m_number(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~FileDescriptor() {
        if (IsOpen()) {
            ::close(m_number);
        }
    }

    bool IsOpen() const { return m_number >= 0; }
    int Number() const { return m_number; }

  private:
    int m_number = -1;
};

}  // namespace recorddb

#endif
