// What is known without asking the device, and what stops being known.
#include "support/TestNodeMap.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace GenApi_3_2;
using namespace GenICam_3_2;
using namespace TestSupport;

namespace {

struct Listener {
    int calls = 0;
    void On(INode*) { ++calls; }
};

} // namespace

TEST(Cache, ModesOfCaching) {
    TestNodeMap nodes(WordRegister("Through", 0, "<Cachable>WriteThrough</Cachable>") +
                      WordRegister("Around", 4, "<Cachable>WriteAround</Cachable>") +
                      WordRegister("Never", 8, "<Cachable>NoCache</Cachable>") +
                      "<Integer Name=\"OverNever\"><pValue>Never</pValue></Integer>");
    const auto readsOf = [&](const char* name) {
        const int before = nodes.port.reads;
        nodes.Integer(name).GetValue();
        return nodes.port.reads - before;
    };
    nodes.Integer("Through").SetValue(1);
    EXPECT_EQ(0, readsOf("Through")) << "keeps what was written";
    nodes.Integer("Around").SetValue(1);
    EXPECT_EQ(1, readsOf("Around")) << "does not";
    EXPECT_EQ(0, readsOf("Around")) << "but keeps what was read";
    nodes.Integer("OverNever").SetValue(1);
    EXPECT_EQ(1, readsOf("OverNever"));
    EXPECT_EQ(1, readsOf("OverNever"));
    EXPECT_FALSE(nodes.Node("OverNever").IsCachable());
    EXPECT_EQ(NoCache, nodes.Node("Never").GetCachingMode());
    EXPECT_EQ(WriteAround, nodes.Node("Around").GetCachingMode());
    EXPECT_TRUE(nodes.Integer("Through").IsValueCacheValid());
    EXPECT_FALSE(nodes.Integer("Never").IsValueCacheValid());
    nodes.port.Put(0, 77);
    EXPECT_EQ(1, nodes.Integer("Through").GetValue());
    EXPECT_EQ(77, nodes.Integer("Through").GetValue(false, true)) << "the device is asked on demand";
    EXPECT_EQ(77, nodes.Integer("Through").GetValue());
}

TEST(Cache, WriteInvalidatesAllThatDependsOnIt) {
    TestNodeMap nodes(
        WordRegister("Width", 0) + WordRegister("Height", 4) +
        "<IntSwissKnife Name=\"Pixels\"><pVariable Name=\"W\">Width</pVariable>"
        "<pVariable Name=\"H\">Height</pVariable><Formula>W * H</Formula></IntSwissKnife>"
        "<IntConverter Name=\"Bytes\"><FormulaTo>FROM / 2</FormulaTo><FormulaFrom>TO * 2</FormulaFrom>"
        "<pValue>Pixels</pValue></IntConverter>"
        "<Integer Name=\"Payload\"><pValue>Bytes</pValue><pMax>Pixels</pMax></Integer>");
    nodes.Integer("Width").SetValue(10);
    nodes.Integer("Height").SetValue(3);
    EXPECT_EQ(60, nodes.Integer("Payload").GetValue());
    const int reads = nodes.port.reads;
    EXPECT_EQ(60, nodes.Integer("Payload").GetValue());
    EXPECT_EQ(reads, nodes.port.reads);
    nodes.Integer("Height").SetValue(4);
    EXPECT_FALSE(nodes.Integer("Payload").IsValueCacheValid());
    EXPECT_EQ(80, nodes.Integer("Payload").GetValue());
    EXPECT_EQ(40, nodes.Integer("Payload").GetMax());
    // A value that turns out new when the device is asked counts as well.
    nodes.port.Put(0, 100);
    nodes.Integer("Width").GetValue(false, true);
    EXPECT_EQ(800, nodes.Integer("Payload").GetValue());
}

