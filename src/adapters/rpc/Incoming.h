// What the other end sends to the adapter: the answer to a call, or a notification of its own.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "adapters/rpc/Wire.h"
#include "link/MessageRecord.h"

namespace nomira::rpc {

// The call was carried out.
struct Success {
    std::int32_t nId = 0;
    Json result;
};

// The call failed. An error without a record gets one with the error's words as its cause.
struct Failure {
    std::int32_t nId = 0;
    MessageRecord record;
};

struct Notification {
    std::string sMethod;
    Json params;  // an object
};

using Incoming = std::variant<Success, Failure, Notification>;

// What a line, without its end, holds. Raises WireError if it is none of the three.
Incoming ParseIncoming(std::string_view sLine);

}  // namespace nomira::rpc
