// A frame grabber card made of files: discovery, registers, features and streams.
#include "grabber/KdFrameDevice.h"
#include "grabber/KdInterfaceDev.h"
#include "grabber/KdManager.h"
#include "grabber/KdStream.h"
#include "support/Footprint.h"
#include "support/GrabberCard.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"
#include "support/Threads.h"
#include "vx3/core/LastFailure.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <mutex>

namespace VX3::Test {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// As the description in data/ lays them out.
constexpr std::uint32_t ImageWidth = 0x201000;
constexpr std::uint32_t ImageHigh = 0x201004;
constexpr std::uint32_t PixleFormat = 0x201008;
constexpr std::uint32_t SoftResetPulse = 0x201038;
constexpr std::uint32_t IntrEnable = 0x20103C;
constexpr std::uint32_t S2mmRun = 0x201040;
constexpr std::uint32_t Width = 96;
constexpr std::uint32_t Height = 30;
constexpr std::uint32_t Size = Width * Height;
constexpr std::uint32_t Third = Size / 3;

// ---- discovery and registers ----

TEST(KdDeviceSys, ACardHasAllItsNodes) {
    TempDir root;
    GrabberCard card(root.Path(), 2);
    GrabberCard ignored(root.Path(), 9);
    for (const char* name : {"xdma0", "xdma", "xdma1_user", "xdma3xuser", "other_user"})
        std::ofstream(root / name) << "";
    const auto found = KdDeviceSys::GetDevicePaths(root.Path());
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].friendlyName, "CameraLink-TRX(xilinx)#2");
    EXPECT_EQ(found[0].hardwareId, "1234&&5678");
    EXPECT_EQ(found[0].devicePath, root / "xdma2");
    for (const char* suffix : {"user", "control", "h2c_0", "c2h_0", "events_0", "events_3"}) {
        fs::rename(card.Node(suffix), root / "away");
        EXPECT_TRUE(KdDeviceSys::GetDevicePaths(root.Path()).empty()) << suffix;
        fs::rename(root / "away", card.Node(suffix));
    }
    EXPECT_TRUE(KdDeviceSys::GetDevicePaths(root / "nowhere").empty());
}

TEST(KdXDMADevice, WordsAndBlocks) {
    TempDir root;
    GrabberCard card(root.Path(), 0);
    KdXDMADevice window(root / "xdma0", "test");
    card.Put(4, 0x44332211);
    card.Put(24, 0x88776655);
    unsigned char bytes[16] = {};
    EXPECT_EQ(window.Read(bytes, 4, 6), 4) << "rounded down to the register";
    EXPECT_EQ(std::string(bytes, bytes + 4), "\x11\x22\x33\x44");
    EXPECT_EQ(window.Read(bytes, 7, 6), 7) << "a block begins at a word of that number";
    EXPECT_EQ(bytes[0], 0x55);
    EXPECT_EQ(window.Write(reinterpret_cast<const unsigned char*>("abcdefg"), 7, 2), 7);
    EXPECT_EQ(card.Get(8), 0x64636261U);
    EXPECT_EQ(card.Get(12), 0x00676665U);
    constexpr unsigned long long Last = KdXDMADevice::WindowSize - 4;
    EXPECT_EQ(window.Read(bytes, 4, Last), 4);
    EXPECT_EQ(window.Read(bytes, 8, Last / 4 - 1), 8);
    for (const auto& [length, offset] :
         std::vector<std::pair<unsigned int, unsigned long long>>{{4, Last + 4},
                                                                  {8, Last / 4},
                                                                  {8, Last},
                                                                  {8, ~0ULL / 4},
                                                                  {8, ~0ULL / 2 + 1},
                                                                  {4, ~0ULL},
                                                                  {0x300001, 0},
                                                                  {0xFFFFFFFF, 1}}) {
        EXPECT_EQ(window.Read(bytes, length, offset), Status::WrongState) << length << " at " << offset;
        EXPECT_EQ(window.Write(bytes, length, offset), Status::WrongState);
    }

    KdGrabberCmdHelper helper(&window);
    unsigned int value = 0;
    EXPECT_EQ(helper.WriteRegister(0x100, 77), 4);
    EXPECT_EQ(helper.ReadRegister(0x102, value), 4);
    EXPECT_EQ(value, 77U);
    EXPECT_EQ(helper.ReadMemory(0, bytes, 3), Status::NotFound);
    EXPECT_EQ(helper.ReadMemory(0, bytes, 10), 8);
    EXPECT_EQ(helper.WriteMemory(0, bytes, 3), Status::NotFound);
    EXPECT_EQ(helper.WriteMemory(0, bytes, 7), 4);
    EXPECT_EQ(helper.ReadData(0, bytes, 3), 3);
    EXPECT_EQ(helper.WriteMetaData(0, bytes, 4), Status::NotSupported);
    EXPECT_EQ(helper.AsyncRead(0, bytes, 4), Status::NotSupported);
}

