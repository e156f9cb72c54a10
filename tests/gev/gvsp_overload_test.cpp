// A host that cannot take all of a stream: what is left out is left out as whole blocks, in the parser's plan
// and in the kernel. The overload runs in simulated time, with a queue that drops what does not fit.
#include "gev/receive/BlockFilter.h"
#include "gev/receive/StreamSocket.h"
#include "support/GvspLab.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <cmath>
#include <deque>
#include <netinet/in.h>
#include <sys/socket.h>

namespace VX3::Test {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;

// A camera that sends a packet every `arrival`, a host that takes one every `service`, and a queue between.
struct Host {
    nanoseconds arrival;
    nanoseconds service;
    std::size_t room;     // packets
    double stall = 0;     // milliseconds without service ...
    double stallEach = 0; // ... every so many
};

double WholeShare(const Host& host, std::uint32_t frames, std::uint64_t& leftOut) {
    LabShape shape; // 686 packets
    shape.redirect = false;
    GvspLab lab(shape);
    GvspParserImageA& parser = lab.Parser();
    struct Waiting {
        nanoseconds at;
        std::uint32_t block, packet;
    };
    std::deque<Waiting> answers; // of the camera, on their way
    std::deque<Waiting> queue;   // the socket's
    bool overrun = false;
    nanoseconds now{0}, free{0}, tick{0};
    const auto arrive = [&](std::uint32_t block, std::uint32_t packet) {
        if (packet != 0 && !parser.Admission().Takes(block))
            return; // by the filter
        if (queue.size() < host.room)
            queue.push_back({now, block, packet});
        else
            overrun = true;
    };
    const auto serve = [&] {
        WireRoom next;
        while (!queue.empty() && std::max(free, queue.front().at) + host.service <= now) {
            const Waiting first = queue.front();
            queue.pop_front();
            free = std::max(free, first.at) + host.service;
            const Datagram datagram = lab.Make(first.block, first.packet);
            (void)parser.HandlePacket(datagram.data(), datagram.size(), next, lab.Now());
        }
        if (queue.empty())
            parser.NoteDrained(lab.Now());
        GvspResendInfo info;
        while (parser.GetResendInfo(info, lab.Now()))
            for (std::uint32_t id = info.firstPacketId; id <= info.lastPacketId; ++id)
                answers.push_back({now + microseconds(300), info.blockId, id});
    };
    const auto step = [&](nanoseconds time) {
        now += time;
        lab.Pass(std::chrono::duration_cast<microseconds>(now) -
                 std::chrono::duration_cast<microseconds>(now - time));
        while (!answers.empty() && answers.front().at <= now) {
            arrive(answers.front().block, answers.front().packet);
            answers.pop_front();
        }
        if (host.stallEach > 0 &&
            std::fmod(std::chrono::duration<double, std::milli>(now).count(), host.stallEach) < host.stall) {
            free = now;
            return;
        }
        serve();
        if (now - tick >= milliseconds(1) || parser.IsGated()) {
            tick = now;
            const double fill = static_cast<double>(queue.size()) / static_cast<double>(host.room);
            parser.Observe({fill, static_cast<double>(queue.size()) / 686, overrun}, lab.Now());
            if (overrun)
                parser.NoteOverrun(lab.Now());
            overrun = false;
        }
    };
    for (std::uint32_t block = 1; block <= frames; ++block)
        for (std::uint32_t id = 0; id <= shape.TrailerId(); ++id) {
            step(host.arrival);
            arrive(block, id);
        }
    WireRoom next;
    for (int i = 0; i < 200; ++i) {
        step(milliseconds(1));
        parser.CheckSilence(next, lab.Now());
    }
    leftOut = lab.Counts().leftOutBlocks;
    std::uint32_t whole = 0;
    for (const LabImage& image : lab.Images())
        whole += image.lost == 0 && image.intact;
    return static_cast<double>(whole) / frames;
}

TEST(GvspOverload, WholeFramesComeThroughWhateverTheOverload) {
    std::uint64_t leftOut = 0;
    for (const double load : {1.05, 1.3, 2.0, 5.0}) {
        const auto arrival = nanoseconds(3000);
        const auto service = nanoseconds(static_cast<long>(3000 * load));
        EXPECT_GT(WholeShare({arrival, service, 3000}, 300, leftOut), 0.6 / load) << load;
        EXPECT_GT(leftOut, 0U) << load;
    }
}

TEST(GvspOverload, ABusyHostThatKeepsUpLeavesNothingOut) {
    std::uint64_t leftOut = 0;
    // One and a half milliseconds in ten the thread does not run, and the queue holds one.
    const Host stalled{nanoseconds(4000), nanoseconds(2000), 250, 1.5, 10};
    EXPECT_GT(WholeShare(stalled, 300, leftOut), 0.97);
    EXPECT_EQ(leftOut, 0U);
}

TEST(GvspOverload, AStreamThatSlowsDownIsTakenWholeAgain) {
    GvspAdmission admission;
    auto now = GvspAdmission::TimePoint(std::chrono::seconds(10));
    std::uint32_t block = 0;
    const auto pass = [&](unsigned count, const GvspAdmission::Load& load) {
        for (unsigned i = 0; i < count; ++i) {
            now += milliseconds(1);
            (void)admission.SeeLeader(++block);
            admission.NoteBlock(true);
            admission.Observe(load, now);
            (void)admission.BeginRun(true, now);
        }
    };
    pass(20, {0.9, 1, true});
    ASSERT_TRUE(admission.IsGated());
    EXPECT_TRUE(admission.Takes(block - 5)) << "what was in flight before";
    pass(60, {0.2, 0.1, false});
    EXPECT_FALSE(admission.IsGated());
    pass(20, {0.9, 1, true});
    ASSERT_TRUE(admission.IsGated());
    now += milliseconds(600);
    admission.Observe({}, now);
    EXPECT_FALSE(admission.IsGated()) << "a stream that has stopped closes no gate";
}

TEST(BlockFilter, TheKernelQueuesAdmittedBlocksAndEveryLeader) {
    StreamSocket socket;
    ASSERT_EQ(socket.Open(0x7F000001), Status::Ok);
    const UniqueFd sender(::socket(AF_INET, SOCK_DGRAM, 0));
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    to.sin_port = htons(static_cast<std::uint16_t>(socket.Port()));
    for (const bool extended : {false, true}) {
        LabShape shape;
        shape.extended = extended;
        const GvspLab lab(shape);
        GvspAdmission admission;
        admission.SetOrder(GvspBlockOrder(extended));
        auto now = GvspAdmission::TimePoint(std::chrono::seconds(10));
        const std::uint32_t newest = extended ? 70000 : 65530;
        for (int i = 0; i < 20; ++i)
            (void)admission.SeeLeader(newest), admission.Observe({1, 2, true}, now += milliseconds(1));
        ASSERT_TRUE(admission.IsGated());
        const GvspBlockOrder order(extended);
        const auto from = [&](std::int64_t steps) {
            const std::int64_t id = static_cast<std::int64_t>(newest) + steps;
            return static_cast<std::uint32_t>(extended || id <= 0xFFFF ? id : id - 0xFFFF);
        };
        const std::uint32_t later = from(40); // a leader of a block that is left out
        (void)admission.SeeLeader(later);
        ASSERT_TRUE(admission.BeginRun(true, now));
        ASSERT_EQ(admission.Current().first, order.Next(later));

        BlockFilter filter(socket.Descriptor());
        filter.Follow(admission, extended);
        for (std::int64_t steps = -90; steps <= 60; ++steps) {
            const std::uint32_t block = from(steps);
            for (const std::uint32_t packet : {0U, 3U, shape.TrailerId()}) {
                const Datagram datagram = lab.Make(block, packet);
                ASSERT_GT(::sendto(sender.Get(), datagram.data(), datagram.size(), 0,
                                   reinterpret_cast<const sockaddr*>(&to), sizeof(to)),
                          0);
                std::array<char, 2048> buffer{};
                const bool queued =
                    ::recv(socket.Descriptor(), buffer.data(), buffer.size(), MSG_DONTWAIT) > 0;
                // Where ids wrap the kernel's arithmetic counts an id 0, which no block has.
                if (!extended && (block == order.Next(later) + 3 || block == 1))
                    continue;
                EXPECT_EQ(queued, packet == 0 || admission.Takes(block)) << block << "." << packet;
            }
        }
    }
}

} // namespace
} // namespace VX3::Test
