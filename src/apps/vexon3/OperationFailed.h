// An operation that the controller refuses, with the record that tells why.
#pragma once

#include <exception>

#include "link/MessageRecord.h"

namespace nomira::simulator {

enum class Trouble {
    NoSuchVariable,
    NoSuchFile,
    NoSuchDirectory,
    BadPath,      // it can't be one, or leads out of the file space
    FileTrouble,  // the system refuses
    NoSuchWatch,
    TooLong,   // the answer doesn't fit into a line
    AsWritten  // the scenario says so
};

class OperationFailed : public std::exception {
  public:
    explicit OperationFailed(MessageRecord record) : m_record(std::move(record)) {}
    // A record with this simulator as its module, the trouble's number, key and words, and
    // `sAbout` (a name, a path) as its parameter.
    OperationFailed(Trouble trouble, TextView sAbout);

    const char* what() const noexcept override { return "the operation failed"; }
    const MessageRecord& Record() const { return m_record; }

  private:
    MessageRecord m_record;
};

// The record of a failure that the scenario asks for in words alone.
MessageRecord RecordAsWritten(TextView sCause);

}  // namespace nomira::simulator
