// Message log ring and the entry guard that writes into it.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <new>
#include <stdexcept>
#include <string>

#include "runtime/entry_guard.h"
#include "runtime/err_msg.h"

namespace {

class MessageLog : public ::testing::Test {
  protected:
    void SetUp() override { clearErrMsg(); }
    void TearDown() override { clearErrMsg(); }
};

TEST_F(MessageLog, KeepsTextsInOrderAndSurvivesReading) {
    EXPECT_EQ(copyErrMsg("first. "), 7);
    EXPECT_EQ(copyErrMsg(""), 7);  // empty text changes nothing
    copyErrMsg("second.");
    EXPECT_STREQ(getErrMsg(), "first. second.");
    EXPECT_STREQ(getErrMsg(), "first. second.");
    copyErrMsg(" third");
    EXPECT_STREQ(getErrMsg(), "first. second. third");
    clearErrMsg();
    EXPECT_STREQ(getErrMsg(), "");
}

TEST_F(MessageLog, ExactlyFullWrapsToStartAndRotatesOnRead) {
    std::string text(kErrMsgBytes, ' ');
    for (int i = 0; i < kErrMsgBytes; ++i) text[i] = static_cast<char>('a' + i % 26);
    EXPECT_EQ(copyErrMsg(text.c_str()), 0);
    EXPECT_TRUE(g_rkLastErrIsWrap);
    // Oldest first from position 1; the last byte becomes the terminator.
    const std::string got = getErrMsg();
    EXPECT_EQ(got, text.substr(1));
    EXPECT_FALSE(g_rkLastErrIsWrap);
    EXPECT_EQ(g_rkLastErrEnd, kErrMsgBytes - 1);
}

TEST_F(MessageLog, NewestTextOverwritesOldestAfterWrap) {
    std::string filler(kErrMsgBytes - 5, 'x');
    copyErrMsg(filler.c_str());
    copyErrMsg("0123456789");  // 5 bytes at the end, 5 wrapped to the start
    EXPECT_EQ(g_rkLastErrEnd, 5);
    const std::string got = getErrMsg();
    ASSERT_EQ(got.size(), static_cast<size_t>(kErrMsgBytes - 1));
    // Reads from end+1: the x's that survived, then the whole new text.
    EXPECT_EQ(got.substr(got.size() - 10), "0123456789");
    EXPECT_EQ(got.find_first_not_of('x'), got.size() - 10);
    // Appending after the rotation continues at the end, wrapping again. The
    // text a host still holds has lost its terminator, yet stops at the end
    // of the buffer.
    copyErrMsg("Z");
    EXPECT_TRUE(g_rkLastErrIsWrap);
    EXPECT_EQ(g_rkLastErrEnd, 0);
    EXPECT_EQ(std::strlen(g_rkLastErrMsg_p), static_cast<size_t>(kErrMsgBytes));
}

// Every failure the guard sees leaves the entry's line after whatever text
// the failure kind calls for; a success leaves the log empty.
TEST_F(MessageLog, GuardMapsEveryFailureKind) {
    const std::string oom = kOutOfMemoryText;
    struct Case {
        std::function<int()> body;
        UnknownFailureText unknown;
        int result;
        std::string log;
    };
    const Case cases[] = {
        {[] { return 1; }, UnknownFailureText::Unknown, 1, ""},
        {[]() -> int { throw 121; }, UnknownFailureText::Unknown, 121,
         "\nentry: result 121, the direct solver's analysis failed\n"},
        {[]() -> int { throw -5; }, UnknownFailureText::Unknown, -5,
         "\nentry: result -5, not enough keep and cut strokes to compute\n"},
        {[]() -> int { throw 77; }, UnknownFailureText::Unknown, 77,
         "\nentry: result 77, an undocumented failure\n"},
        {[]() -> int { throw std::bad_alloc(); }, UnknownFailureText::Unknown, -6,
         oom + "\nentry: result -6, out of memory or an unexpected failure\n"},
        {[]() -> int { throw RkBase::RKRC(); }, UnknownFailureText::Unknown, -6,
         oom + "\nentry: result -6, out of memory or an unexpected failure\n"},
        {[]() -> int { throw std::runtime_error("x"); }, UnknownFailureText::Unknown, -6,
         "Unknown Engine Error.\nentry: result -6, out of memory or an unexpected failure\n"},
        {[]() -> int { throw "CProgMsg - done "; }, UnknownFailureText::OutOfMemory, -6,
         oom + "\nentry: result -6, out of memory or an unexpected failure\n"},
    };
    for (const Case& c : cases) {
        clearErrMsg();
        EXPECT_EQ(rkGuardEntry("entry", c.body, c.unknown), c.result);
        EXPECT_EQ(std::string(getErrMsg()), c.log);
    }
}

TEST_F(MessageLog, GuardFreesLocalsOnEveryPath) {
    static int alive = 0;
    struct Tracked {
        Tracked() { ++alive; }
        ~Tracked() { --alive; }
    };
    rkGuardEntry("entry", []() -> int {
        Tracked a, b;
        throw 102;
    });
    EXPECT_EQ(alive, 0);
}

}  // namespace
