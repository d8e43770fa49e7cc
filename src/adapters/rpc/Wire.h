// The wire between the link library's adapter and the process that plays the controller's
// middleware: JSON-RPC 2.0, one JSON text a line, a line feed behind each. docs/controller.md tells
// the methods. This header is what both ends share: lines, texts and members of objects.
#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>

#include "langtools/Text.h"

namespace nomira::rpc {

using Json = nlohmann::json;

// What came over the wire is not what it must be. what() says what is wrong, in ASCII.
class WireError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The longest line, its end not counted: a file of 48 MiB in base64, many times the largest robot
// program. It bounds what the other end can make us hold.
inline constexpr std::size_t kMaxLine = std::size_t{64} * 1024 * 1024;

// How deep arrays and objects may lie in one another. A message record's parameters, the deepest
// there is, need five.
inline constexpr int kMaxDepth = 16;

// How many pieces a JSON text may have: its arrays and objects, and what their commas part. A line
// of nothing but empty objects would take many times its length to hold; no list of a controller's
// programs comes near.
inline constexpr std::size_t kMaxPieces = 1'000'000;

// JSON-RPC's own codes, and ours for an operation that failed.
inline constexpr int kNotJson = -32700;
inline constexpr int kNoRequest = -32600;
inline constexpr int kNoSuchMethod = -32601;
inline constexpr int kBadParams = -32602;
inline constexpr int kOperationFailed = -32000;

// The JSON text of one line. Raises WireError if it is none, too long, too deep, or has
// too many pieces.
Json ParseLine(std::string_view sLine);

// The line of the JSON text, with its end. All texts in it must come from ToWire.
std::string LineOf(const Json& json);

// Text as UTF-8. Raises WireError for half of a surrogate pair, which no JSON text can hold.
std::string ToWire(TextView sText);
// Raises WireError for anything but UTF-8.
Text FromWire(std::string_view sBytes);

// A member of an object that came over the wire. Each raises WireError if it isn't there, or is of
// another type; NumberMember also for a number of more than 32 bits.
const Json& Member(const Json& object, const char* sName);
std::string StringMember(const Json& object, const char* sName);
Text TextMember(const Json& object, const char* sName);
std::int32_t NumberMember(const Json& object, const char* sName);
bool BoolMember(const Json& object, const char* sName);
// Bytes, as base64.
std::string BytesMember(const Json& object, const char* sName);

}  // namespace nomira::rpc