TEST(Cache, InvalidatorsReachFeaturesCommandsRegistersAndMayGoInCircles) {
    TestNodeMap nodes(WordRegister("A", 0, "<pInvalidator>Run</pInvalidator><pInvalidator>B</pInvalidator>") +
                      WordRegister("B", 4, "<pInvalidator>A</pInvalidator>") + WordRegister("Hidden", 8) +
                      WordRegister("RunReg", 12) +
                      "<Command Name=\"Run\"><pValue>RunReg</pValue><CommandValue>1</CommandValue></Command>"
                      "<Integer Name=\"Feature\"><pInvalidator>Run</pInvalidator><pValue>Hidden</pValue>"
                      "</Integer>");
    EXPECT_EQ(0, nodes.Integer("A").GetValue() + nodes.Integer("Feature").GetValue());
    nodes.port.Put(0, 5);
    nodes.port.Put(8, 6);
    EXPECT_EQ(0, nodes.Integer("A").GetValue() + nodes.Integer("Feature").GetValue());
    nodes.As<ICommand>("Run").Execute();
    EXPECT_EQ(5, nodes.Integer("A").GetValue());
    EXPECT_EQ(6, nodes.Integer("Feature").GetValue()) << "and what the feature reads";
    nodes.port.Put(0, 7);
    nodes.Integer("B").SetValue(1);
    EXPECT_EQ(7, nodes.Integer("A").GetValue());
    nodes.Integer("A").SetValue(8);
    EXPECT_EQ(8, nodes.Integer("A").GetValue());
}

TEST(Cache, PollingDropsValuesWhoseTimeHasPassed) {
    TestNodeMap nodes(WordRegister("Slow", 0, "<PollingTime>1000</PollingTime>") +
                      WordRegister("Fast", 4, "<PollingTime>100</PollingTime>") + WordRegister("Never", 8) +
                      "<Integer Name=\"OverFast\"><pValue>Fast</pValue></Integer>");
    Listener slow, over, never;
    Register(&nodes.Node("Slow"), slow, &Listener::On);
    Register(&nodes.Node("OverFast"), over, &Listener::On);
    Register(&nodes.Node("Never"), never, &Listener::On);
    EXPECT_EQ(0, nodes.Integer("OverFast").GetValue());
    nodes.port.Put(4, 3);
    nodes.map->Poll(99);
    EXPECT_EQ(0, nodes.Integer("OverFast").GetValue());
    nodes.map->Poll(1);
    EXPECT_EQ(3, nodes.Integer("OverFast").GetValue());
    EXPECT_EQ(1, over.calls);
    EXPECT_EQ(0, slow.calls);
    nodes.map->Poll(100000);
    EXPECT_EQ(1, slow.calls);
    EXPECT_EQ(2, over.calls);
    EXPECT_EQ(0, never.calls);
    EXPECT_EQ(100, nodes.Node("Fast").GetPollingTime());
    EXPECT_EQ(-1, nodes.Node("Never").GetPollingTime());
}

TEST(Cache, FailedWriteLeavesNothingStaleBehind) {
    TestNodeMap nodes(
        WordRegister("Reg", 0) + WordRegister("Copy", 4) +
        "<Integer Name=\"Feature\"><pValue>Reg</pValue><pValueCopy>Copy</pValueCopy></Integer>");
    nodes.Integer("Feature").SetValue(1);
    nodes.port.onWrite = [](std::int64_t address) {
        if (address == 4)
            throw "no answer";
    };
    EXPECT_THROW(nodes.Integer("Feature").SetValue(2), AccessException);
    EXPECT_EQ(2, nodes.Integer("Feature").GetValue()) << "the first register did take it";
    nodes.port.onWrite = [](std::int64_t) { throw "no answer"; };
    EXPECT_THROW(nodes.Integer("Feature").SetValue(3), AccessException);
    EXPECT_EQ(2, nodes.Integer("Feature").GetValue()) << "asked again, not remembered";
    nodes.port.onWrite = nullptr;
    std::thread other([&] { nodes.Integer("Feature").SetValue(4); }); // the lock is free
    other.join();
    EXPECT_EQ(4u, nodes.port.Word(4));
}

