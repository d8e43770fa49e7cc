// Runs of the real companion as a process of its own, on a prefix of its own.
#pragma once

#include <stdlib.h>

#include <cstdlib>

#include "apps/CommandRun.h"
#include "testing/RunProcess.h"

namespace nomira::testing {

// Temporary folders away from the disk, where there is such a place: these are many short runs.
class FastPlace {
  public:
    FastPlace() {
        if (const char* pOld = std::getenv("TMPDIR")) m_sOld = pOld;
        if (std::filesystem::is_directory("/dev/shm")) setenv("TMPDIR", "/dev/shm", 1);
    }
    ~FastPlace() {
        if (m_sOld.empty())
            unsetenv("TMPDIR");
        else
            setenv("TMPDIR", m_sOld.c_str(), 1);
    }
    FastPlace(const FastPlace&) = delete;
    FastPlace& operator=(const FastPlace&) = delete;

  private:
    std::string m_sOld;
};

class BinaryRun : FastPlace, public CommandRun {
  public:
    // One command on this prefix.
    ProcessOutcome Start(const std::vector<std::string>& args, Environment environment = {}) const {
        environment.insert(
            environment.begin(),
            {{"NOMIRA_PREFIX", Prefix().string()}, {"HOME", Root().string()}, {"LC_ALL", "C"}});
        return RunProcess(NOMIRACTL_PROGRAM, args, environment);
    }
    // A line for the shell, in which $N stands for the companion.
    ProcessOutcome Shell(const std::string& sLine) const {
        return RunProcess("/bin/sh", {"-c", sLine},
                          {{"NOMIRA_PREFIX", Prefix().string()},
                           {"HOME", Root().string()},
                           {"N", NOMIRACTL_PROGRAM}});
    }
    // The database with these rows of SQL behind "INSERT INTO Items" and "INSERT INTO Messages".
    void Fill(const std::string& sItems, const std::string& sMessages) const {
        CreateDatabase();
        ExecuteOn(Database(),
                  "INSERT INTO Items VALUES" + sItems + ";INSERT INTO Messages VALUES" + sMessages);
    }
};

}  // namespace nomira::testing
