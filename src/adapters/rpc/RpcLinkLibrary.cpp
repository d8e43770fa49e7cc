#include "adapters/rpc/RpcLinkLibrary.h"

#include <poll.h>

#include <algorithm>
#include <utility>

#include "adapters/rpc/Connection.h"
#include "adapters/rpc/RpcObjects.h"

namespace nomira::rpc {

// What the library and its factories share, for a factory may outlive the library.
struct RpcLinkLibrary::Shared {
    std::filesystem::path socket;
    ResolvePath resolvePath;
    // All that may have something to serve; who uses a connection holds it.
    std::vector<std::weak_ptr<Connection>> connections;

    std::shared_ptr<Connection> Connect() {
        auto connection = std::make_shared<Connection>(socket);
        std::erase_if(connections, [](const auto& known) { return known.expired(); });
        connections.push_back(connection);
        return connection;
    }
    std::vector<std::shared_ptr<Connection>> Alive() const {
        std::vector<std::shared_ptr<Connection>> alive;
        for (const auto& known : connections)
            if (auto connection = known.lock()) alive.push_back(std::move(connection));
        return alive;
    }
};

class RpcFactory : public LinkFactory {
  public:
    explicit RpcFactory(std::shared_ptr<RpcLinkLibrary::Shared> shared)
        : m_shared(std::move(shared)) {}

    std::unique_ptr<LinkObject> CreateLinkObject(TextView sProgId, TextView sConnectName) override {
        if (m_connection) m_connection->Collect();
        if (!m_connection || !m_connection->IsOpen()) m_connection = m_shared->Connect();
        return MakeObject(m_connection, m_shared->resolvePath, sProgId, sConnectName);
    }

  private:
    std::shared_ptr<RpcLinkLibrary::Shared> m_shared;
    std::shared_ptr<Connection> m_connection;
};

RpcLinkLibrary::RpcLinkLibrary(std::filesystem::path socket, ResolvePath resolvePath)
    : m_shared(std::make_shared<Shared>(Shared{std::move(socket), std::move(resolvePath), {}})) {}

RpcLinkLibrary::~RpcLinkLibrary() = default;

std::unique_ptr<LinkFactory> RpcLinkLibrary::CreateFactory() {
    return std::make_unique<RpcFactory>(m_shared);
}

void RpcLinkLibrary::ServeEvents() {
    for (const auto& connection : m_shared->Alive())
        connection->Serve();
}

std::vector<int> RpcLinkLibrary::EventDescriptors() const {
    std::vector<int> descriptors;
    for (const auto& connection : m_shared->Alive())
        if (const int nDescriptor = connection->Descriptor(); nDescriptor >= 0)
            descriptors.push_back(nDescriptor);
    return descriptors;
}

bool RpcLinkLibrary::WaitForEvents(std::chrono::milliseconds longest) {
    std::vector<pollfd> descriptors;
    for (const auto& connection : m_shared->Alive()) {
        if (connection->HasWaiting()) return true;
        descriptors.push_back({connection->Descriptor(), POLLIN, 0});
    }
    return ::poll(descriptors.data(), descriptors.size(), static_cast<int>(longest.count())) > 0;
}

}  // namespace nomira::rpc
