// The prefix: the Windows side of the world on this system, one folder.
//
//     drives/c/      drive C:, a folder or a symbolic link to one; a letter per drive
//     registry.reg   the registry (RegFileRegistry.h)
//     nomira.conf    settings of the adapters (PrefixSettings.h)
//     .instance.*    lock and socket of the running instance (PosixDesktop.h)
//
// None of it need be there, not even the folder: what is missing is simply not there for the
// program.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "adapters/posix/PrefixSettings.h"
#include "langtools/Text.h"

namespace nomira::posix {

class Prefix {
  public:
    // Reads nomira.conf below `root`, if it is there. Raises PrefixError for a bad line.
    explicit Prefix(std::filesystem::path root);

    // $NOMIRA_PREFIX, else nomira in $XDG_DATA_HOME, else .local/share/nomira in $HOME.
    // Variables that are empty count as not set.
    static std::filesystem::path RootFromEnvironment();

    const std::filesystem::path& Root() const { return m_root; }
    const PrefixSettings& Settings() const { return m_settings; }
    std::filesystem::path RegistryFile() const { return m_root / "registry.reg"; }

    // Where a path of the program lives.
    //
    // With a drive letter and colon, or "\" in front (of C: then), the path goes through drives/:
    // "/" separates like "\", "." and ".." are worked off by name and never lead out of the
    // drive, and each part is matched without regard to case: the exact name if it is there, else
    // the one in small letters, else the first by name. From the first part that isn't there the
    // path stays as given, for creation. The longest placed path of the settings goes before all
    // that. Any other path is one of this system already: only "\" becomes "/".
    std::string NativePath(TextView sPath) const;

    // Whether the path goes to a drive that isn't there.
    bool DriveIsMissing(TextView sPath) const;

    // Whether the path means a drive itself.
    static bool IsDriveRoot(TextView sPath);

    // Names of the placed paths that stand directly in this directory of the Windows side.
    std::vector<Text> PlacedNamesIn(TextView sDirectory) const;

    // The letters of the drives, as u"C:", sorted.
    std::vector<Text> Drives() const;

  private:
    std::string DriveFolder(char16_t cLetter) const;

    std::filesystem::path m_root;
    PrefixSettings m_settings;
};

}  // namespace nomira::posix
