#include "apps/vexon3/SocketPlace.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

namespace nomira::simulator {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kOthers = S_IRWXG | S_IRWXO;

// Between looking who is there and listening nobody else may do the same.
class FolderLock {
  public:
    explicit FolderLock(int nFolder) : m_nFolder(nFolder) { ::flock(m_nFolder, LOCK_EX); }
    ~FolderLock() { ::flock(m_nFolder, LOCK_UN); }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

  private:
    int m_nFolder;
};

fs::path WithFolder(const fs::path& socket) {
    const fs::path folder = socket.parent_path();
    std::error_code error;
    if (!folder.empty() && !fs::exists(folder)) {
        fs::create_directories(folder.parent_path().empty() ? "." : folder.parent_path(), error);
        if (::mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST)
            throw SocketError("the folder " + folder.string() + " can't be made: " +
                              std::generic_category().message(errno) + "; give another --socket");
    }
    return socket;
}

}  // namespace

SocketPlace::SocketPlace(asio::io_context& context, const fs::path& socket) try
    : m_socket(WithFolder(socket)), m_address(m_socket), m_acceptor(context) {
    RequirePrivateFolder();
    const FolderLock lock(m_address.Folder());
    RequireNobodyThere(context);
    m_acceptor.open();
    m_acceptor.bind(m_address.Endpoint());
    m_nNode = NodeOfSocket();
    m_acceptor.listen();
} catch (const std::system_error& error) {
    throw SocketError(socket.string() + ": " + error.code().message() + "; give another --socket");
}

SocketPlace::~SocketPlace() {
    const FolderLock lock(m_address.Folder());
    if (m_nNode != 0 && NodeOfSocket() == m_nNode)
        ::unlinkat(m_address.Folder(), m_address.Name().c_str(), 0);
}

void SocketPlace::Fail(const std::string& sWhat) const {
    throw SocketError(m_socket.string() + ": " + sWhat);
}

void SocketPlace::RequirePrivateFolder() const {
    struct stat status {};
    if (::fstat(m_address.Folder(), &status) != 0)
        throw std::system_error(errno, std::generic_category());
    if (status.st_uid != ::geteuid())
        Fail("its folder belongs to another user; give a --socket in a folder of your own");
    if ((status.st_mode & kOthers) != 0)
        Fail("others may enter its folder; close it with chmod 700, or give another --socket");
}

void SocketPlace::RequireNobodyThere(asio::io_context& context) const {
    struct stat status {};
    if (::fstatat(m_address.Folder(), m_address.Name().c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return;
    if (!S_ISSOCK(status.st_mode))
        Fail("something that is no socket stands there; give another --socket");
    asio::local::stream_protocol::socket probe(context);
    std::error_code error;
    probe.connect(m_address.Endpoint(), error);
    if (error != asio::error::connection_refused)
        Fail("another simulator listens there; stop it, or give another --socket");
    ::unlinkat(m_address.Folder(), m_address.Name().c_str(), 0);
}

ino_t SocketPlace::NodeOfSocket() const {
    struct stat status {};
    const int nFound =
        ::fstatat(m_address.Folder(), m_address.Name().c_str(), &status, AT_SYMLINK_NOFOLLOW);
    return nFound == 0 ? status.st_ino : 0;
}

}  // namespace nomira::simulator
