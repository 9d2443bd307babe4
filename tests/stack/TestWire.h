#pragma once

#include "stack/NetworkNode.h"

#include <gtest/gtest.h>
#include <pcap/pcap.h>

#include <deque>

using namespace mesk::stack;
using namespace std::chrono_literals;

/// An Ethernet whose time stands still but in run().
class TestWire {
public:
    /// What has deadlines.
    struct Clocked {
        std::function<TimePoint()> next;
        std::function<void(TimePoint)> expire;
    };

    NetworkNode::SendFrame port()
    {
        return [this](const QByteArray& frame) {
            EXPECT_TRUE(frame.size() >= 60 && frame.size() <= 1514 && frame.size() % 2 == 0);
            sent.push_back(frame);
            if (!loses || !loses(frame))
                m_underWay.push_back(frame);
        };
    }
    template <typename Thing>
    void add(Thing& thing)
    {
        clocked.push_back(
            {[&thing] { return thing.nextDeadline(); }, [&thing](TimePoint at) { thing.expire(at); }});
    }
    void run(Duration time)
    {
        const TimePoint end = now + time;
        int steps = 0;
        for (deliver(); next() <= end; deliver()) {
            ASSERT_LT(++steps, 100000) << "something is always due";
            now = std::max(now, next());
            for (const Clocked& each : clocked)
                each.expire(now);
        }
        now = end;
    }
    void deliver()
    {
        while (!m_underWay.empty()) {
            const QByteArray frame = m_underWay.front();
            m_underWay.pop_front();
            for (NetworkNode* each : nodes)
                each->receive(frame, now);
        }
    }
    TimePoint next() const
    {
        TimePoint first = never;
        for (const Clocked& each : clocked)
            first = std::min(first, each.next());
        return first;
    }

    TimePoint now{1000s};
    std::function<bool(const QByteArray&)> loses;
    std::vector<NetworkNode*> nodes;
    std::vector<Clocked> clocked;
    std::vector<QByteArray> sent;

private:
    std::deque<QByteArray> m_underWay;
};

struct TestNode : NetworkNode {
    TestNode(TestWire& wire, const MacAddress& mac, const NetAddress& net = {})
        : NetworkNode(mac, wire.port())
    {
        setAddress(net);
        wire.nodes.push_back(this);
        wire.add<NetworkNode>(*this);
    }
};

inline MacAddress macOf(quint8 last)
{
    return {0x02, 0x4b, 0, 0, 0, last};
}
inline IpAddress ip(quint8 last)
{
    return IpAddress(0x0a4d0100U + last);
}
inline NetAddress net(quint8 last)
{
    return {ip(last), 24};
}

/// The frames of a capture, the first one at 1 as other programs count them.
inline std::vector<QByteArray> captured(const std::string& name)
{
    std::vector<QByteArray> frames(1);
    char error[PCAP_ERRBUF_SIZE] = "";
    pcap_t* const pcap = pcap_open_offline((CAPTURES_DIR "/" + name + ".pcap").c_str(), error);
    EXPECT_NE(pcap, nullptr) << error;
    pcap_pkthdr* header = nullptr;
    const u_char* bytes = nullptr;
    while (pcap != nullptr && pcap_next_ex(pcap, &header, &bytes) == 1)
        frames.emplace_back(reinterpret_cast<const char*>(bytes), int(header->caplen));
    if (pcap != nullptr)
        pcap_close(pcap);
    return frames;
}