TEST(KdXDMADevice, WithoutAWindowEveryAccessIsRefused) {
    TempDir root;
    std::ofstream(root / "xdma1_user") << "too short for a window";
    for (const char* path : {"xdma0", "xdma1"}) {
        LogCapture log;
        KdXDMADevice window(root / path, "test");
        EXPECT_TRUE(log.Has(std::string(path) + "_user"));
        unsigned char bytes[4] = {};
        EXPECT_FALSE(window.IsOpen());
        EXPECT_EQ(window.Read(bytes, 4, 0), Status::WrongState);
        EXPECT_EQ(window.Write(bytes, 4, 0), Status::WrongState);
    }
}

// ---- devices ----

std::shared_ptr<IDevice> FrameOf(IManager& manager, unsigned int index = 0) {
    const auto interface = manager.GetDevice(index, IntfDevType::All);
    auto* card = dynamic_cast<KdInterfaceDev*>(interface.get());
    return card != nullptr ? card->EnumSubDevices(0).front() : nullptr;
}

TEST(KdManager, CardsAreInterfacesWithOneFrameDevice) {
    TempDir root;
    GrabberCard one(root.Path(), 1);
    GrabberCard six(root.Path(), 6);
    KdManager manager("ManagerAll KD", root.Path());
    EXPECT_EQ(manager.EnumDevices(), 2);
    const auto interface = manager.GetDevice("CameraLink-TRX(xilinx)#6");
    ASSERT_NE(interface, nullptr);
    EXPECT_EQ(interface->DeviceType(), 0x10020U);
    const std::list<std::pair<std::string, std::string>> info{{"Name", "CameraLink-TRX(xilinx)#6"},
                                                              {"UserName", ""},
                                                              {"FriendlyNam", "CameraLink-TRX(xilinx)#6"},
                                                              {"hardwareId", "1234&&5678"},
                                                              {"devicePath", root / "xdma6"}};
    EXPECT_EQ(interface->GetInfo(), info);
    auto& card = dynamic_cast<KdInterfaceDev&>(*interface);
    unsigned char byte = 0;
    EXPECT_EQ(card.ReadPort(0, &byte, 1), Status::NotSupported);
    EXPECT_EQ(card.ReadPort(0x200000, &byte, 1), Status::NotSupported);
    EXPECT_EQ(card.GetXmlUrlAddr(), 0);
    EXPECT_FALSE(card.IsRegistersValid());
    EXPECT_TRUE(card.IsConfigurable() && card.IsInterface());
    EXPECT_EQ(card.Connect(), Status::Ok);
    const auto frame = FrameOf(manager, 1);
    EXPECT_EQ(frame->Name(), "frame0@CameraLink-TRX(xilinx)#6");
    EXPECT_EQ(frame->DeviceType(), 0x30020U);
    EXPECT_EQ(frame->DevicePath(), root / "xdma6");
    EXPECT_EQ(frame->StreamCnt(), 1U);

    unsigned char url[64];
    std::memset(url, 0xEE, sizeof(url));
    auto& device = dynamic_cast<KdFrameDevice&>(*frame);
    EXPECT_EQ(device.ReadPort(0, url, sizeof(url)), 24);
    EXPECT_STREQ(reinterpret_cast<char*>(url), "File:KdInterfaceDev.xml");
    EXPECT_EQ(url[24], 0xEE);
    url[5] = 0xEE;
    EXPECT_EQ(device.ReadPort(0, url, 5), 5);
    EXPECT_EQ(url[5], 0xEE);
    EXPECT_FALSE(device.IsManifestSupported());
}

// The values that a card begins with, in registers in the order of the description.
const std::uint32_t FirstWords[] = {4096, 8192, 0x02180014, 0, 3, 2, 1, 1, 8, 1, 8192, 8192, 12288, 12288};

