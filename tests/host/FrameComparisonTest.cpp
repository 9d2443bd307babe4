#include "host/FrameComparison.h"
#include "host/OutgoingFrame.h"

#include <gtest/gtest.h>

#include <ostream>

using namespace mesk::host;

namespace {

/// Frames are letters: what is sent, what of it arrives, and what that counts as.
struct Course {
    const char* name;
    const char* sent;
    const char* arrived;
    std::uint64_t different;
    std::uint64_t lost;
};
void PrintTo(const Course& course, std::ostream* out)
{
    *out << course.name;
}

class FrameComparisonCourse : public testing::TestWithParam<Course> {};

QByteArray frameOf(char letter)
{
    return QByteArray(60, letter);
}

TEST_P(FrameComparisonCourse, countsEachFrameOnce)
{
    const Course& course = GetParam();
    const std::string sent = course.sent;
    const std::string arrived = course.arrived;
    FrameComparison comparison;
    for (const char letter : sent) {
        comparison.expect(frameOf(letter));
    }
    for (const char letter : arrived) {
        comparison.arrived(frameOf(letter));
    }
    comparison.giveUp();
    EXPECT_EQ(comparison.received(), arrived.size());
    EXPECT_EQ(comparison.receivedBytes(), 60 * arrived.size());
    EXPECT_EQ(comparison.different(), course.different);
    EXPECT_EQ(comparison.lost(), course.lost);
    EXPECT_EQ(comparison.outstanding(), 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Courses, FrameComparisonCourse,
    testing::Values(Course{"nothing", "", "", 0, 0}, Course{"all", "abcd", "abcd", 0, 0},
                    Course{"likeFramesStayApart", "aaab", "aab", 0, 1},
                    Course{"firstLost", "abcd", "bcd", 0, 1}, Course{"middleLost", "abcd", "ad", 0, 2},
                    Course{"lastLost", "abcd", "abc", 0, 1}, Course{"noneArrives", "abcd", "", 0, 4},
                    Course{"oneChanged", "abcd", "aXcd", 1, 0}, Course{"lastChanged", "abcd", "abcX", 1, 0},
                    Course{"allChanged", "abc", "XYZ", 3, 0},
                    Course{"oneChangedOneLost", "abcd", "Xcd", 1, 1},
                    Course{"lostThenChanged", "abcde", "adX", 1, 2}, Course{"swapped", "abcd", "bacd", 1, 1},
                    Course{"oneTooMany", "ab", "abX", 1, 0}, Course{"strayInBetween", "abcd", "aXbcd", 1, 0},
                    Course{"twice", "abc", "aabc", 1, 0}),
    [](const auto& each) { return std::string(each.param.name); });

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
