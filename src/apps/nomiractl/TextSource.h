// A text file in the form that the user has told, as the core reads it: its bytes are read once,
// looked through as a whole, and handed to the passes line by line.
#pragma once

#include <filesystem>
#include <functional>
#include <istream>
#include <memory>
#include <string>
#include <vector>

#include "apps/nomiractl/TextForm.h"
#include "platform/Files.h"

namespace nomira::companion {

// The word for the standard input, and for the standard output.
inline constexpr const char* kStream = "-";

class TextSource {
  public:
    // `sName` is the file as the user wrote it.
    TextSource(std::string sName, std::string bytes, TextForm form);
    TextSource(const TextSource&) = delete;
    TextSource& operator=(const TextSource&) = delete;

    const std::string& Name() const { return m_sName; }
    // A file in UTF-8 has lost its mark.
    std::string_view Bytes() const { return m_lines; }
    const TextForm& Form() const { return m_form; }

    // In the system's code page. The most that is looked for is `nMost`.
    std::vector<TextFlaw> Flaws(std::size_t nMost) const;
    // Throws Refusal, a line for each place, unless each character is one of the system's code
    // page. So it does for a file that begins with a mark of another encoding.
    void RequireNoFlaws() const;

    // Called for each line that is read, with the number of its bytes.
    using OnLine = std::function<void(std::size_t)>;
    // The source must outlive it.
    std::unique_ptr<InputFile> Open(OnLine onLine = {}) const;

  private:
    std::string m_sName;
    std::string m_bytes;
    std::string_view m_lines;
    TextForm m_form;
};

// The file at the path, or what `in` holds for "-". Throws Refusal as CheckTextFile does.
std::shared_ptr<const TextSource> ReadTextSource(const std::filesystem::path& path, TextForm form,
                                                 std::istream& in);

}  // namespace nomira::companion
