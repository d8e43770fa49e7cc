// Sequential reading and writing of open files, by lines, through a buffer.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "langtools/Text.h"
#include "nativefiles/Descriptor.h"
#include "platform/Files.h"

namespace nomira::posix {

using nativefiles::Descriptor;

inline constexpr std::size_t kStreamBuffer = std::size_t{64} * 1024;

// Holds one buffer and the line in work, however long the file is.
class PosixInputFile : public InputFile {
  public:
    explicit PosixInputFile(Descriptor file) : m_file(std::move(file)) {}
    bool AtEnd() override;
    void ReadLine(Text& sLine) override;

  private:
    // Reads on if the buffer is used up; false at the file's end.
    bool Fill();

    Descriptor m_file;
    std::array<char, kStreamBuffer> m_buffer;
    std::size_t m_nPos = 0, m_nEnd = 0;
    std::string m_line;  // bytes of the line in work
};

class PosixOutputFile : public OutputFile {
  public:
    explicit PosixOutputFile(Descriptor file) : m_file(std::move(file)) {}
    ~PosixOutputFile() override;
    PosixOutputFile(const PosixOutputFile&) = delete;
    PosixOutputFile& operator=(const PosixOutputFile&) = delete;

    void PrintLine(TextView sText) override;
    void Close() override;

  private:
    void Hold(std::string_view bytes);
    void Flush();

    Descriptor m_file;
    std::string m_sHeld;
};

}  // namespace nomira::posix
