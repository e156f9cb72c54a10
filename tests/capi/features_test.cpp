// Every typed feature function of the C interface, over two cameras whose description has every node type and
// whose streams have features of their own: each function must reach the right nodes of the right target, and
// no other.
#include "capi/Handles.h"
#include "genicam/GenICamConfigurer.h"
#include "support/FakeDevice.h"
#include "support/MemoryOwner.h"

#include <gtest/gtest.h>
#include <tuple>

namespace VX3::Test {
namespace {

using Bytes = std::vector<std::uint8_t>;
constexpr auto NotFound = static_cast<int>(Status::NotFound);

std::tuple<const char*> Arguments(const std::string& value) {
    return {value.c_str()};
}
std::tuple<const std::uint8_t*, unsigned int> Arguments(const Bytes& value) {
    return {value.data(), static_cast<unsigned int>(value.size())};
}
template <typename T>
std::tuple<T> Arguments(T value) {
    return {value};
}

class CApiFeatures : public ::testing::Test {
protected:
    CApiFeatures() {
        const auto interface = std::make_shared<FakeInterface>("typed interface");
        for (const char* name : {"first", "second"}) {
            auto& device = devices_.emplace_back(std::make_shared<FakeDevice>(name, interface.get()));
            device->Describe(EveryType);
            owners_.push_back(std::make_shared<MemoryOwner>());
            streams_.push_back(device->AddStream());
            streams_.back()->configurer = std::make_unique<GenICamConfigurer>(
                std::make_unique<GenApiRI>(Xml("Stream.xml", EveryType), owners_.back(), nullptr),
                streams_.back());
        }
        interface->SetReachable({devices_.begin(), devices_.end()});
        auto record = std::make_shared<Manager>();
        {
            MutexLock lock(record->mutex);
            std::vector<std::shared_ptr<IDevice>> interfaces{interface};
            record->manager = std::make_unique<FakeManager>(IntfDevType::Virtual, "typed", interfaces);
        }
        manager_ = CApi::GetTables().managers.Add(std::move(record));
        device_ = Manager_GetDeviceByName(manager_, "typed interface");
        for (unsigned int i = 0; i < 2; ++i) {
            cameras_.push_back(Device_GetSubDeviceByIndex(device_, i));
            EXPECT_EQ(SubDevice_Connect(cameras_.back()), 0);
        }
    }
    ~CApiFeatures() override {
        for (SubDevice* camera : cameras_)
            SubDevice_Destory(camera);
        Device_Destory(device_);
        Manager_Destory(manager_);
    }

    template <typename T, typename Get, typename... Index>
    static T Read(SubDevice* camera, const char* name, Get get, Index... index) {
        if constexpr (std::is_same_v<T, std::string>) {
            char text[32] = "";
            EXPECT_EQ(get(camera, index..., name, text, sizeof text), 0);
            return text;
        } else if constexpr (std::is_same_v<T, Bytes>) {
            std::uint8_t bytes[8];
            unsigned int length = 0;
            EXPECT_EQ(get(camera, index..., name, bytes, sizeof bytes, &length), 0);
            EXPECT_EQ(get(camera, index..., name, bytes, length - 1, &length), -3);
            return {bytes, bytes + length};
        } else {
            T value{};
            EXPECT_EQ(get(camera, index..., name, &value), 0);
            EXPECT_EQ(get(camera, index..., name, nullptr), -1);
            return value;
        }
    }
    Bytes& Memory(bool ofStream, std::size_t index) {
        return ofStream ? owners_[index]->memory : devices_[index]->memory;
    }
    // The bytes of all registers of both targets of a kind.
    std::vector<Bytes> Registers(bool ofStreams) {
        std::vector<Bytes> registers;
        for (std::size_t i = 0; i < 2; ++i)
            registers.emplace_back(Memory(ofStreams, i).begin(), Memory(ofStreams, i).begin() + 0x80);
        return registers;
    }