TEST(KdFrameDevice, EveryCardIsSetUpOnce) {
    TempDir root;
    GrabberCard one(root.Path(), 0);
    GrabberCard two(root.Path(), 1);
    KdManager manager("ManagerAll KD", root.Path());
    ASSERT_EQ(manager.EnumDevices(), 2);
    GrabberCard* cards[] = {&one, &two};
    for (unsigned int i = 0; i < 2; ++i) {
        const auto frame = FrameOf(manager, i);
        unsigned char word[4] = {};
        EXPECT_EQ(dynamic_cast<KdFrameDevice&>(*frame).ReadPort(ImageWidth, word, 4), 4);
        EXPECT_EQ(cards[i]->Get(ImageWidth), 0U) << "no features yet, and nothing is lost by that";
        ASSERT_EQ(frame->Connect(), Status::Ok);
        EXPECT_EQ(frame->FeaturesFailure(), "");
        for (std::uint32_t n = 0; n < std::size(FirstWords); ++n)
            EXPECT_EQ(cards[i]->Get(ImageWidth + 4 * n), FirstWords[n]) << "card " << i << " word " << n;
        IConfigurer& features = *frame->GetConfigurer();
        EXPECT_EQ(features.GetNodeValue("Width").AsInteger(), 4096);
        EXPECT_EQ(features.GetNodeValue("PayloadSize").AsInteger(), 12288L * 8192);
        EXPECT_EQ(frame->ModelName(), "CameraLink-TRX");
        EXPECT_EQ(features.SetNodeValue("Width", Width), Status::Ok);
        frame->DisConnect();
        ASSERT_EQ(frame->Connect(), Status::Ok);
        EXPECT_EQ(cards[i]->Get(ImageWidth), Width) << "not set up a second time";
    }
    ASSERT_EQ(manager.EnumDevices(), 2);
    ASSERT_EQ(FrameOf(manager)->Connect(), Status::Ok);
    EXPECT_EQ(one.Get(ImageWidth), Width) << "nor by another enumeration";
}

// ---- streams ----

// A connected card with images of Width x Height, and what its stream delivers.
class Lab {
public:
    explicit Lab(unsigned int number = 0) : card(root_.Path(), number) {
        manager_ = std::make_unique<KdManager>("ManagerAll KD", root_.Path());
        (void)manager_->EnumDevices();
        frame = FrameOf(*manager_);
        if (!frame || Failed(frame->Connect()))
            throw std::runtime_error("no card");
        card.Put(ImageWidth, Width);
        card.Put(ImageHigh, Height);
        card.Put(PixleFormat, Mono8);
        stream = std::dynamic_pointer_cast<KdStream>(
            std::shared_ptr<StreamAbs>(frame->ShareStream(0), dynamic_cast<StreamAbs*>(frame->GetStream(0))));
    }
    ~Lab() { frame->DisConnect(); }

    StatusCode Start() {
        if (const StatusCode status = stream->Open(0, nullptr); Failed(status))
            return status;
        return stream->Start(
            [this](std::shared_ptr<IImage> image, IDevice*, unsigned int, unsigned int, void*) {
                const std::lock_guard<std::mutex> lock(mutex_);
                images_.push_back(std::move(image));
            },
            nullptr, 0, nullptr);
    }
    bool Await(std::size_t count) {
        return Eventually([&] { return Images().size() >= count; });
    }
    std::vector<std::shared_ptr<IImage>> Images() {
        const std::lock_guard<std::mutex> lock(mutex_);
        return images_;
    }
    // The three segments of a block, from that place of the card's memory on.
    bool TellBlock(std::uint32_t id, std::uint64_t offset) {
        for (std::uint16_t n = 0; n < 3; ++n)
            if (!card.Tell({id, n, 3, offset + n * Third, Third, 0x100000002ULL, 5}))
                return false;
        return true;
    }
    static bool Shows(const IImage& image, std::uint64_t offset) {
        for (std::uint32_t i = 0; i < Size; ++i)
            if (image.GetImageBuff()[i] != GrabberCard::Byte(offset + i))
                return false;
        return true;
    }
    std::uint64_t Blocks() const { return static_cast<const StreamAbs&>(*stream).GetStatistics().blocks; }

private:
    TempDir root_;
    std::unique_ptr<KdManager> manager_;
    std::mutex mutex_;
    std::vector<std::shared_ptr<IImage>> images_;

public:
    GrabberCard card;
    std::shared_ptr<IDevice> frame;
    std::shared_ptr<KdStream> stream;
};

