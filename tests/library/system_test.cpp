// The library as clients enter it: families, process-wide objects, and finding one camera among several
// interface devices, some of which take long to answer.
#include "library/Transports.h"
#include "support/FakeDevice.h"
#include "vx3/core/IntfDevType.h"
#include "vx3/core/LastFailure.h"
#include "vx3/library/CameraSearch.h"
#include "vx3/library/System.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>

namespace VX3::Test {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

TEST(System, NamesTransportFamilies) {
    EXPECT_EQ(System::SDKVersion(), "1.0");
    EXPECT_EQ(System::SDKBuildVersion(), "781");
    EXPECT_EQ(System::SupportedDevTypes(), 0U);
    EXPECT_EQ(System::IntfDevType2String(IntfDevType::GigEVision), "GigE Vision");
    EXPECT_EQ(System::IntfDevType2String(IntfDevType::Grabber), "JN Devices");
    EXPECT_EQ(System::IntfDevType2String(static_cast<IntfDevType>(512)), "others");
    EXPECT_EQ(System::String2IntfDevType("Virtual"), IntfDevType::All) << "not the inverse";
    EXPECT_EQ(System::String2IntfDevType("Vritual Interface"), IntfDevType::Virtual);
    EXPECT_EQ(System::String2IntfDevType("gige vision"), IntfDevType::All);
    EXPECT_EQ(System::DeviceType2IntfDevType(0x10010), IntfDevType::Uvc);
    for (const unsigned int other : {0x10008U, 0x10020U, 0x10000U, 0x30001U, 0x10003U, 0U})
        EXPECT_EQ(System::DeviceType2IntfDevType(other), IntfDevType::All) << std::hex << other;
}

TEST(System, DefaultsAreTheProcessWideObjects) {
    EXPECT_EQ(System::DefaultSimpleBufferPool()->Name(), "System Default SimpleBufferPool");
    EXPECT_EQ(System::DefaultRecycleBufferPool(), System::DefaultRecycleBufferPool());
    ASSERT_NE(System::DefaultSystemConfig(), nullptr);
    EXPECT_EQ(System::DefaultSystemConfigString("NoSuchKey", nullptr), "");
    EXPECT_EQ(System::DefaultSystemConfigInteger("NoSuchKey", "NoSuchSection"), 0);
    EXPECT_FALSE(System::DefaultSystemConfigBool("ForceNoFilter", nullptr));
    EXPECT_EQ(System::GetCurrentPath().back(), '/');
}

TEST(System, CreatesManagersOverTheTransportTable) {
    const auto manager = System::CreateManager(1);
    ASSERT_NE(manager, nullptr);
    EXPECT_EQ(manager->DeviceTypeSupported(), std::vector<IntfDevType>{IntfDevType::Virtual});
    EXPECT_EQ(manager->GetDevices(IntfDevType::All), 1) << "constructing enumerates";
    EXPECT_EQ(manager->DeviceName(0, IntfDevType::Virtual), "Virtual Interface 1");
    EXPECT_EQ(manager->TypeId(), 0x060000FFU);

    // The fixed order of families.
    const std::vector<unsigned int> order{1, 2, 32, 8, 128, 1024};
    std::size_t at = 0;
    for (const TransportEntry& transport : Transports()) {
        const auto family = static_cast<unsigned int>(transport.family);
        while (at < order.size() && order[at] != family)
            ++at;
        ASSERT_LT(at, order.size()) << "family " << family << " stands out of order";
        EXPECT_EQ(transport.create(transport.managerName)->Name(), transport.managerName);
        EXPECT_EQ(transport.create("x")->DeviceTypeSupported(), std::vector<IntfDevType>{transport.family});
    }
}

class NamedCamera final : public DeviceAbs {
public:
    NamedCamera(IntfDevType family, const char* name, const char* serial, const char* model, IDevice* parent)
        : DeviceAbs(TypeIds::SubDevice + static_cast<unsigned int>(family), name, parent),
          serial_(serial),
          model_(model) {}
    std::string SerialNumber() const override { return serial_; }
    std::string ModelName() const override { return model_; }
    std::string UserName() const override { return "mine " + serial_; }
    StatusCode GetIpAddress(GevDeviceAddress* address) const override {
        address->ip = 0x0A000000U + static_cast<std::uint32_t>(serial_.back() - '0');
        return Status::Ok;
    }

protected:
    StatusCode AcquisitionStartP(unsigned int) override { return Status::NotSupported; }
    StatusCode AcquisitionStopP(unsigned int) override { return Status::NotSupported; }
    StatusCode ConnectP() override { return Status::NotSupported; }
    StatusCode DisConnectP() override { return Status::NotSupported; }

private:
    std::string serial_;
    std::string model_;
};

// Its look takes `time`; one camera more answers only when it is asked by address.
class SlowInterface final : public FakeInterface {
public:
    SlowInterface(const char* name, std::chrono::milliseconds time) : FakeInterface(name), time_(time) {}
    std::list<std::shared_ptr<IDevice>> EnumSubDevices(unsigned int) override {
        std::this_thread::sleep_for(time_);
        const std::lock_guard<std::mutex> lock(mutex_);
        return cameras_;
    }
    void Add(std::shared_ptr<IDevice> camera) {
        const std::lock_guard<std::mutex> lock(mutex_);
        cameras_.push_back(std::move(camera));
    }
    void TakeAllAway() {
        const std::lock_guard<std::mutex> lock(mutex_);
        cameras_.clear();
        hidden.reset();
    }
    StatusCode AddSubDevice(const std::string& text) override {
        if (hidden == nullptr || text != "10.0.0.9")
            return Status::NotFound;
        AddKnownDevices({hidden});
        return Status::Ok;
    }
    ~SlowInterface() override { Shutdown(); }

