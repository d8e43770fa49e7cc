// Port: the controller software's closed library OrvoDB3_0.dll, of which one call is used.
#pragma once

namespace nomira {

class ClosedLibrary {
  public:
    virtual ~ClosedLibrary() = default;

    // The export _VB_RefreshConfDB@0: makes the controller's database process read the message
    // file again. A system without the library has nothing to do here.
    virtual void RefreshConfDb() = 0;
};

}  // namespace nomira
