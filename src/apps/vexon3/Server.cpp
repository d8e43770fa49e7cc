#include "apps/vexon3/Server.h"

#include <unistd.h>

#include <asio/buffer.hpp>
#include <asio/post.hpp>
#include <asio/read_until.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>
#include <deque>
#include <utility>

#include "adapters/rpc/LocalSocket.h"
#include "adapters/rpc/Wire.h"

namespace nomira::simulator {
namespace {

// What may wait for a program that doesn't read: an answer and many reports.
constexpr std::size_t kMaxUnsent = 2 * rpc::kMaxLine;

}  // namespace

// One program: a request is answered before the next one is looked at.
class Session : public std::enable_shared_from_this<Session> {
  public:
    Session(Server& server, ClientId client, Server::Socket socket)
        : m_server(server),
          m_client(client),
          m_socket(std::move(socket)),
          m_timer(m_socket.get_executor()) {}

    void ReadRequest() {
        asio::async_read_until(
            m_socket, asio::dynamic_buffer(m_sInput, rpc::kMaxLine + 1), '\n',
            [self = shared_from_this()](std::error_code error, std::size_t nLine) {
                if (error) return self->End();
                const std::string sLine = self->m_sInput.substr(0, nLine - 1);
                self->m_sInput.erase(0, nLine);
                self->React(self->m_server.m_controller.Handle(self->m_client, sLine));
            });
    }

    void Send(const std::string& sLine) {
        if (!m_socket.is_open()) return;
        m_nUnsent += sLine.size();
        // Later: the controller is still at work for all that listen.
        if (m_nUnsent > kMaxUnsent)
            return asio::post(m_socket.get_executor(),
                              [self = shared_from_this()] { self->End(); });
        m_unsent.push_back(sLine);
        if (m_unsent.size() == 1) Write();
    }

    void End() {
        std::error_code ignored;
        m_socket.close(ignored);
        m_timer.cancel();
        m_server.Gone(m_client);
    }

  private:
    void React(Reaction reaction) {
        m_timer.expires_after(reaction.delay);
        m_timer.async_wait(
            [self = shared_from_this(), reaction = std::move(reaction)](std::error_code error) {
                if (error || !self->m_socket.is_open()) return;
                self->m_bEnding = reaction.bDrop;
                if (!reaction.sAnswer.empty()) self->Send(reaction.sAnswer);
                if (!self->m_bEnding) return self->ReadRequest();
                if (self->m_unsent.empty()) self->End();
            });
    }

    void Write() {
        asio::async_write(m_socket, asio::buffer(m_unsent.front()),
                          [self = shared_from_this()](std::error_code error, std::size_t) {
                              if (error) return self->End();
                              self->m_nUnsent -= self->m_unsent.front().size();
                              self->m_unsent.pop_front();
                              if (!self->m_unsent.empty()) return self->Write();
                              if (self->m_bEnding) self->End();
                          });
    }

    Server& m_server;
    ClientId m_client;
    Server::Socket m_socket;
    asio::steady_timer m_timer;
    std::string m_sInput;
    std::deque<std::string> m_unsent;
    std::size_t m_nUnsent = 0;
    bool m_bEnding = false;  // behind what is still unsent
};

Server::Server(Acceptor& acceptor, const FileSpace& files, const Scenario& scenario,
               Controller::Log log)
    : m_acceptor(acceptor),
      m_controller(
          files, scenario,
          [this](ClientId client, const std::string& sLine) {
              const auto found = m_sessions.find(client);
              if (found != m_sessions.end()) found->second->Send(sLine);
          },
          log),
      m_log(std::move(log)) {
    Accept();
}

Server::~Server() = default;

void Server::Accept() {
    m_acceptor.async_accept([this](std::error_code error, Socket socket) {
        if (error == asio::error::operation_aborted) return;
        if (!error) Greet(std::move(socket));
        Accept();
    });
}

void Server::Greet(Socket socket) {
    if (!rpc::PeerIsUser(socket.native_handle(), ::geteuid())) {
        m_log("a process of another user was refused");
        return;
    }
    const ClientId client = ++m_nLastClient;
    m_log("client " + std::to_string(client) + ": here");
    const auto session = std::make_shared<Session>(*this, client, std::move(socket));
    m_sessions[client] = session;
    session->ReadRequest();
}

void Server::Gone(ClientId client) {
    if (m_sessions.erase(client) == 0) return;
    m_controller.Forget(client);
    m_log("client " + std::to_string(client) + ": gone");
}

}  // namespace nomira::simulator