    std::shared_ptr<IDevice> hidden;

private:
    std::mutex mutex_; // a look may still be under way on the monitor's thread
    std::list<std::shared_ptr<IDevice>> cameras_;
    const std::chrono::milliseconds time_;
};

class CameraSearch : public ::testing::Test {
protected:
    CameraSearch() {
        constexpr auto Virtual = IntfDevType::Virtual;
        constexpr auto Network = IntfDevType::GigEVision;
        const auto add = [](SlowInterface& behind, auto... what) {
            behind.Add(std::make_shared<NamedCamera>(what..., &behind));
        };
        add(*quick_, Virtual, "Virtual #1", "V1", "Soft");
        add(*slow_, Network, "Real #1", "S1", "Soft");
        add(*slow_, Network, "Real #2", "S2", "Fine");
        slow_->hidden = std::make_shared<NamedCamera>(Network, "Far", "S9", "Far", slow_.get());
    }
    std::string Find(const std::string& text, std::chrono::milliseconds timeout = 10s) {
        const auto camera = FindCamera({quick_, nullptr, slow_}, text, timeout);
        return camera ? camera->Name() : "none";
    }

    std::shared_ptr<SlowInterface> quick_ = std::make_shared<SlowInterface>("quick", 0ms);
    std::shared_ptr<SlowInterface> slow_ = std::make_shared<SlowInterface>("slow", 300ms);
};

TEST_F(CameraSearch, TakesNamesBeforeModelsAndRealCamerasBeforeVirtualOnes) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "Real #1"},         {"Real #2", "Real #2"}, {"S2", "Real #2"},   {"mine S1", "Real #1"},
        {"10.0.0.2", "Real #2"}, {"Fine", "Real #2"},    {"10.0.0.9", "Far"}, {"Virtual #1", "Virtual #1"},
        {"Soft", "Virtual #1"},  {"S3", "none"}};
    for (const auto& [text, name] : cases)
        EXPECT_EQ(Find(text), name) << text;
    EXPECT_EQ(LastFailure().code, Status::NotFound);
    EXPECT_EQ(LastFailure().text, "no camera \"S3\" was found, but Virtual #1, Real #1, Real #2");
    slow_->TakeAllAway();
    EXPECT_EQ(Find("Real #9"), "none"); // a new look
    EXPECT_EQ(Find(""), "Virtual #1") << "where there is no other";
}

TEST_F(CameraSearch, ReturnsWhenItIsClearAndAtTheLatestWhenTheTimeIsUp) {
    const auto start = steady_clock::now();
    EXPECT_EQ(Find("V1"), "Virtual #1");
    EXPECT_LT(steady_clock::now() - start, 250ms) << "the slow interface is not waited for";
    EXPECT_EQ(Find("S2", 20ms), "none");
    EXPECT_EQ(LastFailure().code, Status::TimeOut);
}

} // namespace
} // namespace VX3::Test
