// The controller's files, kept below a folder of this system.
//
// Paths are the controller's: "TQX:\R1\Program\x.src", or with separators of either kind in front,
// "/R1/x.src". Case doesn't matter. Nothing outside of the folder is ever touched, whatever a path
// says: ".." and drives are refused, and symbolic links are no part of the space. Neither are names
// that the controller can't have, such as one with a colon, or one that isn't UTF-8.
//
// Failures are OperationFailed.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "langtools/Text.h"
#include "nativefiles/Descriptor.h"

namespace nomira::simulator {

class FileSpace {
  public:
    // Makes the folder, and R1 in it, where they aren't there. Throws std::system_error.
    explicit FileSpace(const std::filesystem::path& folder);

    // The names in a directory, sorted: its files; with a mask at the end of the path, the files
    // that match; with the mask "*.", its directories.
    std::vector<Text> List(TextView sPath) const;

    // The full path of the file that a look-up finds: the name at its end, anywhere below the
    // directory ahead of that, the first of several by path. Empty if there is none.
    Text Resolve(TextView sLookup) const;

    // Fails for a file of more bytes than a line of the wire, without reading on.
    std::string Read(TextView sPath) const;
    // Puts the file in its place in one step. Its directory must be there.
    void Write(TextView sPath, std::string_view sBytes) const;
    void Delete(TextView sPath) const;

    // Makes the directory with all above it, as far as they aren't there.
    void MakeDirectories(TextView sPath) const;

    // The full paths of all files, sorted.
    std::vector<Text> AllFiles() const;

  private:
    nativefiles::Descriptor m_folder;
};

}  // namespace nomira::simulator