    // The four ways to set one type: one target, all, and the two that choose by the switch. `index` is the
    // stream's, or nothing.
    template <typename T, typename Get, typename Set, typename SetAll, typename SetAuto, typename... Index>
    void Check(const char* name, std::array<T, 4> values, Get get, Set set, SetAll setAll, SetAuto setAuto,
               Index... index) {
        SCOPED_TRACE(std::string(name) + (sizeof...(index) == 0 ? " of cameras" : " of streams"));
        constexpr bool OnStream = sizeof...(index) != 0;
        const auto sync = OnStream ? Stream_SetParamSyncEnabled : SetParamSyncEnabled;
        const auto otherSync = OnStream ? SetParamSyncEnabled : Stream_SetParamSyncEnabled;
        const auto held = [&] {
            return std::pair(Read<T>(cameras_[0], name, get, index...),
                             Read<T>(cameras_[1], name, get, index...));
        };
        const auto call = [](auto function, auto before, const T& value, auto... after) {
            return std::apply(function, std::tuple_cat(before, Arguments(value), std::tuple(after...)));
        };
        const auto before = Registers(!OnStream);
        const T initial = held().second;
        DeviceParamSetResult results[4];
        unsigned int count = 77;
        EXPECT_EQ(call(set, std::tuple(cameras_[0], index..., name), values[0]), 0);
        EXPECT_EQ(held(), std::pair(values[0], initial));
        EXPECT_EQ(call(set, std::tuple(cameras_[0], index..., "Absent"), values[0]), NotFound);
        otherSync(true);
        EXPECT_EQ(call(setAuto, std::tuple(cameras_[1], index..., name), values[1], results, 4U, &count), 0);
        otherSync(false);
        EXPECT_EQ(held(), std::pair(values[0], values[1]));
        EXPECT_EQ(count, 77U) << "one target leaves the results alone";
        EXPECT_EQ(call(setAll, std::tuple(name), values[2], results, 4U, &count), 0);
        EXPECT_EQ(held(), std::pair(values[2], values[2]));
        EXPECT_EQ(count, 2U);
        EXPECT_STREQ(results[1].name, "second");
        EXPECT_EQ(results[1].status, 0);
        EXPECT_EQ(call(setAll, std::tuple("Absent"), values[3], results, 1U, &count), 0);
        EXPECT_EQ(std::pair(count, results[0].status), std::pair(1U, NotFound));
        EXPECT_EQ(call(setAll, std::tuple(name), values[3], nullptr, 4U, &count), -1);
        sync(true);
        EXPECT_EQ(call(setAuto, std::tuple(cameras_[1], index..., name), values[3], results, 4U, &count), 0);
        sync(false);
        EXPECT_EQ(held(), std::pair(values[3], values[3]));
        EXPECT_EQ(Registers(!OnStream), before) << "the other kind of target is left alone";
    }

    // Commands have nothing to read but the register that they write.
    template <typename Set, typename SetAll, typename SetAuto, typename... Index>
    void CheckCommand(Set set, SetAll setAll, SetAuto setAuto, Index... index) {
        constexpr bool OnStream = sizeof...(index) != 0;
        DeviceParamSetResult results[2];
        unsigned int count = 0;
        const auto fired = [&] { // both registers, which are cleared
            const int first = std::exchange(Memory(OnStream, 0)[0x34], std::uint8_t(0));
            return std::pair(first, int(std::exchange(Memory(OnStream, 1)[0x34], std::uint8_t(0))));
        };
        const auto sync = OnStream ? Stream_SetParamSyncEnabled : SetParamSyncEnabled;
        EXPECT_EQ(set(cameras_[0], index..., "Fire"), 0);
        EXPECT_EQ(fired(), std::pair(7, 0));
        EXPECT_EQ(set(cameras_[0], index..., "Absent"), NotFound);
        EXPECT_EQ(setAll("Fire", results, 2, &count), 0);
        EXPECT_EQ(fired(), std::pair(7, 7));
        EXPECT_EQ(setAuto(cameras_[1], index..., "Fire", results, 2, &count), 0);
        EXPECT_EQ(fired(), std::pair(0, 7));
        sync(true);
        EXPECT_EQ(setAuto(cameras_[1], index..., "Fire", results, 2, &count), 0);
        sync(false);
        EXPECT_EQ(fired(), std::pair(7, 7));
        EXPECT_EQ(Registers(!OnStream), std::vector<Bytes>(2, Bytes(0x80))) << "no other target's";
    }

