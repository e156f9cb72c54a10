// Values by name, and the configurer that turns every exception into a code.
#include "core/ObjectAbs.h"
#include "genicam/GenICamConfigurer.h"
#include "support/MemoryOwner.h"
#include "vx3/genicam/GenICamPointer.h"

#include <chrono>
#include <gtest/gtest.h>
#include <stdexcept>

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
    EXPECT_EQ(camera.Set("Stepped", 250U), Status::Ok);
    EXPECT_EQ(memory[0x10], 100) << "clamped";
    EXPECT_EQ(camera.Set("Wide", 5000000000ULL), Status::Ok);
    long wide = 0;
    std::memcpy(&wide, &memory[0x18], 8);
    EXPECT_EQ(wide, 5000000000L);
    EXPECT_EQ(camera.Set("Label", "text"), Status::Ok) << "a literal is no boolean";
    EXPECT_STREQ(reinterpret_cast<const char*>(&memory[0x40]), "text");
    EXPECT_EQ(camera.Set("Flag", true), Status::Ok);
    EXPECT_EQ(camera.Set("Rate", 9.0), Status::Ok);
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
    // A value of another type counts as the zero of the node's.
    EXPECT_EQ(camera.Set("Stepped", NodeValue("12")), Status::Ok);
    EXPECT_EQ(memory[0x10], 0);
    // Commands are executed only when told to.
    EXPECT_EQ(camera.Set("Fire", NodeValue(0L)), Status::NotFound);
    EXPECT_EQ(camera.Set("Fire", NodeValue(static_cast<CommandValue>(1))), Status::NotFound);
    EXPECT_EQ(memory[0x34], 0);
    EXPECT_EQ(camera.Set("Fire", NodeValue(CommandValue::Execute)), Status::Ok);
    EXPECT_EQ(memory[0x34], 7);
}

TEST(Configurer, WritesRegistersNoLongerThanTheyAre) {
    Configured camera;
    const unsigned char bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(camera.configurer.SetNodeValue("Four", bytes, 8), Status::Ok);
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

TEST(Configurer, NothingThrownGetsOut) {
    Configured reading; // time-outs are thrown inside
    reading.owner->result = Status::TimeOut;
    EXPECT_TRUE(reading.Get("Wide").IsEmpty());
    Configured writing;
    writing.owner->result = Status::TimeOut;
    EXPECT_EQ(writing.Set("Wide", 1U), Status::NodeFailed);

    struct Throwing : IGenApi {
        IXmlData* GetXmlData() override { return nullptr; }
        std::shared_ptr<INodeMap> GetNodeMap() override { return nullptr; }
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

TEST(Configurer, SleepsForThePauseThatListsOfSettingsHold) {
    using Clock = std::chrono::steady_clock;
    Configured camera;
    const auto milliseconds = [&](NodeValue value) {
        const auto start = Clock::now();
        EXPECT_EQ(camera.Set("DelayMsNode", std::move(value)), Status::Ok);
        return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
    };
    EXPECT_GE(milliseconds(NodeValue(50L)), 50);
    EXPECT_LT(milliseconds(NodeValue(0L)), 40);
    EXPECT_LT(milliseconds(NodeValue("50")), 40);
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
