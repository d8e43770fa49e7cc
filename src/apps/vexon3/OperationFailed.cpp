#include "apps/vexon3/OperationFailed.h"

namespace nomira::simulator {
namespace {

constexpr TextView kModule = u"Vexon3";
constexpr std::int32_t kErrorClass = 2;

struct TroubleRow {
    Trouble trouble;
    std::int32_t nNumber;
    TextView sKey;
    TextView sWords;
};
constexpr TroubleRow kTroubles[] = {
    {Trouble::NoSuchVariable, 1, u"NoSuchVariable", u"the controller has no such variable"},
    {Trouble::NoSuchFile, 2, u"NoSuchFile", u"the controller has no such file"},
    {Trouble::NoSuchDirectory, 3, u"NoSuchDirectory", u"the controller has no such directory"},
    {Trouble::BadPath, 4, u"BadPath", u"the path names nothing in the controller's file space"},
    {Trouble::FileTrouble, 5, u"FileTrouble", u"the file can't be read or written"},
    {Trouble::NoSuchWatch, 6, u"NoSuchWatch", u"there is no watch of that number"},
    {Trouble::TooLong, 7, u"TooLong", u"the answer is too long for the link"},
    {Trouble::AsWritten, 8, u"AsWritten", u"the scenario says so"},
};

// One element in both arrays: the program's error text leaves out a record with an empty one.
MessageRecord RecordOf(Trouble trouble, TextView sAbout) {
    MessageRecord record;
    record.eMessageType = kErrorClass;
    record.bstrDBModule = kModule;
    for (const TroubleRow& row : kTroubles) {
        if (row.trouble != trouble) continue;
        record.nMessage = row.nNumber;
        record.bstrDBMessage = row.sKey;
        record.bstrCause = row.sWords;
    }
    record.varParams = LinkArray{0, {Text(sAbout)}};
    record.varDBParams = LinkArray{0, {Text(sAbout)}};
    return record;
}

}  // namespace

OperationFailed::OperationFailed(Trouble trouble, TextView sAbout)
    : OperationFailed(RecordOf(trouble, sAbout)) {}

MessageRecord RecordAsWritten(TextView sCause) {
    MessageRecord record = RecordOf(Trouble::AsWritten, sCause);
    record.bstrCause = sCause;
    return record;
}

}  // namespace nomira::simulator
