// Frames of cameras behind a producer: in place or copied, for one user or two, whatever the producer gets
// wrong.
#include "device/StopForOne.h"
#include "gentl/GenTLRemotableStream.h"
#include "support/LogCapture.h"
#include "support/ProducerLab.h"
#include "support/Threads.h"
#include "vx3/core/LastFailure.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <set>

namespace VX3::Test {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

// Counts frames and judges their pixels, which are their place plus the frame's number.
struct Frames {
    ImageCallback Callback() {
        return [this](const std::shared_ptr<IImage>& image, IDevice*, unsigned int, unsigned int, void*) {
            const ImageInfo& info = *image->GetImageInfo();
            last = info;
            const std::uint32_t frame = info.timestampLow / 1000;
            for (std::uint32_t i = 0; i < info.ImageDataSize(); ++i)
                wrong += image->GetImageBuff()[i] != static_cast<unsigned char>(i + frame) ? 1U : 0U;
            incomplete += info.lostPackets != 0 ? 1 : 0;
            outOfOrder += info.blockId <= newest ? 1 : 0;
            newest = static_cast<std::uint32_t>(info.blockId);
            MutexLock lock(mutex);
            buffers.insert(image->GetImageBuff());
            ++count;
        };
    }
    bool Reach(int wanted) {
        return Eventually([&] { return count >= wanted; });
    }

    std::atomic<int> count{0};
    std::atomic<unsigned int> wrong{0};
    std::atomic<int> incomplete{0};
    std::atomic<int> outOfOrder{0};
    std::atomic<std::uint32_t> newest{0};
    ImageInfo last; // read when the stream is closed
    Mutex mutex;
    std::set<const unsigned char*> buffers;
};

// A connected camera of a producer with the given faults, and its stream.
struct Streaming {
    explicit Streaming(const ProducerSettings& settings = {}) : lab(settings), camera(lab.Camera()) {
        EXPECT_EQ(camera->Connect(), Status::Ok);
        stream = dynamic_cast<GenTLRemotableStream*>(camera->GetStream(0));
    }
    StatusCode Run(unsigned int buffers = 4) {
        StatusCode status = stream->Open(buffers, nullptr);
        if (!Failed(status))
            status = stream->Start(frames.Callback(), nullptr, 0, nullptr);
        return status;
    }
    // Whether every frame lay where the producer had put it.
    bool AllAnnounced() {
        MutexLock lock(frames.mutex);
        return std::all_of(frames.buffers.begin(), frames.buffers.end(),
                           [&](const void* memory) { return lab.Producer().WasAnnounced(memory); });
    }
    void End() {
        EXPECT_EQ(stream->Stop(), Status::Ok);
        EXPECT_EQ(stream->Close(), Status::Ok);
    }

