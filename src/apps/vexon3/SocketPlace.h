// The simulator's socket: its folder is this user's alone, and nobody else listens there.
#pragma once

#include <sys/types.h>

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <filesystem>
#include <stdexcept>

#include "adapters/rpc/LocalSocket.h"

namespace nomira::simulator {

// The socket can't be made. what() says why, and what to do.
class SocketError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class SocketPlace {
  public:
    // Makes the folder (mode 0700) where it isn't there, takes away a socket that nobody listens
    // on any longer, and listens. Throws SocketError: for a folder that others may enter or that
    // belongs to somebody else, for a socket on which somebody listens, and for anything else that
    // stands there.
    SocketPlace(asio::io_context& context, const std::filesystem::path& socket);
    // Takes the socket away, unless another one has come in its place.
    ~SocketPlace();
    SocketPlace(const SocketPlace&) = delete;
    SocketPlace& operator=(const SocketPlace&) = delete;

    asio::local::stream_protocol::acceptor& Acceptor() { return m_acceptor; }

  private:
    void RequirePrivateFolder() const;
    void RequireNobodyThere(asio::io_context& context) const;
    ino_t NodeOfSocket() const;
    [[noreturn]] void Fail(const std::string& sWhat) const;

    std::filesystem::path m_socket;
    rpc::SocketAddress m_address;
    asio::local::stream_protocol::acceptor m_acceptor;
    ino_t m_nNode = 0;
};

}  // namespace nomira::simulator
