// The one failure type of the program: a numbered run-time error, as the old runtime raised it.
//
// Routines that are told to trap failures catch it at their own edge. What nobody catches reaches
// the program's top, which shows the run-time box and ends the process with exit status 1.
// Adapters translate the machine's own error codes into these numbers by a table of their own.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "langtools/Text.h"

namespace nomira {

// The old runtime's error numbers. The numbers are shown to the operator and never change.
enum class ErrorNumber : std::int32_t {
    InvalidProcedureCall = 5,
    Overflow = 6,
    SubscriptOutOfRange = 9,
    TypeMismatch = 13,
    BadFileName = 52,
    FileNotFound = 53,
    FileAlreadyOpen = 55,
    DeviceIo = 57,
    FileAlreadyExists = 58,
    DiskFull = 61,
    InputPastEnd = 62,
    DeviceUnavailable = 68,
    PermissionDenied = 70,
    DiskNotReady = 71,
    PathFileAccess = 75,
    PathNotFound = 76,
    ObjectNotSet = 91,
    InvalidPattern = 93,
    ControlElementMissing = 340,
    InvalidPropertyValue = 380,
    CannotCreateObject = 429,
    NoSuchMember = 438,
    LinkFailure = 440,
    KeyAlreadyUsed = 457,
    // The data-access layer's own numbers; the database module traps every one of them.
    NoCurrentRecord = 3021,
    UpdateNotAllowed = 3251,
    NoSuchField = 3265,
    ObjectClosed = 3704,
    EngineFailure = -2147467259,  // 0x80004005, the layer's "unspecified error"
    IndexOutOfBounds = 35600,
    ElementNotFound = 35601,
    KeyNotUnique = 35602,
};

// The standard description of `number`, such as u"Overflow".
TextView ErrorDescription(ErrorNumber number);

class RuntimeError : public std::exception {
  public:
    // With the standard description of the number.
    explicit RuntimeError(ErrorNumber number);
    // With a description of its own, such as the database engine's word for what went wrong.
    RuntimeError(ErrorNumber number, Text sDescription);

    ErrorNumber Number() const { return m_number; }
    const Text& Description() const { return m_sDescription; }
    // "Run-time error N: DESCRIPTION" in ASCII, for logs and failing tests.
    const char* what() const noexcept override { return m_sWhat.c_str(); }

  private:
    ErrorNumber m_number;
    Text m_sDescription;
    std::string m_sWhat;
};

// Raises `number` with its standard description.
[[noreturn]] void Raise(ErrorNumber number);

// `n` as a 16-bit count. Raises Overflow above 32,767 or below -32,768: the old counters are
// 16 bits wide, and a count that outgrows them is a failure rather than a wrong number.
std::int16_t ToInt16(std::int64_t n);

// Runs a statement that may fail: whoever needs its effect finds it missing.
template <typename Statement>
void IgnoreFailure(Statement statement) {
    try {
        statement();
    } catch (const RuntimeError&) {
    }
}

}  // namespace nomira
