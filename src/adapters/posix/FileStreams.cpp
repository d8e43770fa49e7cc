#include "adapters/posix/FileStreams.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "adapters/posix/SystemErrors.h"
#include "langtools/CodePage.h"
#include "langtools/RuntimeError.h"

namespace nomira::posix {
namespace {

void WriteAll(const Descriptor& file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t nWritten = ::write(file.Get(), bytes.data(), bytes.size());
        if (nWritten >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(nWritten));
        } else if (errno != EINTR) {
            Raise(ErrorNumberOf(errno, FileOperation::ReadOrWrite));
        }
    }
}

// Takes as much off the text as is written at once. A pair of surrogates stays together, for it is
// one character to a page that has it.
TextView TakePiece(TextView& sText) {
    std::size_t nLength = std::min(sText.size(), kStreamBuffer);
    const bool bCutsPair = nLength < sText.size() && (sText[nLength - 1] & 0xFC00) == 0xD800;
    if (bCutsPair) ++nLength;
    const TextView sPiece = sText.substr(0, nLength);
    sText.remove_prefix(nLength);
    return sPiece;
}

}  // namespace

bool PosixInputFile::Fill() {
    if (m_nPos < m_nEnd) return true;
    ssize_t nRead;
    do {
        nRead = ::read(m_file.Get(), m_buffer.data(), m_buffer.size());
    } while (nRead < 0 && errno == EINTR);
    if (nRead < 0) Raise(ErrorNumberOf(errno, FileOperation::ReadOrWrite));
    m_nPos = 0;
    m_nEnd = static_cast<std::size_t>(nRead);
    return nRead > 0;
}

bool PosixInputFile::AtEnd() {
    return !Fill();
}

void PosixInputFile::ReadLine(Text& sLine) {
    if (AtEnd()) Raise(ErrorNumber::InputPastEnd);
    m_line.clear();
    while (Fill()) {
        const char* pFrom = m_buffer.data() + m_nPos;
        const auto* pCr = static_cast<const char*>(std::memchr(pFrom, '\r', m_nEnd - m_nPos));
        const char* pTo = pCr ? pCr : m_buffer.data() + m_nEnd;
        m_line.append(pFrom, pTo);
        m_nPos = static_cast<std::size_t>(pTo - m_buffer.data());
        if (!pCr) continue;
        ++m_nPos;
        // The LF of a CR LF may be the first byte of the next buffer.
        if (Fill() && m_buffer[m_nPos] == '\n') ++m_nPos;
        break;
    }
    sLine = SystemCodePage().Decode(m_line);
}

PosixOutputFile::~PosixOutputFile() {
    try {
        Close();
    } catch (const RuntimeError&) {
        // Whoever wants to know closes the file himself.
    }
}

void PosixOutputFile::PrintLine(TextView sText) {
    if (!m_file.IsOpen()) Raise(ErrorNumber::BadFileName);
    while (!sText.empty())
        Hold(SystemCodePage().Encode(TakePiece(sText)));
    Hold("\r\n");
}

void PosixOutputFile::Hold(std::string_view bytes) {
    m_sHeld += bytes;
    if (m_sHeld.size() >= kStreamBuffer) Flush();
}

void PosixOutputFile::Flush() {
    // Taken out first: what couldn't be written isn't tried again.
    WriteAll(m_file, std::exchange(m_sHeld, {}));
}

void PosixOutputFile::Close() {
    if (!m_file.IsOpen()) return;
    Descriptor file = std::move(m_file);  // closed also if the last bytes don't fit
    WriteAll(file, std::exchange(m_sHeld, {}));
    if (::close(file.Release()) != 0 && errno != EINTR) {
        Raise(ErrorNumberOf(errno, FileOperation::ReadOrWrite));
    }
}

}  // namespace nomira::posix
