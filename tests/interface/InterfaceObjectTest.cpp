#include "interface/AnyException.h"
#include "interface/PhysicalNetworkInterfaceEventQueue.h"
#include "interface/PniActionCommandTimeout.h"
#include "tests/interface/PortFixture.h"

using kivo::core::mesk::PhysicalNetworkInterfaceEvent;
using kivo::templates::platform::SynchronizedQueueInterruptException;

class InterfaceObject : public mesk::tests::PortFixture {};

TEST_F(InterfaceObject, freshOneTouchesNoBoard)
{
    EXPECT_EQ(journalOf([] {
                  mesk::tests::Interface port;
                  EXPECT_FALSE(port.supportsCrcGenerationControl());
                  port.setCrcGenerationDisabled(true);
                  EXPECT_FALSE(port.isCrcGenerationDisabled());
                  port.startWorkers();
                  port.requestStop();
              }),
              "");
}

TEST_F(InterfaceObject, propertyOfAnotherTypeIsRefusedAndKeepsItsValue)
{
    const auto port = makePort(2);
    const auto message = testing::StrEq("boost::bad_any_cast: failed conversion using boost::any_cast");
    for (const char* key : {"boardId", "portId", "resetBoard"}) {
        for (const boost::any& wrong : {boost::any(), boost::any(1U), boost::any(1LL), boost::any("false")}) {
            EXPECT_THAT([&] { port->injectDependency(key, wrong); },
                        testing::ThrowsMessage<AnyException>(message));
        }
    }
    EXPECT_NO_THROW(port->injectDependency("boardid", 7U));
    port->open();
    EXPECT_EQ(log.texts(3).front(), "PHY Id 'p': Selecting kivo board 0 port 2");
}

TEST_F(InterfaceObject, onlyTheExactTextLeavesTheBoardUnreset)
{
    mesk::tests::Interface port;
    for (const char* text : {"False", "false ", "0", "", "false", "true"}) {
        port.injectDependency("resetBoard", std::string(text));
        const auto before = mesk::tests::TestClock::sleptMs();
        EXPECT_TRUE(port.open());
        EXPECT_EQ(mesk::tests::TestClock::sleptMs() == before, std::string(text) == "false" || *text == 't');
        port.requestStop();
    }
}

TEST_F(InterfaceObject, crcGenerationIsSwitchedWhereTheFirmwareCan)
{
    const auto port = openPort(1);
    EXPECT_TRUE(port->supportsCrcGenerationControl());
    EXPECT_EQ(journalOf([&] { port->setCrcGenerationDisabled(true); }), "GigeTxDisableCrcGeneration1 = 1\n");
    EXPECT_TRUE(port->open()) << "writes the register and leaves the flag";
    EXPECT_TRUE(port->isCrcGenerationDisabled());
    board.failCall(1);
    port->setCrcGenerationDisabled(false);
    EXPECT_FALSE(port->isCrcGenerationDisabled()) << "follows the request";

    setFirmware(2, 3);
    const auto without = openPort(2);
    EXPECT_EQ(journalOf([&] { without->setCrcGenerationDisabled(true); }), "");
    EXPECT_FALSE(without->isCrcGenerationDisabled());
}

TEST_F(InterfaceObject, eventQueueOutlivesItAndStaysInterrupted)
{
    auto port = makePort(0);
    const auto events = port->eventQueue();
    events->postActionCommandTimeout(1); // not enabled, so dropped
    events->enabled = true;
    events->postActionCommandTimeout(0xFFFF);
    boost::shared_ptr<PhysicalNetworkInterfaceEvent> event;
    ASSERT_TRUE(events->queue->tryPop(event));
    EXPECT_EQ(event->type, 8U);
    EXPECT_EQ(dynamic_cast<kivo::core::mesk::PniActionCommandTimeout&>(*event).count, 0xFFFF);

    port->requestStop();
    port.reset();
    EXPECT_THROW(events->queue->pop(event), SynchronizedQueueInterruptException);
}
