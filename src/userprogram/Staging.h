// From a form's file lists to paths, and the staging of programs that lie on the controller: the
// rewriter works on local files alone, so that a program is fetched into a directory of its own,
// rewritten there, and sent back if it has changed.
//
// The routines reach a form's controls by their names, so that both main forms are served: the file
// lists File1 and File2, the directory list Dir1, the name box Text1, and the fourth panel of
// StatusBar1, where a problem with the selection is shown. A form that lacks one of them raises
// NoSuchMember.
#pragma once

#include <optional>
#include <vector>

#include "langtools/Text.h"
#include "ui/formlayer/FileLists.h"
#include "ui/formlayer/Form.h"

namespace nomira {

// The staging directory. It exists from CollectSelectedFile2 until the programs are done, and stays
// behind a run that a run-time error ends.
inline constexpr TextView TempDir = u"C:\\Temp\\NomiraTemp";

// The selected entries of a list in their order, names without their directory, and the full path
// of such a name.
std::vector<Text> SelectedNames(const FileListBox& list);
Text PathInList(const FileListBox& list, TextView sName);

// Whether any entry of the list is selected.
bool HasSelectionFile1(const Form& form);
bool HasSelectionFile2(const Form& form);

// The full path of the first selected entry; empty if there is none. That of File1 then says so in
// the panel, and clears the panel else; that of File2 leaves the panel alone.
Text FirstSelectedFile1(const Form& form);
Text FirstSelectedFile2(const Form& form);

// The selected entries of File2, names without their directory, and the panel cleared; no list, and
// a word in the panel, if there are none. Makes TempDir in both cases.
std::optional<std::vector<Text>> CollectSelectedFile2(const Form& form);

bool HasTextFileName(const Form& form);
// The path of the name in Text1 in the directory of Dir1, and the panel cleared; empty, and a word
// in the panel, if there is no name.
Text ExportTargetPath(const Form& form);

// Makes the directories of the path level by level from the root down. The first three characters
// are the root, a drive with its "\", and are never made. Every failure is ignored, so that a level
// that exists is passed over, and a path that can't be made is found out by its next user. The path
// ends at two "\" in a row: the levels behind them are not made.
void MakeDirectoryPath(TextView sPath);

// Rewrites the selected entries of File2 on the controller; nothing happens without any. The link
// must be there (else ObjectNotSet is raised); failures of the rewriter go up.
void StagedRewriteOnController(const Form& form);
// The same for names that have been collected, and the clean-up behind them. A program that can't
// be fetched is passed over, and one that can't be sent back is lost, both without a word.
void RewriteOnController(const std::vector<Text>& entries);
// Deletes the programs in TempDir, and TempDir if nothing else is in it. Failures are ignored.
void ClearTempDir();

}  // namespace nomira