    GenTLLab lab;
    std::shared_ptr<GenTLRemotableDevice> camera;
    GenTLRemotableStream* stream = nullptr;
    Frames frames;
};

TEST(GenTLStream, HandsFramesOnInPlace) {
    LogCapture log;
    for (const char* stacked : {"0", "1"}) {
        Streaming run(ProducerSettings{{"stacked", stacked}, {"frames.ms", "2"}});
        ASSERT_EQ(run.Run(3), Status::Ok);
        EXPECT_EQ(run.lab.Producer().Calls("DSAnnounceBuffer"), 3);
        ASSERT_TRUE(run.frames.Reach(50));
        EXPECT_EQ(run.stream->Stop(), Status::Ok);
        EXPECT_TRUE(run.AllAnnounced());
        EXPECT_EQ(run.stream->Close(), Status::Ok);
        EXPECT_EQ(run.frames.wrong, 0U);
        EXPECT_EQ(run.frames.outOfOrder, 0);
        const ImageInfo& info = run.frames.last;
        EXPECT_EQ(std::tuple(info.width, info.height, info.pixelFormat, info.timestampHigh, info.lostPackets),
                  std::tuple(64U, 48U, std::uint32_t{Mono8}, 1U, 0U));
        EXPECT_EQ(info.blockId, info.timestampLow / 1000) << "the low 32 bits of the frame's number";
        const Statistics statistics = static_cast<const IStream*>(run.stream)->GetStatistics();
        EXPECT_GE(statistics.blocks, 50U);
        EXPECT_EQ(std::tuple(statistics.incompleteBlocks, statistics.reserved), std::tuple(0U, 1U));
        EXPECT_GE(run.lab.Producer().Calls("DSAnnounceBuffer"), 53) << "a fresh one for each";
        EXPECT_EQ(run.lab.Producer().Calls("DSRevokeBuffer"), run.lab.Producer().Calls("DSAnnounceBuffer"));
    }
    for (const char* text :
         {"Info: Ready to allocate 3 buffers for streaming...",
          "Info: Ready to create buffer with size 3072...",
          "Info: Buffer created, now to gentlApi->pDSAnnounceBuffer...",
          "Info: gentlApi->pDSAnnounceBuffer OK, now to gentlApi->pDSQueueBuffer...",
          "Info: gentlApi->pDSQueueBuffer OK", "Info: Ready to gentlApi->pDSStopAcquisition...",
          "Info: gentlApi->pDSStopAcquisition OK", "Debug: Enter GenTLStream receiving thread...",
          "Debug: GenTLStream::ReceivingThread exited..."})
        EXPECT_TRUE(Eventually([&] { return log.Has(text); })) << text;
    EXPECT_EQ(log.Count("Error: "), 0U);
}

TEST(GenTLStream, CopiesWhereBuffersAreNotGivenBack) {
    LogCapture log;
    Streaming busy(ProducerSettings{{"revoke.busy", "1"}, {"frames.ms", "2"}});
    ASSERT_EQ(busy.Run(), Status::Ok);
    ASSERT_TRUE(busy.frames.Reach(30));
    EXPECT_EQ(busy.stream->Stop(), Status::Ok);
    EXPECT_FALSE(busy.AllAnnounced()) << "these are copies";
    EXPECT_EQ(busy.stream->Close(), Status::Ok);
    EXPECT_EQ(busy.frames.wrong, 0U);
    EXPECT_EQ(busy.lab.Producer().Calls("DSAnnounceBuffer"), 4);
    EXPECT_TRUE(Eventually([&] { return log.Count("pDSRevokeBuffer Error, not supported?") == 1; }));

    Streaming own(ProducerSettings{{"fail.DSAnnounceBuffer", "-1013"}, {"frames.ms", "2"}});
    ASSERT_EQ(own.Run(), Status::Ok) << "memory of the producer's own";
    ASSERT_TRUE(own.frames.Reach(30));
    own.End();
    EXPECT_EQ(own.frames.wrong, 0U);
    EXPECT_EQ(own.lab.Producer().Calls("DSAllocAndAnnounceBuffer"), 4);
    EXPECT_TRUE(Eventually([&] { return log.Has("pDSAnnounceBuffer & pDSQueueBuffer err with:-1013"); }));
}

TEST(GenTLStream, AnnouncesAsManyBuffersAsThereMustBe) {
    const auto announced = [](const char* minimum, unsigned int wanted) {
        Streaming run(ProducerSettings{{"minimum", minimum}});
        EXPECT_EQ(run.stream->Open(wanted, nullptr), Status::Ok);
        return run.lab.Producer().Calls("DSAnnounceBuffer");
    };
    EXPECT_EQ(announced("4", 3), 6);
    EXPECT_EQ(announced("0", 2), 3);
    EXPECT_EQ(announced("1", 9), 9);
    EXPECT_EQ(announced("4000000000000", 2), 3) << "which is not believed";
}

TEST(GenTLStream, WithoutAPayloadSizeIsOpenedLater) {
    Streaming run(ProducerSettings{{"payload", "0"}, {"fail.DSGetInfo", "-1003"}, {"portname", ""}});
    const std::uint32_t none = 0;
    ASSERT_EQ(run.camera->WritePort(0x100, reinterpret_cast<const unsigned char*>(&none), 4), 4);
    EXPECT_EQ(run.stream->Open(3, nullptr), Status::NotFound);
    EXPECT_NE(LastFailure().text.find("the size of a frame"), std::string::npos);
    EXPECT_EQ(run.lab.Producer().Calls("DSClose"), 1);
    EXPECT_EQ(run.stream->Start(run.frames.Callback(), nullptr, 0, nullptr), Status::NotAvailable);
    EXPECT_EQ(run.stream->Close(), Status::Ok);
    const std::uint32_t width = 64;
    ASSERT_EQ(run.camera->WritePort(0x100, reinterpret_cast<const unsigned char*>(&width), 4), 4);
    run.lab.Producer().Set("payload", "3072");
    EXPECT_EQ(run.Run(), Status::Ok) << "the camera's feature tells it now";
    EXPECT_TRUE(run.frames.Reach(3));
    run.End();
}

TEST(GenTLStream, GrowsWithTheFrames) {
    Streaming run(ProducerSettings{{"frames.ms", "2"}});
    ASSERT_EQ(run.Run(), Status::Ok);
    ASSERT_TRUE(run.frames.Reach(5));
    ASSERT_EQ(run.stream->Stop(), Status::Ok);
    ASSERT_EQ(run.camera->GetConfigurer()->SetNodeValue("Width", 640), Status::Ok);
    const int before = run.frames.count;
    ASSERT_EQ(run.stream->Start(run.frames.Callback(), nullptr, 0, nullptr), Status::Ok);
    ASSERT_TRUE(run.frames.Reach(before + 10));
    run.End();
    EXPECT_EQ(run.frames.last.width, 640U);
    EXPECT_EQ(run.frames.wrong, 0U);
}

TEST(GenTLStream, MarksIncompleteFrames) {
    Streaming run(ProducerSettings{{"incomplete", "2"}, {"frames.ms", "2"}, {"odd.type", "1"}});
    ASSERT_EQ(run.Run(), Status::Ok);
    ASSERT_TRUE(run.frames.Reach(20));
    run.End();
    EXPECT_NEAR(run.frames.incomplete, run.frames.count / 2.0, 1.0);
    EXPECT_NEAR(static_cast<double>(run.stream->GetStatistics()->incompleteBlocks), run.frames.count / 2.0,
                1.0);
}

// A producer may say anything; the frame is then what can be true of it.
TEST(GenTLStream, BelievesNoGeometryThatDoesNotFit) {
    using Names = GenTL::BUFFER_INFO_CMD;
    const auto last = [](const ProducerSettings& settings) {
        Streaming run(settings);
        EXPECT_EQ(run.Run(), Status::Ok);
        EXPECT_TRUE(run.frames.Reach(3));
        run.End();
        return run.frames.last;
    };
    const auto value = [](Names command, const char* text) {
        return std::pair<const std::string, std::string>("value." + std::to_string(command), text);
    };
    const auto error = [](Names command, const char* text) {
        return std::pair<const std::string, std::string>("info." + std::to_string(command), text);
    };
    for (const auto& lie :
         {value(Names::BUFFER_INFO_WIDTH, "4000000000"), value(Names::BUFFER_INFO_HEIGHT, "-1"),
          value(Names::BUFFER_INFO_XPADDING, "70000"), value(Names::BUFFER_INFO_IMAGEOFFSET, "9"),
          value(Names::BUFFER_INFO_PAYLOADTYPE, "5"), value(Names::BUFFER_INFO_HEIGHT, "49")}) {
        const ImageInfo info = last({lie});
        EXPECT_EQ(std::tuple(info.pixelFormat, info.height), std::tuple(std::uint32_t{RawBlock}, 3072U))
            << lie.first;
    }
    EXPECT_EQ(last({value(Names::BUFFER_INFO_PAYLOADTYPE, "5")}).imageType, 6U) << "JPEG";
    EXPECT_EQ(last({value(Names::BUFFER_INFO_SIZE_FILLED, "100")}).lostPackets, 1U);
    EXPECT_EQ(last({value(Names::BUFFER_INFO_XOFFSET, "16")}).offsetX, 16U);
    const ImageInfo left =
        last({error(Names::BUFFER_INFO_WIDTH, "-1003"), error(Names::BUFFER_INFO_HEIGHT, "-1014"),
              error(Names::BUFFER_INFO_PIXELFORMAT, "-1009"), error(Names::BUFFER_INFO_NEW_DATA, "-1003")});
    EXPECT_EQ(std::tuple(left.width, left.height, left.pixelFormat),
              std::tuple(64U, 48U, std::uint32_t{Mono8}))
        << "what the producer leaves to the camera's features";
    Streaming huge(ProducerSettings{{"payload", "9223372036854775000"}});
    EXPECT_EQ(huge.stream->Open(3, nullptr), Status::NoBuffer);
}

TEST(GenTLStream, EventsThatGoWrongAreSaidAndDoNotSpin) {
    LogCapture log;
    Streaming run(ProducerSettings{{"twice", "3"}, {"late", "1"}, {"frames.ms", "2"}});
    ASSERT_EQ(run.Run(), Status::Ok);
    ASSERT_TRUE(run.frames.Reach(30));
    EXPECT_EQ(run.stream->Stop(), Status::Ok);
    std::this_thread::sleep_for(50ms);
    const int stopped = run.frames.count;
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(run.frames.count, stopped);
    EXPECT_EQ(run.frames.outOfOrder, 0) << "none was handed on twice";
    run.lab.Producer().Set("fail.EventGetData", "-1006");
    const auto count = [&] { return log.Count("GenTL::EventGetData error with -1006!"); };
    EXPECT_TRUE(Eventually([&] { return count() >= 3; }));
    EXPECT_LT(run.lab.Producer().Calls("EventGetData"), 200);
    EXPECT_EQ(run.stream->Close(), Status::Ok);
}

TEST(GenTLStream, WhatFailsIsToldAndLeavesNothingBehind) {
    Streaming run(ProducerSettings{{"fail.GCRegisterEvent", "-1020"}});
    EXPECT_EQ(run.stream->Open(3, nullptr), -1020);
    EXPECT_EQ(run.lab.Producer().Calls("DSRevokeBuffer"), 3);
    EXPECT_EQ(run.stream->Close(), Status::Ok);
    run.lab.Producer().Set("fail.GCRegisterEvent", "0");
    run.lab.Producer().Set("fail.DSStartAcquisition", "-1016");
    EXPECT_EQ(run.Run(), -1016);
    EXPECT_FALSE(run.stream->IsStreaming());
    EXPECT_FALSE(run.stream->IsStreamingLocally());
    run.lab.Producer().Set("fail.DSStartAcquisition", "0");
    EXPECT_EQ(run.stream->Start(run.frames.Callback(), nullptr, 0, nullptr), Status::Ok);
    EXPECT_TRUE(run.frames.Reach(3));
    run.lab.Producer().Set("unplug", "0");
    EXPECT_EQ(run.camera->DisConnect(), Status::Ok) << "while the camera is gone";
}

TEST(GenTLStream, WhoseProducerKeepsTheReceivingThreadIsClosedAllTheSame) {
    LogCapture log;
    Streaming run;
    ASSERT_EQ(run.Run(), Status::Ok);
    ASSERT_TRUE(run.frames.Reach(3));
    run.lab.Producer().Set("hang.EventGetData", "60000");
    std::this_thread::sleep_for(200ms);
    const auto start = steady_clock::now();
    EXPECT_EQ(run.stream->Stop(), Status::Ok);
    EXPECT_EQ(run.stream->Close(), Status::Ok);
    EXPECT_LT(steady_clock::now() - start, 3s);
    EXPECT_TRUE(Eventually([&] { return log.Has("does not return to the receiving thread"); }));
    EXPECT_EQ(run.stream->Open(3, nullptr), Status::TimeOut) << "it is not free yet";
    EXPECT_EQ(run.stream->Close(), Status::Ok);
    EXPECT_EQ(run.lab.Producer().Calls("DSRevokeBuffer"), run.frames.count);
    EXPECT_EQ(run.camera->DisConnect(), Status::Ok);
    EXPECT_LT(steady_clock::now() - start, 8s);
    EXPECT_EQ(run.lab.Producer().Calls("DevClose"), 0) << "the producer is still inside";
    run.lab.Producer().Set("hang.EventGetData", "0");
    run.lab.Producer().Set("release", "1");
    EXPECT_TRUE(Eventually([&] { return run.lab.Producer().Calls("DevClose") == 1; }))
        << "the thread clears up";
    EXPECT_EQ(run.lab.Producer().Calls("DSRevokeBuffer"), run.lab.Producer().Calls("DSAnnounceBuffer"));
    EXPECT_TRUE(Eventually([&] { return run.camera->Connect() == Status::Ok; }));
}

TEST(GenTLStream, TwoUsersShareOneAcquisition) {
    Streaming run(ProducerSettings{{"frames.ms", "2"}});
    Frames remote;
    ASSERT_EQ(run.camera->ConnectRemotely(), Status::Ok);
    ASSERT_EQ(run.Run(), Status::Ok);
    EXPECT_EQ(run.stream->Start(run.frames.Callback(), nullptr, 0, nullptr), Status::NotFound);
    ASSERT_EQ(run.stream->StartRemotely(remote.Callback(), nullptr, 4, nullptr), Status::Ok);
    EXPECT_EQ(run.lab.Producer().Calls("DSStartAcquisition"), 1);
    ASSERT_TRUE(run.frames.Reach(10) && remote.Reach(10));

    EXPECT_EQ(run.stream->Stop(), Status::Ok);
    EXPECT_FALSE(run.stream->IsStreaming()) << "a stop ends it for both";
    EXPECT_EQ(run.stream->Stop(), Status::NotFound);
    EXPECT_TRUE(run.stream->IsStreamingRemotely());
    const int before = remote.count;
    EXPECT_EQ(run.stream->Restart(), Status::Ok);
    EXPECT_TRUE(remote.Reach(before + 10));

    ASSERT_EQ(run.stream->Start(run.frames.Callback(), nullptr, 0, nullptr), Status::Ok);
    const auto start = steady_clock::now();
    EXPECT_EQ(StopForLocalUser(*run.stream), Status::Ok);
    const int stopped = remote.count;
    EXPECT_TRUE(remote.Reach(stopped + 1));
    EXPECT_LT(steady_clock::now() - start, 500ms) << "the other's pictures go on";
    ASSERT_EQ(run.stream->Start(run.frames.Callback(), nullptr, 0, nullptr), Status::Ok);
    EXPECT_EQ(run.camera->DisConnectRemotely(), Status::Ok);
    const int alone = run.frames.count;
    EXPECT_TRUE(run.frames.Reach(alone + 10)) << "whoever left";
    EXPECT_EQ(run.camera->DisConnect(), Status::Ok);
}

TEST(GenTLStream, TenThousandFramesAndManyCycles) {
    {
        Streaming run(ProducerSettings{{"frames.ms", "-1"}});
        ASSERT_EQ(run.Run(8), Status::Ok);
        ASSERT_TRUE(Eventually([&] { return run.stream->GetStatistics()->blocks >= 10000; }, 60s));
        run.End();
        EXPECT_EQ(run.frames.outOfOrder, 0);
    }
    Streaming cycles(ProducerSettings{{"frames.ms", "1"}});
    EXPECT_EQ(cycles.camera->DisConnect(), Status::Ok);
    for (int cycle = 0; cycle < 100; ++cycle) {
        ASSERT_EQ(cycles.camera->Connect(), Status::Ok);
        cycles.stream = dynamic_cast<GenTLRemotableStream*>(cycles.camera->GetStream(0));
        ASSERT_EQ(cycles.Run(), Status::Ok);
        if (cycle % 10 == 0) {
            const int before = cycles.frames.count;
            EXPECT_TRUE(cycles.frames.Reach(before + 2));
        }
        if (cycle % 2 == 0)
            cycles.End();
        ASSERT_EQ(cycles.camera->DisConnect(), Status::Ok);
    }
    const LoadedProducer& producer = cycles.lab.Producer();
    EXPECT_EQ(producer.Calls("DSAnnounceBuffer"), producer.Calls("DSRevokeBuffer"));
    EXPECT_EQ(producer.Calls("DevClose"), 101);
    EXPECT_EQ(producer.Calls("DSClose"), 101);
    EXPECT_EQ(producer.Calls("GCRegisterEvent") - producer.Calls("GCUnregisterEvent"), 4 * 101)
        << "the kinds of events that it does not have";
}

} // namespace
} // namespace VX3::Test
