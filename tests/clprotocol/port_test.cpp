// Serial ports against a camera on a pseudo terminal: probing, connections, rates, faults, ports of others.
#include "platform/clprotocol/CCLPort.h"
#include "platform/clprotocol/PortList.h"
#include "platform/clprotocol/Sha1.h"
#include "support/GenCpCamera.h"
#include "support/TempDir.h"
#include "support/Threads.h"

#include <algorithm>
#include <asm/termbits.h>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace VX3::Test {
namespace {

using CLProtocol::CCLPort;
using CLProtocol::Failure;
using CLProtocol::PortError;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr const char* Id = "GenCP#Linea#S0042";

milliseconds Since(Clock::time_point start) {
    return std::chrono::duration_cast<milliseconds>(Clock::now() - start);
}

std::string Probe(const std::string& port, unsigned int ms = 4800) {
    return CCLPort::ProbeDevice(port, "GenCP", ms);
}

// What `call` throws.
template <typename Call>
Failure Caught(Call call) {
    try {
        call();
    } catch (const PortError& error) {
        return error.Kind();
    }
    ADD_FAILURE() << "nothing was thrown";
    return Failure::Argument;
}

TEST(SerialPort, ACameraIsFoundWhateverItsRate) {
    for (const std::uint32_t rate : {9600U, 115200U, 921600U}) {
        GenCpCameraData data;
        data.rate = rate;
        GenCpCamera camera(data);
        const auto start = Clock::now();
        EXPECT_EQ(Probe(camera.Port()), Id) << rate;
        EXPECT_LT(Since(start), milliseconds(4800));
        EXPECT_EQ(Probe(camera.Port(), 300), Id) << "at the rate it answered at";
        EXPECT_EQ(CCLPort::ProbeDevice(camera.Port(), "Other", 300), "");
    }
}

TEST(SerialPort, ASilentPortCostsItsTime) {
    GenCpCamera camera;
    camera.Set([] {
        GenCpFaults faults;
        faults.silent = true;
        return faults;
    }());
    auto start = Clock::now();
    EXPECT_EQ(Probe(camera.Port()), "");
    EXPECT_LT(Since(start), milliseconds(4900));
    const std::vector<GenCpCommand> asked = camera.TakeCommands();
    ASSERT_EQ(asked.size(), 1U) << "once at its rate";
    EXPECT_EQ(asked[0].id, 0);
    EXPECT_EQ(asked[0].flags, 0x4000);
    EXPECT_EQ(camera.SwallowedBytes(), 7U * 28U) << "and once at every other";
    camera.Set({});
    bool found = false;
    for (int round = 0; round < 9 && !found; ++round) {
        start = Clock::now();
        found = Probe(camera.Port(), 300) == Id;
        EXPECT_LT(Since(start), milliseconds(400));
    }
    EXPECT_TRUE(found) << "each round asks at another rate";
    camera.Set([] {
        GenCpFaults faults;
        faults.silent = true;
        return faults;
    }());
    start = Clock::now();
    EXPECT_EQ(
        CCLPort::ProbeDevice(camera.Port(), "GenCP", 4800, [&] { return Since(start) > milliseconds(150); }),
        "");
    EXPECT_LT(Since(start), milliseconds(500)) << "its owner does not wait any longer";
}

// At 9600 a name takes longer than a probe of a free port may.
TEST(SerialPort, ANameIsReadInSeveralRounds) {
    GenCpCameraData data;
    data.model = std::string(64, 'm');
    GenCpCamera camera(data);
    GenCpFaults slow;
    slow.slowWire = true;
    slow.late = 1000;
    slow.lateMs = 60;
    camera.Set(slow);
    std::string id;
    for (int round = 0; round < 4 && id.empty(); ++round) {
        const auto start = Clock::now();
        id = Probe(camera.Port(), 300);
        EXPECT_LT(Since(start), milliseconds(400));
    }
    EXPECT_EQ(id, "GenCP#" + data.model + "#S0042");
}

TEST(SerialPort, AConnectionRaisesTheRateAndGivesEverythingBack) {
    GenCpCamera camera;
    termios2 before{};
    ioctl(camera.Slave(), TCGETS2, &before);
    ASSERT_EQ(Probe(camera.Port()), Id);
    {
        CCLPort port;
        port.Connect(camera.Port(), Id);
        EXPECT_EQ(camera.Rate(), 921600U);
        EXPECT_EQ(port.BaudRate(), 921600U);
        EXPECT_TRUE(camera.HasControl());
        EXPECT_EQ(port.HeartbeatTimeout(), milliseconds(3000));
        EXPECT_EQ(port.TakeNote(), "");
        std::string text(2500, 'x');
        EXPECT_EQ(Caught([&] { port.Write(text.data(), GenCpCamera::Scratch, text.size()); }),
                  Failure::Refused);
        text = "longer than a word and of an odd length: 3";
        port.Write(text.data(), GenCpCamera::Scratch, text.size());
        std::string back(text.size(), '\0');
        port.Read(back.data(), GenCpCamera::Scratch, back.size());
        EXPECT_EQ(back, text);
        EXPECT_EQ(Caught([&] { CCLPort().Connect(camera.Port(), Id); }), Failure::InUse);
    }
    EXPECT_FALSE(camera.HasControl());
    EXPECT_EQ(camera.Rate(), 9600U);
    termios2 after{};
    ioctl(camera.Slave(), TCGETS2, &after);
    EXPECT_EQ(std::memcmp(&before, &after, sizeof(before)), 0) << "the terminal's settings";
    EXPECT_EQ(Probe(camera.Port(), 300), Id);
    CCLPort port;
    EXPECT_EQ(Caught([&] { port.Connect(camera.Port(), "GenCP#Linea#other"); }), Failure::OtherDevice);
    EXPECT_FALSE(camera.HasControl());
}

struct RateCase {
    const char* name;
    std::uint32_t supported;
    bool heartbeat;
    std::uint32_t start;
    bool refuse;
    bool forget;
    std::uint32_t connected;
    std::uint32_t afterwards;
};

TEST(SerialPort, Rates) {
    const RateCase cases[] = {
        {"highest", 0xFF, true, 9600, false, false, 921600, 9600},
        {"some", 0x11, true, 9600, false, false, 115200, 9600},
        {"only one", 0x01, true, 9600, false, false, 9600, 9600},
        {"none named", 0x00, true, 9600, false, false, 9600, 9600},
        {"found higher", 0x1F, true, 115200, false, false, 115200, 9600},
        {"refused", 0xFF, true, 9600, true, false, 9600, 9600},
        {"not confirmed", 0xFF, true, 9600, false, true, 9600, 9600},
        {"without control", 0x1F, false, 9600, false, false, 115200, 9600},
        {"without control, found higher", 0x3F, false, 115200, false, false, 230400, 115200},
    };
    for (const RateCase& c : cases) {
        GenCpCameraData data;
        data.supportedRates = c.supported;
        data.hasHeartbeat = c.heartbeat;
        data.rate = c.start;
        GenCpCamera camera(data);
        GenCpFaults faults;
        faults.refuseRate = c.refuse;
        faults.forgetConfirmation = c.forget;
        camera.Set(faults);
        ASSERT_EQ(Probe(camera.Port()), Id) << c.name;
        {
            CCLPort port;
            port.Connect(camera.Port(), Id);
            EXPECT_EQ(camera.Rate(), c.connected) << c.name;
            EXPECT_EQ(port.BaudRate(), c.connected) << c.name;
            EXPECT_EQ(port.TakeNote().empty(), !c.refuse && !c.forget) << c.name;
            std::uint32_t version = 0;
            port.Read(&version, 0, 4);
        }
        EXPECT_EQ(camera.Rate(), c.afterwards) << c.name;
        EXPECT_EQ(Probe(camera.Port(), 300), Id) << c.name << ": found again at once";
    }
}

struct FaultCase {
    const char* name;
    int GenCpFaults::*fault;
    int count;
    std::size_t commands; // that one read takes
};

TEST(SerialPort, FaultsOfTheLineAreLivedWith) {
    const FaultCase cases[] = {
        {"lost command", &GenCpFaults::dropCommands, 1, 2},
        {"lost commands", &GenCpFaults::dropCommands, 3, 4},
        {"lost answer", &GenCpFaults::dropAnswers, 1, 2},
        {"bit error in a header", &GenCpFaults::flipHeaders, 1, 2},
        {"bit error in data", &GenCpFaults::flipPayloads, 2, 3},
        {"noise", &GenCpFaults::noise, 1, 1},
        {"byte by byte", &GenCpFaults::singleBytes, 1, 1},
        {"an older answer", &GenCpFaults::stale, 1, 1},
        {"pending", &GenCpFaults::pending, 3, 1},
        {"busy", &GenCpFaults::busy, 2, 3},
    };
    GenCpCamera camera;
    CCLPort port;
    port.Connect(camera.Port(), Id);
    for (const FaultCase& c : cases) {
        GenCpFaults faults;
        faults.*c.fault = c.count;
        camera.Set(faults);
        camera.TakeCommands();
        std::string text(8, '\0');
        const auto start = Clock::now();
        port.Read(text.data(), GenCpCamera::ReadOnly, text.size());
        EXPECT_EQ(text, "constant") << c.name;
        EXPECT_LT(Since(start), milliseconds(1500)) << c.name;
        const std::vector<GenCpCommand> commands = camera.TakeCommands();
        ASSERT_EQ(commands.size(), c.commands) << c.name;
        for (std::size_t i = 1; i < commands.size(); ++i) {
            const bool retried = c.fault == &GenCpFaults::busy; // a new command, not the same again
            EXPECT_EQ(commands[i].flags, retried ? 0x4000 : 0xC000) << c.name;
            EXPECT_EQ(commands[i].id == commands[0].id, !retried) << c.name;
        }
    }
}

TEST(SerialPort, RefusalsAreTold) {
    GenCpCamera camera;
    CCLPort port;
    port.Connect(camera.Port(), Id);
    std::uint32_t word = 0;
    try {
        port.Write(&word, GenCpCamera::ReadOnly, 4);
        FAIL();
    } catch (const PortError& error) {
        EXPECT_EQ(error.Kind(), Failure::Refused);
        EXPECT_EQ(error.Status(), 0x8004);
        EXPECT_NE(std::string(error.what()).find("write protected"), std::string::npos) << error.what();
    }
    EXPECT_EQ(Caught([&] { port.Read(&word, 0x7FFF0000, 4); }), Failure::Refused);
    GenCpFaults faults;
    faults.busy = 100;
    camera.Set(faults);
    EXPECT_EQ(Caught([&] { port.Read(&word, 0, 4); }), Failure::Refused);
    faults = {};
    faults.shortAnswers = 1;
    camera.Set(faults);
    EXPECT_EQ(Caught([&] { port.Read(&word, 0, 4); }), Failure::Malformed);
    port.Read(&word, 0, 4);
}

TEST(SerialPort, SilenceAndHangingUp) {
    GenCpCamera camera;
    CCLPort port;
    port.Connect(camera.Port(), Id);
    GenCpFaults faults;
    faults.silent = true;
    camera.Set(faults);
    camera.TakeCommands();
    std::uint32_t word = 0;
    auto start = Clock::now();
    EXPECT_EQ(Caught([&] { port.Read(&word, 0, 4); }), Failure::Silent);
    EXPECT_LT(Since(start), milliseconds(4 * (100 + 50 + 20)));
    EXPECT_EQ(camera.TakeCommands().size(), 4U);
    std::thread owner([&] {
        std::this_thread::sleep_for(milliseconds(50));
        port.Abandon();
    });
    start = Clock::now();
    EXPECT_EQ(Caught([&] { port.Read(&word, 0, 4); }), Failure::Abandoned);
    EXPECT_LT(Since(start), milliseconds(250));
    owner.join();

    GenCpCamera other;
    CCLPort cut;
    cut.Connect(other.Port(), Id);
    faults = {};
    faults.vanishAfter = 18; // in the middle of the answer
    other.Set(faults);
    start = Clock::now();
    EXPECT_EQ(Caught([&] { cut.Read(&word, 0, 4); }), Failure::HungUp);
    EXPECT_LT(Since(start), milliseconds(500));
}

// Nothing is written to what somebody else has open.
TEST(SerialPort, PortsOfOthersAreLeftAlone) {
    GenCpCamera camera;
    const int other = open(camera.Port().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_EQ(flock(other, LOCK_EX | LOCK_NB), 0);
    EXPECT_EQ(Caught([&] { Probe(camera.Port()); }), Failure::InUse);
    flock(other, LOCK_UN);
    ASSERT_EQ(ioctl(other, TIOCEXCL), 0); // which root may open all the same
    EXPECT_EQ(Caught([&] { Probe(camera.Port()); }), Failure::InUse);
    int exclusive = 0;
    EXPECT_TRUE(ioctl(other, TIOCGEXCL, &exclusive) == 0 && exclusive == 1) << "still theirs";
    ioctl(other, TIOCNXCL);
    EXPECT_TRUE(camera.TakeCommands().empty() && camera.SwallowedBytes() == 0);
    EXPECT_EQ(Probe(camera.Port()), Id);
    close(other);
    TempDir directory;
    std::filesystem::create_symlink(camera.Port(), directory / "camera");
    std::filesystem::create_symlink("/dev/null", directory / "null");
    CCLPort port;
    port.Connect(camera.Port(), Id);
    EXPECT_EQ(Caught([&] { Probe(directory / "camera"); }), Failure::InUse) << "one device, two names";
    EXPECT_EQ(Caught([&] { Probe(directory / "null"); }), Failure::Unusable);
    EXPECT_EQ(Caught([&] { Probe(directory / "none"); }), Failure::Unusable);
    EXPECT_EQ(Caught([&] { Probe(directory.Path()); }), Failure::Unusable);
    GenCpFaults refusing;
    refusing.refuseControl = true;
    GenCpCamera held;
    held.Set(refusing);
    EXPECT_EQ(Caught([&] { CCLPort().Connect(held.Port(), Id); }), Failure::Refused);
}

TEST(SerialPort, ListsOfPorts) {
    using CLProtocol::PortList;
    GenCpCamera one;
    GenCpCamera two;
    TempDir directory;
    std::filesystem::create_symlink(one.Port(), directory / "b");
    std::filesystem::create_symlink(two.Port(), directory / "c");
    std::filesystem::create_directory(directory / "d");
    const std::string all = directory / "*";
    EXPECT_EQ(PortList::Expand(all), (std::vector<std::string>{directory / "b", directory / "c"}));
    EXPECT_EQ(PortList::Expand(" " + two.Port() + ",; " + all + " /dev/none"),
              (std::vector<std::string>{two.Port(), directory / "b"}));
    EXPECT_TRUE(PortList::Expand("").empty());
    EXPECT_TRUE(PortList::IsSame(directory / "b", one.Port()));
    EXPECT_FALSE(PortList::IsSame(directory / "b", two.Port()));
}

TEST(SerialPort, Descriptions) {
    const std::string xml = "<RegisterDescription>" + std::string(5000, ' ') + "</RegisterDescription>";
    for (const bool zipped : {true, false}) {
        GenCpCameraData data;
        data.description = xml;
        data.zipped = zipped;
        const CLProtocol::Sha1Digest hash = CLProtocol::Sha1(xml.data(), xml.size());
        data.hash.assign(hash.begin(), hash.end()); // right for the plain file only
        GenCpCamera camera(data);
        CCLPort port;
        port.Connect(camera.Port(), Id);
        const std::vector<std::string> ids = port.GetXMLIDs();
        EXPECT_EQ(ids, std::vector<std::string>{"Linea_1.2.3"});
        EXPECT_EQ(port.GetXML(ids.front(), true), xml);
        EXPECT_EQ(port.TakeNote().find("SHA-1") != std::string::npos, zipped);
        EXPECT_EQ(Caught([&] { (void)port.GetXML(ids.front(), false); }), Failure::Argument);
        EXPECT_EQ(Caught([&] { (void)port.GetXML("other", true); }), Failure::Argument);
    }
    GenCpCamera without;
    CCLPort port;
    port.Connect(without.Port(), Id);
    EXPECT_TRUE(port.GetXMLIDs().empty());
}

TEST(SerialPort, FourCamerasAtOnce) {
    std::vector<std::unique_ptr<GenCpCamera>> cameras;
    for (int i = 0; i < 4; ++i) {
        GenCpCameraData data;
        data.serial = std::to_string(i);
        data.rate = i % 2 == 0 ? 9600 : 115200;
        cameras.push_back(std::make_unique<GenCpCamera>(data));
    }
    OnThreads(4, [&](unsigned int i) {
        const std::string id = "GenCP#Linea#" + std::to_string(i);
        EXPECT_EQ(Probe(cameras[i]->Port()), id);
        for (int cycle = 0; cycle < 5; ++cycle) {
            CCLPort port;
            port.Connect(cameras[i]->Port(), id);
            for (std::uint32_t value = 0; value < 20; ++value) {
                std::uint32_t back = 0;
                port.Write(&value, GenCpCamera::Scratch, 4);
                port.Read(&back, GenCpCamera::Scratch, 4);
                ASSERT_EQ(back, value);
            }
        }
    });
}

} // namespace
} // namespace VX3::Test
