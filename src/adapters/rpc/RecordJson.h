// Message records as they cross the wire: an object whose members have the record's own names. A
// value is null, a text, or an array as {"lower": its first index, "elements": [texts]}.
#pragma once

#include "adapters/rpc/Wire.h"
#include "link/MessageRecord.h"

namespace nomira::rpc {

// Raises WireError for a text with half of a surrogate pair.
Json RecordToJson(const MessageRecord& record);

// A member that isn't there is 0, False or empty. Raises WireError for one of another type, and for
// what is no object.
MessageRecord RecordFromJson(const Json& json);

}  // namespace nomira::rpc
