// What every adapter of Files must do. A rig brings one adapter with an empty drive C: and no
// drive Q:, and reaches its files from behind:
//
//     Files& Port();
//     void Put(TextView sPath, std::string_view bytes);  // with the directories above it
//     void PutDirectory(TextView sPath);
//     std::string Bytes(TextView sPath);
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "langtools/BasicText.h"
#include "langtools/CodePage.h"
#include "langtools/RuntimeError.h"
#include "platform/Files.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"

namespace nomira::testing {

using Names = std::vector<Text>;

template <typename Rig>
class FilesContract : public ::testing::Test {
  protected:
    Files& Port() { return m_rig.Port(); }

    Names ReadLines(TextView sPath) {
        const auto file = Port().OpenForInput(sPath);
        Names lines;
        while (!file->AtEnd())
            file->ReadLine(lines.emplace_back());
        return lines;
    }

    std::optional<ErrorNumber> OpenForInputRaises(TextView sPath) {
        return Raised([&] { Port().OpenForInput(sPath); });
    }
    std::optional<ErrorNumber> OpenForOutputRaises(TextView sPath) {
        return Raised([&] { Port().OpenForOutput(sPath); });
    }

    Rig m_rig;
};

struct NumberRow {
    Text sPath;
    std::optional<ErrorNumber> number;
};

TYPED_TEST_SUITE_P(FilesContract);

TYPED_TEST_P(FilesContract, LinesEndAtCrLfOrLoneCr) {
    const struct {
        std::string bytes;
        Names lines;
    } rows[] = {
        {"", {}},
        {"a\r\nb\r\n", {u"a", u"b"}},
        {"a\rb\r", {u"a", u"b"}},
        {"a\r\nb", {u"a", u"b"}},
        {"\r\n", {u""}},
        {"\r\r", {u"", u""}},
        {"a\r\n\r\nb", {u"a", u"", u"b"}},
        {"a\nb\r\n", {u"a\nb"}},
        {"\n", {u"\n"}},
        {"a\r\n\nb", {u"a", u"\nb"}},
        {"a\n\rb", {u"a\n", u"b"}},
    };
    for (const auto& row : rows) {
        this->m_rig.Put(u"C:\\lines.txt", row.bytes);
        EXPECT_EQ(this->ReadLines(u"C:\\lines.txt"), row.lines) << Printable(FromAscii(row.bytes));
    }
}

TYPED_TEST_P(FilesContract, LineEndsAreSeenWhereverTheyFall) {
    for (const std::size_t nLength : {4095U, 4096U, 65534U, 65535U, 65536U, 65537U, 131071U}) {
        const std::string sLong(nLength, 'x');
        this->m_rig.Put(u"C:\\long.txt", sLong + "\r\n" + sLong + "\rend");
        const Text sExpected(nLength, u'x');
        EXPECT_EQ(this->ReadLines(u"C:\\long.txt"), (Names{sExpected, sExpected, u"end"}))
            << nLength;
    }
}

TYPED_TEST_P(FilesContract, ReadingBehindTheEndRaises) {
    this->m_rig.Put(u"C:\\one.txt", "a");
    const auto file = this->Port().OpenForInput(u"C:\\one.txt");
    Text sLine;
    file->ReadLine(sLine);
    EXPECT_TRUE(file->AtEnd());
    EXPECT_EQ(Raised([&] { file->ReadLine(sLine); }), ErrorNumber::InputPastEnd);
}

TYPED_TEST_P(FilesContract, EveryByteBecomesItsCharacterOfThePage) {
    std::string bytes;
    for (int n = 0; n < 256; ++n) {
        if (n != '\r') bytes += static_cast<char>(n);
    }
    this->m_rig.Put(u"C:\\bytes.txt", bytes);
    const Names lines = this->ReadLines(u"C:\\bytes.txt");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0], Windows1252().Decode(bytes));
    EXPECT_EQ(lines[0].size(), 255U);
}

