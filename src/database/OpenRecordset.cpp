#include "database/OpenRecordset.h"

#include <limits>
#include <utility>

#include "langtools/BasicText.h"
#include "langtools/RuntimeError.h"

namespace nomira {

OpenRecordset::OpenRecordset(TextView sSource, Connection* connection, CursorKind cursor,
                             LockKind lock)
    : m_recordset(TheDatabaseEngine().CreateRecordset()) {
    if (connection == nullptr) Raise(ErrorNumber::ObjectNotSet);
    m_recordset->Open(sSource, *connection, cursor, lock, kOptionUnspecified);
}

OpenRecordset::~OpenRecordset() {
    try {
        if (m_recordset->State() == kStateOpen) m_recordset->Close();
    } catch (const RuntimeError&) {
        // The operation's result stands by now.
    }
}

std::int32_t ToKeyId(const FieldValue& value) {
    using Limits = std::numeric_limits<std::int32_t>;
    const auto* nValue = std::get_if<std::int64_t>(&value);
    if (nValue == nullptr) Raise(ErrorNumber::TypeMismatch);
    if (*nValue < Limits::min() || *nValue > Limits::max()) Raise(ErrorNumber::Overflow);
    return static_cast<std::int32_t>(*nValue);
}

Text ToText(FieldValue value) {
    if (const auto* nValue = std::get_if<std::int64_t>(&value)) return DecimalText(*nValue);
    auto* sValue = std::get_if<Text>(&value);
    if (sValue == nullptr) Raise(ErrorNumber::TypeMismatch);
    return std::move(*sValue);
}

}  // namespace nomira
