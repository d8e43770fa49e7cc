// Serves the controller to any number of programs at once, on one thread.
#pragma once

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <map>
#include <memory>
#include <string>

#include "apps/vexon3/Controller.h"

namespace nomira::simulator {

class Session;

class Server {
  public:
    using Socket = asio::local::stream_protocol::socket;
    using Acceptor = asio::local::stream_protocol::acceptor;

    // Begins to accept. Everything given must outlive the server, and the server the context's run.
    Server(Acceptor& acceptor, const FileSpace& files, const Scenario& scenario,
           Controller::Log log);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

  private:
    friend class Session;

    void Accept();
    void Greet(Socket socket);
    void Gone(ClientId client);

    Acceptor& m_acceptor;
    Controller m_controller;
    Controller::Log m_log;
    ClientId m_nLastClient = 0;
    std::map<ClientId, std::shared_ptr<Session>> m_sessions;
};

}  // namespace nomira::simulator
