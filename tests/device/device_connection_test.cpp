#include "device/DeviceStateMachine.h"
#include "support/FakeDevice.h"
#include "support/LogCapture.h"
#include "support/MemoryOwner.h"
#include "support/TempDir.h"
#include "support/Threads.h"
#include "vx3/core/LastFailure.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sys/stat.h>

namespace VX3::Test {
namespace {

using Calls = std::vector<std::string>;

// TLParamsLocked at register 0, AcquisitionStart at 4, AcquisitionStop at 8.
std::string Acquiring(bool withLock) {
    const std::string uncached = LittleEndian + "<Cachable>NoCache</Cachable>";
    std::string nodes = withLock ? RegisterNode("IntReg", "TLParamsLocked", 0, 4, "RW", uncached) : "";
    for (const auto& [name, address] :
         {std::pair<std::string, int>("AcquisitionStart", 4), {"AcquisitionStop", 8}})
        nodes += RegisterNode("IntReg", name + "Reg", address, 4, "RW", uncached) + "<Command Name=\"" +
                 name + "\"><pValue>" + name + "Reg</pValue><CommandValue>1</CommandValue></Command>";
    return DescriptionOf(nodes + "<String Name=\"DeviceModelName\"><Value>Model Q</Value></String>"
                                 "<Integer Name=\"PayloadSize\"><Value>4711</Value></Integer>");
}

TEST(DeviceStateMachine, LostStaysUntilDisconnected) {
    using S = DEVICE_STATE;
    using E = DeviceEvent;
    const auto next = &DeviceStateMachine::Next;
    for (const S initial : {S::Available, S::Unreachable, S::Controlled, S::GenTL}) {
        EXPECT_EQ(next(initial, E::Connected), S::Connected);
        EXPECT_EQ(next(initial, E::AcquisitionStarted), initial);
    }
    EXPECT_EQ(next(S::Connected, E::AcquisitionStarted), S::Acquiring);
    EXPECT_EQ(next(S::Acquiring, E::AcquisitionStopped), S::Connected);
    EXPECT_EQ(next(S::Acquiring, E::HeartbeatLost), S::Lost);
    EXPECT_EQ(next(S::Lost, E::AcquisitionStopped), S::Lost);
    EXPECT_EQ(next(S::Lost, E::AcquisitionStarted), S::Lost);
    EXPECT_EQ(next(S::Lost, E::Disconnected), S::Available);
    EXPECT_EQ(next(S::Available, E::HeartbeatLost), S::Available) << "a late heartbeat";
}

TEST(Device, ConnectsOnceAndDisconnectsInOrder) {
    auto device = std::make_shared<FakeDevice>("camera");
    FakeStream* stream = device->AddStream();
    device->SetInitialState(DEVICE_STATE::Controlled);
    EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Controlled);
    EXPECT_EQ(device->GetStream(0), nullptr) << "not connected";
    EXPECT_EQ(device->StartAcquisition(0), Status::WrongState);
    for (const StatusCode status :
         {device->MonitorSubDevices(true, 100, 0, {}), device->SubDeviceLost(nullptr),
          device->AddSubDevice("1.2.3.4"), device->SetIpAddress(nullptr)})
        EXPECT_EQ(status, Status::NotSupported);
    EXPECT_EQ(std::tuple(device->DeviceType(), device->ObjType(), device->VendorName()),
              std::tuple(0x30001U, 0U, std::string()))
        << "no configurer";
    EXPECT_EQ(device->DisConnect(), Status::Ok);

    device->connectStatus = Status::TimeOut;
    EXPECT_EQ(device->Connect(), Status::TimeOut);
    EXPECT_FALSE(device->IsConnected());
    EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Controlled);

    device->connectStatus = Status::Ok;
    device->postConnectThrows = "NULL pointer dereferenced";
    EXPECT_EQ(device->Connect(), Status::Ok);
    EXPECT_EQ(device->Connect(), Status::Ok);
    EXPECT_EQ(device->calls.Take(), (Calls{"connect", "connect", "post connect"}));
    EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Connected);
    EXPECT_EQ(device->GetStream(0), stream);
    EXPECT_EQ(device->ShareStream(0).get(), stream);
    EXPECT_EQ(device->GetStream(1), nullptr);
    EXPECT_EQ(device->StopAcquisition(5), Status::NotFound);

    ASSERT_EQ(stream->Open(3, nullptr), Status::Ok);
    ASSERT_EQ(stream->Start({}, nullptr, 4, nullptr), Status::Ok);
    EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Acquiring);
    EXPECT_TRUE(device->IsStreamingLocally());
    EXPECT_EQ(device->StopAcquisition(5), Status::NotFound);
    EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Acquiring);
    device->disconnectStatus = Status::TimeOut;
    EXPECT_EQ(device->DisConnect(), Status::TimeOut) << "what the transport says";
    EXPECT_EQ(device->calls.Take(), (Calls{"open 3", "start 4", "acquisition start", "acquisition stop",
                                           "stop", "close", "disconnect"}));
    EXPECT_EQ(device->DeviceState(), DEVICE_STATE::Available);
    EXPECT_FALSE(stream->IsOpened());
}

