#include "host/RelayDirection.h"
#include "host/OutgoingFrame.h"
#include "support/platform/os/Clock.h"

#include <gtest/gtest.h>

using mesk::host::OutgoingFrame;
using mesk::host::RelayDirection;
namespace os = kivo::templates::platform::os;

namespace {

// The tests' clock: sleeps take no time.

const OutgoingFrame frame = mesk::host::prepareFrame(QByteArray(60, 'a'));

TEST(RelayDirection, givesUpAfterSilencesInARow)
{
    RelayDirection direction;
    const auto silence = [&direction] {
        EXPECT_TRUE(direction.sending(frame));
        EXPECT_FALSE(direction.endedAtSilence()) << "not silent for long yet";
        os::sleepMs(RelayDirection::silenceMaxMs);
        return direction.endedAtSilence();
    };
    EXPECT_FALSE(silence());
    EXPECT_FALSE(silence());
    EXPECT_TRUE(direction.sending(frame));
    direction.arrived(frame.onWire()); // so the count starts anew
    EXPECT_FALSE(silence());
    EXPECT_FALSE(silence());
    EXPECT_FALSE(direction.gaveUp());
    EXPECT_TRUE(silence());
    EXPECT_TRUE(direction.gaveUp());
    EXPECT_EQ(direction.counts().sent, 6U);
    EXPECT_EQ(direction.counts().received, 1U);
    EXPECT_EQ(direction.counts().lost, 5U);
    EXPECT_FALSE(direction.counts().good());
}

} // namespace
