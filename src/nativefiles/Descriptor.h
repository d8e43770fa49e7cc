// An open file descriptor that closes itself.
#pragma once

#include <unistd.h>

#include <utility>

namespace nomira::nativefiles {

class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int nFd) : m_nFd(nFd) {}
    ~Descriptor() { Reset(); }
    Descriptor(Descriptor&& other) noexcept : m_nFd(std::exchange(other.m_nFd, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        if (this != &other) {
            Reset();
            m_nFd = other.Release();
        }
        return *this;
    }

    bool IsOpen() const { return m_nFd >= 0; }
    int Get() const { return m_nFd; }
    // Hands the descriptor over: the caller closes it.
    int Release() { return std::exchange(m_nFd, -1); }
    void Reset() {
        if (IsOpen()) ::close(Release());
    }

  private:
    int m_nFd = -1;
};

}  // namespace nomira::nativefiles
