// The other end of the wire, played by a thread of the test: it listens in a folder of its own and
// plays one script per connection, in order; then it closes the connection.
#pragma once

#include <sys/socket.h>
#include <sys/stat.h>

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <asio/read_until.hpp>
#include <asio/write.hpp>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "adapters/rpc/Wire.h"
#include "testing/TemporaryFolder.h"

namespace nomira::testing {

// One connection, as the script sees it. Everything throws when the adapter is gone.
class Conversation {
  public:
    explicit Conversation(asio::local::stream_protocol::socket socket)
        : m_socket(std::move(socket)) {}

    // The next line of the adapter; waits for it.
    rpc::Json Read() {
        const std::size_t nLine = asio::read_until(m_socket, asio::dynamic_buffer(m_sInput), '\n');
        const rpc::Json json = rpc::Json::parse(m_sInput.substr(0, nLine));
        m_sInput.erase(0, nLine);
        return json;
    }
    void Write(const std::string& sBytes) { asio::write(m_socket, asio::buffer(sBytes)); }
    void Notify(const char* sMethod, const rpc::Json& params) {
        Write(rpc::LineOf({{"jsonrpc", "2.0"}, {"method", sMethod}, {"params", params}}));
    }
    static std::string AnswerTo(const rpc::Json& request, const rpc::Json& result) {
        return rpc::LineOf({{"jsonrpc", "2.0"}, {"id", request.at("id")}, {"result", result}});
    }
    // Reads the next request, answers it, and gives it.
    rpc::Json Answer(const rpc::Json& result) {
        const rpc::Json request = Read();
        Write(AnswerTo(request, result));
        return request;
    }
    // Answers the request that makes an object.
    void MakeObject(int nObject) { Answer({{"object", nObject}}); }
    // Waits until the adapter has closed the connection.
    void AwaitEnd() {
        for (;;)
            Read();
    }

  private:
    asio::local::stream_protocol::socket m_socket;
    std::string m_sInput;
};

class ScriptedPeer {
  public:
    using Script = std::function<void(Conversation&)>;

    explicit ScriptedPeer(std::vector<Script> scripts)
        : m_acceptor(m_context, asio::local::stream_protocol::endpoint(Socket().string())) {
        m_thread = std::thread([this, scripts = std::move(scripts)] {
            for (const Script& script : scripts)
                Play(script);
        });
    }
    explicit ScriptedPeer(Script script) : ScriptedPeer(std::vector<Script>{std::move(script)}) {}
    ~ScriptedPeer() {
        ::shutdown(m_acceptor.native_handle(), SHUT_RDWR);  // wakes a thread that waits there
        m_thread.join();
    }

    std::filesystem::path Socket() const { return m_folder / "peer.sock"; }
    const TemporaryFolder& Folder() const { return m_folder; }

  private:
    void Play(const Script& script) {
        try {
            Conversation conversation(m_acceptor.accept());
            script(conversation);
        } catch (const std::exception&) {
            // The adapter is gone; what it should have done is seen on its side.
        }
    }

    TemporaryFolder m_folder;
    asio::io_context m_context;
    asio::local::stream_protocol::acceptor m_acceptor;
    std::thread m_thread;
};

}  // namespace nomira::testing
