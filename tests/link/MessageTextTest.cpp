#include "link/MessageText.h"

#include <limits>

#include "langtools/RuntimeError.h"
#include "testing/Raised.h"
#include "testing/TextPrinting.h"

namespace nomira {
namespace {

using testing::Raised;

MessageRecord Sample() {
    MessageRecord record;
    record.nMessageHandle = 7;
    record.bstrCause = u"x";
    record.bstrDBMessage = u"m";
    record.bstrDBModule = u"Mod";
    record.eMessageType = 2;
    record.nBiasTimeStamp = 60;
    record.nHighTimeStamp = 2;
    record.nLowTimeStamp = 1;
    record.nMessage = 3;
    record.varParams = LinkArray{0, {u"p"}};
    return record;
}

TEST(MessageTextTest, FieldsAndParametersStandBehindCommas) {
    EXPECT_EQ(MessageText(Sample()), u"7,False,x,m,Mod,2,60,2,1,3,0=p");
}

TEST(MessageTextTest, ParametersKeepTheIndexesOfTheirArrays) {
    MessageRecord record = Sample();
    record.bDBCause = true;
    record.varParams = LinkArray{-1, {u"p", u"", u"q,r"}};
    record.varDBParams = LinkArray{5, {u"c"}};
    EXPECT_EQ(MessageText(record), u"7,True,x,m,Mod,2,60,2,1,3,-1=p,0=,1=q,r,5=c");
}

TEST(MessageTextTest, ValueThatIsNoArrayAddsNothing) {
    MessageRecord record = Sample();
    for (const LinkValue& value : {LinkValue(), LinkValue(u"text"), LinkValue(LinkArray{})}) {
        record.varParams = value;
        record.varDBParams = LinkArray{0, {u"c"}};
        EXPECT_EQ(MessageText(record), u"7,False,x,m,Mod,2,60,2,1,3,0=c");
    }
}

TEST(MessageTextTest, NumbersAreDecimalWithTheirSign) {
    MessageRecord record;
    record.nMessageHandle = std::numeric_limits<std::int32_t>::min();
    record.nLowTimeStamp = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(MessageText(record), u"-2147483648,False,,,,0,0,0,2147483647,0");
}

TEST(FailureTextTest, EveryFieldStandsBehindItsLabel) {
    MessageRecord record = Sample();
    record.varDBParams = LinkArray{1, {u"c", u"d"}};
    EXPECT_EQ(FailureText(record),
              u"Error: bDBCause=False , bstrCause=x , bstrDBMessage=m , bstrDBModule=Mod"
              u" , eMessageType=2 , nBiasTimeStamp=60 , nHighTimeStamp=2 , nLowTimeStamp=1"
              u" , nMessage=3 , nMessageHandle=7"
              u" , varParams(0) =p , varDBParams(1) =c , varDBParams(2) =d");
}

TEST(FailureTextTest, CauseOfTheDatabaseIsTrue) {
    MessageRecord record = Sample();
    record.bDBCause = true;
    record.varDBParams = LinkArray{0, {u"c"}};
    EXPECT_TRUE(FailureText(record).starts_with(u"Error: bDBCause=True , bstrCause=x"));
}

TEST(FailureTextTest, EmptyArrayOrNoArrayGivesNoText) {
    MessageRecord record = Sample();
    record.varDBParams = LinkArray{0, {u"c"}};
    EXPECT_EQ(Raised([&] { FailureText(record); }), std::nullopt);
    record.varDBParams = LinkArray{};
    EXPECT_EQ(Raised([&] { FailureText(record); }), ErrorNumber::SubscriptOutOfRange);
    record.varDBParams = u"text";
    EXPECT_EQ(Raised([&] { FailureText(record); }), ErrorNumber::TypeMismatch);
    record.varDBParams = LinkArray{0, {u"c"}};
    record.varParams = LinkArray{};
    EXPECT_EQ(Raised([&] { FailureText(record); }), ErrorNumber::SubscriptOutOfRange);
}

}  // namespace
}  // namespace nomira
