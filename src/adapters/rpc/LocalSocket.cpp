#include "adapters/rpc/LocalSocket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace nomira::rpc {
namespace {

// What is left of an address for the socket's own name, behind "/proc/self/fd/N/".
constexpr std::size_t kMaxName = 80;

std::filesystem::path FolderOf(const std::filesystem::path& socket) {
    return socket.has_parent_path() ? socket.parent_path() : std::filesystem::path(".");
}

}  // namespace

SocketAddress::SocketAddress(const std::filesystem::path& socket)
    : m_sName(socket.filename().string()),
      m_nFolder(::open(FolderOf(socket).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (m_nFolder < 0) throw std::system_error(errno, std::generic_category());
    if (!m_sName.empty() && m_sName.size() <= kMaxName) return;
    ::close(m_nFolder);
    throw std::system_error(std::make_error_code(std::errc::filename_too_long));
}

SocketAddress::~SocketAddress() {
    ::close(m_nFolder);
}

asio::local::stream_protocol::endpoint SocketAddress::Endpoint() const {
    return {"/proc/self/fd/" + std::to_string(m_nFolder) + "/" + m_sName};
}

bool PeerIsUser(int nSocket, uid_t user) {
    ucred peer{};
    socklen_t nSize = sizeof peer;
    return ::getsockopt(nSocket, SOL_SOCKET, SO_PEERCRED, &peer, &nSize) == 0 && peer.uid == user;
}

}  // namespace nomira::rpc
