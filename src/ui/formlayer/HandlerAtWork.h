// Tells whether the program is inside a handler: one that lets events through may be called back
// into, and must find its form as it has left it.
#pragma once

namespace nomira {

// Stands beside the call of a handler, as long as the call lasts. Handlers may lie in one another.
class HandlerAtWork {
  public:
    HandlerAtWork() { ++s_nCount; }
    ~HandlerAtWork() { --s_nCount; }
    HandlerAtWork(const HandlerAtWork&) = delete;
    HandlerAtWork& operator=(const HandlerAtWork&) = delete;

    static bool Any() { return s_nCount > 0; }

  private:
    inline static int s_nCount = 0;
};

}  // namespace nomira
