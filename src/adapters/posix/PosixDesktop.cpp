#include "adapters/posix/PosixDesktop.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <utility>

#include "adapters/posix/NativeName.h"
#include "langtools/BasicText.h"
#include "platform/Platform.h"

namespace nomira::posix {
namespace {

constexpr const char* kLockName = ".instance.lock";
constexpr const char* kSocketName = ".instance.sock";
constexpr char kTitleEnd = '\0';

// Where there is no display, one of the old pendants': 1024 x 768 dots, 15 twips each.
constexpr ScreenSize kScreen{1024 * 15, 768 * 15};

// The first word of a request's datagram, a blank and the title behind it.
struct RequestWord {
    WindowRequest::Kind kind;
    std::string_view sWord;
};
constexpr RequestWord kRequestWords[] = {
    {WindowRequest::Kind::Activate, "activate "},
    {WindowRequest::Kind::Raise, "raise "},
};

// The socket's address. A name has room for about a hundred bytes, and a prefix can be deeper, so
// the folder is named by its descriptor, which must be open for as long.
sockaddr_un AddressIn(const Descriptor& folder) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/%s", folder.Get(),
                  kSocketName);
    return address;
}

Descriptor OpenFolder(const std::filesystem::path& folder) {
    return Descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

Descriptor MakeSocket() {
    return Descriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

template <typename Call>  // bind or connect
bool WithAddress(Call call, const Descriptor& socket, const std::filesystem::path& folder) {
    const Descriptor opened = OpenFolder(folder);
    if (!socket.IsOpen() || !opened.IsOpen()) return false;
    const sockaddr_un address = AddressIn(opened);
    return call(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

std::optional<WindowRequest> ParseRequest(std::string_view bytes) {
    for (const RequestWord& word : kRequestWords) {
        if (!bytes.starts_with(word.sWord)) continue;
        return WindowRequest{word.kind, FromNative(bytes.substr(word.sWord.size()))};
    }
    return std::nullopt;
}

bool Contains(const std::vector<Text>& titles, TextView sTitle) {
    return std::find(titles.begin(), titles.end(), sTitle) != titles.end();
}

}  // namespace

PosixDesktop::PosixDesktop(std::filesystem::path folder, std::FILE* errors)
    : m_folder(std::move(folder)), m_errors(errors) {}

PosixDesktop::~PosixDesktop() {
    // While the lock is held nobody else has made a socket of that name.
    if (m_socket.IsOpen()) ::unlink((m_folder / kSocketName).c_str());
}

bool PosixDesktop::PreviousInstance() {
    if (IsFirst()) return false;
    std::error_code ignored;
    std::filesystem::create_directories(m_folder, ignored);
    Descriptor lock(
        ::open((m_folder / kLockName).c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!lock.IsOpen()) return false;
    if (::flock(lock.Get(), LOCK_EX | LOCK_NB) != 0) return errno == EWOULDBLOCK;
    m_lock = std::move(lock);
    Listen();
    WriteTitles();
    return false;
}

void PosixDesktop::Listen() {
    ::unlink((m_folder / kSocketName).c_str());  // left behind by one that died
    Descriptor socket = MakeSocket();
    if (WithAddress(::bind, socket, m_folder)) m_socket = std::move(socket);
}

void PosixDesktop::WriteTitles() {
    if (!IsFirst()) return;
    std::string bytes;
    for (const Text& sTitle : m_windows)
        bytes += ToNative(sTitle) + kTitleEnd;
    // A title that can't be written is one that others don't find; nothing else depends on it.
    if (::ftruncate(m_lock.Get(), 0) != 0) return;
    [[maybe_unused]] const auto nWritten = ::pwrite(m_lock.Get(), bytes.data(), bytes.size(), 0);
}

std::vector<Text> PosixDesktop::TitlesOfFirst() const {
    if (IsFirst()) return m_windows;
    std::vector<Text> titles;
    // What one that died has left in the file doesn't count.
    if (!ConnectToFirst().IsOpen()) return titles;
    std::ifstream in(m_folder / kLockName, std::ios::binary);
    for (std::string sTitle; std::getline(in, sTitle, kTitleEnd);)
        titles.push_back(FromNative(sTitle));
    return titles;
}

Descriptor PosixDesktop::ConnectToFirst() const {
    Descriptor socket = MakeSocket();
    if (!WithAddress(::connect, socket, m_folder)) socket.Reset();
    return socket;
}

void PosixDesktop::Ask(WindowRequest::Kind kind, TextView sTitle) const {
    const Descriptor socket = ConnectToFirst();
    if (!socket.IsOpen()) return;
    std::string bytes;
    for (const RequestWord& word : kRequestWords) {
        if (word.kind == kind) bytes = word.sWord;
    }
    bytes += ToNative(sTitle);
    // Nobody is told when the other one doesn't answer, as with a window that isn't there.
    ::send(socket.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

void PosixDesktop::ActivateByTitle(TextView sTitle) {
    Ask(WindowRequest::Kind::Activate, sTitle);
}

std::optional<Desktop::WindowHandle> PosixDesktop::FindWindow(TextView sTitle) {
    if (!Contains(TitlesOfFirst(), sTitle)) return std::nullopt;
    const auto found = std::find(m_found.begin(), m_found.end(), sTitle);
    const auto nPlace = static_cast<WindowHandle>(found - m_found.begin());
    if (found == m_found.end()) m_found.emplace_back(sTitle);
    return nPlace + 1;
}

void PosixDesktop::BringWindowToTop(WindowHandle window) {
    if (window < 1 || window > m_found.size()) return;
    Ask(WindowRequest::Kind::Raise, m_found[window - 1]);
}

void PosixDesktop::ShowMessageBox(TextView sText, TextView sTitle, BoxIcon) {
    const TextView sHead = sTitle.empty() ? kApplicationTitle : sTitle;
    const Text sBody = Replace(Replace(sText, u"\r\n", u"\n"), u"\r", u"\n");
    const std::string bytes = ToNative(sHead) + ": " + ToNative(sBody) + "\n";
    std::fwrite(bytes.data(), 1, bytes.size(), m_errors);
    std::fflush(m_errors);
}

ScreenSize PosixDesktop::Screen() {
    return kScreen;
}

void PosixDesktop::AnnounceWindow(TextView sTitle) {
    if (!Contains(m_windows, sTitle)) m_windows.emplace_back(sTitle);
    WriteTitles();
}

void PosixDesktop::WithdrawWindow(TextView sTitle) {
    std::erase(m_windows, sTitle);
    WriteTitles();
}

std::vector<WindowRequest> PosixDesktop::TakeRequests() {
    std::vector<WindowRequest> requests;
    std::array<char, 4096> buffer;
    while (m_socket.IsOpen()) {
        const ssize_t nRead = ::recv(m_socket.Get(), buffer.data(), buffer.size(), 0);
        if (nRead < 0) break;
        const std::string_view bytes(buffer.data(), static_cast<std::size_t>(nRead));
        if (auto request = ParseRequest(bytes)) requests.push_back(std::move(*request));
    }
    return requests;
}

}  // namespace nomira::posix
