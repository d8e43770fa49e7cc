// The adapters in memory under every port's contract.
#include <algorithm>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "adapters/contracts/ClosedLibraryContract.h"
#include "adapters/contracts/DesktopContract.h"
#include "adapters/contracts/FilesContract.h"
#include "adapters/contracts/LinkLibraryContract.h"
#include "adapters/contracts/LocaleContract.h"
#include "adapters/contracts/ProcessesContract.h"
#include "adapters/contracts/RegistryContract.h"
#include "adapters/memory/MemoryMachine.h"
#include "adapters/memory/ScriptedLinkLibrary.h"

namespace nomira::testing {

struct MemoryFilesRig {
    memory::MemoryFiles files;
    Files& Port() { return files; }
    void Put(TextView sPath, std::string_view bytes) { files.Put(sPath, bytes); }
    void PutDirectory(TextView sPath) { files.PutDirectory(sPath); }
    std::string Bytes(TextView sPath) { return files.Bytes(sPath); }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Memory, FilesContract, MemoryFilesRig);

struct MemoryRegistryRig {
    memory::MemoryRegistry registry;
    Registry& Port() { return registry; }
    void SetString(RegistryRoot root, TextView sKey, TextView sName, TextView sText) {
        registry.SetString(root, sKey, sName, sText);
    }
    void SetUnterminated(RegistryRoot root, TextView sKey, TextView sName, TextView sAscii) {
        registry.Set(root, sKey, sName, RegistryBytes(sAscii.begin(), sAscii.end()));
    }
    void SetBinary(RegistryRoot root, TextView sKey, TextView sName, RegistryBytes bytes) {
        registry.Set(root, sKey, sName, std::move(bytes));
    }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Memory, RegistryContract, MemoryRegistryRig);

struct MemoryProcessesRig {
    memory::MemoryProcesses processes{4};
    Processes& Port() { return processes; }
    void Start(std::uint32_t nId, TextView sPath) {
        processes.processes.push_back({nId, Text(sPath)});
        processes.snapshot->emplace_back(sPath.substr(sPath.rfind(u'\\') + 1));
    }
    void StartUnreadable(std::uint32_t nId) { processes.processes.push_back({nId, std::nullopt}); }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Memory, ProcessesContract, MemoryProcessesRig);

struct MemoryLocaleRig {
    memory::MemoryLocale locale;
    SingleBytePage cyrillic{1251, CyrillicTable()};

    MemoryLocaleRig() {
        locale.nLangId = 1031;
        locale.codePages[1251] = &cyrillic;
    }
    Locale& Port() { return locale; }

    static SingleBytePage::Table CyrillicTable() {
        SingleBytePage::Table table{};
        for (std::size_t n = 0; n < table.size(); ++n)
            table[n] = static_cast<char16_t>(n < 0xC0 ? n : n - 0xC0 + 0x0410);
        return table;
    }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Memory, LocaleContract, MemoryLocaleRig);

struct MemoryDesktopRig {
    memory::MemoryDesktop desktop;
    Desktop& Port() { return desktop; }
    void StartOther() { desktop.bPreviousInstance = true; }
    void OpenWindow(TextView sTitle) { desktop.windows.emplace_back(sTitle); }
    void CloseWindow(TextView sTitle) { std::erase(desktop.windows, sTitle); }
    Titles Activated() { return desktop.activated; }
    Titles Raised() { return desktop.raised; }
    std::string Boxes() {
        std::string sBoxes;
        for (const auto& box : desktop.boxes)
            sBoxes += Utf8(box.sTitle) + ": " + Utf8(box.sText) + "\n";
        return sBoxes;
    }
    static std::string Utf8(TextView sText) {  // of characters below U+0800
        std::string bytes;
        for (const char16_t c : sText) {
            if (c >= 0x80) bytes += static_cast<char>(0xC0 | c >> 6);
            bytes += static_cast<char>(c < 0x80 ? c : 0x80 | (c & 0x3F));
        }
        return bytes;
    }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Memory, DesktopContract, MemoryDesktopRig);

struct MemoryClosedLibraryRig {
    memory::MemoryClosedLibrary library;
    ClosedLibrary& Port() { return library; }
    int Refreshes() { return library.nRefreshes; }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Memory, ClosedLibraryContract, MemoryClosedLibraryRig);

struct ScriptedLinkLibraryRig {
    memory::MemoryFiles disk;
    memory::ScriptedLinkLibrary library{disk};

    ScriptedLinkLibraryRig() { disk.PutDirectory(u"C:\\Temp"); }
    LinkLibrary& Port() { return library; }
    void StopMiddleware() { library.bMiddlewareRuns = false; }
    void SetVariable(TextView sName, TextView sValue) { library.SetVariable(sName, sValue); }
    Text Variable(TextView sName) { return library.Variable(sName).value(); }
    static Text ProgramPath(TextView sPath) { return Text(u"TQX:\\R1\\").append(sPath); }
    void PutProgram(TextView sPath, std::string_view bytes) {
        library.PutFile(ProgramPath(sPath), bytes);
    }
    std::optional<std::string> Program(TextView sPath) {
        return library.FileBytes(ProgramPath(sPath));
    }
    static Text DiskPath(TextView sName) { return Text(u"C:\\Temp\\").append(sName); }
    void PutOnDisk(TextView sName, std::string_view bytes) { disk.Put(DiskPath(sName), bytes); }
    std::string OnDisk(TextView sName) { return disk.Bytes(DiskPath(sName)); }
    std::vector<Text> Commands() {
        const auto isCommand = [](TextView sCall) {
            return sCall.starts_with(u"StopProgram") || sCall.starts_with(u"CancelProgram") ||
                   sCall.starts_with(u"SelectProgram") || sCall.starts_with(u"RestartIo");
        };
        std::vector<Text> commands;
        std::ranges::copy_if(library.calls, std::back_inserter(commands), isCommand);
        return commands;
    }
    void SendMessage(const MessageRecord& message) { library.SendMessage(message); }
    bool ServeUntil(const std::function<bool()>& done) {
        library.ServeEvents();
        return done();
    }
};
INSTANTIATE_TYPED_TEST_SUITE_P(Scripted, LinkLibraryContract, ScriptedLinkLibraryRig);

}  // namespace nomira::testing
