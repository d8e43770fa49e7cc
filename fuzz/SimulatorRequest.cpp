// A program's requests to the simulator: any bytes, cut into lines. Each request but a notification
// gets one line for an answer, that line is JSON, and nothing outside of the folder of the
// controller's files changes, whatever the paths say.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "apps/vexon3/Controller.h"

namespace nomira::simulator {
namespace {

namespace fs = std::filesystem;

constexpr ClientId kClient = 1;

constexpr std::string_view kScenario = R"({"variables": {"$A": "1"},
    "faults": [{"on": "ReadVar", "match": "$B", "drop": "midway"},
               {"on": "DeleteFile", "call": 2, "fail": "locked"},
               {"on": "ResolvePath", "call": 3, "nonsense": "%&$"}],
    "messages": [{"on": "Advise", "message": {"nMessage": 1}}]})";

constexpr TextView kProgramPath = u"TQX:\\R1\\Program\\x.src";
constexpr std::string_view kProgram = "DEF x()";

void Require(bool bHolds, const char* sWhat) {
    if (!bHolds) throw std::logic_error(sWhat);
}

// A folder with the space in it, and a guard beside the space. One for the whole run.
class Place {
  public:
    Place() {
        std::string sName = (fs::temp_directory_path() / "fuzz-XXXXXX").string();
        if (!::mkdtemp(sName.data())) std::abort();
        m_folder = sName;
        std::ofstream(m_folder / "guard.src") << "untouched";
        m_files.emplace(m_folder / "space");
    }
    ~Place() { fs::remove_all(m_folder); }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    // As it is at first; making it anew takes longer than most inputs.
    const FileSpace& Fresh() {
        if (IsAsAtFirst()) return *m_files;
        fs::remove_all(m_folder / "space" / "R1");
        fs::create_directories(m_folder / "space" / "R1" / "Program");
        std::ofstream(m_folder / "space" / "R1" / "Program" / "x.src") << kProgram;
        return *m_files;
    }
    void CheckGuard() const {
        std::string sText;
        std::ifstream(m_folder / "guard.src") >> sText;
        Require(sText == "untouched", "a file outside of the space has changed");
        Require(std::distance(fs::directory_iterator(m_folder), {}) == 2, "a file outside is new");
    }

  private:
    bool IsAsAtFirst() const {
        const std::vector<Text> files = m_files->AllFiles();
        return files.size() == 1 && files[0] == kProgramPath && m_files->Read(files[0]) == kProgram;
    }

    fs::path m_folder;
    std::optional<FileSpace> m_files;
};

void CheckReaction(const Reaction& reaction) {
    if (reaction.sAnswer.empty() || reaction.bDrop || reaction.sAnswer == "%&$\n") return;
    Require(reaction.sAnswer.find('\n') == reaction.sAnswer.size() - 1, "no line for an answer");
    const rpc::Json answer = rpc::Json::parse(reaction.sAnswer);
    Require(answer.contains("result") != answer.contains("error"), "no answer");
}

void Handle(Controller& controller, std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t nEnd = std::min(bytes.find('\n'), bytes.size());
        CheckReaction(controller.Handle(kClient, bytes.substr(0, nEnd)));
        bytes.remove_prefix(std::min(nEnd + 1, bytes.size()));
    }
    controller.Forget(kClient);
}

}  // namespace
}  // namespace nomira::simulator

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t nSize) {
    using namespace nomira::simulator;
    static Place place;
    static const Scenario scenario = ParseScenario(kScenario, "fuzz.json");
    Controller controller(
        place.Fresh(), scenario,
        [](ClientId, const std::string& sLine) {
            Require(nomira::rpc::Json::accept(sLine), "a notification that is no JSON");
        },
        [](const std::string& sLine) {
            Require(sLine.find('\n') == std::string::npos, "more than a line in the log");
        });
    Handle(controller, {reinterpret_cast<const char*>(data), nSize});
    place.CheckGuard();
    return 0;
}
