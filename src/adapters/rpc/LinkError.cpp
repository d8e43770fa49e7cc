#include "adapters/rpc/LinkError.h"

#include <utility>

#include "adapters/rpc/Wire.h"
#include "langtools/BasicText.h"

namespace nomira::rpc {
namespace {

constexpr TextView kModule = u"NomiraLink";

struct TroubleRow {
    LinkTrouble trouble;
    std::int32_t nMessage;
    TextView sMessage;
};
constexpr TroubleRow kTroubles[] = {
    {LinkTrouble::Lost, 1, u"LinkLost"},
    {LinkTrouble::BadAnswer, 2, u"BadAnswer"},
    {LinkTrouble::BadRequest, 3, u"BadRequest"},
    {LinkTrouble::LocalFile, 4, u"LocalFile"},
};

Text DescriptionOf(const MessageRecord& record) {
    Text sDescription(ErrorDescription(ErrorNumber::LinkFailure));
    if (!record.bstrCause.empty()) sDescription += u": " + record.bstrCause;
    return sDescription;
}

// The system's words are in the locale's encoding, and a path is a row of bytes.
Text TextOf(std::string_view sBytes) {
    try {
        return FromWire(sBytes);
    } catch (const WireError&) {
        std::string sAscii(sBytes);
        for (char& c : sAscii)
            if (static_cast<unsigned char>(c) >= 0x80) c = '?';
        return FromAscii(sAscii);
    }
}

}  // namespace

LinkError::LinkError(MessageRecord record)
    : RuntimeError(ErrorNumber::LinkFailure, DescriptionOf(record)), m_record(std::move(record)) {}

LinkError TroubleError(LinkTrouble trouble, std::string_view sWords, std::string_view sOperation) {
    MessageRecord record;
    record.bstrDBModule = kModule;
    record.bstrCause = TextOf(sWords);
    for (const TroubleRow& row : kTroubles) {
        if (row.trouble != trouble) continue;
        record.nMessage = row.nMessage;
        record.bstrDBMessage = row.sMessage;
    }
    // One element each: the program's error text leaves out a record with an empty array.
    record.varParams = LinkArray{0, {TextOf(sOperation)}};
    record.varDBParams = LinkArray{0, {TextOf(sOperation)}};
    return LinkError(std::move(record));
}

}  // namespace nomira::rpc
