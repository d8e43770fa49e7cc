// The link library over a local socket: its objects live in a process beside this one, the
// simulator vexon3.exe or whatever else speaks the wire of docs/controller.md.
//
// The library itself is always there: making a factory works without that process, and connects to
// nothing. A factory connects when it makes its first object, and all its objects share that
// connection. When the process has gone, their calls fail from then on; a new object connects anew.
//
// Files of the disk are read and written here, never by the process at the other end: what it says
// can end in no other file than the one that the program named as a copy's destination.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

#include "langtools/Text.h"
#include "link/LinkLibrary.h"

namespace nomira::rpc {

// The file of this machine that a path of the program, such as C:\Temp\x.src, means.
using ResolvePath = std::function<std::filesystem::path(TextView)>;

// Where the program and the simulator meet unless they are told otherwise: below the folder that
// stands for the Windows side of the world.
inline std::filesystem::path DefaultSocket(const std::filesystem::path& prefix) {
    return prefix / "run" / "vexon3.sock";
}

class RpcLinkLibrary : public LinkLibrary {
  public:
    // `socket`: where the other process listens. It lies in a folder that nobody else can open; a
    // process of another user is refused in any case.
    RpcLinkLibrary(std::filesystem::path socket, ResolvePath resolvePath);
    ~RpcLinkLibrary() override;

    bool Installed() const override { return true; }
    std::unique_ptr<LinkFactory> CreateFactory() override;

    // Hands the watch reports and messages that have come to their callbacks, on this thread, and
    // doesn't wait for more. The program calls it where it serves its events; a call of an object
    // delivers nothing by itself.
    void ServeEvents();

    // Become readable when there may be something for ServeEvents; others after a connection has
    // come or gone. What has been read already is not told by them.
    std::vector<int> EventDescriptors() const;

    // Waits until there may be something for ServeEvents, or the time is over; false if it is.
    bool WaitForEvents(std::chrono::milliseconds longest);

  private:
    struct Shared;
    friend class RpcFactory;
    std::shared_ptr<Shared> m_shared;
};

}  // namespace nomira::rpc