    template <typename Name, typename Size, typename Data, typename... Index>
    void CheckDescription(const char* expected, Name getName, Size getSize, Data getData, Index... index) {
        char name[16];
        unsigned int length = 0;
        const auto nameSize = static_cast<unsigned int>(std::strlen(expected));
        EXPECT_EQ(getName(cameras_[0], index..., name, nameSize + 1, &length), 0);
        EXPECT_STREQ(name, expected);
        EXPECT_EQ(length, nameSize);
        EXPECT_EQ(getName(cameras_[0], index..., name, nameSize, &length), -3);
        EXPECT_EQ(getSize(cameras_[0], index..., &length), 0);
        std::string text(length, ' ');
        auto* bytes = reinterpret_cast<std::uint8_t*>(text.data());
        EXPECT_EQ(getData(cameras_[0], index..., bytes, length - 1), -3);
        EXPECT_EQ(getData(cameras_[0], index..., nullptr, length), -1);
        EXPECT_EQ(getData(cameras_[0], index..., bytes, length), 0);
        EXPECT_EQ(text, EveryType);
    }

    std::vector<std::shared_ptr<FakeDevice>> devices_;
    std::vector<FakeStream*> streams_;
    std::vector<std::shared_ptr<MemoryOwner>> owners_; // the streams' registers
    Manager* manager_ = nullptr;
    Device* device_ = nullptr;
    std::vector<SubDevice*> cameras_;
};

TEST_F(CApiFeatures, EveryTypeOfCamerasAndStreams) {
    const std::array<std::int64_t, 4> integers{8, 12, 16, 20};
    const std::array<double, 4> reals{1.75, 2.0, 2.25, 2.5};
    const std::array<bool, 4> flags{true, true, false, true};
    const std::array<std::string, 4> texts{"a", "bc", "", "def"};
    const std::array<Bytes, 4> bytes{Bytes{1, 2, 3, 4}, Bytes{5, 6, 7, 8}, Bytes{9, 8, 7, 6},
                                     Bytes{1, 1, 2, 3}};
    Check("Stepped", integers, GetNodeValue_Int, SetNodeValue_Int, SetNodeValueAllDev_Int,
          AutoSetNodeValue_Int);
    Check("Stepped", integers, Stream_GetNodeValue_Int, Stream_SetNodeValue_Int,
          Stream_SetNodeValueAllDev_Int, Stream_AutoSetNodeValue_Int, 0U);
    Check("Rate", reals, GetNodeValue_Double, SetNodeValue_Double, SetNodeValueAllDev_Double,
          AutoSetNodeValue_Double);
    Check("Rate", reals, Stream_GetNodeValue_Double, Stream_SetNodeValue_Double,
          Stream_SetNodeValueAllDev_Double, Stream_AutoSetNodeValue_Double, 0U);
    Check("Flag", flags, GetNodeValue_Bool, SetNodeValue_Bool, SetNodeValueAllDev_Bool,
          AutoSetNodeValue_Bool);
    Check("Flag", flags, Stream_GetNodeValue_Bool, Stream_SetNodeValue_Bool, Stream_SetNodeValueAllDev_Bool,
          Stream_AutoSetNodeValue_Bool, 0U);
    Check("Label", texts, GetNodeValue_Chars, SetNodeValue_Chars, SetNodeValueAllDev_Chars,
          AutoSetNodeValue_Chars);
    Check("Label", texts, Stream_GetNodeValue_Chars, Stream_SetNodeValue_Chars,
          Stream_SetNodeValueAllDev_Chars, Stream_AutoSetNodeValue_Chars, 0U);
    Check("Four", bytes, GetNodeValue_Buffer, SetNodeValue_Buffer, SetNodeValueAllDev_Buffer,
          AutoSetNodeValue_Buffer);
    Check("Four", bytes, Stream_GetNodeValue_Buffer, Stream_SetNodeValue_Buffer,
          Stream_SetNodeValueAllDev_Buffer, Stream_AutoSetNodeValue_Buffer, 0U);
    double value = 0;
    EXPECT_EQ(GetNodeValue_Double(cameras_[0], "Stepped", &value), -2) << "no value of that kind";
    EXPECT_EQ(Stream_GetNodeValue_Double(cameras_[0], 1, "Rate", &value), -1) << "no such stream";
    EXPECT_EQ(SetNodeValue_Chars(cameras_[0], "Label", nullptr), -1);
    EXPECT_EQ(SetNodeValue_Buffer(cameras_[0], "Four", nullptr, 4), -1);
}

TEST_F(CApiFeatures, CommandsAndDescriptions) {
    CheckCommand(SetNodeValue_Command, SetNodeValueAllDev_Command, AutoSetNodeValue_Command);
    CheckCommand(Stream_SetNodeValue_Command, Stream_SetNodeValueAllDev_Command,
                 Stream_AutoSetNodeValue_Command, 0U);
    CheckDescription("fake.xml", SubDevice_GetXmlName, SubDevice_GetXmlDataSize, SubDevice_GetXmlData);
    CheckDescription("Stream.xml", Stream_GetXmlName, Stream_GetXmlDataSize, Stream_GetXmlData, 0U);
}

TEST_F(CApiFeatures, OnlyConnectedCamerasWithinTheCapacityAreSet) {
    DeviceParamSetResult results[2];
    unsigned int count = 99;
    ASSERT_EQ(SetNodeValueAllDev_Int("Stepped", 8, results, 1, &count), 0);
    EXPECT_EQ(std::pair(count, devices_[1]->memory[0x10]), std::pair(1U, std::uint8_t(0)));
    ASSERT_EQ(SubDevice_DisConnect(cameras_[0]), 0);
    ASSERT_EQ(SetNodeValueAllDev_Int("Stepped", 500, results, 2, &count), 0);
    EXPECT_EQ(std::pair(count, devices_[1]->memory[0x10]), std::pair(1U, std::uint8_t(100))) << "clamped";
    EXPECT_STREQ(results[0].name, "second");
    streams_[1]->configurer.reset();
    EXPECT_EQ(Stream_SetNodeValueAllDev_Int("Stepped", 1, results, 2, &count), 0);
    EXPECT_EQ(results[0].status, -1) << "a stream without features";
    EXPECT_EQ(SetNodeValue_Int(cameras_[1], "Fixed", 1), static_cast<int>(Status::NodeFailed));
    std::int64_t integer = 0;
    EXPECT_EQ(GetNodeValue_Int(cameras_[0], "Stepped", &integer), -1) << "not connected";
    EXPECT_EQ(GetNodeValue_Int(cameras_[1], nullptr, &integer), -1);
}

TEST_F(CApiFeatures, StorableNodesAreListedAsText) {
    EXPECT_EQ(SetNodeValue_Int(cameras_[0], "Mode", 9), 0);
    EXPECT_EQ(SetNodeValue_Double(cameras_[0], "Rate", 2.25), 0);
    EXPECT_EQ(SetNodeValue_Bool(cameras_[0], "Flag", true), 0);
    EXPECT_EQ(SetNodeValue_Chars(cameras_[0], "Label", "text"), 0);
    const std::uint8_t bytes[] = {1, 0xAB, 3, 4};
    EXPECT_EQ(SetNodeValue_Buffer(cameras_[0], "Four", bytes, 4), 0);
    unsigned int count = 0;
    EXPECT_EQ(GetNodes(cameras_[0], nullptr, 0, nullptr), -1);
    EXPECT_EQ(GetNodes(cameras_[0], nullptr, 0, &count), -2);
    std::vector<NodeRecord> nodes(count + 1);
    EXPECT_EQ(GetNodes(cameras_[0], nullptr, count, &count), -1);
    EXPECT_EQ(GetNodes(cameras_[0], nodes.data(), count - 1, &count), -2);
    ASSERT_EQ(GetNodes(cameras_[0], nodes.data(), count, &count), 0);
    std::map<std::string, std::string> seen;
    for (unsigned int i = 0; i < count; ++i) {
        EXPECT_EQ(nodes[i].nameSize, std::strlen(nodes[i].name) + 1);
        EXPECT_EQ(nodes[i].valueSize, std::strlen(nodes[i].value) + 1);
        seen[nodes[i].name] = nodes[i].value;
    }
    const std::map<std::string, std::string> expected{{"Stepped", "0"},  {"Rate", "2.250000"},
                                                      {"Flag", "true"},  {"Mode", "9_Fast"},
                                                      {"Label", "text"}, {"Four", "01,AB,03,04"}};
    EXPECT_EQ(seen, expected);
    FreeNodes(nodes.data(), count);
    FreeNodes(nullptr, 3);
}

TEST_F(CApiFeatures, EnumerationsGoByTheNamesOfTheirEntries) {
    unsigned int count = 0;
    ASSERT_EQ(GetNodeEntryCount(cameras_[0], "Mode", &count), 0);
    std::map<std::string, std::int64_t> entries;
    char name[16] = "";
    std::int64_t value = 0;
    for (unsigned int i = 0; i < count; ++i) {
        EXPECT_EQ(GetNodeEntry(cameras_[0], "Mode", i, name, 3, &value), -3);
        EXPECT_EQ(GetNodeEntry(cameras_[0], "Mode", i, name, sizeof name, &value), 0);
        entries[name] = value;
    }
    EXPECT_EQ(entries, (std::map<std::string, std::int64_t>{{"Slow", 3}, {"Fast", 9}}));
    EXPECT_EQ(GetNodeEntry(cameras_[0], "Mode", count, name, sizeof name, nullptr), -1);
    EXPECT_EQ(SetNodeValue_Entry(cameras_[0], "Mode", "Fast"), 0);
    EXPECT_EQ(GetNodeValue_Entry(cameras_[0], "Mode", name, sizeof name), 0);
    EXPECT_STREQ(name, "Fast");
    EXPECT_EQ(GetNodeValue_Int(cameras_[0], "Mode", &value), 0);
    EXPECT_EQ(value, 9);
    EXPECT_EQ(SetNodeValue_Entry(cameras_[0], "Mode", "Faster"), NotFound);
    EXPECT_EQ(SetNodeValue_Entry(cameras_[0], "Mode", nullptr), -1);
    EXPECT_EQ(Stream_SetNodeValue_Chars(cameras_[0], 0, "Mode", "Slow"), 0);
    for (const char* other : {"Stepped", "Absent", static_cast<const char*>(nullptr)})
        EXPECT_EQ(GetNodeEntryCount(cameras_[0], other, &count), -1);
}

TEST_F(CApiFeatures, KindsAccessAndLimits) {
    struct {
        const char* name;
        int type, access;
        bool streamable;
    } const nodes[] = {{"Stepped", VX3_NODE_INTEGER, VX3_ACCESS_READ_WRITE, true},
                       {"Fixed", VX3_NODE_INTEGER, VX3_ACCESS_READ_ONLY, false},
                       {"Rate", VX3_NODE_FLOAT, VX3_ACCESS_READ_WRITE, true},
                       {"Flag", VX3_NODE_BOOLEAN, VX3_ACCESS_READ_WRITE, true},
                       {"Fire", VX3_NODE_COMMAND, VX3_ACCESS_WRITE_ONLY, false},
                       {"Mode", VX3_NODE_ENUMERATION, VX3_ACCESS_READ_WRITE, true},
                       {"Label", VX3_NODE_STRING, VX3_ACCESS_READ_WRITE, true},
                       {"Four", VX3_NODE_REGISTER, VX3_ACCESS_READ_WRITE, true},
                       {"Root", VX3_NODE_OTHER, VX3_ACCESS_READ_ONLY, false}};
    for (const auto& node : nodes) {
        int type = -1, access = -1;
        bool streamable = !node.streamable;
        EXPECT_EQ(GetNodeType(cameras_[0], node.name, &type), 0);
        EXPECT_EQ(GetNodeAccessMode(cameras_[0], node.name, &access), 0);
        EXPECT_EQ(GetNodeIsStreamable(cameras_[0], node.name, &streamable), 0);
        EXPECT_EQ(std::tuple(type, access, streamable), std::tuple(node.type, node.access, node.streamable))
            << node.name;
    }
    std::int64_t integer = 0;
    for (const auto& [get, limit] : {std::pair(GetNodeMinValue_Int, 0), std::pair(GetNodeMaxValue_Int, 100),
                                     std::pair(GetNodeIncValue_Int, 4)}) {
        EXPECT_EQ(get(cameras_[0], "Stepped", &integer), 0);
        EXPECT_EQ(integer, limit);
        EXPECT_EQ(get(cameras_[0], "Rate", &integer), -1);
    }
    double real = 0;
    for (const auto& [get, limit] :
         {std::pair(GetNodeMinValue_Double, 1.5), std::pair(GetNodeMaxValue_Double, 2.5),
          std::pair(GetNodeIncValue_Double, 0.25)}) {
        EXPECT_EQ(get(cameras_[0], "Rate", &real), 0);
        EXPECT_EQ(real, limit);
        EXPECT_EQ(get(cameras_[0], "Stepped", &real), -1);
        EXPECT_EQ(get(cameras_[0], "Rate", nullptr), -1);
    }
}

} // namespace
} // namespace VX3::Test
