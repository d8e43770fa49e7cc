// The closed library, counting its calls.
#pragma once

#include "platform/ClosedLibrary.h"

namespace nomira::memory {

class MemoryClosedLibrary : public ClosedLibrary {
  public:
    int nRefreshes = 0;
    void RefreshConfDb() override { ++nRefreshes; }
};

}  // namespace nomira::memory