TEST(Cache, CallbacksFireForTheChangedAndItsDependentsOnce) {
    TestNodeMap nodes(WordRegister("Reg", 0) + WordRegister("Other", 4) +
                      "<Integer Name=\"Feature\"><pValue>Reg</pValue></Integer>"
                      "<Integer Name=\"Bounded\"><pMax>Feature</pMax><Value>0</Value></Integer>");
    Listener reg, feature, bounded, other;
    Register(&nodes.Node("Reg"), reg, &Listener::On);
    const auto handle = Register(&nodes.Node("Feature"), feature, &Listener::On);
    Register(&nodes.Node("Bounded"), bounded, &Listener::On);
    Register(&nodes.Node("Other"), other, &Listener::On);
    nodes.Integer("Feature").SetValue(1);
    EXPECT_EQ(1, reg.calls);
    EXPECT_EQ(1, feature.calls);
    EXPECT_EQ(1, bounded.calls);
    EXPECT_EQ(0, other.calls);
    nodes.Integer("Feature").GetValue(false, true);
    EXPECT_EQ(1, feature.calls) << "reading fires nothing";
    Deregister(handle);
    nodes.Integer("Reg").SetValue(2);
    EXPECT_EQ(2, reg.calls);
    EXPECT_EQ(1, feature.calls);
    nodes.map->InvalidateNodes();
    EXPECT_EQ(3, reg.calls);
    EXPECT_EQ(1, other.calls);
}

TEST(Cache, CallbacksKnowTheLockMayWriteAndMayLeave) {
    TestNodeMap nodes(WordRegister("Reg", 0) + WordRegister("Mirror", 4));
    bool inside = false;
    bool outside = false;
    const auto isLockFree = [&] {
        bool isFree = false;
        std::thread other([&] {
            isFree = nodes.map->GetLock().TryLock();
            if (isFree)
                nodes.map->GetLock().Unlock();
        });
        other.join();
        return isFree;
    };
    CallbackHandleType self = 0;
    self = Register(&nodes.Node("Reg"), [&](INode*) {
        inside = !isLockFree();
        nodes.Integer("Mirror").SetValue(nodes.Integer("Reg").GetValue());
        Deregister(self);
    });
    Register(
        &nodes.Node("Reg"), [&](INode*) { outside = isLockFree(); }, cbPostOutsideLock);
    nodes.Integer("Reg").SetValue(5);
    EXPECT_TRUE(inside);
    EXPECT_TRUE(outside);
    EXPECT_EQ(5u, nodes.port.Word(4));
    nodes.Integer("Reg").SetValue(6);
    EXPECT_EQ(5u, nodes.port.Word(4));
    Register(&nodes.Node("Reg"), [](INode*) { throw RuntimeException("callback", "", 0); });
    EXPECT_THROW(nodes.Integer("Reg").SetValue(7), RuntimeException);
    EXPECT_EQ(7u, nodes.port.Word(0));
    EXPECT_TRUE(isLockFree());
}

TEST(Cache, ManyThreadsOneMap) {
    TestNodeMap nodes(WordRegister("A", 0) + WordRegister("B", 4, "<Cachable>NoCache</Cachable>") +
                      "<IntSwissKnife Name=\"Sum\"><pVariable Name=\"A\">A</pVariable>"
                      "<pVariable Name=\"B\">B</pVariable><Formula>A + B</Formula></IntSwissKnife>");
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int id = 0; id < 4; ++id)
        threads.emplace_back([&, id] {
            for (int i = 0; i < 300; ++i) {
                if (id % 2 == 0)
                    nodes.Integer(id == 0 ? "A" : "B").SetValue(i % 10);
                const std::int64_t sum = nodes.Integer("Sum").GetValue();
                if (sum < 0 || sum > 18)
                    ++wrong;
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(0, wrong);
}