TYPED_TEST_P(FilesContract, PrintedLinesAreEncodedAndEndWithCrLf) {
    const auto file = this->Port().OpenForOutput(u"C:\\out.txt");
    file->PrintLine(u"Füllstand €");
    file->PrintLine(u"");
    file->PrintLine(u"a\nb \u0416");
    file->Close();
    EXPECT_EQ(this->m_rig.Bytes(u"C:\\out.txt"), "F\xFCllstand \x80\r\n\r\na\nb ?\r\n");
}

TYPED_TEST_P(FilesContract, ManyLinesComeBackAsTheyWerePrinted) {
    Names lines;
    for (int n = 0; n < 9000; ++n)
        lines.push_back(u"IN_" + DecimalText(n) + u" Signal " + DecimalText(n * 7));
    const auto file = this->Port().OpenForOutput(u"C:\\many.txt");
    for (const Text& sLine : lines)
        file->PrintLine(sLine);
    file->Close();
    EXPECT_EQ(this->ReadLines(u"C:\\many.txt"), lines);
}

TYPED_TEST_P(FilesContract, OpeningForOutputEmptiesTheFileAtOnce) {
    this->m_rig.Put(u"C:\\full.txt", "old");
    const auto file = this->Port().OpenForOutput(u"C:\\full.txt");
    EXPECT_EQ(this->m_rig.Bytes(u"C:\\full.txt"), "");
}

TYPED_TEST_P(FilesContract, AFileThatGoesOutOfUseHasBeenWritten) {
    this->Port().OpenForOutput(u"C:\\gone.txt")->PrintLine(u"a");
    EXPECT_EQ(this->m_rig.Bytes(u"C:\\gone.txt"), "a\r\n");
}

TYPED_TEST_P(FilesContract, AClosedFileTakesNoMoreLines) {
    const auto file = this->Port().OpenForOutput(u"C:\\closed.txt");
    file->PrintLine(u"a");
    file->Close();
    file->Close();
    EXPECT_EQ(Raised([&] { file->PrintLine(u"b"); }), ErrorNumber::BadFileName);
    EXPECT_EQ(this->m_rig.Bytes(u"C:\\closed.txt"), "a\r\n");
}

TYPED_TEST_P(FilesContract, OpeningForInputTellsWhatIsWrong) {
    this->m_rig.Put(u"C:\\data\\there.txt", "a");
    const NumberRow rows[] = {
        {u"C:\\data\\there.txt", std::nullopt},
        {u"C:\\data\\missing.txt", ErrorNumber::FileNotFound},
        {u"C:\\nowhere\\x.txt", ErrorNumber::PathNotFound},
        {u"C:\\nowhere\\deeper\\x.txt", ErrorNumber::PathNotFound},
        {u"C:\\data", ErrorNumber::PathFileAccess},
        {u"C:\\", ErrorNumber::PathFileAccess},
        {u"C:\\data\\", ErrorNumber::PathFileAccess},
        {u"C:\\data\\missing\\", ErrorNumber::PathFileAccess},
        {u"C:\\nowhere\\missing\\", ErrorNumber::PathNotFound},
        {u"C:\\data\\there.txt\\x.txt", ErrorNumber::PathNotFound},
        {u"Q:\\x.txt", ErrorNumber::DeviceUnavailable},
        {u"Q:\\", ErrorNumber::DeviceUnavailable},
        {u"", ErrorNumber::BadFileName},
        {u"C:\\data\\*.txt", ErrorNumber::BadFileName},
        {u"C:\\data\\ther?.txt", ErrorNumber::BadFileName},
        {u"C:\\data\\a|b.txt", ErrorNumber::BadFileName},
        {Text(u"C:\\data\\there.txt") + u'\0', ErrorNumber::BadFileName},
    };
    for (const NumberRow& row : rows)
        EXPECT_EQ(this->OpenForInputRaises(row.sPath), row.number) << Printable(row.sPath);
}

