// Holds back the notice to the controller's database process until what was written is committed:
// told earlier, it would read the old texts again.
#pragma once

#include "platform/ClosedLibrary.h"

namespace nomira::companion {

class HeldNotice : public ClosedLibrary {
  public:
    explicit HeldNotice(ClosedLibrary& inner) : m_inner(inner) {}

    void RefreshConfDb() override { m_bHeld = true; }

    // Passes the notice on, once, if there was any.
    void Release() {
        if (m_bHeld) m_inner.RefreshConfDb();
        m_bHeld = false;
    }

  private:
    ClosedLibrary& m_inner;
    bool m_bHeld = false;
};

}  // namespace nomira::companion