TEST(Device, AcquisitionGoesThroughTheStandardFeatures) {
    auto device = std::make_shared<FakeDevice>("camera");
    device->Describe(Acquiring(true));
    FakeStream* stream = device->AddStream();
    ASSERT_EQ(device->Connect(), Status::Ok);
    ASSERT_NE(device->GetConfigurer(), nullptr);
    EXPECT_EQ(device->ModelName(), "Model Q");
    EXPECT_EQ(device->GetConfigurer()->Name(), "camera");
    EXPECT_EQ(stream->PayloadSize(), 4711U);
    stream->payloadSize = 99;
    EXPECT_EQ(stream->PayloadSize(), 99U) << "the transport knows better";

    device->calls.Take();
    EXPECT_EQ(device->StartAcquisition(0), Status::Ok);
    EXPECT_EQ(device->calls.Take(), (Calls{"write 0 1", "write 4 1", "acquisition start"}));
    EXPECT_EQ(device->StopAcquisition(0), Status::Ok);
    EXPECT_EQ(device->calls.Take(), (Calls{"write 8 1", "write 0 0", "acquisition stop"}));
    auto unlocked = std::make_shared<FakeDevice>("camera");
    unlocked->Describe(Acquiring(false));
    unlocked->AddStream();
    ASSERT_EQ(unlocked->Connect(), Status::Ok);
    EXPECT_EQ(unlocked->StartAcquisition(0), Status::Ok) << "nothing to lock";
    EXPECT_EQ(unlocked->StopAcquisition(0), Status::Ok);
    EXPECT_EQ(unlocked->calls.Take(), (Calls{"connect", "post connect", "write 4 1", "acquisition start",
                                             "write 8 1", "acquisition stop"}));
    unlocked->failingWrite = 4;
    FakeStream* refused = static_cast<FakeStream*>(unlocked->GetStream(0));
    ASSERT_EQ(refused->Open(1, nullptr), Status::Ok);
    EXPECT_EQ(refused->Start({}, nullptr, 0, nullptr), Status::NodeFailed)
        << "a failing feature stops the start";
    EXPECT_FALSE(refused->IsStreaming());
    EXPECT_EQ(unlocked->DeviceState(), DEVICE_STATE::Connected);

    const auto held = device->ShareConfigurer();
    EXPECT_EQ(device->DisConnect(), Status::Ok);
    EXPECT_EQ(device->GetConfigurer(), nullptr);
    EXPECT_EQ(held->GetNodeValue("PayloadSize").AsInteger(), 4711) << "still usable where it is held";
}

TEST(Device, WithoutFeaturesSaysWhyAndDoesNotStart) {
    const std::pair<const char*, const char*> cases[] = {{"Local:fake.xml;100;0", "local:fake.xml"},
                                                         {"www:cam.xml", "www:cam.xml"},
                                                         {"file:/no/such.xml", "/no/such.xml"},
                                                         {"Local:fake.xml;100;10", "line 1"}};
    for (const auto& [url, words] : cases) {
        auto device = std::make_shared<FakeDevice>("camera");
        device->memory.assign(0x300, 'x');
        device->url = url;
        auto* stream = device->AddStream();
        const LogCapture log;
        ASSERT_EQ(device->Connect(), Status::Ok);
        const std::string failure = device->FeaturesFailure();
        EXPECT_NE(failure.find(words), std::string::npos) << failure;
        EXPECT_TRUE(log.Has(failure)) << url;
        ASSERT_EQ(stream->Open(1, nullptr), Status::Ok);
        EXPECT_EQ(stream->Start({}, nullptr, 0, nullptr), Status::NotAvailable) << url;
        EXPECT_NE(LastFailure().text.find(failure), std::string::npos) << LastFailure().text;
        EXPECT_FALSE(stream->IsStreaming());
    }
}

TEST(Device, IsReadBesideItsControllerWithMonitorAccess) {
    auto device = std::make_shared<FakeDevice>("camera");
    device->Describe(Acquiring(true));
    auto* stream = device->AddStream();
    ASSERT_EQ(device->Connect(DeviceAccess::Monitor), Status::Ok);
    EXPECT_EQ(device->Connect(DeviceAccess::Monitor), Status::Ok);
    EXPECT_EQ(device->Connect(), Status::WrongState) << "is not what was asked for";
    EXPECT_EQ(device->Access(), DeviceAccess::Monitor);
    EXPECT_EQ(device->ModelName(), "Model Q");
    EXPECT_EQ(device->GetConfigurer()->SetNodeValue("TLParamsLocked", 1U), Status::NodeFailed);
    ASSERT_EQ(stream->Open(1, nullptr), Status::Ok);
    EXPECT_EQ(stream->Start({}, nullptr, 0, nullptr), Status::NotAvailable);
    EXPECT_EQ(device->DisConnect(), Status::Ok);
    ASSERT_EQ(device->Connect(), Status::Ok);
    EXPECT_EQ(device->GetConfigurer()->SetNodeValue("TLParamsLocked", 1U), Status::Ok);
}

