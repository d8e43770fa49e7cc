// The failure of a call over the wire, with the record that the failed object keeps.
#pragma once

#include <string_view>

#include "langtools/RuntimeError.h"
#include "link/MessageRecord.h"

namespace nomira::rpc {

class LinkError : public RuntimeError {
  public:
    // A LinkFailure whose description ends with the record's cause.
    explicit LinkError(MessageRecord record);
    const MessageRecord& Record() const { return m_record; }

  private:
    MessageRecord m_record;
};

// What the adapter itself has to complain of.
enum class LinkTrouble {
    Lost,        // the other end can't be reached, or is gone
    BadAnswer,   // it says what can't be meant
    BadRequest,  // the call can't be put on the wire
    LocalFile,   // the file on this side can't be read or written
};

// The failure that tells it: the record names this adapter as its module and the trouble as its
// message; `sWords` (ASCII, or UTF-8 of a path) is the cause, and the operation its parameter.
LinkError TroubleError(LinkTrouble trouble, std::string_view sWords, std::string_view sOperation);

}  // namespace nomira::rpc
