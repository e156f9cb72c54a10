// Values by name, and the configurer that turns every exception into a code.
#include "core/ObjectAbs.h"
#include "genicam/GenICamConfigurer.h"
#include "genicam/MemoryOwner.h"
#include "vx3/genicam/GenICamPointer.h"

#include <chrono>
#include <gtest/gtest.h>
#include <stdexcept>

using namespace VX3;
using namespace VX3::GenICam;
using namespace VX3::Testing;

namespace {

struct Configured {
    std::shared_ptr<MemoryOwner> owner = std::make_shared<MemoryOwner>();
    ObjectAbs object{0x00030001U, "camera"};
    GenICamConfigurer configurer{std::make_unique<GenApiRI>(Xml("c.xml", EveryType), owner, nullptr),
                                 &object};

    StatusCode Set(const std::string& name, NodeValue value) { return configurer.SetNodeValue(name, value); }
};

} // namespace

TEST(Configurer, SetsByTheNodesTypeAndSaysWhatItRefuses) {
    Configured camera;
    auto& memory = camera.owner->memory;
    EXPECT_EQ(camera.configurer.SetNodeValue("Stepped", 250U), Status::Ok);
    EXPECT_EQ(memory[0x10], 100) << "clamped";
    EXPECT_EQ(camera.configurer.SetNodeValue("Wide", 5000000000ULL), Status::Ok);
    long wide = 0;
    std::memcpy(&wide, &memory[0x18], 8);
    EXPECT_EQ(wide, 5000000000L);
    EXPECT_EQ(camera.configurer.SetNodeValue("Label", "text"), Status::Ok) << "a literal is no boolean";
    EXPECT_STREQ(reinterpret_cast<const char*>(&memory[0x40]), "text");
    EXPECT_EQ(camera.configurer.SetNodeValue("Flag", true), Status::Ok);
    EXPECT_EQ(camera.configurer.SetNodeValue("Rate", 9.0), Status::Ok);
    EXPECT_EQ(camera.configurer.SetNodeValue("Fixed", 1U), Status::NodeFailed) << "read-only";
    EXPECT_EQ(camera.configurer.SetNodeValue("Mode", 4U), Status::NodeFailed) << "no such entry";
    EXPECT_EQ(camera.configurer.SetNodeValue("Absent", 1U), Status::NotFound);
    EXPECT_EQ(camera.configurer.SetNodeValue("Root", 1U), Status::NotFound) << "categories have no value";
    // A value of another type counts as the zero of the node's.
    EXPECT_EQ(camera.Set("Stepped", NodeValue("12")), Status::Ok);
    EXPECT_EQ(memory[0x10], 0);
}

TEST(Configurer, ExecutesCommandsOnlyWhenToldTo) {
    Configured camera;
    EXPECT_EQ(camera.Set("Fire", NodeValue(0L)), Status::NotFound);
    EXPECT_EQ(camera.Set("Fire", NodeValue(static_cast<CommandValue>(1))), Status::NotFound);
    EXPECT_EQ(camera.owner->memory[0x34], 0);
    EXPECT_EQ(camera.Set("Fire", NodeValue(CommandValue::Execute)), Status::Ok);
    EXPECT_EQ(camera.owner->memory[0x34], 7);
}

TEST(Configurer, WritesRegistersNoLongerThanTheyAre) {
    Configured camera;
    const unsigned char bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(camera.configurer.SetNodeValue("Four", bytes, 8), Status::Ok);
    EXPECT_EQ(camera.owner->lastWriteLength, 4U);
    EXPECT_EQ(camera.owner->memory[0x64], 0);
    const NodeValue value = camera.configurer.GetNodeValue("Four");
    ASSERT_EQ(value.BufferLength(), 4U);
    EXPECT_EQ(std::memcmp(value.Buffer(), bytes, 4), 0);
}

TEST(Configurer, ReadsByTheNodesType) {
    Configured camera;
    camera.owner->memory[0x38] = 9;
    camera.owner->memory[0x40] = 'x';
    const NodeValue mode = camera.configurer.GetNodeValue("Mode");
    EXPECT_EQ(mode.GetType(), NodeValue::Type::Integer) << "the number, not the symbolic name";
    EXPECT_EQ(mode.AsInteger(), 9);
    EXPECT_EQ(camera.configurer.GetNodeValue("Label").AsString(), "x");
    EXPECT_EQ(camera.configurer.GetNodeValue("Flag").GetType(), NodeValue::Type::Boolean);
    EXPECT_EQ(camera.configurer.GetNodeValue("Rate").GetType(), NodeValue::Type::Float);
    EXPECT_EQ(camera.configurer.GetNodeValue("EnumEntry_Mode_Slow").AsInteger(), 3);
    EXPECT_EQ(camera.configurer.GetNodeValue("Root").GetType(), NodeValue::Type::String);
    for (const char* name : {"Fire", "Absent", "Device"})
        EXPECT_TRUE(camera.configurer.GetNodeValue(name).IsEmpty()) << name;
}

TEST(Configurer, TimeOutsBecomeCodesAndEmptyValues) {
    Configured reading;
    reading.owner->result = Status::TimeOut;
    EXPECT_TRUE(reading.configurer.GetNodeValue("Wide").IsEmpty());
    Configured writing;
    writing.owner->result = Status::TimeOut;
    EXPECT_EQ(writing.configurer.SetNodeValue("Wide", 1U), Status::NodeFailed);
}

TEST(Configurer, NothingThrownGetsOut) {
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
