// What nodes do that no script tells: ports, bytes, callbacks, threads, endless descriptions.
#include "NodeScript.h"

#include "platform/genapi/base/AccessModes.h"
#include "support/GeneratedDescription.h"

#include <GenApi/vx3/Polling.h>
#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>

namespace VX3::Test {

TEST(Nodes, AccessModesCombineAndLock) {
    const EAccessMode modes[] = {NI, NA, WO, RO, RW};
    std::string combined, locked;
    for (const EAccessMode left : modes) {
        for (const EAccessMode right : modes)
            combined += Engine::AccessText(Engine::CombineAccess(left, right));
        locked += Engine::AccessText(Engine::LockedAccess(left));
    }
    EXPECT_EQ("NININININININANANANANINAWONAWONINANARORONINAWORORW", combined);
    EXPECT_EQ("NINANARORO", locked);
}

TEST(Nodes, PortDecidesOnAccessAndItsFailuresNameTheNode) {
    NodeScript script("IntReg Reg @0x20:4\nInteger F pValue=Reg\nInteger Constant Value=3", false);
    auto& port = script.nodes.port;
    script.Run(
        "Reg mode NA ; Constant mode RW ; Reg ? !Access~no port is connected ; Reg := 1 !Access~no port");
    EXPECT_FALSE(script.nodes.map->Connect(&port, "Elsewhere"));
    EXPECT_FALSE(script.nodes.map->Connect(&port, "Reg"));
    port.mode = RO;
    EXPECT_TRUE(script.nodes.map->Connect(&port));
    script.Run("Reg mode RO ; Reg = 1 !Access ; writes 0 ; fail reads ; F ? !Access~node 'Reg'\n"
               "F ? !Access~4 bytes at 0x20 ; F ? !Access~no answer");
    port.onRead = [](std::int64_t) { throw GenICam_3_2::TimeoutException("late", "", 0); };
    script.Run("F ? !Timeout");
    port.onRead = [](std::int64_t) { throw std::runtime_error("odd"); };
    script.Run("F ? !Access~odd ; fail none ; F ? 0");
    script.nodes.map->Connect(nullptr);
    script.Run("Reg mode NA ; Reg cached 0");
}

TEST(Nodes, RegistersFromOneToEightBytesAndTheSignsOfEach) {
    for (int length = 1; length <= 8; ++length) {
        const std::string place = " @64:" + std::to_string(length);
        NodeScript script("IntReg S" + place + " Sign=Signed\nIntReg U" + place + "\nIntReg L" + place +
                          " Endianess=LittleEndian");
        const std::int64_t all = length == 8 ? -2 : (std::int64_t(1) << (8 * length)) - 2;
        script.Run("S = -2 ; S ?? -2 ; U ? " + std::to_string(all));
        EXPECT_EQ(0xFE, script.nodes.port.memory[static_cast<std::size_t>(63 + length)]);
        script.Run("L = 1");
        EXPECT_EQ(1, script.nodes.port.memory[64]);
    }
}

TEST(Nodes, RawBytesOneTransferAndNoMoreThanItsLength) {
    NodeScript script(
        "Integer Size Value=6\nRegister Raw @0x80:1 pLength=Size\nRegister Never @0x80:2 Cachable=NoCache");
    auto& raw = script.nodes.As<IRegister>("Raw");
    const std::uint8_t bytes[] = {1, 2, 3, 4, 5, 6, 7, 8};
    std::uint8_t back[8] = {};
    EXPECT_THROW(raw.Set(bytes, 8), GenICam_3_2::OutOfRangeException);
    EXPECT_THROW(raw.Set(bytes, -1), GenICam_3_2::OutOfRangeException);
    EXPECT_THROW(raw.Get(nullptr, 6), GenICam_3_2::InvalidArgumentException);
    raw.Set(bytes, 6);
    raw.Get(back, 3); // a part is read as it is asked for, and not kept
    raw.Get(back, 6);
    raw.Get(back, 6);
    raw.Get(back + 6, 2);
    EXPECT_EQ(0, std::memcmp("\1\2\3\4\5\6\1\2", back, 8));
    script.Run(
        R"(writes 1 ; reads 2 ; Raw cached 1 ; Never text 0x0102 ; Never text 0x0102 ; reads 2 ; Raw text 0x010203040506
Raw <- 0xA0A1A2A3A4A5 ; @0x80 ? A0A1A2A3 ; Raw <- 0xA0A !InvalidArgument ; Raw <- 0xA0A1A2A3A4A5A6 !InvalidArgument
Raw <- A0A1A2A3A4G5 !InvalidArgument ; Size = 0x10000000000 ; Raw text !OutOfRange)");
}

TEST(Nodes, CopiesAreWrittenInOrderAsFarAsTheDeviceAnswers) {
    NodeScript script("IntReg Reg @0:4\nIntReg Early @8:4\nIntReg Copy @4:4\nIntReg Late @12:4\n"
                      "Integer Feature pValueCopy=Early pValue=Reg pValueCopy=Copy pValueCopy=Late");
    std::vector<std::int64_t> order;
    script.nodes.port.onWrite = [&](std::int64_t address) {
        order.push_back(address);
        if (address == 4)
            throw "no answer";
    };
    script.Run("Feature := 1 !Access ; Feature ? 1 ; @8 ? 1 ; @12 ? 0 ; fail none");
    EXPECT_EQ(order, (std::vector<std::int64_t>{8, 0, 4}));
    std::thread([&] { script.nodes.Integer("Feature").SetValue(4); }).join(); // the lock is free
    script.Run("@4 ? 4 ; @12 ? 4");
}

TEST(Nodes, CallbacksKnowTheLockMayWriteAndMayLeave) {
    NodeScript script("IntReg Reg @0:4\nIntReg Mirror @4:4");
    auto& nodes = script.nodes;
    bool inside = false;
    bool outside = false;
    const auto isLockFree = [&] {
        bool isFree = false;
        std::thread([&] {
            isFree = nodes.map->GetLock().TryLock();
            if (isFree)
                nodes.map->GetLock().Unlock();
        }).join();
        return isFree;
    };
    CallbackHandleType self = 0;
    self = Register(&nodes.Node("Reg"), [&](INode*) {
        inside = !isLockFree();
        nodes.Integer("Mirror").SetValue(nodes.Integer("Reg").GetValue());
        Deregister(self);
    });
    auto named = [&](INode*) { outside = isLockFree(); }; // no client with a member function
    Register(&nodes.Node("Reg"), named, cbPostOutsideLock);
    script.Run("Reg = 5");
    EXPECT_TRUE(inside);
    EXPECT_TRUE(outside);
    EXPECT_FALSE(nodes.Node("Reg").DeregisterCallback(self));
    script.Run("@4 ? 5 ; Reg = 6 ; @4 ? 5 ; Mirror calls 0");
    nodes.map->InvalidateNodes();
    script.Run("Mirror calls 1");
    // What a callback throws is its own affair: the write has happened.
    Register(&nodes.Node("Reg"), [](INode*) { throw GenICam_3_2::RuntimeException("callback", "", 0); });
    outside = false;
    script.Run("Reg = 7 ; @0 ? 7 ; Mirror invalidate ; poll 1000 ; fail writes ; Reg = 8 !Access~no answer");
    EXPECT_TRUE(outside);
    EXPECT_TRUE(isLockFree());
}

TEST(Nodes, ManyThreadsOneMap) {
    NodeScript script("IntReg A @0:4\nIntReg B @4:4 Cachable=NoCache\n"
                      "IntSwissKnife Sum pVariable.A=A pVariable.B=B Formula=A+B");
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int id = 0; id < 4; ++id)
        threads.emplace_back([&, id] {
            for (int i = 0; i < 300; ++i) {
                if (id % 2 == 0)
                    script.nodes.Integer(id == 0 ? "A" : "B").SetValue(i % 10);
                const std::int64_t sum = script.nodes.Integer("Sum").GetValue();
                wrong += sum < 0 || sum > 18;
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(0, wrong);
}

TEST(Nodes, TextsAndFlagsComeFromTheRecord) {
    NodeScript script(R"(Category Root pFeature=Width
<Integer Name="Width" NameSpace="Standard"><DisplayName>Image Width</DisplayName><ToolTip>tip</ToolTip><Visibility>Guru</Visibility><Streamable>Yes</Streamable><EventID>9001</EventID><Value>1</Value></Integer>
Integer Max Value=10 IsDeprecated=Yes
Enumeration E :A=0 Value=0)");
    INode& width = script.nodes.Node("Width");
    INode& max = script.nodes.Node("Max");
    EXPECT_EQ(
        "Std::Width,Cust::Max,Image Width,Max,tip,9001,Camera,A",
        Joined(gcstring_vector{width.GetName(true), max.GetName(true), width.GetDisplayName(),
                               max.GetDisplayName(), width.GetToolTip(), width.GetEventID(),
                               width.GetDeviceName(), script.nodes.Node("EnumEntry_E_A").GetDisplayName()}));
    width.ImposeVisibility(Expert);
    max.ImposeVisibility(Invisible);
    script.Run("Width visibility 2 ; Max visibility 3");
    EXPECT_TRUE(width.IsStreamable() && !width.IsDeprecated() && width.IsFeature());
    EXPECT_TRUE(!max.IsStreamable() && max.IsDeprecated() && !max.IsFeature());
    EXPECT_EQ("Name,Value,IsDeprecated",
              Filled<gcstring_vector>([&](auto& names) { max.GetPropertyNames(names); }));
    EXPECT_EQ("Width", Filled<FeatureList_t>(
                           [&](auto& list) { script.nodes.As<ICategory>("Root").GetFeatures(list); }));
    EXPECT_EQ(nullptr, script.nodes.Enumeration("E").GetEntryByName("a"));
    EXPECT_EQ(0, script.nodes.Enumeration("E").GetEntryByName("A")->GetValue());
    EXPECT_EQ("Test", dynamic_cast<IDeviceInfo&>(*script.nodes.map).GetModelName());
}

TEST(Nodes, EndlessChainsAndSumsEndAndGoodOnesOfSaneLengthWork) {
    std::string nodes =
        "Integer N0 Value=42\nIntReg K0 @0:4 Cachable=NoCache\nInteger Locked pIsLocked=K60 Value=1\n"
        "Integer C0 Value=1 Max=9\nIntSwissKnife Top pVariable.C=C60 pVariable.C.Max=C60 Formula=C.Max\n"
        "Integer Endless pIsAvailable=Top Value=1\n";
    for (int i = 1; i <= 20000; ++i)
        nodes += "Integer N" + std::to_string(i) + " pValue=N" + std::to_string(i - 1) + "\n";
    for (int i = 1; i <= 60; ++i) {
        const std::string below = std::to_string(i - 1);
        nodes += "IntSwissKnife K" + std::to_string(i) + " pVariable.A=K" + below + " pVariable.B=K" + below +
                 " Formula=A+B\n";
        nodes += "Integer C" + std::to_string(i) + " pValue=C" + below + " pValueCopy=C" + below + "\n";
    }
    NodeScript script(nodes);
    // What was read in an operation is remembered to its end, and no longer.
    script.Run("N100 ? 42 ; N100 = 43 ; N50 ? 43 ; N20000 ? !Access ; N20000 mode NA\n"
               "K10 ? 0 ; reads 1 ; K16 ? 0 ; reads 1 ; K16 ?? 0 ; reads 1 ; K60 ?v 0 ; reads 1 ; @0 = 1 ; "
               "K10 ? 1024\n"
               "reads 1 ; Locked mode RO ; reads 1 ; @0 = 0");
    // Where that does not help nobody waits, and the failure is told, not kept for an answer.
    script.Run("C10 max 9 ; C60 max !Runtime~too many nodes ; Endless mode !Runtime~too many nodes\n"
               "Endless mode !Runtime ; Endless ?v !Runtime ; Endless ? 1 ; C10 max 9 ; K10 ? 0");
    // Callbacks are operations of their own.
    Register(&script.nodes.Node("K0"), [&](INode*) {
        for (int i = 0; i < 4000; ++i)
            script.nodes.Integer("K60").GetValue();
    });
    script.Run("reads 1 ; K0 = 1 ; reads 4000");
}

TEST(Nodes, PollingWithoutAPolledNodeWaitsForNobody) {
    NodeScript idle("IntReg Reg @0:4"), polled("IntReg A @0:4 PollingTime=500\nIntReg B @4:4 PollingTime=70");
    EXPECT_EQ(vx3::GetPollingTime(*idle.nodes.map), -1);
    EXPECT_EQ(vx3::GetPollingTime(*polled.nodes.map), 70);
    std::atomic<bool> done{false};
    idle.nodes.map->GetLock().Lock();
    std::thread poller([&] {
        idle.nodes.map->Poll(1000);
        done = true;
    });
    for (int i = 0; i < 2000 && !done; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_TRUE(done);
    idle.nodes.map->GetLock().Unlock();
    poller.join();
}

TEST(Nodes, EveryNodeOfALargeDescriptionCanBeUsed) {
    const std::string xml = VX3::Test::GeneratedDescription(3000 / VX3::Test::NodesPerGeneratedGroup);
    CNodeMapFactory factory(ContentType_Xml, xml.data(), xml.size());
    INodeMap* map = factory.CreateNodeMap();
    VX3::Test::MemoryPort port(1 << 20);
    ASSERT_TRUE(map->Connect(&port));
    EXPECT_TRUE(vx3::GetProblems(*map).empty());
    NodeList_t list;
    map->GetNodes(list);
    int usable = 0;
    for (INode* node : list)
        VX3::Test::FailureOf([&] {
            const gcstring text = dynamic_cast<IValue&>(*node).ToString(true);
            ++usable;
            dynamic_cast<IValue&>(*node).FromString(text);
        });
    EXPECT_GT(usable, 1500);
    map->Poll(10000);
    dynamic_cast<IDestroy*>(map)->Destroy();
}

} // namespace VX3::Test
