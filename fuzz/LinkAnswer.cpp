// What the process at the other end of the controller link may send: any bytes, cut into lines. A
// line is an answer, a notification or a WireError; a record that comes out of it survives its way
// back, and no name that the adapter lets through leads anywhere.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string_view>

#include "adapters/rpc/ControllerName.h"
#include "adapters/rpc/Incoming.h"
#include "adapters/rpc/RecordJson.h"

namespace nomira::rpc {
namespace {

void Require(bool bHolds, const char* sWhat) {
    if (!bHolds) throw std::logic_error(sWhat);
}

void CheckRecord(const MessageRecord& record) {
    Require(RecordFromJson(RecordToJson(record)) == record, "a record changes on its way");
}

void CheckNames(const Json& result) {
    if (!result.is_object() || !result.contains("names") || !result["names"].is_array()) return;
    for (const Json& entry : result["names"]) {
        if (!entry.is_string()) continue;
        const Text sName = FromWire(entry.get_ref<const std::string&>());
        if (!IsPlainName(sName)) continue;
        Require(sName.find_first_of(u"\\/:") == Text::npos && sName != u"..", "a name leads out");
        Require(IsPlainDirectory(sName), "a name that is no directory's");
    }
}

void CheckBytes(const Json& result) {
    try {
        BytesMember(result, "data");
    } catch (const WireError&) {
        // No base64; nothing else may come.
    }
}

void CheckLine(std::string_view sLine) {
    const Incoming incoming = ParseIncoming(sLine);
    if (const auto* pFailure = std::get_if<Failure>(&incoming)) CheckRecord(pFailure->record);
    if (const auto* pSuccess = std::get_if<Success>(&incoming)) {
        CheckNames(pSuccess->result);
        CheckBytes(pSuccess->result);
    }
    if (const auto* pNotification = std::get_if<Notification>(&incoming)) {
        Require(pNotification->params.is_object(), "params that are no object");
        if (pNotification->params.contains("message"))
            CheckRecord(RecordFromJson(pNotification->params["message"]));
    }
}

}  // namespace
}  // namespace nomira::rpc

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t nSize) {
    std::string_view bytes(reinterpret_cast<const char*>(data), nSize);
    while (!bytes.empty()) {
        const std::size_t nEnd = std::min(bytes.find('\n'), bytes.size());
        try {
            nomira::rpc::CheckLine(bytes.substr(0, nEnd));
        } catch (const nomira::rpc::WireError&) {
            // The connection would end here.
        }
        bytes.remove_prefix(std::min(nEnd + 1, bytes.size()));
    }
    return 0;
}