TYPED_TEST_P(FilesContract, OpeningForOutputTellsWhatIsWrong) {
    this->m_rig.PutDirectory(u"C:\\data");
    const NumberRow rows[] = {
        {u"C:\\data\\new.txt", std::nullopt},
        {u"C:\\nowhere\\x.txt", ErrorNumber::PathNotFound},
        {u"C:\\data", ErrorNumber::PathFileAccess},
        {u"C:\\data\\", ErrorNumber::PathFileAccess},
        {u"C:\\nowhere\\missing\\", ErrorNumber::PathNotFound},
        {u"Q:\\x.txt", ErrorNumber::DeviceUnavailable},
        {u"", ErrorNumber::BadFileName},
        {u"C:\\data\\*.txt", ErrorNumber::BadFileName},
    };
    for (const NumberRow& row : rows)
        EXPECT_EQ(this->OpenForOutputRaises(row.sPath), row.number) << Printable(row.sPath);
}

TYPED_TEST_P(FilesContract, AReadOnlyFileIsNotOpenedForOutput) {
    this->m_rig.Put(u"C:\\locked.txt", "old");
    this->Port().SetAttr(u"C:\\locked.txt", AttributeReadOnly);
    EXPECT_EQ(this->OpenForOutputRaises(u"C:\\locked.txt"), ErrorNumber::PathFileAccess);
    EXPECT_EQ(this->m_rig.Bytes(u"C:\\locked.txt"), "old");
    EXPECT_EQ(this->ReadLines(u"C:\\locked.txt"), Names{u"old"});
}

TYPED_TEST_P(FilesContract, OneFileGoesByManyPaths) {
    this->m_rig.Put(u"C:\\Tqx\\Data\\Names.txt", "a");
    for (const TextView sPath :
         {u"C:\\Tqx\\Data\\Names.txt", u"c:\\TQX\\DATA\\NAMES.TXT", u"C:/tqx/data/names.txt",
          u"\\tqx\\data\\names.txt", u"C:\\tqx\\.\\data\\..\\Data\\names.txt",
          u"C:\\tqx\\\\data\\names.txt", u"C:\\..\\..\\tqx\\data\\names.txt",
          u"C:tqx\\data\\names.txt"}) {
        EXPECT_EQ(this->OpenForInputRaises(sPath), std::nullopt) << Printable(sPath);
    }
}

TYPED_TEST_P(FilesContract, AnExistingFileIsWrittenUnderTheNameThatItHas) {
    this->m_rig.Put(u"C:\\SymName.txt", "old");
    this->Port().OpenForOutput(u"C:\\SYMNAME.TXT")->PrintLine(u"new");
    EXPECT_EQ(this->Port().Dir(u"C:\\*"), Names{u"SymName.txt"});
    EXPECT_EQ(this->m_rig.Bytes(u"C:\\SymName.txt"), "new\r\n");
}

TYPED_TEST_P(FilesContract, ANewFileKeepsTheCaseOfItsPath) {
    this->Port().OpenForOutput(u"C:\\SymName.txt")->Close();
    EXPECT_EQ(this->Port().Dir(u"C:\\*"), Names{u"SymName.txt"});
}

