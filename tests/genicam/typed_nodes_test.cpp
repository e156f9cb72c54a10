// The typed wrappers: clamping, assignment, look-ups, variants.
#include "support/MemoryOwner.h"

#include <gtest/gtest.h>

namespace VX3::Test {
namespace {

using namespace GenICam;

TEST(IntegerA, ClampsAndSnapsOntoTheGridThatStartsAtTheMinimum) {
    const Camera camera;
    auto& stepped = camera.Get<IInteger>("Stepped"); // 0 .. 100 by 4
    auto& odd = camera.Get<IInteger>("Odd");         // -10 .. 10 by 7: the maximum is not on the grid
    auto& wide = camera.Get<IInteger>("Wide");       // the whole 64-bit range, where max - min overflows
    const std::tuple<IInteger*, long, long> cases[] = {{&stepped, 10, 8},
                                                       {&stepped, 101, 100},
                                                       {&stepped, -5, 0},
                                                       {&stepped, 100, 100},
                                                       {&stepped, 0, 0},
                                                       {&stepped, 3, 0},
                                                       {&stepped, 99, 96},
                                                       {&odd, 3, -3},
                                                       {&odd, 10, 4},
                                                       {&wide, INT64_MIN, INT64_MIN},
                                                       {&wide, INT64_MAX, INT64_MAX},
                                                       {&wide, -1, -1},
                                                       {&wide, 5000000000, 5000000000}};
    for (const auto& [node, asked, held] : cases) {
        node->SetValue(asked, true);
        EXPECT_EQ(node->GetValue(true, true), held) << asked;
        EXPECT_EQ(**node, held) << asked;
    }
    EXPECT_EQ(std::tuple(stepped.GetUnit(), stepped.GetInc(), stepped.GetIncMode()),
              std::tuple("px", 4, EIncMode::FixedIncrement));
    stepped.ImposeMax(48);
    stepped.SetValue(90, true);
    EXPECT_EQ(std::pair(stepped.GetValue(true, true), stepped.GetMax()), std::pair(48L, 48L))
        << "imposed bounds too";
}

TEST(FloatA, Clamps) {
    const Camera camera;
    auto& rate = camera.Get<IFloat>("Rate");
    const std::pair<double, double> cases[] = {{3.0, 2.5}, {1.0, 1.5}, {2.25, 2.25}};
    for (const auto& [asked, held] : cases) {
        rate.SetValue(asked, true);
        EXPECT_DOUBLE_EQ(rate.GetValue(true, true), held);
    }
    rate.ImposeMin(1.75);
    rate.ImposeMax(2.25);
    rate.SetValue(1.5, true);
    EXPECT_EQ(std::tuple(rate.GetMin(), *rate, rate.GetMax(), rate.GetUnit()),
              std::tuple(1.75, 1.75, 2.25, "Hz"));
}

TEST(TypedNodes, AssignmentAndExecutionWrite) {
    const Camera camera;
    camera.Get<IInteger>("Stepped") = 24L;
    camera.Get<IFloat>("Rate") = 2.0;
    camera.Get<IBoolean>("Flag") = true;
    camera.Get<IString>("Label") = std::string("left");
    camera.Get<IEnumeration>("Mode") = std::string("Fast");
    const std::vector<unsigned char>& memory = camera.owner->memory;
    EXPECT_EQ(memory[0x10], 24);
    double rate = 0.0;
    std::memcpy(&rate, &memory[0x28], sizeof(rate));
    EXPECT_DOUBLE_EQ(rate, 2.0);
    EXPECT_EQ(memory[0x30], 1);
    EXPECT_STREQ(reinterpret_cast<const char*>(&memory[0x40]), "left");
    EXPECT_EQ(memory[0x38], 9);
    camera.Get<ICommand>("Fire").Execute(true);
    EXPECT_EQ(memory[0x34], 7);
    EXPECT_TRUE(camera.Get<ICommand>("Fire").IsDone(true)) << "write-only commands are done at once";
    EXPECT_TRUE(camera.Get<IBoolean>("Flag")());
    EXPECT_EQ(*camera.Get<IString>("Label"), "left");
    EXPECT_EQ(*camera.Get<IEnumeration>("Mode"), "Fast");
    EXPECT_ANY_THROW(camera.Get<IEnumeration>("Mode") = std::string("Sideways"));
}

TEST(EnumerationA, FindsEntriesThroughTheMap) {
    const Camera camera;
    auto& mode = camera.Get<IEnumeration>("Mode");
    EXPECT_EQ(mode.GetSymbolics(), (std::vector<std::string>{"Slow", "Fast"}));
    IEnumEntry* fast = mode.GetEntry(9);
    ASSERT_NE(fast, nullptr);
    EXPECT_EQ(fast, mode.GetEntries().at(1));
    EXPECT_EQ(fast, mode.GetEntryByName("EnumEntry_Mode_Fast")) << "by node name";
    EXPECT_EQ(mode.GetEntryByName("Fast"), nullptr) << "not by symbolic name";
    EXPECT_EQ(mode.GetEntryByName("Stepped"), nullptr) << "not another kind of node";
    EXPECT_EQ(mode.GetEntry(4), nullptr);
    mode.SetIntValue(3, true);
    EXPECT_EQ(mode.GetCurrentEntry(true, true)->GetSymbolic(), "Slow");
    EXPECT_ANY_THROW(mode.SetIntValue(4, true));
}

TEST(TypedNodes, GiveVariantsOfTheirOwnType) {
    const Camera camera;
    camera.owner->memory[0x60] = 0x12;
    camera.owner->memory[0x63] = 0x34;
    unsigned int four = 0;
    std::memcpy(&four, &camera.owner->memory[0x60], 4);
    const auto variant = [&](const char* name) { return camera.Get<IValue>(name).GetVariant(); };
    EXPECT_TRUE(*variant("Stepped") == Variant<long>(0));
    EXPECT_FALSE(*variant("Stepped") == Variant<unsigned int>(0)) << "another type is another value";
    EXPECT_TRUE(*variant("Flag") == Variant<bool>(false));
    EXPECT_TRUE(*variant("Label") == Variant<std::string>(""));
    EXPECT_TRUE(*variant("Four") == Variant<unsigned int>(four)) << "register bytes in host order";
    EXPECT_NE(dynamic_cast<Variant<std::string>*>(variant("Three").get()), nullptr);
    EXPECT_TRUE(*variant("Fire") == Variant<bool>(true));
    EXPECT_TRUE(*variant("EnumEntry_Mode_Fast") == Variant<unsigned int>(0));
    EXPECT_TRUE(*variant("Root") == Variant<long>(0));
}

} // namespace
} // namespace VX3::Test