TEST(Device, DroppedStreamsStayClosedAndLostCamerasAreNotAsked) {
    auto device = std::make_shared<FakeDevice>("camera");
    device->Describe(Acquiring(true));
    auto* stream = device->AddStream();
    ASSERT_EQ(device->Connect(), Status::Ok);
    stream->Run([](const ImageInfo&, IDevice*) {});
    device->ReportLost();
    device->calls.Take();
    EXPECT_EQ(stream->Stop(), Status::Ok);
    EXPECT_EQ(device->calls.Take(), (Calls{"acquisition stop", "stop"})) << "no feature is written";
    EXPECT_EQ(stream->Start({}, nullptr, 0, nullptr), Status::DeviceLost);
    EXPECT_FALSE(stream->IsStreaming());
    const auto held = device->ShareStream(0);
    std::vector<std::shared_ptr<IStream>> none;
    device->UpdateStreams(none);
    EXPECT_EQ(stream->Start({}, nullptr, 0, nullptr), Status::NotConnected);
    stream->Close();
    EXPECT_EQ(stream->Open(1, nullptr), Status::NotConnected);
}

TEST(Device, FindsItsDescriptionWhereTheUrlSays) {
    auto device = std::make_shared<FakeDevice>("camera");
    EXPECT_EQ(device->GetXmlData(), nullptr) << "no address";
    device->memory.assign(0x300, 'x');
    const auto size = [&](const std::string& url) {
        device->url = url;
        const auto data = device->GetXmlData();
        return data ? static_cast<int>(data->GetXmlDataSize()) : -1;
    };
    EXPECT_EQ(size("local:cam.xml;100;1F"), 31);
    EXPECT_EQ(size("Local:cam.xml;100;200?SchemaVersion=1.1.0"), 512);
    EXPECT_EQ(device->GetXmlData()->GetXmlName(), "cam.xml");
    EXPECT_EQ(size("local:c|dir.xml;100;10"), 16);
    EXPECT_EQ(device->GetXmlData()->GetXmlName(), "c:dir.xml");
    for (const char* url :
         {"local:cam.xml;100;0", "local:cam.xml;100;6400001", "local:;100;10", "local:cam.xml;0;10",
          "local:cam.xml;100", "local:cam.xml;0x100;10", "local:cam.xml;200;200", "www:cam.xml", "cam.xml",
          "LOCAL:cam.xml;100;10", "file:/no/such/file.xml", ":", "\xff\xff"})
        EXPECT_EQ(size(url), -1) << url;
    EXPECT_EQ(size(std::string(400, 'a')), -1) << "no end within the URL's room";

    const TempDir directory;
    const std::string path = directory / "description.xml";
    std::ofstream(path) << "<x/>";
    EXPECT_EQ(size("file://" + path), -1) << "two slashes are no prefix";
    EXPECT_EQ(size("File:///" + path), 4);
    EXPECT_EQ(device->GetXmlData()->GetXmlName(), path);
    ASSERT_EQ(::mkfifo((directory / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(size("File:///" + (directory / "pipe")), -1) << "a pipe would keep the caller waiting";
}

TEST(Device, ConnectAndDisconnectFromManyThreadsAreSerialised) {
    auto device = std::make_shared<FakeDevice>("camera");
    device->Describe(Acquiring(true));
    OnThreads(4, [&](unsigned int thread) {
        for (int round = 0; round < 100; ++round) {
            EXPECT_EQ(thread % 2 == 0 ? device->Connect() : device->DisConnect(), Status::Ok);
            const auto configurer = device->ShareConfigurer();
            EXPECT_EQ(configurer ? configurer->GetNodeValue("PayloadSize").AsInteger() : 4711, 4711);
        }
    });
    int depth = 0;
    for (const std::string& call : device->calls.Take()) {
        depth += call == "connect" ? 1 : call == "disconnect" ? -1 : 0;
        EXPECT_TRUE(depth == 0 || depth == 1);
    }
}

TEST(Device, ChildrenOutliveTheirParent) {
    auto parent = std::make_shared<FakeDevice>("interface");
    auto child = std::make_shared<FakeDevice>("camera", parent.get());
    EXPECT_EQ(child->Connect(), Status::Ok);
    EXPECT_EQ(child->Parent(), parent.get());
    parent.reset();
    EXPECT_EQ(child->Parent(), nullptr);
    child->ReportLost();
    EXPECT_EQ(child->DeviceState(), DEVICE_STATE::Lost);

    child->AddStream();
    auto stream = child->ShareStream(0);
    std::weak_ptr<FakeDevice> watched = child;
    child.reset();
    EXPECT_FALSE(watched.expired()) << "a shared stream keeps its camera";
    EXPECT_NE(stream->Parent(), nullptr);
    stream.reset();
    EXPECT_TRUE(watched.expired());
}

} // namespace
} // namespace VX3::Test
