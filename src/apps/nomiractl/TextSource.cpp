#include "apps/nomiractl/TextSource.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <array>
#include <system_error>
#include <utility>

#include "apps/nomiractl/FileChecks.h"
#include "apps/nomiractl/Refusal.h"
#include "langtools/RuntimeError.h"
#include "nativefiles/NativeFiles.h"

namespace nomira::companion {
namespace {

namespace fs = std::filesystem;

// A file in another encoding has a flaw in each line; these tell enough.
constexpr std::size_t kMostFlawsShown = 20;

class SourceReader : public InputFile {
  public:
    SourceReader(std::string_view bytes, TextForm form, TextSource::OnLine onLine)
        : m_rest(bytes), m_form(form), m_onLine(std::move(onLine)) {}

    bool AtEnd() override { return m_rest.empty(); }
    void ReadLine(Text& sLine) override {
        if (AtEnd()) Raise(ErrorNumber::InputPastEnd);
        const std::size_t nBefore = m_rest.size();
        sLine = DecodeLine(TakeLine(m_rest, m_form.ends), m_form.encoding, SystemCodePage());
        if (m_onLine) m_onLine(nBefore - m_rest.size());
    }

  private:
    std::string_view m_rest;
    TextForm m_form;
    TextSource::OnLine m_onLine;
};

// Far more than all names of a controller take; what is longer is some other file.
constexpr std::size_t kMostBytes = std::size_t{1} << 30;

[[noreturn]] void RefuseSize(const std::string& sName) {
    throw Refusal(fmt::format("{}: more than 1 GiB: no text file of names", sName));
}

std::string BytesOf(const fs::path& path) {
    try {
        const nativefiles::Descriptor file = nativefiles::Open(path, O_RDONLY);
        if (std::cmp_greater(nativefiles::StatusOf(file).st_size, kMostBytes))
            RefuseSize(path.string());
        return nativefiles::ReadAll(file);
    } catch (const std::system_error& error) {
        throw Refusal(fmt::format("{}: {}", path.string(), error.code().message()),
                      ExitCode::Files);
    }
}

std::string BytesOf(std::istream& in) {
    std::string bytes;
    std::array<char, 65'536> piece;
    while (in.read(piece.data(), piece.size()) || in.gcount() > 0) {
        bytes.append(piece.data(), static_cast<std::size_t>(in.gcount()));
        if (bytes.size() > kMostBytes) RefuseSize(kStream);
    }
    return bytes;
}

}  // namespace

TextSource::TextSource(std::string sName, std::string bytes, TextForm form)
    : m_sName(std::move(sName)), m_bytes(std::move(bytes)), m_lines(m_bytes), m_form(form) {
    const bool bMark = form.encoding == TextEncoding::Utf8 && m_lines.starts_with(kUtf8Mark);
    if (bMark) m_lines.remove_prefix(kUtf8Mark.size());
}

std::vector<TextFlaw> TextSource::Flaws(std::size_t nMost) const {
    std::vector<TextFlaw> flaws;
    std::string_view rest = m_lines;
    for (std::int64_t nLine = 1; !rest.empty() && flaws.size() < nMost; ++nLine) {
        const Text sLine =
            DecodeLine(TakeLine(rest, m_form.ends), m_form.encoding, SystemCodePage());
        for (TextFlaw& flaw : FlawsOfLine(sLine, nLine, m_form.encoding, SystemCodePage()))
            if (flaws.size() < nMost) flaws.push_back(std::move(flaw));
    }
    return flaws;
}

void TextSource::RequireNoFlaws() const {
    const int nPage = SystemCodePage().Number();
    if (HasUtf16Mark(m_lines))
        throw Refusal(
            fmt::format("{}:1:1: the file begins with a UTF-16 mark; save it as UTF-8 and"
                        " give --encoding utf-8, or save it in code page {}",
                        m_sName, nPage));
    if (m_lines.starts_with(kUtf8Mark))
        throw Refusal(
            fmt::format("{}:1:1: the file begins with a UTF-8 mark; give --encoding utf-8,"
                        " or save it in code page {}",
                        m_sName, nPage));
    const std::vector<TextFlaw> flaws = Flaws(kMostFlawsShown + 1);
    if (flaws.empty()) return;
    std::string sWords;
    for (std::size_t n = 0; n < flaws.size() && n < kMostFlawsShown; ++n)
        sWords +=
            fmt::format("{}{}:{}:{}: {}", n == 0 ? "" : "\nnomiractl: ", m_sName, flaws[n].nLine,
                        flaws[n].nColumn, InWords(flaws[n], SystemCodePage()));
    if (flaws.size() > kMostFlawsShown) sWords += "\nnomiractl: and more";
    throw Refusal(sWords);
}

std::unique_ptr<InputFile> TextSource::Open(OnLine onLine) const {
    return std::make_unique<SourceReader>(m_lines, m_form, std::move(onLine));
}

std::shared_ptr<const TextSource> ReadTextSource(const fs::path& path, TextForm form,
                                                 std::istream& in) {
    if (path == kStream) return std::make_shared<TextSource>(kStream, BytesOf(in), form);
    CheckTextFile(path);
    return std::make_shared<TextSource>(path.string(), BytesOf(path), form);
}

}  // namespace nomira::companion
