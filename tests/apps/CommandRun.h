// A prefix of its own for tests of the companion's commands, and runs of them in this process.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "apps/nomiractl/Nomiractl.h"
#include "testing/TemporaryFolder.h"
#include "testing/TestDatabase.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {

using Strings = std::vector<std::string>;

inline bool Contains(const std::string& sText, const std::string& sPart) {
    return sText.find(sPart) != std::string::npos;
}

// What one run of the companion gave.
struct Outcome {
    companion::ExitCode exit;
    std::string out;
    std::string err;

    nlohmann::json Json() const { return nlohmann::json::parse(out); }
};

class CommandRun {
  public:
    CommandRun() { std::filesystem::create_directories(Database().parent_path()); }

    std::filesystem::path Root() const { return m_root.Path(); }
    std::filesystem::path Prefix() const { return m_root / "prefix"; }
    // Where the prefix has the message database.
    std::filesystem::path Database() const { return Prefix() / "drives/c/tqx/data/orvo_con.mdb"; }

    // One command on this prefix.
    Outcome Run(Strings args) const {
        args.insert(args.begin(), {"--prefix", Prefix().string()});
        return RunAlone(args);
    }
    // The same without naming the prefix.
    static Outcome RunAlone(const Strings& args) { return RunAloneOn({}, args); }
    // The same with something on the standard input.
    Outcome RunOn(const std::string& sInput, Strings args) const {
        args.insert(args.begin(), {"--prefix", Prefix().string()});
        return RunAloneOn(sInput, args);
    }
    static Outcome RunAloneOn(const std::string& sInput, const Strings& args) {
        std::istringstream in(sInput);
        std::ostringstream out, err;
        const companion::ExitCode exit = companion::RunNomiractl(args, out, err, in);
        return {exit, out.str(), err.str()};
    }

    // An empty database in its place, of the format that this run of the test program is for.
    void CreateDatabase() const {
        const Outcome made = Run({"db", "create", Database().string(), "--format",
                                  std::string(WordOf(FormatUnderTest()))});
        ASSERT_EQ(made.exit, companion::ExitCode::Done) << made.err;
    }
    // Makes the file, and gives its path.
    std::string Write(const std::string& sName, const std::string& bytes) const {
        const std::filesystem::path path = m_root / sName;
        std::ofstream(path, std::ios::binary) << bytes;
        return path.string();
    }
    static std::string Bytes(const std::filesystem::path& path) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    // The texts in the database, each "module key text", sorted.
    std::vector<std::string> Texts() const {
        std::vector<std::string> texts;
        for (const auto& row : QueryOn(Database(),
                                       "SELECT Module||' '||KeyString||' '||String FROM Items JOIN"
                                       " Messages USING(Key_id) ORDER BY 1"))
            texts.push_back(row.at(0));
        return texts;
    }

  private:
    TemporaryFolder m_root;
};

}  // namespace nomira::testing

namespace nomira::companion {
inline void PrintTo(ExitCode exit, std::ostream* out) {
    *out << "exit status " << static_cast<int>(exit);
}
}  // namespace nomira::companion
