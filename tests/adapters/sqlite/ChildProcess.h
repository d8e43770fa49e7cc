// Another process for tests of what processes do to each other on one file: the child runs one
// routine, and both sides say a byte to each other when they have come to a certain point.
//
// Make it before the test opens the file, so that the child inherits no handle on it.
#pragma once

#include <sys/types.h>

#include <functional>

namespace nomira::testing {

class ChildProcess {
  public:
    // The child's end of the line. Its process ends when the routine returns or raises.
    class Line {
      public:
        Line(int nIn, int nOut) : m_nIn(nIn), m_nOut(nOut) {}
        void Say(char c = '.') const;
        // Waits for the parent; false if the parent is gone.
        bool Hear() const;

      private:
        int m_nIn;
        int m_nOut;
    };

    explicit ChildProcess(const std::function<void(const Line&)>& routine);
    // Kills the child if it still runs.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    void Say() const;
    // The child's next byte; '\0' if it has ended.
    char Hear() const;
    // Kills the child where it stands, without a chance to clean up.
    void Kill();
    // Waits for the child's end; whether its routine returned.
    bool Join();

  private:
    pid_t m_nProcess = -1;
    int m_nIn = -1;
    int m_nOut = -1;
};

}  // namespace nomira::testing
