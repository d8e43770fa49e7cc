// The link library's objects over a connection.
#pragma once

#include <memory>

#include "adapters/rpc/Connection.h"
#include "adapters/rpc/RpcLinkLibrary.h"
#include "link/LinkLibrary.h"

namespace nomira::rpc {

// A new object of the class at the other end, and its counterpart here. Raises LinkFailure, with no
// word to the other end for a class that the library hasn't.
std::unique_ptr<LinkObject> MakeObject(const std::shared_ptr<Connection>& connection,
                                       const ResolvePath& resolvePath, TextView sProgId,
                                       TextView sConnectName);

}  // namespace nomira::rpc
