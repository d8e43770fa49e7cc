#include "langtools/RuntimeError.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace nomira {
namespace {

struct Row {
    ErrorNumber number;
    TextView sDescription;
};

constexpr std::array kDescriptions{
    Row{ErrorNumber::InvalidProcedureCall, u"Invalid procedure call or argument"},
    Row{ErrorNumber::Overflow, u"Overflow"},
    Row{ErrorNumber::SubscriptOutOfRange, u"Subscript out of range"},
    Row{ErrorNumber::TypeMismatch, u"Type mismatch"},
    Row{ErrorNumber::BadFileName, u"Bad file name or number"},
    Row{ErrorNumber::FileNotFound, u"File not found"},
    Row{ErrorNumber::FileAlreadyOpen, u"File already open"},
    Row{ErrorNumber::DeviceIo, u"Device I/O error"},
    Row{ErrorNumber::FileAlreadyExists, u"File already exists"},
    Row{ErrorNumber::DiskFull, u"Disk full"},
    Row{ErrorNumber::InputPastEnd, u"Input past end of file"},
    Row{ErrorNumber::DeviceUnavailable, u"Device unavailable"},
    Row{ErrorNumber::PermissionDenied, u"Permission denied"},
    Row{ErrorNumber::DiskNotReady, u"Disk not ready"},
    Row{ErrorNumber::PathFileAccess, u"Path/File access error"},
    Row{ErrorNumber::PathNotFound, u"Path not found"},
    Row{ErrorNumber::ObjectNotSet, u"Object variable or With block variable not set"},
    Row{ErrorNumber::InvalidPattern, u"Invalid pattern string"},
    Row{ErrorNumber::ControlElementMissing, u"Control array element doesn't exist"},
    Row{ErrorNumber::InvalidPropertyValue, u"Invalid property value"},
    Row{ErrorNumber::CannotCreateObject, u"The component can't create the object"},
    Row{ErrorNumber::NoSuchMember, u"Object doesn't support this property or method"},
    Row{ErrorNumber::LinkFailure, u"The link to the controller failed"},
    Row{ErrorNumber::KeyAlreadyUsed,
        u"This key is already associated with an element of this collection"},
    Row{ErrorNumber::NoCurrentRecord, u"There is no current record"},
    Row{ErrorNumber::UpdateNotAllowed, u"The current record can't be changed"},
    Row{ErrorNumber::NoSuchField, u"The result has no field of that name"},
    Row{ErrorNumber::ObjectClosed, u"The object is closed"},
    Row{ErrorNumber::EngineFailure, u"The database engine failed"},
    Row{ErrorNumber::IndexOutOfBounds, u"Index out of bounds"},
    Row{ErrorNumber::ElementNotFound, u"Element not found"},
    Row{ErrorNumber::KeyNotUnique, u"Key is not unique in collection"},
};

std::string Ascii(TextView sText) {
    std::string sAscii;
    for (const char16_t c : sText)
        sAscii += c < 0x80 ? static_cast<char>(c) : '?';
    return sAscii;
}

}  // namespace

TextView ErrorDescription(ErrorNumber number) {
    const auto row = std::find_if(kDescriptions.begin(), kDescriptions.end(),
                                  [number](const Row& r) { return r.number == number; });
    return row == kDescriptions.end() ? TextView(u"Application-defined or object-defined error")
                                      : row->sDescription;
}

RuntimeError::RuntimeError(ErrorNumber number)
    : RuntimeError(number, Text(ErrorDescription(number))) {}

RuntimeError::RuntimeError(ErrorNumber number, Text sDescription)
    : m_number(number),
      m_sDescription(std::move(sDescription)),
      m_sWhat("Run-time error " + std::to_string(static_cast<std::int32_t>(number)) + ": " +
              Ascii(m_sDescription)) {}

void Raise(ErrorNumber number) {
    throw RuntimeError(number);
}

std::int16_t ToInt16(std::int64_t n) {
    using Limits = std::numeric_limits<std::int16_t>;
    if (n > Limits::max() || n < Limits::min()) Raise(ErrorNumber::Overflow);
    return static_cast<std::int16_t>(n);
}

}  // namespace nomira
