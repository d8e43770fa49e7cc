#include "adapters/rpc/Incoming.h"

#include <utility>

#include "adapters/rpc/RecordJson.h"

namespace nomira::rpc {
namespace {

Notification TakeNotification(Json& json) {
    Notification notification{StringMember(json, "method"), Json::object()};
    if (json.contains("params")) notification.params = std::move(json["params"]);
    if (!notification.params.is_object()) throw WireError("\"params\" is no object");
    return notification;
}

Failure FailureOf(std::int32_t nId, const Json& error) {
    const std::int32_t nCode = NumberMember(error, "code");
    Text sWords = TextMember(error, "message");
    Failure failure{nId, {}};
    if (error.contains("data")) {
        failure.record = RecordFromJson(error["data"]);
    } else {
        failure.record.nMessage = nCode;
        failure.record.bstrCause = std::move(sWords);
    }
    return failure;
}

}  // namespace

Incoming ParseIncoming(std::string_view sLine) {
    Json json = ParseLine(sLine);
    if (StringMember(json, "jsonrpc") != "2.0") throw WireError("\"jsonrpc\" is not \"2.0\"");
    if (!json.contains("id")) return TakeNotification(json);
    const std::int32_t nId = NumberMember(json, "id");
    if (json.contains("result") == json.contains("error"))
        throw WireError("an answer has either \"result\" or \"error\"");
    if (json.contains("error")) return FailureOf(nId, json["error"]);
    return Success{nId, std::move(json["result"])};
}

}  // namespace nomira::rpc
