// The machine that a command works on: this system's adapters, composed as the options say. While
// it lives it is the platform, and the program's variables have their start values when it comes
// and when it goes.
#pragma once

#include <filesystem>
#include <memory>
#include <ostream>

#include "apps/nomiractl/CollectingDesktop.h"
#include "apps/nomiractl/Options.h"
#include "apps/nomiractl/TextSource.h"
#include "database/DatabaseEngine.h"

namespace nomira::companion {

class Machine {
  public:
    explicit Machine(const Options& options);
    ~Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    // Where the message database lies.
    const std::filesystem::path& Database() const;
    // Finds it under the core's path.
    DatabaseEngine& Engine();

    // Where the controller's middleware is looked for.
    std::filesystem::path ControllerSocket() const;

    // The desktop on which the core's message boxes end.
    CollectingDesktop& Boxes();

    // The program's settings come from this export of a registry from here on, and the customer of
    // the options doesn't count.
    void TakeRegistry(const std::filesystem::path& file);

    // The core reads the text file at the user's path from here on; `onLine` is told of its lines.
    void TakeText(const std::filesystem::path& path, std::shared_ptr<const TextSource> source,
                  TextSource::OnLine onLine = {});

    // What the settings' files have that can't be understood.
    void PrintWarnings(std::ostream& err) const;

    // Gives the notice to the controller's database process that something was changed past the
    // passes.
    void TellOfChange();
    // Passes on the notice to the controller's database process that the passes gave; until then
    // it is held back.
    void ReleaseNotice();

  private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

}  // namespace nomira::companion