TYPED_TEST_P(FilesContract, DirMatchesWildcardsWithoutRegardToCase) {
    for (const TextView sName : {u"b.txt", u"A.TXT", u"a.src", u"Ab.txt", u"none", u"x.txt.bak"})
        this->m_rig.Put(Text(u"C:\\d\\").append(sName), "");
    const struct {
        Text sPattern;
        Names names;
    } rows[] = {
        {u"*.txt", {u"A.TXT", u"Ab.txt", u"b.txt"}},
        {u"*.*", {u"a.src", u"A.TXT", u"Ab.txt", u"b.txt", u"none", u"x.txt.bak"}},
        {u"*", {u"a.src", u"A.TXT", u"Ab.txt", u"b.txt", u"none", u"x.txt.bak"}},
        {u"", {u"a.src", u"A.TXT", u"Ab.txt", u"b.txt", u"none", u"x.txt.bak"}},
        {u"?.TXT", {u"A.TXT", u"b.txt"}},
        {u"a*", {u"a.src", u"A.TXT", u"Ab.txt"}},
        {u"*b*t*", {u"Ab.txt", u"b.txt"}},
        {u"a.txt", {u"A.TXT"}},
        {u"NONE", {u"none"}},
        {u"missing", {}},
        {u"*.tx", {}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(this->Port().Dir(u"C:\\d\\" + row.sPattern), row.names)
            << Printable(row.sPattern);
}

TYPED_TEST_P(FilesContract, DirCountsDirectoriesOnlyIfAsked) {
    this->m_rig.PutDirectory(u"C:\\d\\Sub");
    this->m_rig.Put(u"C:\\d\\a.txt", "");
    EXPECT_EQ(this->Port().Dir(u"C:\\d\\*"), Names{u"a.txt"});
    EXPECT_EQ(this->Port().Dir(u"C:\\d\\*", AttributeDirectory), (Names{u"a.txt", u"Sub"}));
    EXPECT_EQ(this->Port().Dir(u"C:\\d\\sub"), Names{});
    EXPECT_EQ(this->Port().Dir(u"C:\\d\\sub", AttributeDirectory), Names{u"Sub"});
    EXPECT_EQ(this->Port().Dir(u"C:\\D", AttributeDirectory), Names{u"d"});
}

TYPED_TEST_P(FilesContract, DirOfNothingIsEmpty) {
    this->m_rig.PutDirectory(u"C:\\empty");
    for (const TextView sPath :
         {u"C:\\empty\\*", u"C:\\nowhere\\*.txt", u"C:\\nowhere\\x.txt", u"Q:\\*", u"Q:\\x.txt"})
        EXPECT_EQ(this->Port().Dir(sPath), Names{}) << Printable(sPath);
}

TYPED_TEST_P(FilesContract, AReadOnlyFileStillCountsInDir) {
    this->m_rig.Put(u"C:\\d\\a.txt", "");
    this->Port().SetAttr(u"C:\\d\\a.txt", AttributeReadOnly);
    EXPECT_EQ(this->Port().Dir(u"C:\\d\\*.txt"), Names{u"a.txt"});
}

TYPED_TEST_P(FilesContract, AttributesTellFilesFromDirectories) {
    this->m_rig.Put(u"C:\\d\\a.txt", "");
    EXPECT_EQ(this->Port().GetAttr(u"C:\\D\\A.TXT"), AttributeArchive);
    EXPECT_EQ(this->Port().GetAttr(u"C:\\d"), AttributeDirectory);
    EXPECT_EQ(this->Port().GetAttr(u"C:\\d\\"), AttributeDirectory);
    EXPECT_EQ(this->Port().GetAttr(u"C:\\"), AttributeDirectory);
    EXPECT_EQ(this->Port().GetAttr(u"C:"), AttributeDirectory);
}

TYPED_TEST_P(FilesContract, AttributesOfNothingRaise) {
    this->m_rig.PutDirectory(u"C:\\d");
    const NumberRow rows[] = {
        {u"C:\\d\\missing", ErrorNumber::FileNotFound},
        {u"C:\\nowhere\\x", ErrorNumber::PathNotFound},
        {u"Q:\\x", ErrorNumber::DeviceUnavailable},
        {u"Q:\\", ErrorNumber::DeviceUnavailable},
        {u"", ErrorNumber::BadFileName},
        {u"C:\\d\\*", ErrorNumber::BadFileName},
    };
    for (const NumberRow& row : rows) {
        EXPECT_EQ(Raised([&] { this->Port().GetAttr(row.sPath); }), row.number)
            << Printable(row.sPath);
        EXPECT_EQ(Raised([&] { this->Port().SetAttr(row.sPath, AttributeArchive); }), row.number)
            << Printable(row.sPath);
    }
}

TYPED_TEST_P(FilesContract, SettingTheArchiveBitAloneTakesReadOnlyAway) {
    this->m_rig.Put(u"C:\\a.txt", "");
    this->Port().SetAttr(u"C:\\a.txt", AttributeReadOnly | AttributeArchive);
    EXPECT_EQ(this->Port().GetAttr(u"C:\\a.txt"), AttributeReadOnly | AttributeArchive);
    this->Port().SetAttr(u"C:\\a.txt", AttributeArchive);
    EXPECT_EQ(this->Port().GetAttr(u"C:\\a.txt"), AttributeArchive);
    EXPECT_EQ(this->OpenForOutputRaises(u"C:\\a.txt"), std::nullopt);
}

TYPED_TEST_P(FilesContract, OnlySomeAttributesCanBeSet) {
    this->m_rig.Put(u"C:\\a.txt", "");
    for (const int nAttributes : {16, 8, 64, 256, 1 | 16}) {
        EXPECT_EQ(Raised([&] {
                      this->Port().SetAttr(u"C:\\a.txt", static_cast<std::uint16_t>(nAttributes));
                  }),
                  ErrorNumber::InvalidProcedureCall)
            << nAttributes;
    }
    EXPECT_EQ(this->Port().GetAttr(u"C:\\a.txt"), AttributeArchive);
}

TYPED_TEST_P(FilesContract, DirectoriesAreMadeOneLevelAtATime) {
    this->Port().MkDir(u"C:\\Temp");
    this->Port().MkDir(u"c:\\temp\\NomiraTemp");
    EXPECT_EQ(this->Port().GetAttr(u"C:\\Temp\\NomiraTemp"), AttributeDirectory);
    EXPECT_EQ(this->Port().Dir(u"C:\\*", AttributeDirectory), Names{u"Temp"});
    this->m_rig.Put(u"C:\\file", "");
    const NumberRow rows[] = {
        {u"C:\\Temp", ErrorNumber::PathFileAccess},
        {u"C:\\TEMP", ErrorNumber::PathFileAccess},
        {u"C:\\file", ErrorNumber::PathFileAccess},
        {u"C:\\a\\b", ErrorNumber::PathNotFound},
        {u"C:\\file\\b", ErrorNumber::PathNotFound},
        {u"Q:\\a", ErrorNumber::DeviceUnavailable},
        {u"", ErrorNumber::BadFileName},
        {u"C:\\a*", ErrorNumber::BadFileName},
    };
    for (const NumberRow& row : rows)
        EXPECT_EQ(Raised([&] { this->Port().MkDir(row.sPath); }), row.number)
            << Printable(row.sPath);
}

TYPED_TEST_P(FilesContract, OnlyEmptyDirectoriesAreRemoved) {
    this->m_rig.Put(u"C:\\full\\a.txt", "");
    this->m_rig.PutDirectory(u"C:\\empty");
    const NumberRow rows[] = {
        {u"C:\\full", ErrorNumber::PathFileAccess},
        {u"C:\\full\\a.txt", ErrorNumber::PathNotFound},
        {u"C:\\missing", ErrorNumber::PathNotFound},
        {u"C:\\missing\\x", ErrorNumber::PathNotFound},
        {u"Q:\\x", ErrorNumber::DeviceUnavailable},
        {u"C:\\", ErrorNumber::PathFileAccess},
        {u"C:\\full\\..", ErrorNumber::PathFileAccess},
        {u"", ErrorNumber::BadFileName},
        {u"C:\\EMPTY", std::nullopt},
    };
    for (const NumberRow& row : rows)
        EXPECT_EQ(Raised([&] { this->Port().RmDir(row.sPath); }), row.number)
            << Printable(row.sPath);
    EXPECT_EQ(this->Port().Dir(u"C:\\*", AttributeDirectory), Names{u"full"});
    EXPECT_EQ(this->Port().Drives(), Names{u"C:"});
}

TYPED_TEST_P(FilesContract, AnEmptyDriveIsNotRemoved) {
    for (const TextView sPath : {u"C:\\", u"C:", u"\\", u"C:\\.."}) {
        EXPECT_EQ(Raised([&] { this->Port().RmDir(sPath); }), ErrorNumber::PathFileAccess)
            << Printable(sPath);
    }
    EXPECT_EQ(this->Port().Drives(), Names{u"C:"});
}

TYPED_TEST_P(FilesContract, KillDeletesAllThatMatches) {
    for (const TextView sName : {u"a.src", u"B.SRC", u"c.txt"})
        this->m_rig.Put(Text(u"C:\\d\\").append(sName), "");
    this->m_rig.PutDirectory(u"C:\\d\\sub.src");
    this->Port().Kill(u"C:\\d\\*.src");
    EXPECT_EQ(this->Port().Dir(u"C:\\d\\*", AttributeDirectory), (Names{u"c.txt", u"sub.src"}));
    this->Port().Kill(u"C:\\D\\C.TXT");
    EXPECT_EQ(this->Port().Dir(u"C:\\d\\*"), Names{});
}

TYPED_TEST_P(FilesContract, KillOfNothingRaises) {
    this->m_rig.Put(u"C:\\d\\a.txt", "");
    this->m_rig.PutDirectory(u"C:\\d\\sub");
    const NumberRow rows[] = {
        {u"C:\\d\\*.src", ErrorNumber::FileNotFound},
        {u"C:\\d\\missing", ErrorNumber::FileNotFound},
        {u"C:\\d\\sub", ErrorNumber::FileNotFound},
        {u"C:\\nowhere\\*.*", ErrorNumber::PathNotFound},
        {u"Q:\\*.*", ErrorNumber::DeviceUnavailable},
        {u"C:\\d\\", ErrorNumber::PathFileAccess},
        {u"", ErrorNumber::BadFileName},
    };
    for (const NumberRow& row : rows)
        EXPECT_EQ(Raised([&] { this->Port().Kill(row.sPath); }), row.number)
            << Printable(row.sPath);
    EXPECT_EQ(this->Port().Dir(u"C:\\d\\*"), Names{u"a.txt"});
}

TYPED_TEST_P(FilesContract, KillLeavesAReadOnlyFile) {
    this->m_rig.Put(u"C:\\a.txt", "");
    this->Port().SetAttr(u"C:\\a.txt", AttributeReadOnly);
    EXPECT_EQ(Raised([&] { this->Port().Kill(u"C:\\a.txt"); }), ErrorNumber::PathFileAccess);
    EXPECT_EQ(this->Port().Dir(u"C:\\*"), Names{u"a.txt"});
}

TYPED_TEST_P(FilesContract, NameMovesAFile) {
    this->m_rig.Put(u"C:\\d\\xxx_con.mdb", "new");
    this->m_rig.PutDirectory(u"C:\\e");
    this->Port().Name(u"C:\\D\\XXX_CON.MDB", u"C:\\e\\orvo_con.mdb");
    EXPECT_EQ(this->m_rig.Bytes(u"C:\\e\\orvo_con.mdb"), "new");
    EXPECT_EQ(this->Port().Dir(u"C:\\d\\*"), Names{});
}

TYPED_TEST_P(FilesContract, NameMovesADirectoryWithAllInIt) {
    this->m_rig.Put(u"C:\\d\\sub\\a.txt", "x");
    this->Port().Name(u"C:\\d", u"C:\\longer");
    EXPECT_EQ(this->m_rig.Bytes(u"C:\\longer\\sub\\a.txt"), "x");
    EXPECT_EQ(this->Port().Dir(u"C:\\*", AttributeDirectory), Names{u"longer"});
}

TYPED_TEST_P(FilesContract, NameCanChangeTheCaseAlone) {
    this->m_rig.Put(u"C:\\names.txt", "x");
    this->Port().Name(u"C:\\names.txt", u"C:\\NAMES.txt");
    EXPECT_EQ(this->Port().Dir(u"C:\\*"), Names{u"NAMES.txt"});
    this->Port().Name(u"C:\\NAMES.txt", u"C:\\NAMES.txt");
    EXPECT_EQ(this->m_rig.Bytes(u"C:\\NAMES.txt"), "x");
}

TYPED_TEST_P(FilesContract, NameNeedsAFileAndAFreeName) {
    this->m_rig.Put(u"C:\\a.txt", "a");
    this->m_rig.Put(u"C:\\B.txt", "b");
    const struct {
        Text sOld, sNew;
        ErrorNumber number;
    } rows[] = {
        {u"C:\\a.txt", u"C:\\b.TXT", ErrorNumber::FileAlreadyExists},
        {u"C:\\missing", u"C:\\x", ErrorNumber::FileNotFound},
        {u"C:\\nowhere\\a", u"C:\\x", ErrorNumber::PathNotFound},
        {u"C:\\a.txt", u"C:\\nowhere\\x", ErrorNumber::PathNotFound},
        {u"C:\\a.txt", u"Q:\\x", ErrorNumber::DeviceUnavailable},
        {u"C:\\a.txt", u"C:\\x*", ErrorNumber::BadFileName},
        {u"", u"C:\\x", ErrorNumber::BadFileName},
        {u"C:\\a.txt", u"", ErrorNumber::BadFileName},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Raised([&] { this->Port().Name(row.sOld, row.sNew); }), row.number)
            << Printable(row.sOld) << " to " << Printable(row.sNew);
    EXPECT_EQ(this->m_rig.Bytes(u"C:\\a.txt"), "a");
    EXPECT_EQ(this->m_rig.Bytes(u"C:\\B.txt"), "b");
}

TYPED_TEST_P(FilesContract, DrivesAreListedByLetter) {
    this->m_rig.Put(u"E:\\x", "");
    this->m_rig.Put(u"D:\\x", "");
    EXPECT_EQ(this->Port().Drives(), (Names{u"C:", u"D:", u"E:"}));
}

REGISTER_TYPED_TEST_SUITE_P(
    FilesContract, LinesEndAtCrLfOrLoneCr, LineEndsAreSeenWhereverTheyFall,
    ReadingBehindTheEndRaises, EveryByteBecomesItsCharacterOfThePage,
    PrintedLinesAreEncodedAndEndWithCrLf, ManyLinesComeBackAsTheyWerePrinted,
    OpeningForOutputEmptiesTheFileAtOnce, AFileThatGoesOutOfUseHasBeenWritten,
    AClosedFileTakesNoMoreLines, OpeningForInputTellsWhatIsWrong, OpeningForOutputTellsWhatIsWrong,
    AReadOnlyFileIsNotOpenedForOutput, OneFileGoesByManyPaths,
    AnExistingFileIsWrittenUnderTheNameThatItHas, ANewFileKeepsTheCaseOfItsPath,
    DirMatchesWildcardsWithoutRegardToCase, DirCountsDirectoriesOnlyIfAsked, DirOfNothingIsEmpty,
    AReadOnlyFileStillCountsInDir, AttributesTellFilesFromDirectories, AttributesOfNothingRaise,
    SettingTheArchiveBitAloneTakesReadOnlyAway, OnlySomeAttributesCanBeSet,
    DirectoriesAreMadeOneLevelAtATime, OnlyEmptyDirectoriesAreRemoved, AnEmptyDriveIsNotRemoved,
    KillDeletesAllThatMatches, KillOfNothingRaises, KillLeavesAReadOnlyFile, NameMovesAFile,
    NameMovesADirectoryWithAllInIt, NameCanChangeTheCaseAlone, NameNeedsAFileAndAFreeName,
    DrivesAreListedByLetter);

}  // namespace nomira::testing