TEST(KdStream, FramesOfThreeSegments) {
    Lab lab;
    ASSERT_EQ(lab.Start(), Status::Ok) << LastFailure().text;
    EXPECT_EQ(lab.card.Get(SoftResetPulse), 1U);
    EXPECT_EQ(lab.card.Get(IntrEnable), 1U);
    EXPECT_EQ(lab.card.Get(S2mmRun), 1U);
    for (std::uint32_t id = 1; id <= 20; ++id)
        ASSERT_TRUE(lab.TellBlock(id, 1000 * id)) << id;
    ASSERT_TRUE(lab.Await(20));
    const auto images = lab.Images();
    for (std::uint32_t id = 1; id <= 20; ++id) {
        const ImageInfo& info = *images[id - 1]->GetImageInfo();
        EXPECT_EQ(info.blockId, id);
        EXPECT_EQ(info.width, Width);
        EXPECT_EQ(info.timestampHigh, 1U);
        EXPECT_EQ(info.timestampLow, 2U);
        EXPECT_EQ(info.statusA, 5U);
        EXPECT_EQ(info.lostPackets, 0U);
        EXPECT_TRUE(Lab::Shows(*images[id - 1], 1000 * id)) << id;
    }
    EXPECT_EQ(lab.Blocks(), 20U);
    EXPECT_EQ(static_cast<const StreamAbs&>(*lab.stream).GetStatistics().reserved, 1U);
    const auto start = Clock::now();
    EXPECT_EQ(lab.stream->Stop(), Status::Ok);
    EXPECT_LT(Clock::now() - start, milliseconds(500)) << "although the card says nothing more";
    EXPECT_EQ(lab.card.Get(S2mmRun), 2U);
    EXPECT_EQ(lab.card.Get(IntrEnable), 0U);
}

TEST(KdStream, TheCardIsToldOnceThatTheHostIsReady) {
    Lab lab;
    ASSERT_EQ(lab.Start(), Status::Ok);
    ASSERT_TRUE(lab.card.AwaitReady(milliseconds(1000)));
    std::this_thread::sleep_for(milliseconds(300)); // several slices of the wait
    EXPECT_EQ(lab.card.Get(GrabberCard::Ready), 0U) << "a segment told meanwhile would be lost";
    lab.card.Lay({1, 0, 1, 0, Size, 0, 0});
    lab.card.Raise();
    EXPECT_TRUE(lab.Await(1));
    EXPECT_TRUE(lab.card.AwaitReady(milliseconds(1000)));
}

TEST(KdStream, EventsThatAreNone) {
    Lab lab;
    LogCapture log;
    ASSERT_EQ(lab.Start(), Status::Ok);
    ASSERT_TRUE(lab.card.AwaitReady(milliseconds(1000)));
    lab.card.Lay({1, 0, 1, 0, Size, 0, 0});
    lab.card.Raise(3);
    ASSERT_TRUE(lab.card.AwaitReady(milliseconds(1000))) << "another wait begins";
    lab.card.RaiseBytes("ab", 2);
    ASSERT_TRUE(lab.card.AwaitReady(milliseconds(1000)));
    EXPECT_TRUE(log.Has("bytesReaded :4 eventResult: 3, unexpected!"));
    EXPECT_TRUE(log.Has("bytesReaded :2 eventResult:"));
    EXPECT_TRUE(lab.Images().empty());
    lab.card.Raise();
    EXPECT_TRUE(lab.Await(1));
    EXPECT_TRUE(log.Has("Ready to read frame 0x1-0 from device, offset :0x0, length: 0xb40"));
    EXPECT_TRUE(log.Has("0xb40 bytes readed from frame device"));
}

TEST(KdStream, FaultsCostTheirOwnFrames) {
    Lab lab;
    LogCapture log;
    ASSERT_EQ(lab.Start(), Status::Ok);
    ASSERT_TRUE(lab.TellBlock(1, 0));
    ASSERT_TRUE(lab.card.Tell({2, 0, 3, 0, Third, 0, 0}));
    ASSERT_TRUE(lab.card.Tell({2, 2, 3, 0, Third, 0, 0}));       // 1 is missing
    ASSERT_TRUE(lab.card.Tell({3, 0, 1, 0, 0xFFFFFFF0U, 0, 0})); // longer than any memory
    ASSERT_TRUE(lab.card.Tell({4, 1, 3, 0, Third, 0, 0}));       // no beginning
    ASSERT_TRUE(lab.card.Tell({5, 0, 1, 1U << 20, Size, 0, 0})); // behind the end of the memory
    ASSERT_TRUE(lab.card.Tell({6, 0, 1, ~0ULL - 5, Size, 0, 0}));
    ASSERT_TRUE(lab.TellBlock(9, 4321));
    ASSERT_TRUE(lab.Await(3));
    const auto images = lab.Images();
    ASSERT_EQ(images.size(), 3U);
    EXPECT_EQ(images[1]->GetImageInfo()->lostPackets, 1U);
    EXPECT_EQ(images[2]->GetImageInfo()->blockId, 9U);
    EXPECT_TRUE(Lab::Shows(*images[2], 4321));
    EXPECT_EQ(lab.stream->LastBlockGap(), 6U);
    EXPECT_EQ(lab.stream->NextBlockId(), 10U);
    EXPECT_GE(log.Count("_c2h_0: "), 1U);
    EXPECT_LE(log.Count("_c2h_0: "), 2U) << "once for reads that fail one after the other";
}

