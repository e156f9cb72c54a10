// Values by name, and the configurer that turns every exception into a code.
#include "core/ObjectAbs.h"
#include "genicam/GenICamConfigurer.h"
#include "genicam/ValueConversion.h"
#include "genicam/XmlData.h"
#include "support/MemoryOwner.h"
#include "vx3/core/LastFailure.h"
#include "vx3/genicam/GenICamPointer.h"

#include <chrono>
#include <cmath>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>

namespace VX3::Test {
namespace {

using namespace GenICam;

struct Configured {
    std::shared_ptr<MemoryOwner> owner = std::make_shared<MemoryOwner>();
    ObjectAbs object{0x00030001U, "camera"};
    GenICamConfigurer configurer{std::make_unique<GenApiRI>(Xml("c.xml", EveryType), owner, nullptr),
                                 &object};

    template <typename T>
    StatusCode Set(const std::string& name, T value) {
        return configurer.SetNodeValue(name, value);
    }
    NodeValue Get(const std::string& name) { return configurer.GetNodeValue(name); }
};

TEST(Configurer, SetsByTheNodesTypeAndSaysWhatItRefuses) {
    Configured camera;
    auto& memory = camera.owner->memory;
    EXPECT_EQ(camera.Set("Label", "text"), Status::Ok) << "a literal is no boolean";
    EXPECT_STREQ(reinterpret_cast<const char*>(&memory[0x40]), "text");
    EXPECT_EQ(camera.Set("Flag", true), Status::Ok);
    EXPECT_EQ(memory[0x30], 1);
    const std::pair<const char*, StatusCode> refused[] = {
        {"Fixed", Status::NodeFailed},
        {"Mode", Status::NodeFailed},
        {"Absent", Status::NotFound},
        {"Root", Status::NotFound}}; // read-only, no such entry, no such node, no value
    for (const auto& [name, status] : refused)
        EXPECT_EQ(camera.Set(name, 4U), status) << name;
    for (const StatusCode status : // from whatever type the client has
         {camera.Set("Absent", 1U), camera.Set("Absent", 1ULL), camera.Set("Absent", 1.0),
          camera.Set("Absent", true), camera.Set("Absent", "text"), camera.Set("Absent", std::string("text")),
          camera.configurer.SetNodeValue("Absent", memory.data(), 4)})
        EXPECT_EQ(status, Status::NotFound);
    // Commands are executed only when told to.
    EXPECT_EQ(camera.Set("Fire", NodeValue(0L)), Status::NotFound);
    EXPECT_EQ(camera.Set("Fire", NodeValue(static_cast<CommandValue>(1))), Status::NotFound);
    EXPECT_EQ(memory[0x34], 0);
    EXPECT_EQ(camera.Set("Fire", NodeValue(CommandValue::Execute)), Status::Ok);
    EXPECT_EQ(memory[0x34], 7);
}

TEST(Configurer, ConvertsWhereNothingIsLostAndRefusesElse) {
    Configured camera;
    const unsigned char bytes[2] = {1, 2};
    struct {
        const char* name;
        NodeValue value;
        StatusCode status;
        NodeValue held; // afterwards
    } const cases[] = {{"Stepped", "12", Status::Ok, 12},
                       {"Stepped", "0x10", Status::Ok, 16},
                       {"Stepped", "8.0", Status::Ok, 8},
                       {"Stepped", 20.0, Status::Ok, 20},
                       {"Stepped", true, Status::Ok, 0},
                       {"Stepped", 20.5, Status::NotFound, 0},
                       {"Stepped", "12 mm", Status::NotFound, 0},
                       {"Stepped", 1e30, Status::NotFound, 0},
                       {"Wide", 5000000000.0, Status::Ok, 5000000000L},
                       {"Wide", bytes[0], Status::Ok, 1},
                       {"Rate", 2, Status::Ok, 2.0},
                       {"Rate", "2.25", Status::Ok, 2.25},
                       {"Rate", "2,5", Status::NotFound, 2.25},
                       {"Rate", (1L << 53) + 1, Status::NotFound, 2.25},
                       {"Rate", std::nan(""), Status::NotFound, 2.25},
                       {"Flag", 1, Status::Ok, true},
                       {"Flag", "False", Status::Ok, false},
                       {"Flag", 2, Status::NotFound, false},
                       {"Flag", "1", Status::Ok, true},
                       {"Mode", "Fast", Status::Ok, 9},
                       {"Mode", "3", Status::Ok, 3},
                       {"Mode", 9.0, Status::Ok, 9},
                       {"Mode", "Faster", Status::NotFound, 9},
                       {"Label", 640, Status::Ok, "640"},
                       {"Label", false, Status::Ok, "false"},
                       {"Label", 0.1, Status::Ok, "0.1"},
                       {"Label", NodeValue(bytes, 2), Status::NotFound, "0.1"},
                       {"Label", NodeValue(), Status::NotFound, "0.1"}};
    for (const auto& [name, value, status, held] : cases) {
        SCOPED_TRACE(std::string(name) + " = " + Shown(value));
        EXPECT_EQ(camera.configurer.SetNodeValue(name, value), status);
        EXPECT_EQ(Shown(camera.Get(name)), Shown(held));
        EXPECT_EQ(LastFailure().code, status);
        if (Failed(status))
            EXPECT_NE(LastFailure().text.find(Shown(value)), std::string::npos) << LastFailure().text;
    }
    EXPECT_EQ(camera.configurer.SetNodeValue("Four", 5), Status::NotFound) << "a register takes bytes";
}

TEST(Configurer, SaysWhatWasSetInsteadOfWhatWasAskedFor) {
    Configured camera;
    EXPECT_EQ(camera.Set("Stepped", 250), Status::Ok);
    EXPECT_EQ(LastFailure().text, "Stepped: 250 was asked for, 100 was set (0 to 100 in steps of 4)");
    EXPECT_EQ(camera.Set("Rate", 9.0), Status::Ok);
    EXPECT_EQ(LastFailure().text, "Rate: 9 was asked for, 2.5 was set (1.5 to 2.5)");
    EXPECT_EQ(LastFailure().code, Status::Ok);
    EXPECT_EQ(camera.Set("Rate", 2.0), Status::Ok);
    EXPECT_EQ(LastFailure().text, "");
}

// What people write, and the type it must arrive as.
TEST(Configurer, NaturalCallsPickTheRightOverload) {
    Configured camera;
    IConfigurer& features = camera.configurer;
    const auto sets = [&](const char* name, const NodeValue& held, StatusCode status) {
        EXPECT_EQ(status, Status::Ok) << name;
        EXPECT_EQ(Shown(camera.Get(name)), Shown(held)) << name;
    };
    sets("Stepped", 64, features.SetNodeValue("Stepped", 64));
    sets("Wide", -5, features.SetNodeValue("Wide", -5));
    sets("Wide", 7, features.SetNodeValue("Wide", std::size_t(7)));
    sets("Wide", 8, features.SetNodeValue("Wide", std::int64_t(8)));
    sets("Wide", 9, features.SetNodeValue("Wide", NodeValue(9)));
    sets("Rate", 1.5, features.SetNodeValue("Rate", 1.5F));
    char label[] = "mine";
    sets("Label", "mine", features.SetNodeValue("Label", label));
    EXPECT_EQ(features.SetNodeValue("Fire", CommandValue::Execute), Status::Ok);
    const NodeValue five(5);
    sets("Wide", 5, features.SetNodeValue("Wide", five));
    EXPECT_EQ(std::tuple(five.GetType(), NodeValue(-5).AsInteger(), NodeValue(std::size_t(6)).AsInteger()),
              std::tuple(NodeValue::Type::Integer, -5L, 6L));
    EXPECT_FALSE((std::is_constructible_v<NodeValue, const unsigned char*>))
        << "no pointer becomes a boolean";
}

TEST(Configurer, WritesRegistersNoLongerThanTheyAre) {
    Configured camera;
    const unsigned char bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(camera.configurer.SetNodeValue("Four", bytes, 8), Status::Ok);
    EXPECT_EQ(LastFailure().text, "Four: 8 bytes were given, the first 4 were written");
    EXPECT_EQ(camera.owner->lastWriteLength, 4U);
    EXPECT_EQ(camera.owner->memory[0x64], 0);
    const NodeValue value = camera.Get("Four");
    ASSERT_EQ(value.BufferLength(), 4U);
    EXPECT_EQ(std::memcmp(value.Buffer(), bytes, 4), 0);
}

TEST(Configurer, ReadsByTheNodesType) {
    Configured camera;
    camera.owner->memory[0x38] = 9;
    camera.owner->memory[0x40] = 'x';
    EXPECT_EQ(camera.Get("Mode").AsInteger(), 9) << "the number, not the symbolic name";
    EXPECT_EQ(camera.Get("Label").AsString(), "x");
    using Type = NodeValue::Type;
    for (const auto& [name, type] : {std::pair("Flag", Type::Boolean), std::pair("Rate", Type::Float),
                                     std::pair("Root", Type::String), std::pair("Mode", Type::Integer)})
        EXPECT_EQ(camera.Get(name).GetType(), type) << name;
    EXPECT_EQ(camera.Get("EnumEntry_Mode_Slow").AsInteger(), 3);
    for (const char* name : {"Fire", "Absent", "Device"})
        EXPECT_TRUE(camera.Get(name).IsEmpty()) << name;
}

TEST(Configurer, TellsWhyAnAccessFailed) {
    Configured camera;
    NodeValue value(5L);
    const StatusCode denied = Status::FromGvcp(0x8006);
    for (const StatusCode refusal : {denied, Status::TimeOut, Status::DeviceLost}) {
        camera.owner->result = refusal;
        EXPECT_EQ(camera.configurer.ReadNodeValue("Wide", value), refusal);
        EXPECT_TRUE(value.IsEmpty() && camera.Get("Wide").IsEmpty());
        EXPECT_EQ(camera.Set("Wide", 1U), Status::NodeFailed);
        EXPECT_EQ(LastFailure().code, refusal);
        EXPECT_NE(LastFailure().text.find("Wide"), std::string::npos) << LastFailure().text;
        EXPECT_NE(LastFailure().text.find(StatusText(refusal)), std::string::npos) << LastFailure().text;
    }
    camera.owner->result = Status::Ok;
    camera.owner->memory[0x18] = 42;
    EXPECT_EQ(camera.configurer.ReadNodeValue("Wide", value), Status::Ok);
    EXPECT_EQ(value.AsInteger(), 42) << "nothing was kept of the failures";
    EXPECT_EQ(camera.configurer.ReadNodeValue("Absent", value), Status::NotFound);
    EXPECT_EQ(camera.configurer.ReadNodeValue("Fire", value), Status::NotSupported);
    GenICamConfigurer broken(std::make_unique<GenApiRI>(Xml("c.txt", EveryType), camera.owner, nullptr),
                             nullptr);
    EXPECT_EQ(broken.ReadNodeValue("Wide", value), Status::Generic);
    EXPECT_NE(LastFailure().text.find("c.txt"), std::string::npos) << LastFailure().text;
}

TEST(Configurer, NothingThrownGetsOut) {
    struct Throwing : IGenApi {
        IXmlData* GetXmlData() override { return nullptr; }
        std::shared_ptr<INodeMap> GetNodeMap() override { return nullptr; }
        std::string Failure() const override { return {}; }
        NodeValue GetNodeValue(const std::string&) override { throw "a text"; }
        StatusCode SetNodeValue(const std::string& name, NodeValue&) override {
            if (name == "text")
                throw "a text";
            throw std::runtime_error("an exception");
        }
    };
    GenICamConfigurer configurer(std::make_unique<Throwing>(), nullptr);
    EXPECT_TRUE(configurer.GetNodeValue("text").IsEmpty());
    EXPECT_EQ(configurer.SetNodeValue("text", 1U), Status::NodeFailed);
    EXPECT_EQ(configurer.SetNodeValue("other", 1U), Status::NodeFailed);
    GenICamConfigurer empty(nullptr, nullptr);
    EXPECT_EQ(empty.SetNodeValue("any", 1U), Status::Generic);
    EXPECT_EQ(empty.GetXmlData(), nullptr);
    const GenICamPointer<IInteger, IBase> null(nullptr);
    EXPECT_THROW(null->GetMin(), const char*);
}

TEST(Descriptions, AreWrittenNowhereElseThanHere) {
    const std::pair<const char*, const char*> names[] = {
        {"cam.xml", "cam.xml"}, {"../x.xml", "x.xml"}, {"/etc/cron.d/x.zip", "x.zip"}, {"a/b/", ""}};
    for (const auto& [name, file] : names)
        EXPECT_EQ(XmlData(name, nullptr, 0).FileName(), file) << name;
}

TEST(Configurer, SleepsForThePauseThatListsOfSettingsHold) {
    using Clock = std::chrono::steady_clock;
    Configured camera;
    const auto milliseconds = [&](NodeValue value) {
        const auto start = Clock::now();
        EXPECT_EQ(camera.Set("DelayMsNode", std::move(value)), Status::Ok);
        return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
    };
    EXPECT_GE(milliseconds(NodeValue(50L)), 50);
    EXPECT_LT(milliseconds(NodeValue(0L)), 2000);
    EXPECT_LT(milliseconds(NodeValue("3000")), 2000) << "a text is no pause";
    const auto start = Clock::now();
    std::thread leaving([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        camera.owner->reachable = false;
    });
    EXPECT_EQ(camera.Set("DelayMsNode", 60000U), Status::NotConnected);
    leaving.join();
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(5)) << "sleeps on beside a lost device";
}

TEST(Configurer, AnswersWithItsOwnersIdentity) {
    Configured camera;
    GenICamConfigurer nested(nullptr, &camera.configurer);
    for (const GenICamConfigurer* configurer : {&camera.configurer, &nested}) {
        EXPECT_EQ(configurer->Name(), "camera");
        EXPECT_EQ(configurer->ObjID(), camera.object.ObjID());
        EXPECT_EQ(configurer->TypeId(), 0x00030001U);
        EXPECT_FALSE(configurer->IsConfigurable());
    }
    GenICamConfigurer orphan(nullptr, nullptr);
    EXPECT_EQ(orphan.Name(), "");
}

TEST(NodeValue, CopiesShareTheirBytes) {
    const unsigned char bytes[2] = {1, 2};
    const NodeValue value(bytes, 2);
    const NodeValue copy = value;
    EXPECT_EQ(copy.Buffer(), value.Buffer());
    EXPECT_NE(value.Buffer(), bytes);
    const NodeValue empty(bytes, 0);
    EXPECT_EQ(empty.GetType(), NodeValue::Type::Buffer);
    EXPECT_EQ(empty.Buffer(), nullptr);
}

} // namespace
} // namespace VX3::Test
