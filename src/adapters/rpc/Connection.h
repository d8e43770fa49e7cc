// One connection with the process that plays the middleware. Calls block until their answer is
// there; a peer that is gone ends them, one that is late does not. Notifications that come in
// between wait until they are served.
//
// A peer that says what can't be meant is not listened to any longer: the connection closes, and
// every later call fails.
#pragma once

#include <unistd.h>

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "adapters/rpc/Incoming.h"

namespace nomira::rpc {

// Takes the notifications for one object.
class NotificationReceiver {
  public:
    virtual ~NotificationReceiver() = default;
    // Raises WireError if the notification's params aren't what its method needs. A method that
    // isn't known is passed over.
    virtual void Receive(const Notification& notification) = 0;
};

class Connection {
  public:
    // Connects. Raises LinkError if nobody listens there, or a process of another user than `user`.
    explicit Connection(const std::filesystem::path& socket, uid_t user = ::geteuid());
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool IsOpen() const { return m_socket.is_open(); }
    void Close();

    // The result of the method. Raises LinkError: with the record of the answer where the
    // operation failed, else with one that tells what is wrong with the link.
    Json Call(std::string_view sMethod, Json params);

    // Tells the peer something that has no answer. Never waits and never fails: what doesn't get
    // through at once goes ahead of the next call.
    void Tell(std::string_view sMethod, Json params);

    // Notifications whose "object" is this number go to the receiver until it is taken away.
    void AddReceiver(std::int32_t nObject, NotificationReceiver& receiver);
    void RemoveReceiver(std::int32_t nObject);

    // Reads what has come, without waiting and without handing it over; closes if the peer has
    // gone.
    void Collect();

    // Hands over the notifications that have come so far, without waiting for more. What the
    // receivers' callbacks raise goes to the caller; the rest is there at the next time.
    void Serve();
    // Becomes readable when there may be something to serve; -1 if closed.
    int Descriptor();
    // Whether something to serve has been read already, so that the descriptor doesn't tell.
    bool HasWaiting() const;

  private:
    using Socket = asio::local::stream_protocol::socket;

    void Prepare();
    void WriteLine(const std::string& sLine, std::string_view sMethod);
    std::size_t WriteSome(std::string_view sBytes);
    void ReadWhileWriting();
    // Waits for one of the events of poll.
    void Await(short nEvents);
    std::string ReadLine();
    // Takes a whole line off what has been read; false if there is none.
    bool TakeLine(std::string& sLine);
    // Appends what has come to what has been read; false if nothing is there.
    bool ReadSome();
    void TakeNotifications();
    void Queue(Notification notification, std::size_t nBytes);
    Json AwaitAnswer(std::int32_t nId);
    // False if nothing is there, or the connection has been closed.
    bool ReadWaiting();
    void Deliver(const Notification& notification);

    asio::io_context m_context;
    Socket m_socket;
    std::string m_sInput;       // read, and not yet taken
    std::size_t m_nSearched{};  // no line ends in this much of it
    std::string m_sUnsent;
    std::int32_t m_nLastId = 0;
    struct Waiting {
        Notification notification;
        std::size_t nBytes;
    };
    std::deque<Waiting> m_waiting;
    std::size_t m_nWaitingBytes = 0;
    std::map<std::int32_t, NotificationReceiver*> m_receivers;
};

}  // namespace nomira::rpc
