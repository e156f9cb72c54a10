// The typed wrappers: clamping, assignment, look-ups, variants.
#include "genicam/MemoryOwner.h"

#include <gtest/gtest.h>

using namespace VX3;
using namespace VX3::GenICam;
using namespace VX3::Testing;

TEST(IntegerA, ClampsAndSnapsOntoTheGridThatStartsAtTheMinimum) {
    const Camera camera;
    auto& stepped = camera.Get<IInteger>("Stepped"); // 0 .. 100 by 4
    const std::pair<long, long> cases[] = {{10, 8}, {101, 100}, {-5, 0}, {100, 100},
                                           {0, 0},  {3, 0},     {99, 96}};
    for (const auto& [asked, held] : cases) {
        stepped.SetValue(asked, true);
        EXPECT_EQ(stepped.GetValue(true, true), held) << asked;
    }
    auto& odd = camera.Get<IInteger>("Odd"); // -10 .. 10 by 7
    odd.SetValue(3, true);
    EXPECT_EQ(*odd, -3);
    odd.SetValue(10, true);
    EXPECT_EQ(*odd, 4) << "the maximum is not on the grid";
    auto& wide = camera.Get<IInteger>("Wide"); // the whole 64-bit range, where max - min overflows
    for (const long value : {INT64_MIN, INT64_MAX, -1L, 0L, 5000000000L}) {
        wide.SetValue(value, true);
        EXPECT_EQ(wide.GetValue(true, true), value);
    }
    EXPECT_EQ(stepped.GetUnit(), "px");
    EXPECT_EQ(stepped.GetInc(), 4);
    EXPECT_EQ(stepped.GetIncMode(), EIncMode::FixedIncrement);
}

TEST(IntegerA, ImposedBoundsClampToo) {
    const Camera camera;
    auto& stepped = camera.Get<IInteger>("Stepped");
    stepped.ImposeMax(48);
    stepped.SetValue(90, true);
    EXPECT_EQ(stepped.GetValue(true, true), 48);
    EXPECT_EQ(stepped.GetMax(), 48);
}

TEST(FloatA, Clamps) {
    const Camera camera;
    auto& rate = camera.Get<IFloat>("Rate");
    const std::pair<double, double> cases[] = {{3.0, 2.5}, {1.0, 1.5}, {2.2, 2.2}};
    for (const auto& [asked, held] : cases) {
        rate.SetValue(asked, true);
        EXPECT_DOUBLE_EQ(rate.GetValue(true, true), held);
    }
    EXPECT_EQ(rate.GetUnit(), "Hz");
}

TEST(TypedNodes, AssignmentWrites) {
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

TEST(CommandA, Executes) {
    const Camera camera;
    auto& fire = camera.Get<ICommand>("Fire");
    fire.Execute(true);
    EXPECT_EQ(camera.owner->memory[0x34], 7);
    EXPECT_TRUE(fire.IsDone(true)) << "write-only commands are done at once";
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
