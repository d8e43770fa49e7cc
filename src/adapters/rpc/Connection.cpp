#include "adapters/rpc/Connection.h"

#include <fcntl.h>
#include <poll.h>

#include <asio/buffer.hpp>
#include <cerrno>
#include <limits>
#include <system_error>
#include <utility>

#include "adapters/rpc/LinkError.h"
#include "adapters/rpc/LocalSocket.h"

namespace nomira::rpc {
namespace {

constexpr std::size_t kReadSize = std::size_t{64} * 1024;

// How much may wait to be served. A program that is busy serves nothing for a while, and what its
// watches report in that time is far from this.
constexpr std::size_t kMaxWaiting = 10'000;
constexpr std::size_t kMaxWaitingBytes = kMaxLine;

// The peer is gone.
class PeerLost : public std::system_error {
  public:
    using std::system_error::system_error;
};

Json MessageOf(std::string_view sMethod, Json params) {
    return {{"jsonrpc", "2.0"}, {"method", sMethod}, {"params", std::move(params)}};
}

}  // namespace

Connection::Connection(const std::filesystem::path& socket, uid_t user) : m_socket(m_context) {
    try {
        const SocketAddress address(socket);
        m_socket.connect(address.Endpoint());
        Prepare();
    } catch (const std::system_error& error) {
        throw TroubleError(LinkTrouble::Lost,
                           "no middleware at " + socket.string() + ": " + error.code().message(),
                           "connect");
    }
    if (PeerIsUser(m_socket.native_handle(), user)) return;
    throw TroubleError(LinkTrouble::Lost,
                       "the process at " + socket.string() + " belongs to another user", "connect");
}

// Waiting is Await's affair alone. A program that is started meanwhile must not keep the link open.
void Connection::Prepare() {
    m_socket.non_blocking(true);
    ::fcntl(m_socket.native_handle(), F_SETFD, FD_CLOEXEC);
}

void Connection::Close() {
    std::error_code ignored;
    m_socket.close(ignored);
    m_sInput.clear();
    m_nSearched = 0;
    m_sUnsent.clear();
}

Json Connection::Call(std::string_view sMethod, Json params) {
    if (!IsOpen()) throw TroubleError(LinkTrouble::Lost, "the middleware is gone", sMethod);
    m_nLastId = m_nLastId == std::numeric_limits<std::int32_t>::max() ? 1 : m_nLastId + 1;
    Json request = MessageOf(sMethod, std::move(params));
    request["id"] = m_nLastId;
    try {
        WriteLine(LineOf(request), sMethod);
        return AwaitAnswer(m_nLastId);
    } catch (const WireError& error) {
        Close();
        throw TroubleError(LinkTrouble::BadAnswer, error.what(), sMethod);
    } catch (const PeerLost& error) {
        Close();
        throw TroubleError(LinkTrouble::Lost, "the middleware is gone: " + error.code().message(),
                           sMethod);
    }
}

void Connection::WriteLine(const std::string& sLine, std::string_view sMethod) {
    if (sLine.size() > kMaxLine)
        throw TroubleError(LinkTrouble::BadRequest, "more than one line can hold", sMethod);
    m_sUnsent += sLine;
    for (std::size_t nSent = 0; nSent < m_sUnsent.size();) {
        const std::size_t nNow = WriteSome(std::string_view(m_sUnsent).substr(nSent));
        nSent += nNow;
        if (nNow == 0) ReadWhileWriting();
    }
    m_sUnsent.clear();
}

// The peer may be writing as well, and not read on before that has been read.
void Connection::ReadWhileWriting() {
    Await(POLLIN | POLLOUT);
    ReadSome();
    TakeNotifications();
}

// 0 if nothing can be written now.
std::size_t Connection::WriteSome(std::string_view sBytes) {
    std::error_code error;
    const std::size_t nWritten = m_socket.write_some(asio::buffer(sBytes), error);
    if (error && error != asio::error::would_block) throw PeerLost(error);
    return nWritten;
}

void Connection::Await(short nEvents) {
    pollfd descriptor{m_socket.native_handle(), nEvents, 0};
    while (::poll(&descriptor, 1, -1) < 0)
        if (errno != EINTR) throw PeerLost(std::error_code(errno, std::generic_category()));
}

Json Connection::AwaitAnswer(std::int32_t nId) {
    for (;;) {
        const std::string sLine = ReadLine();
        Incoming incoming = ParseIncoming(sLine);
        if (auto* pNotification = std::get_if<Notification>(&incoming)) {
            Queue(std::move(*pNotification), sLine.size());
        } else if (auto* pFailure = std::get_if<Failure>(&incoming)) {
            if (pFailure->nId != nId) throw WireError("an answer to another call");
            throw LinkError(std::move(pFailure->record));
        } else {
            auto& success = std::get<Success>(incoming);
            if (success.nId != nId) throw WireError("an answer to another call");
            return std::move(success.result);
        }
    }
}

void Connection::Tell(std::string_view sMethod, Json params) {
    if (!IsOpen()) return;
    m_sUnsent += LineOf(MessageOf(sMethod, std::move(params)));
    std::error_code ignored;
    const std::size_t nSent = m_socket.write_some(asio::buffer(m_sUnsent), ignored);
    m_sUnsent.erase(0, nSent);
}

std::string Connection::ReadLine() {
    std::string sLine;
    while (!TakeLine(sLine))
        if (!ReadSome()) Await(POLLIN);
    return sLine;
}

bool Connection::TakeLine(std::string& sLine) {
    const std::size_t nEnd = m_sInput.find('\n', m_nSearched);
    if (nEnd == std::string::npos) {
        m_nSearched = m_sInput.size();
        if (m_nSearched > kMaxLine) throw WireError("the line is too long");
        return false;
    }
    sLine = m_sInput.substr(0, nEnd);
    m_sInput.erase(0, nEnd + 1);
    m_nSearched = 0;
    return true;
}

bool Connection::ReadSome() {
    const std::size_t nOld = m_sInput.size();
    m_sInput.resize(nOld + kReadSize);
    std::error_code error;
    const std::size_t nRead =
        m_socket.read_some(asio::buffer(m_sInput.data() + nOld, kReadSize), error);
    m_sInput.resize(nOld + nRead);
    if (error == asio::error::would_block) return false;
    if (error) throw PeerLost(error);
    return true;
}

void Connection::Queue(Notification notification, std::size_t nBytes) {
    m_nWaitingBytes += nBytes;
    if (m_waiting.size() >= kMaxWaiting || m_nWaitingBytes > kMaxWaitingBytes)
        throw WireError("more notifications than anybody can need");
    m_waiting.push_back({std::move(notification), nBytes});
}

void Connection::AddReceiver(std::int32_t nObject, NotificationReceiver& receiver) {
    m_receivers[nObject] = &receiver;
}

void Connection::RemoveReceiver(std::int32_t nObject) {
    m_receivers.erase(nObject);
}

void Connection::Serve() {
    // One read is enough: whoever sends more than that gets it served at the next time.
    if (IsOpen()) ReadWaiting();
    // What comes while the callbacks run is for the next time.
    for (std::size_t nLeft = m_waiting.size(); nLeft > 0 && !m_waiting.empty(); --nLeft) {
        const Waiting next = std::move(m_waiting.front());
        m_waiting.pop_front();
        m_nWaitingBytes -= next.nBytes;
        Deliver(next.notification);
    }
}

// While no call waits for its answer.
void Connection::TakeNotifications() {
    for (std::string sLine; TakeLine(sLine);) {
        Incoming incoming = ParseIncoming(sLine);
        auto* pNotification = std::get_if<Notification>(&incoming);
        if (!pNotification) throw WireError("an answer to no call");
        Queue(std::move(*pNotification), sLine.size());
    }
}

bool Connection::ReadWaiting() {
    try {
        TakeNotifications();  // ahead of the peer's end, which closes
        const bool bMore = ReadSome();
        TakeNotifications();
        return bMore;
    } catch (const WireError&) {
        Close();
    } catch (const PeerLost&) {
        Close();
    }
    return false;
}

// It ends: a peer that sends faster than this reads comes to the bounds of Queue.
void Connection::Collect() {
    while (IsOpen() && ReadWaiting())
        continue;
}

void Connection::Deliver(const Notification& notification) {
    try {
        const auto found = m_receivers.find(NumberMember(notification.params, "object"));
        // An object may have gone while its last reports were under way.
        if (found != m_receivers.end()) found->second->Receive(notification);
    } catch (const WireError&) {
        Close();
    }
}

bool Connection::HasWaiting() const {
    return !m_waiting.empty() || m_sInput.find('\n', m_nSearched) != std::string::npos;
}

int Connection::Descriptor() {
    return IsOpen() ? m_socket.native_handle() : -1;
}

}  // namespace nomira::rpc
