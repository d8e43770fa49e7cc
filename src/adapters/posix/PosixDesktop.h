// The desktop of a system without one: the first instance is found by a lock in the prefix and
// spoken to through a local socket beside it; a message box is a line on the error stream.
//
// The lock belongs to the open file, so it goes with the process, however that ends. The lock
// file holds the window titles that the first instance announced.
#pragma once

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "langtools/Text.h"
#include "nativefiles/Descriptor.h"
#include "platform/Desktop.h"

namespace nomira::posix {

using nativefiles::Descriptor;

// What another instance asks of the first one's window.
struct WindowRequest {
    enum class Kind { Activate, Raise };
    Kind kind;
    Text sTitle;
    bool operator==(const WindowRequest&) const = default;
};

class PosixDesktop : public Desktop {
  public:
    // `folder` is the prefix; `errors` the stream for message boxes.
    explicit PosixDesktop(std::filesystem::path folder, std::FILE* errors = stderr);
    ~PosixDesktop() override;
    PosixDesktop(const PosixDesktop&) = delete;
    PosixDesktop& operator=(const PosixDesktop&) = delete;

    // Makes the folder if it isn't there. Where no lock can be made (a folder that can't be
    // written) there is no previous instance.
    bool PreviousInstance() override;

    // Asks the first instance; it decides whether it has such a window.
    void ActivateByTitle(TextView sTitle) override;
    std::optional<WindowHandle> FindWindow(TextView sTitle) override;
    void BringWindowToTop(WindowHandle window) override;
    // "TITLE: TEXT" in UTF-8, its line ends those of this system.
    void ShowMessageBox(TextView sText, TextView sTitle, BoxIcon icon) override;
    ScreenSize Screen() override;
    // There are no dialogs.
    WindowHandle NextDialogTabItem(WindowHandle, WindowHandle, bool) override { return 0; }

    // For the first instance: a window of this title is there, or isn't any more.
    void AnnounceWindow(TextView sTitle);
    void WithdrawWindow(TextView sTitle);
    // For the first instance: what others have asked since the last call, in its order.
    std::vector<WindowRequest> TakeRequests();
    // Becomes readable when there is something to take; -1 for one that is not the first instance.
    int RequestDescriptor() const { return m_socket.Get(); }

  private:
    // Whether this object is the first instance.
    bool IsFirst() const { return m_lock.IsOpen(); }
    void Listen();
    void WriteTitles();
    std::vector<Text> TitlesOfFirst() const;
    // A socket to the first instance; not open if there is none.
    Descriptor ConnectToFirst() const;
    void Ask(WindowRequest::Kind kind, TextView sTitle) const;

    std::filesystem::path m_folder;
    std::FILE* m_errors;
    Descriptor m_lock;
    Descriptor m_socket;
    std::vector<Text> m_windows;  // announced
    std::vector<Text> m_found;    // titles that FindWindow gave, by handle from 1
};

}  // namespace nomira::posix
