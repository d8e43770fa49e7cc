// The windowing toolkit's life inside the process: at most one object, made before anything else of
// this folder is used and gone after it.
#pragma once

namespace nomira::wx {

class Toolkit {
  public:
    // Looks for a display; nothing is said where there is none.
    Toolkit();
    ~Toolkit();
    Toolkit(const Toolkit&) = delete;
    Toolkit& operator=(const Toolkit&) = delete;

    // Whether there is a display. If not, nothing else of this folder may be used.
    bool IsReady() const { return m_bReady; }

  private:
    bool m_bReady = false;
};

}  // namespace nomira::wx
