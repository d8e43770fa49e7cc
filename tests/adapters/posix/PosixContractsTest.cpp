// The adapters of this system under every port's contract.
#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>

#include "adapters/contracts/ClosedLibraryContract.h"
#include "adapters/contracts/DesktopContract.h"
#include "adapters/contracts/FilesContract.h"
#include "adapters/contracts/LocaleContract.h"
#include "adapters/contracts/ProcessesContract.h"
#include "adapters/contracts/RegistryContract.h"
#include "adapters/posix/HookClosedLibrary.h"
#include "adapters/posix/NativeName.h"
#include "adapters/posix/PosixDesktop.h"
#include "adapters/posix/PosixFiles.h"
#include "adapters/posix/PosixLocale.h"
#include "adapters/posix/ProcProcesses.h"
#include "adapters/posix/RegFileRegistry.h"
#include "testing/TemporaryFolder.h"

namespace nomira::testing {

struct PosixFilesRig {
    TemporaryFolder folder;
    posix::Prefix prefix{folder.Path()};
    posix::PosixFiles files{prefix};

    PosixFilesRig() { PutDirectory(u"C:\\"); }
    Files& Port() { return files; }
    void Put(TextView sPath, std::string_view bytes) { folder.Put(Place(sPath), bytes); }
    void PutDirectory(TextView sPath) {
        std::filesystem::create_directories(folder / Place(sPath));
    }
    std::string Bytes(TextView sPath) { return folder.Bytes(Place(sPath)); }

    // Where the rig itself puts "C:\x", without asking the adapter.
    static std::string Place(TextView sPath) {
        std::string sPlace = posix::ToNative(sPath);
        std::replace(sPlace.begin(), sPlace.end(), '\\', '/');
        return std::string("drives/") + static_cast<char>(sPlace[0] + 32) + sPlace.substr(2);
    }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Posix, FilesContract, PosixFilesRig);

// Writes the registry's file as the editor's version 5 does, in UTF-8.
struct RegFileRig {
    TemporaryFolder folder;
    std::string sFile = "Windows Registry Editor Version 5.00\r\n";
    posix::RegFileRegistry registry{folder / "registry.reg"};

    Registry& Port() {
        folder.Put("registry.reg", sFile);
        return registry;
    }
    void SetString(RegistryRoot root, TextView sKey, TextView sName, TextView sText) {
        Add(root, sKey, sName, "\"" + posix::ToNative(sText) + "\"");
    }
    void SetUnterminated(RegistryRoot root, TextView sKey, TextView sName, TextView sAscii) {
        RegistryBytes utf16;
        for (const char16_t c : sAscii) {
            utf16.push_back(static_cast<std::uint8_t>(c));
            utf16.push_back(0);
        }
        Add(root, sKey, sName, "hex(1):" + Hex(utf16));
    }
    void SetBinary(RegistryRoot root, TextView sKey, TextView sName, const RegistryBytes& bytes) {
        Add(root, sKey, sName, "hex:" + Hex(bytes));
    }

  private:
    void Add(RegistryRoot root, TextView sKey, TextView sName, const std::string& sData) {
        const bool bMachine = root == RegistryRoot::LocalMachine;
        sFile += std::string("\r\n[") + (bMachine ? "HKEY_LOCAL_MACHINE" : "HKEY_CURRENT_USER") +
                 "\\" + posix::ToNative(sKey) + "]\r\n" +
                 (sName.empty() ? "@" : "\"" + posix::ToNative(sName) + "\"") + "=" + sData +
                 "\r\n";
    }
    static std::string Hex(const RegistryBytes& bytes) {
        std::string sHex;
        for (const std::uint8_t byte : bytes) {
            char digits[4];
            std::snprintf(digits, sizeof digits, "%02x", byte);
            sHex += (sHex.empty() ? "" : ",") + std::string(digits);
        }
        return sHex;
    }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Posix, RegistryContract, RegFileRig);

// A /proc of its own.
struct ProcRig {
    TemporaryFolder folder;
    posix::ProcProcesses processes{folder.Path().string(), 4};

    Processes& Port() { return processes; }
    void Start(std::uint32_t nId, TextView sPath) {
        folder.Put(std::to_string(nId) + "/cmdline",
                   posix::ToNative(sPath) + std::string("\0-x\0", 4));
    }
    void StartUnreadable(std::uint32_t nId) {
        std::filesystem::create_directories(folder / std::to_string(nId));
    }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Posix, ProcessesContract, ProcRig);

struct PosixLocaleRig {
    posix::PosixLocale locale{1252, "de_DE.UTF-8"};
    Locale& Port() { return locale; }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Posix, LocaleContract, PosixLocaleRig);

// Two desktops over one prefix are two instances: the lock belongs to the open file.
struct PosixDesktopRig {
    TemporaryFolder folder;
    std::FILE* errors = std::tmpfile();
    posix::PosixDesktop other{folder.Path(), errors};
    posix::PosixDesktop desktop{folder.Path(), errors};
    std::vector<posix::WindowRequest> requests;

    ~PosixDesktopRig() { std::fclose(errors); }
    Desktop& Port() { return desktop; }
    void StartOther() { ASSERT_FALSE(other.PreviousInstance()); }
    void OpenWindow(TextView sTitle) { other.AnnounceWindow(sTitle); }
    void CloseWindow(TextView sTitle) { other.WithdrawWindow(sTitle); }
    Titles Activated() { return TitlesOf(posix::WindowRequest::Kind::Activate); }
    Titles Raised() { return TitlesOf(posix::WindowRequest::Kind::Raise); }
    std::string Boxes() {
        std::string sBoxes;
        std::rewind(errors);
        for (int c; (c = std::fgetc(errors)) != EOF;)
            sBoxes += static_cast<char>(c);
        return sBoxes;
    }

  private:
    Titles TitlesOf(posix::WindowRequest::Kind kind) {
        for (const auto& request : other.TakeRequests())
            requests.push_back(request);
        Titles titles;
        for (const auto& request : requests) {
            if (request.kind == kind) titles.push_back(request.sTitle);
        }
        return titles;
    }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Posix, DesktopContract, PosixDesktopRig);

struct HookRig {
    TemporaryFolder folder;
    posix::HookClosedLibrary library{"echo x >> '" + (folder / "calls").string() + "'"};
    ClosedLibrary& Port() { return library; }
    int Refreshes() { return static_cast<int>(folder.Bytes("calls").size() / 2); }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Posix, ClosedLibraryContract, HookRig);

}  // namespace nomira::testing
