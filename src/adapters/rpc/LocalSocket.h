// Local sockets by path: a stream between two processes of one user on one machine.
#pragma once

#include <sys/types.h>

#include <asio/local/stream_protocol.hpp>
#include <filesystem>
#include <string>

namespace nomira::rpc {

// The address of a socket. It goes through the open folder, because a socket's address is too short
// for many a path; so it is good only while this object lives.
class SocketAddress {
  public:
    // Throws std::system_error if the folder can't be opened, or the name is too long.
    explicit SocketAddress(const std::filesystem::path& socket);
    ~SocketAddress();
    SocketAddress(const SocketAddress&) = delete;
    SocketAddress& operator=(const SocketAddress&) = delete;

    asio::local::stream_protocol::endpoint Endpoint() const;
    // Of the folder that holds the socket.
    int Folder() const { return m_nFolder; }
    const std::string& Name() const { return m_sName; }

  private:
    std::string m_sName;
    int m_nFolder;
};

// Whether the process at the other end of the connected socket belongs to this user, as the system
// says. Another one's process is not to be talked to.
bool PeerIsUser(int nSocket, uid_t user);

}  // namespace nomira::rpc
