#include "ui/formlayer/FileLists.h"

#include "adapters/memory/MemoryMachine.h"
#include "langtools/BasicText.h"
#include "platform/ForwardingFiles.h"
#include "platform/Platform.h"
#include "testing/ForwardingPorts.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"
#include "ui/formlayer/FormLayer.h"

namespace nomira {
namespace {

using testing::Raised;
using Texts = std::vector<Text>;

class SampleForm : public Form {
  public:
    SampleForm() : Form(u"Sample") {}
    DriveListBox& drives = Add<DriveListBox>(u"Drive");
    DirListBox& directories = Add<DirListBox>(u"Dir");
    FileListBox& files = Add<FileListBox>(u"Files");
};

template <typename ListBox>
Texts Entries(const ListBox& list) {
    Texts entries;
    for (std::int16_t n = 0; n < list.ListCount(); ++n)
        entries.push_back(list.List(n));
    return entries;
}

class FileListsTest : public ::testing::Test {
  protected:
    FileListsTest() {
        for (const TextView sPath :
             {u"C:\\d\\b.src", u"C:\\d\\A.SRC", u"C:\\d\\c.txt", u"C:\\d\\sub\\x.src"})
            machine.files.Put(sPath, "x");
        machine.files.PutDirectory(u"C:\\d\\Other.src");
    }
    Texts Told(TextView sControl) const {
        Texts properties;
        for (const auto& event : view.events)
            if (event.sControl == sControl) properties.push_back(event.sProperty);
        return properties;
    }

