// What can go wrong with an Access file. The library raises this one type (and a case of it); who
// puts it to use translates it at his own edge.
#pragma once

#include <stdexcept>
#include <string>

namespace nomira::jet {

enum class FailureKind {
    Damaged,      // the file's bytes contradict themselves, or are no such file
    Unsupported,  // sound, but nothing that this library can read or write
    Constraint,   // the rows wouldn't be what an index or a column demands
    NotWritable,  // open for reading only: by its rights, its medium, or somebody who has it open
    Held,         // somebody else keeps the file to himself
    InputOutput,  // the system refused to read or write
};

class Failure : public std::runtime_error {
  public:
    Failure(FailureKind kind, const std::string& sWords)
        : std::runtime_error(sWords), m_kind(kind) {}

    FailureKind Kind() const { return m_kind; }

  private:
    FailureKind m_kind;
};

// The Constraint that a relationship between tables demands, for whoever has to tell it from one
// that a table's own columns and indexes do.
class ReferenceFailure : public Failure {
  public:
    explicit ReferenceFailure(const std::string& sWords)
        : Failure(FailureKind::Constraint, sWords) {}
};

[[noreturn]] inline void Fail(FailureKind kind, const std::string& sWords) {
    throw Failure(kind, sWords);
}

}  // namespace nomira::jet
