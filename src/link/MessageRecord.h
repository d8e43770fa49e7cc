// The record in which the link library hands over a controller message, and the detail of a
// failure: one layout for both.
#pragma once

#include <cstddef>
#include <cstdint>
#include <variant>
#include <vector>

#include "langtools/Text.h"

namespace nomira {

// An array of the library, its elements taken as text. Its first index need not be 0.
struct LinkArray {
    std::int32_t nLowerBound = 0;
    std::vector<Text> elements;

    bool operator==(const LinkArray&) const = default;
};

// A value of any kind; monostate is an empty one.
using LinkValue = std::variant<std::monostate, Text, LinkArray>;

struct MessageRecord {
    std::int32_t nLowTimeStamp = 0;
    std::int32_t nHighTimeStamp = 0;
    std::int32_t nBiasTimeStamp = 0;  // time zone bias of the stamp
    std::int32_t eMessageType = 0;
    std::int32_t nMessage = 0;
    std::int32_t nMessageHandle = 0;  // of this one occurrence of the message
    Text bstrDBModule;                // module in the message database
    Text bstrCause;
    bool bDBCause = false;  // the cause comes from the database
    Text bstrDBMessage;     // key in the message database
    LinkValue varParams;    // parameters of the message
    LinkValue varDBParams;  // parameters of the cause

    bool operator==(const MessageRecord&) const = default;
};

// The same record as it crosses the library's 32-bit boundary. Strings are 32-bit addresses of
// length-prefixed 16-bit texts, values are 16 bytes, the boolean has 16 bits, True being -1.
struct MessageRecordLayout32 {
    std::int32_t nLowTimeStamp;
    std::int32_t nHighTimeStamp;
    std::int32_t nBiasTimeStamp;
    std::int32_t eMessageType;
    std::int32_t nMessage;
    std::int32_t nMessageHandle;
    std::uint32_t bstrDBModule;
    std::uint32_t bstrCause;
    std::int16_t bDBCause;
    std::uint16_t nPadding;
    std::uint32_t bstrDBMessage;
    std::uint8_t varParams[16];
    std::uint8_t varDBParams[16];
};

static_assert(sizeof(MessageRecordLayout32) == 72);
static_assert(offsetof(MessageRecordLayout32, nLowTimeStamp) == 0);
static_assert(offsetof(MessageRecordLayout32, nHighTimeStamp) == 4);
static_assert(offsetof(MessageRecordLayout32, nBiasTimeStamp) == 8);
static_assert(offsetof(MessageRecordLayout32, eMessageType) == 12);
static_assert(offsetof(MessageRecordLayout32, nMessage) == 16);
static_assert(offsetof(MessageRecordLayout32, nMessageHandle) == 20);
static_assert(offsetof(MessageRecordLayout32, bstrDBModule) == 24);
static_assert(offsetof(MessageRecordLayout32, bstrCause) == 28);
static_assert(offsetof(MessageRecordLayout32, bDBCause) == 32);
static_assert(offsetof(MessageRecordLayout32, bstrDBMessage) == 36);
static_assert(offsetof(MessageRecordLayout32, varParams) == 40);
static_assert(offsetof(MessageRecordLayout32, varDBParams) == 56);

}  // namespace nomira
