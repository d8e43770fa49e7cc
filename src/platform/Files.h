// Port: the old runtime's file statements.
//
// Paths are the program's own, such as C:\tqx\data\x.txt; an adapter finds the file that a path
// means on its system. All text goes through the system's 8-bit code page. Every failure is a
// RuntimeError with the number that the old runtime gives for it: 52 for a name that can't be one,
// 53 for a missing file, 61 for a full disk, 68 for a drive that isn't there, 70 or 75 for denied
// access (75 also where a directory stands or the path ends in "\"), 76 for a missing directory.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "langtools/Text.h"

namespace nomira {

// How many characters a path's root has, as u"C:\\".
inline constexpr std::int32_t kRootLength = 3;

// Bits of a file's attributes.
enum FileAttribute : std::uint16_t {
    AttributeNormal = 0,
    AttributeReadOnly = 1,
    AttributeHidden = 2,
    AttributeSystem = 4,
    AttributeDirectory = 16,
    AttributeArchive = 32,
};

// A file open for sequential reading; closed when it goes out of use.
class InputFile {
  public:
    virtual ~InputFile() = default;

    // Whether all has been read.
    virtual bool AtEnd() = 0;

    // The next line into `sLine`, without its end. CR LF or a lone CR ends a line; a lone LF is a
    // character like any other, and a last line needs no end. Raises InputPastEnd at the end.
    virtual void ReadLine(Text& sLine) = 0;
};

// A file open for sequential writing; closed when it goes out of use.
class OutputFile {
  public:
    virtual ~OutputFile() = default;

    // Writes the text and CR LF behind it. Raises DiskFull or DeviceIo.
    virtual void PrintLine(TextView sText) = 0;

    // Writes what is still held back and closes. Raises like PrintLine; a file that is closed
    // by going out of use writes the same, but keeps a failure to itself.
    virtual void Close() = 0;
};

class Files {
  public:
    virtual ~Files() = default;

    virtual std::unique_ptr<InputFile> OpenForInput(TextView sPath) = 0;
    // Creates the file, or empties it.
    virtual std::unique_ptr<OutputFile> OpenForOutput(TextView sPath) = 0;

    // The names (without the directory) that match the last part of `sPath`, in which `*` and `?`
    // are wildcards and case is ignored. Normal and archived files always count; those that are
    // hidden, of the system, or directories only if `nAttributes` has the bit. Sorted by name.
    // Nothing that matches, or no such directory, gives an empty list. "." and ".." don't count.
    virtual std::vector<Text> Dir(TextView sPath, std::uint16_t nAttributes = AttributeNormal) = 0;

    // The attribute bits of a file or directory.
    virtual std::uint16_t GetAttr(TextView sPath) = 0;
    virtual void SetAttr(TextView sPath, std::uint16_t nAttributes) = 0;

    virtual void MkDir(TextView sPath) = 0;
    // Removes an empty directory; one that holds something raises PathFileAccess.
    virtual void RmDir(TextView sPath) = 0;
    // Deletes every file that matches, wildcards as in Dir; no match raises FileNotFound, and a
    // read-only file stays and raises PathFileAccess.
    virtual void Kill(TextView sPath) = 0;
    // Renames; the new name must be free (else FileAlreadyExists).
    virtual void Name(TextView sOldPath, TextView sNewPath) = 0;

    // The drives of the system, as u"C:", in alphabetical order, also those without a medium.
    virtual std::vector<Text> Drives() = 0;
};

}  // namespace nomira