TEST(KdStream, AnEventNodeAtItsEndIsNoSpinningLoop) {
    Lab lab;
    LogCapture log;
    ASSERT_EQ(lab.Start(), Status::Ok);
    ASSERT_TRUE(lab.TellBlock(1, 0));
    ASSERT_TRUE(lab.Await(1));
    const auto cpu = [] { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; };
    const double before = cpu();
    lab.card.EndEvents();
    std::this_thread::sleep_for(milliseconds(600));
    EXPECT_LT(cpu() - before, 0.2);
    EXPECT_EQ(log.Count("no event can be read"), 1U);
    const auto start = Clock::now();
    lab.stream->Stop();
    EXPECT_LT(Clock::now() - start, milliseconds(500));
}

TEST(KdStream, AMissingNodeIsNamed) {
    TempDir root;
    GrabberCard card(root.Path(), 0);
    fs::remove(card.Node("events_8"));
    KdManager manager("ManagerAll KD", root.Path());
    ASSERT_EQ(manager.EnumDevices(), 1) << "listed all the same";
    const auto frame = FrameOf(manager);
    ASSERT_EQ(frame->Connect(), Status::Ok);
    IStream* stream = frame->GetStream(0);
    EXPECT_EQ(stream->Open(0, nullptr), Status::OpenFailed);
    EXPECT_NE(LastFailure().text.find(card.Node("events_8")), std::string::npos) << LastFailure().text;
    EXPECT_EQ(stream->Start({}, nullptr, 0, nullptr), Status::OpenFailed);
    EXPECT_EQ(stream->Close(), Status::Ok);
}

TEST(KdStream, TwoCardsAtOnceAndAgain) {
    Lab one(0);
    Lab two(1);
    Lab* labs[] = {&one, &two};
    OnThreads(2, [&](unsigned int i) {
        Lab& lab = *labs[i];
        for (int cycle = 0; cycle < 3; ++cycle) {
            ASSERT_EQ(lab.Start(), Status::Ok);
            const std::size_t before = lab.Images().size();
            for (std::uint32_t id = 1; id <= 100; ++id)
                ASSERT_TRUE(lab.TellBlock(id, 100 * id + i));
            EXPECT_TRUE(lab.Await(before + 100));
            EXPECT_TRUE(Lab::Shows(*lab.Images().back(), 10000 + i));
            EXPECT_EQ(lab.stream->LastBlockGap(), 0U) << "a start begins anew";
            EXPECT_EQ(lab.stream->Stop(), Status::Ok);
            EXPECT_EQ(lab.stream->Close(), Status::Ok);
        }
    });
}

TEST(KdStream, TwoHundredTimesHoldNoMore) {
    TempDir root;
    GrabberCard card(root.Path(), 0);
    const auto use = [&](bool start) {
        KdManager manager("ManagerAll KD", root.Path());
        (void)manager.EnumDevices();
        const auto frame = FrameOf(manager);
        ASSERT_EQ(frame->Connect(), Status::Ok);
        IStream* stream = frame->GetStream(0);
        ASSERT_EQ(stream->Open(0, nullptr), Status::Ok);
        if (start)
            ASSERT_EQ(stream->Start({}, nullptr, 0, nullptr), Status::Ok);
        frame->DisConnect();
    };
    Footprint before;
    for (int cycle = 0; cycle < 200; ++cycle) {
        use(cycle % 20 == 0);
        if (cycle == 50)
            before = Footprint::Now();
    }
    const Footprint after = Footprint::Now();
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_EQ(after.threads, before.threads);
    EXPECT_LT(after.residentMiB, before.residentMiB + AllowedGrowthMiB);
}

} // namespace
} // namespace VX3::Test
