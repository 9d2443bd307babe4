#include "host/FrameComparison.h"
#include "host/OutgoingFrame.h"

#include <gtest/gtest.h>

using namespace mesk::host;

namespace {

/// Frames are letters: what is sent, what of it arrives, and what that counts as.
struct Course {
    std::string sent;
    std::string arrived;
    std::uint64_t different;
    std::uint64_t lost;
};

QByteArray frameOf(char letter)
{
    return QByteArray(60, letter);
}

TEST(FrameComparison, countsEachFrameOnce)
{
    const Course courses[] = {
        {"", "", 0, 0},         {"abcd", "abcd", 0, 0}, {"aaab", "aab", 0, 1},   {"abcd", "bcd", 0, 1},
        {"abcd", "ad", 0, 2},   {"abcd", "abc", 0, 1},  {"abcd", "", 0, 4},      {"abcd", "aXcd", 1, 0},
        {"abcd", "abcX", 1, 0}, {"abc", "XYZ", 3, 0},   {"abcd", "Xcd", 1, 1},   {"abcde", "adX", 1, 2},
        {"abcd", "bacd", 1, 1}, {"ab", "abX", 1, 0},    {"abcd", "aXbcd", 1, 0}, {"abc", "aabc", 1, 0}};
    for (const Course& course : courses) {
        SCOPED_TRACE(course.sent + " -> " + course.arrived);
        FrameComparison comparison;
        for (const char letter : course.sent) {
            comparison.expect(frameOf(letter));
        }
        for (const char letter : course.arrived) {
            comparison.arrived(frameOf(letter));
        }
        comparison.giveUp();
        EXPECT_EQ(comparison.received(), course.arrived.size());
        EXPECT_EQ(comparison.receivedBytes(), 60 * course.arrived.size());
        EXPECT_EQ(comparison.different(), course.different);
        EXPECT_EQ(comparison.lost(), course.lost);
        EXPECT_EQ(comparison.outstanding(), 0U);
    }
}

struct Size {
    int captured;
    bool filledUp;
    bool madeEven;
    bool refused;
    int onWire;
};

TEST(OutgoingFrame, isWhatTheTransmitterCanTake)
{
    const Size sizes[] = {{0, false, false, true, 0},       {13, false, false, true, 0},
                          {14, true, false, false, 60},     {59, true, false, false, 60},
                          {60, false, false, false, 60},    {61, false, true, false, 62},
                          {1517, false, true, false, 1518}, {1518, false, false, false, 1518},
                          {1519, false, false, true, 0},    {65535, false, false, true, 0}};
    for (const Size& size : sizes) {
        const QByteArray captured(size.captured, 'x');
        const OutgoingFrame frame = prepareFrame(captured);
        EXPECT_EQ(frame.filledUp, size.filledUp) << size.captured;
        EXPECT_EQ(frame.madeEven, size.madeEven) << size.captured;
        EXPECT_EQ(frame.refused, size.refused) << size.captured;
        if (!frame.refused) {
            const QByteArray zeros(size.onWire - size.captured, '\0');
            EXPECT_EQ(frame.onWire(), captured + zeros) << size.captured;
        }
    }
    QByteArray tagged(17, 'x');
    tagged.replace(12, 2, QByteArray::fromHex("8100"));
    EXPECT_TRUE(prepareFrame(tagged).refused) << "cut inside the tag";
    EXPECT_FALSE(prepareFrame(tagged + "x").refused);
}

} // namespace