    memory::MemoryMachine machine;
    memory::RecordingView view;
    SampleForm form;
    DriveListBox& drives = form.drives;
    DirListBox& directories = form.directories;
    FileListBox& files = form.files;
};

// ---- Drives ----

TEST_F(FileListsTest, ADriveListBeginsOnDriveC) {
    machine.files.PutDirectory(u"A:\\");
    machine.files.PutDirectory(u"D:\\");
    EXPECT_EQ(drives.Drives(), (Texts{u"a:", u"c:", u"d:"}));
    EXPECT_EQ(drives.Drive(), u"c:");
}

TEST(DriveListTest, WithoutADriveCItBeginsOnTheFirst) {
    memory::MemoryMachine machine;
    class TwoDrives : public ForwardingFiles {
      public:
        using ForwardingFiles::ForwardingFiles;
        std::vector<Text> Drives() override { return {u"D:", u"E:"}; }
    };
    TwoDrives files(machine.files);
    Platform platform = testing::PortsOf(machine);
    platform.files = &files;
    SetPlatform(platform);
    SampleForm form;
    EXPECT_EQ(form.drives.Drive(), u"d:");
}

TEST_F(FileListsTest, ADriveIsItsLetterAlone) {
    machine.files.PutDirectory(u"D:\\");
    for (const TextView sDrive : {u"D:\\tqx", u"c:", u"d"}) {
        drives.SetDrive(sDrive);
        EXPECT_EQ(drives.Drive(), LCase(sDrive.substr(0, 1)) + u":");
    }
}

TEST_F(FileListsTest, AMissingDriveIsRefused) {
    for (const TextView sDrive : {u"Q:\\", u""})
        EXPECT_EQ(Raised([&] { drives.SetDrive(sDrive); }), ErrorNumber::DeviceUnavailable);
    EXPECT_EQ(drives.Drive(), u"c:");
}

TEST_F(FileListsTest, ANewDriveRunsTheHandler) {
    machine.files.PutDirectory(u"D:\\");
    Texts seen;
    drives.onChange = [&] { seen.push_back(drives.Drive()); };
    drives.SetDrive(u"C:\\");  // where it stands already
    drives.SetDrive(u"D:\\");
    drives.SetDrive(u"d:");
    drives.UserPick(u"c:");
    drives.SetEnabled(false);
    drives.UserPick(u"d:");
    EXPECT_EQ(seen, (Texts{u"d:", u"c:"}));
}

// ---- Directories ----

TEST_F(FileListsTest, ADirectoryListBeginsEmpty) {
    EXPECT_EQ(directories.Path(), u"");
    EXPECT_EQ(directories.ListCount(), 0);
    EXPECT_EQ(directories.ListIndex(), -1);
}

TEST_F(FileListsTest, ADirectoryListsItsSubdirectoriesAsFullPaths) {
    directories.SetPath(u"C:\\d");
    EXPECT_EQ(directories.Path(), u"C:\\d");
    EXPECT_EQ(Entries(directories), (Texts{u"C:\\d\\Other.src", u"C:\\d\\sub"}));
    EXPECT_EQ(directories.List(-1), u"C:\\d");
    directories.SetPath(u"C:\\");
    EXPECT_EQ(Entries(directories), (Texts{u"C:\\d"}));
}

TEST_F(FileListsTest, ADirectoryListRefusesWhatIsNoDirectory) {
    directories.SetPath(u"C:\\d");
    for (const TextView sPath : {u"C:\\none", u"C:\\d\\b.src"})
        EXPECT_EQ(Raised([&] { directories.SetPath(sPath); }), ErrorNumber::PathNotFound)
            << testing::Printable(sPath);
    EXPECT_EQ(Raised([&] { directories.SetPath(u"Q:\\d"); }), ErrorNumber::DeviceUnavailable);
    EXPECT_EQ(directories.Path(), u"C:\\d");
    EXPECT_EQ(directories.ListCount(), 2);
}

TEST_F(FileListsTest, TheHighlightGoesBackWithANewPath) {
    directories.SetPath(u"C:\\d");
    directories.SetListIndex(1);
    EXPECT_EQ(directories.List(directories.ListIndex()), u"C:\\d\\sub");
    for (const int nIndex : {-3, 2})
        EXPECT_EQ(Raised([&] { directories.SetListIndex(static_cast<std::int16_t>(nIndex)); }),
                  ErrorNumber::SubscriptOutOfRange);
    EXPECT_EQ(directories.ListIndex(), 1);
    directories.SetPath(u"C:\\d\\sub");
    EXPECT_EQ(directories.ListIndex(), -1);
    EXPECT_EQ(directories.ListCount(), 0);
}

TEST_F(FileListsTest, ARefreshReadsTheDirectoryAgain) {
    directories.SetPath(u"C:\\d");
    files.SetPath(u"C:\\d\\sub");
    machine.files.Put(u"C:\\d\\new\\y.src", "x");
    machine.files.Put(u"C:\\d\\sub\\y.src", "x");
    EXPECT_EQ(directories.ListCount(), 2);
    EXPECT_EQ(files.ListCount(), 1);
    SetView(&view);
    directories.Refresh();
    files.Refresh();
    EXPECT_EQ(directories.ListCount(), 3);
    EXPECT_EQ(files.ListCount(), 2);
    EXPECT_EQ(view.Count(memory::ViewEvent::Kind::Refreshed), 2);
}

TEST_F(FileListsTest, ADriveAloneMeansItsRootAndAPathWithoutADriveCountsFromIt) {
    machine.files.PutDirectory(u"D:\\orvo\\sub");
    struct Row {
        TextView sSet, sPath;
    };
    for (const Row& row :
         {Row{u"d\\", u"C:\\d"}, Row{u"\\d\\sub", u"C:\\d\\sub"}, Row{u"d:", u"d:\\"},
          Row{u"orvo", u"d:\\orvo"}, Row{u"orvo\\sub", u"d:\\orvo\\sub"}, Row{u"C:\\", u"C:\\"}}) {
        directories.SetPath(row.sSet);
        files.SetPath(row.sSet);
        EXPECT_EQ(directories.Path(), row.sPath);
        EXPECT_EQ(files.Path(), row.sPath);
    }
    EXPECT_EQ(Raised([&] { directories.SetPath(u"none"); }), ErrorNumber::PathNotFound);
    EXPECT_EQ(Raised([&] { directories.SetPath(u""); }).has_value(), true);
    EXPECT_EQ(directories.Path(), u"C:\\");
}

TEST_F(FileListsTest, EntriesBelowTheDirectoryItselfAreThoseAboveIt) {
    directories.SetPath(u"C:\\d\\sub");
    EXPECT_EQ(directories.List(-1), u"C:\\d\\sub");
    EXPECT_EQ(directories.List(-2), u"C:\\d");
    EXPECT_EQ(directories.List(-3), u"C:\\");
    EXPECT_EQ(Raised([&] { directories.List(-4); }), ErrorNumber::SubscriptOutOfRange);
}

TEST_F(FileListsTest, ANewPathRunsTheHandlerWhenTheListStands) {
    std::vector<int> counts;
    directories.onChange = [&] { counts.push_back(directories.ListCount()); };
    directories.SetPath(u"C:\\d");
    directories.SetPath(u"C:\\d");
    directories.Refresh();
    EXPECT_EQ(Raised([&] { directories.SetPath(u"C:\\none"); }), ErrorNumber::PathNotFound);
    EXPECT_EQ(counts, std::vector<int>{2});
    directories.UserOpen(1);
    EXPECT_EQ(directories.Path(), u"C:\\d\\sub");
    directories.UserOpen(-3);
    EXPECT_EQ(directories.Path(), u"C:\\");
    EXPECT_EQ(counts, (std::vector<int>{2, 0, 1}));
}

TEST_F(FileListsTest, AKeyOfTheDirectoryListReachesTheHandler) {
    directories.SetPath(u"C:\\d");
    directories.UserHighlight(1);
    EXPECT_EQ(directories.ListIndex(), 1);
    directories.UserKeyPress(13);
    directories.onKeyPress = [&](std::int16_t nKeyAscii) {
        if (nKeyAscii == 13) directories.SetPath(directories.List(directories.ListIndex()));
    };
    directories.UserKeyPress(65);
    EXPECT_EQ(directories.Path(), u"C:\\d");
    directories.UserKeyPress(13);
    EXPECT_EQ(directories.Path(), u"C:\\d\\sub");
    directories.SetVisible(false);
    directories.UserHighlight(-2);
    directories.UserKeyPress(13);
    directories.UserOpen(-2);
    EXPECT_EQ(directories.Path(), u"C:\\d\\sub");
    EXPECT_EQ(directories.ListIndex(), -1);
}

// ---- Files ----

TEST_F(FileListsTest, APatternMayBeSeveral) {
    files.SetPath(u"C:\\d");
    struct Row {
        TextView sPattern;
        Texts names;
    };
    for (const Row& row : {Row{u"*.txt;*.src", {u"A.SRC", u"b.src", u"c.txt"}},
                           Row{u"?.src;b.*", {u"A.SRC", u"b.src"}}, Row{u"; c.txt ;", {u"c.txt"}},
                           Row{u"*.dat;*.bak", {}}, Row{u"", {}}}) {
        files.SetPattern(row.sPattern);
        EXPECT_EQ(Entries(files), row.names) << testing::Printable(row.sPattern);
    }
}

TEST_F(FileListsTest, AFileListBeginsEmptyWithAPatternForAll) {
    EXPECT_EQ(files.Path(), u"");
    EXPECT_EQ(files.Pattern(), u"*.*");
    EXPECT_EQ(files.ListCount(), 0);
    files.SetPattern(u"*.src");
    EXPECT_EQ(files.ListCount(), 0);
}

TEST_F(FileListsTest, FilesAreListedWithoutRegardToCase) {
    files.SetPath(u"C:\\d");
    EXPECT_EQ(Entries(files), (Texts{u"A.SRC", u"b.src", u"c.txt"}));
    files.SetPattern(u"*.src");
    EXPECT_EQ(Entries(files), (Texts{u"A.SRC", u"b.src"}));
    files.SetPath(u"C:\\");
    EXPECT_EQ(files.ListCount(), 0);
    for (const TextView sName : {u"a", u"B", u"c"})
        machine.files.Put(Text(u"C:\\mixed\\").append(sName), "");
    files.SetPattern(u"*");
    files.SetPath(u"C:\\mixed");
    EXPECT_EQ(Entries(files), (Texts{u"a", u"B", u"c"}));
}

TEST_F(FileListsTest, AFileListRefusesWhatIsNoDirectory) {
    files.SetPath(u"C:\\d");
    EXPECT_EQ(Raised([&] { files.SetPath(u"C:\\none"); }), ErrorNumber::PathNotFound);
    EXPECT_EQ(Raised([&] { files.SetPath(u"Q:\\"); }), ErrorNumber::DeviceUnavailable);
    EXPECT_EQ(files.Path(), u"C:\\d");
    EXPECT_EQ(files.ListCount(), 3);
}

TEST_F(FileListsTest, AListWithSeveralSelectionsKeepsThem) {
    files.SetMultiSelect(true);
    files.SetPath(u"C:\\d");
    files.SetSelected(0, true);
    files.SetSelected(2, true);
    EXPECT_TRUE(files.Selected(0));
    EXPECT_FALSE(files.Selected(1));
    EXPECT_TRUE(files.Selected(2));
    files.SetSelected(0, false);
    EXPECT_FALSE(files.Selected(0));
    EXPECT_TRUE(files.Selected(2));
}

TEST_F(FileListsTest, AListWithOneSelectionMovesIt) {
    files.SetPath(u"C:\\d");
    files.SetSelected(0, true);
    files.SetSelected(2, true);
    EXPECT_FALSE(files.Selected(0));
    EXPECT_TRUE(files.Selected(2));
    files.SetSelected(1, false);
    EXPECT_TRUE(files.Selected(2));
}

TEST_F(FileListsTest, APlaceWithoutAnEntryRaises) {
    EXPECT_EQ(Raised([&] { files.SetSelected(0, true); }), ErrorNumber::SubscriptOutOfRange);
    files.SetPath(u"C:\\d");
    for (const int nPlace : {-1, 3}) {
        const auto nIndex = static_cast<std::int16_t>(nPlace);
        EXPECT_EQ(Raised([&] { files.List(nIndex); }), ErrorNumber::SubscriptOutOfRange);
        EXPECT_EQ(Raised([&] { files.Selected(nIndex); }), ErrorNumber::SubscriptOutOfRange);
        EXPECT_EQ(Raised([&] { files.SetSelected(nIndex, true); }),
                  ErrorNumber::SubscriptOutOfRange);
    }
}

TEST_F(FileListsTest, ANewListHasNothingSelectedAndAnOldValueChangesNothing) {
    files.SetPath(u"C:\\d");
    files.SetSelected(1, true);
    files.SetPath(u"C:\\d");
    files.SetPattern(u"*.*");
    EXPECT_TRUE(files.Selected(1));
    files.SetPattern(u"*.src");
    EXPECT_FALSE(files.Selected(1));
}

TEST_F(FileListsTest, TheViewHearsWhatIsNew) {
    SetView(&view);
    files.SetPath(u"C:\\d");
    files.SetPattern(u"*.src");
    files.SetPattern(u"*.src");
    files.SetSelected(0, true);
    files.SetSelected(0, true);
    directories.SetPath(u"C:\\d");
    directories.SetListIndex(0);
    EXPECT_EQ(Told(u"Files"), (Texts{u"Path", u"List", u"Pattern", u"List", u"Selected"}));
    EXPECT_EQ(Told(u"Dir"), (Texts{u"Path", u"List", u"ListIndex"}));
}

}  // namespace
}  // namespace nomira
